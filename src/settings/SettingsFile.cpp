#include "settings/SettingsFile.h"

#include "platform/FileReplacement.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <fstream>
#include <iterator>

// The reader and writer classes that fix the file's form are the library's older ones.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif

namespace orbisk {

namespace {

constexpr int sampleAge = 23;
constexpr const char* sampleName = "Li Lei";

/// A pane record's members under their names in the file.
struct PaneMember {
    const char* name;
    int PaneLayout::*field;
};

constexpr PaneMember paneMembers[] = {
    {"w", &PaneLayout::w},
    {"h", &PaneLayout::h},
    {"layer", &PaneLayout::layer},
    {"row", &PaneLayout::row},
    {"pos", &PaneLayout::pos},
    {"direction", &PaneLayout::direction},
    {"fx", &PaneLayout::fx},
    {"fy", &PaneLayout::fy},
    {"fw", &PaneLayout::fw},
    {"fh", &PaneLayout::fh},
    {"floating", &PaneLayout::floating},
    {"maxing", &PaneLayout::maxing},
    {"show", &PaneLayout::show},
};

/// The member of an object; null where there is no such member or `value` is no object.
const Json::Value& member(const Json::Value& value, const char* name) {
    return value.isObject() ? value[name] : Json::Value::nullSingleton();
}

int intOrZero(const Json::Value& value) {
    return value.isConvertibleTo(Json::intValue) ? value.asInt() : 0;
}

double doubleOrZero(const Json::Value& value) {
    return value.isConvertibleTo(Json::realValue) ? value.asDouble() : 0.0;
}

AppSettings defaultSettings(const AppSettings& current, const DisplaySize& display) {
    AppSettings settings;
    settings.panes = current.panes;
    settings.rect = {0, 0, display.w, display.h};
    settings.sky_show = 1;
    settings.tool_show = 1;
    settings.fovy = defaultFovy;
    settings.language = languageChinese;
    return settings;
}

SettingsError errorAt(const std::string& text, std::ptrdiff_t offset, const std::string& message) {
    const auto end = text.begin() + std::clamp<std::ptrdiff_t>(
                                        offset, 0, static_cast<std::ptrdiff_t>(text.size()));
    const auto lineStart = std::find(std::make_reverse_iterator(end), text.rend(), '\n').base();
    SettingsError error;
    error.line = 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
    error.column = 1 + static_cast<int>(end - lineStart);
    error.message = message;
    return error;
}

std::optional<SettingsError> parse(const std::string& text, Json::Value& root) {
    Json::Reader reader;
    try {
        if (reader.parse(text, root))
            return std::nullopt;
    } catch (const std::exception& nestedTooDeep) {
        return errorAt(text, 0, nestedTooDeep.what());
    }
    const auto errors = reader.getStructuredErrors();
    if (errors.empty())
        return errorAt(text, 0, "not JSON");
    return errorAt(text, errors.front().offset_start, errors.front().message);
}

AppSettings settingsFrom(const Json::Value& root, const AppSettings& current,
                         const PathEncoding& encoding) {
    const Json::Value& project = member(root, "project");
    const Json::Value& rect = member(member(project, "layout"), "rect");
    const Json::Value& data = member(project, "data");
    AppSettings settings;
    settings.panes = current.panes;
    settings.rect = {intOrZero(member(rect, "x")), intOrZero(member(rect, "y")),
                     intOrZero(member(rect, "w")), intOrZero(member(rect, "h"))};
    settings.tool_show = intOrZero(member(data, "tool_show"));
    settings.sky_show = intOrZero(member(data, "sky_show"));
    settings.fovy = doubleOrZero(member(data, "fovy"));
    settings.language = intOrZero(member(data, "language"));
    const Json::Value& recent = member(data, "path_recent");
    if (recent.isArray())
        for (const Json::Value& path : recent)
            settings.path_recent.push_back(
                encoding.fromFile(path.isString() ? path.asString() : std::string()));
    return settings;
}

Json::Value layoutOf(const AppSettings& settings) {
    Json::Value layout;
    Json::Value& rect = layout["rect"];
    rect["x"] = settings.rect.x;
    rect["y"] = settings.rect.y;
    rect["w"] = settings.rect.w;
    rect["h"] = settings.rect.h;
    Json::Value& aui = layout["aui"];
    for (const PaneLayout& pane : settings.panes) {
        Json::Value record;
        for (const PaneMember& entry : paneMembers)
            record[entry.name] = pane.*entry.field;
        aui.append(record);
    }
    return layout;
}

/// The library's writer takes text for UTF-8 and escapes what lies beyond ASCII, while paths are to
/// stand in the file byte for byte in the local encoding. Each such byte therefore goes through the
/// writer as the character of that number, and its escape is turned back into the byte after.
std::string bytesAsCharacters(const std::string& bytes) {
    constexpr unsigned char firstBeyondAscii = 0x80;
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < firstBeyondAscii) {
            text.push_back(c);
        } else {
            text.push_back(static_cast<char>(0xc0 | (byte >> 6)));
            text.push_back(static_cast<char>(0x80 | (byte & 0x3f)));
        }
    }
    return text;
}

std::string charactersAsBytes(const std::string& json) {
    constexpr std::size_t escapeLength = 6; // \uXXXX
    constexpr std::size_t digitsAt = 2;
    std::string bytes;
    for (std::size_t i = 0; i < json.size();) {
        const bool escape = json[i] == '\\' && i + 1 < json.size();
        const bool character = escape && json[i + 1] == 'u' && i + escapeLength <= json.size();
        const unsigned long number =
            character ? std::stoul(json.substr(i + digitsAt, 4), nullptr, 16) : 0;
        if (number >= 0x80 && number <= 0xff) {
            bytes.push_back(static_cast<char>(number));
            i += escapeLength;
        } else {
            bytes.append(json, i, escape ? 2 : 1);
            i += escape ? 2 : 1;
        }
    }
    return bytes;
}

Json::Value dataOf(const AppSettings& settings, const PathEncoding& encoding) {
    Json::Value data;
    data["tool_show"] = settings.tool_show;
    data["sky_show"] = settings.sky_show;
    // JSON has no infinity; one written all the same would stop the next start.
    data["fovy"] = std::isfinite(settings.fovy) ? settings.fovy : defaultFovy;
    data["language"] = settings.language;
    for (const std::string& path : settings.path_recent)
        data["path_recent"].append(bytesAsCharacters(encoding.toFile(path)));
    return data;
}

} // namespace

std::optional<SettingsError> loadSettings(AppSettings& settings, const DisplaySize& display,
                                          const PathEncoding& encoding) {
    std::ifstream file(settingsFileName, std::ios::binary);
    if (!file) {
        settings = defaultSettings(settings, display);
        return std::nullopt;
    }
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    Json::Value root;
    if (auto error = parse(text, root))
        return error;
    settings = settingsFrom(root, settings, encoding);
    return std::nullopt;
}

void saveSettings(const AppSettings& settings, const PathEncoding& encoding) {
    Json::Value root;
    root["name"] = sampleName;
    root["age"] = sampleAge;
    root["sex_is_male"] = true;
    root["project"]["layout"] = layoutOf(settings);
    root["project"]["data"] = dataOf(settings, encoding);
    replaceFile(settingsFileName, charactersAsBytes(Json::StyledWriter().write(root)));
}

} // namespace orbisk
