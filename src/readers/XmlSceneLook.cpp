#include "readers/XmlSceneLook.h"

#include "readers/FileBytes.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace orbisk {

namespace {

constexpr std::size_t deepestElement = 1000;

} // namespace

std::optional<std::string> xmlSceneRefusal(const std::string& path) {
    const std::optional<FileBytes> bytes = FileBytes::read(path);
    const std::string_view text = bytes ? bytes->view() : std::string_view();
    std::size_t depth = 0;
    for (std::size_t place = text.find('<'); place != std::string_view::npos;
         place = text.find('<', place + 1)) {
        const char kind = place + 1 < text.size() ? text[place + 1] : '\0';
        const std::size_t end = std::min(text.find('>', place), text.size());
        if (kind == '/')
            depth -= depth > 0 ? 1 : 0;
        else if (kind != '?' && kind != '!' && text[end - 1] != '/' && ++depth > deepestElement)
            return "elements are nested too deeply";
    }
    return std::nullopt;
}

} // namespace orbisk
