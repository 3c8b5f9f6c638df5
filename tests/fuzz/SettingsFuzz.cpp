// Any bytes as the settings file: it is told where they are no JSON, and what was read survives
// being written and read again.

#include "settings/SettingsFile.h"
#include "support/Fuzzing.h"

#include <cmath>
#include <cstdio>
#include <fstream>

namespace {

using namespace orbisk;
using fuzz::require;

constexpr DisplaySize display{1920, 1080};

PathEncoding asTheyAre() {
    const auto same = [](const std::string& path) { return path; };
    return {same, same};
}

bool sameRect(const WindowRect& one, const WindowRect& other) {
    return one.x == other.x && one.y == other.y && one.w == other.w && one.h == other.h;
}

/// An angle that JSON can't hold is written as the default.
double writtenAngle(double fovy) {
    return std::isfinite(fovy) ? fovy : defaultFovy;
}

void expectSame(const AppSettings& read, const AppSettings& again) {
    require(sameRect(read.rect, again.rect), "the rectangle changed");
    require(read.tool_show == again.tool_show && read.sky_show == again.sky_show,
            "what is shown changed");
    require(read.language == again.language, "the language changed");
    require(writtenAngle(read.fovy) == again.fovy, "the angle changed");
    require(read.path_recent == again.path_recent, "the recent files changed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::workingFolder();
    std::ofstream(settingsFileName, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    AppSettings settings;
    if (const auto error = loadSettings(settings, display, asTheyAre())) {
        require(error->line >= 1 && error->column >= 1 && !error->message.empty(),
                "an error without its place");
        return 0;
    }
    saveSettings(settings, asTheyAre());
    AppSettings again;
    require(!loadSettings(again, display, asTheyAre()), "what was written can't be read");
    expectSame(settings, again);
    return 0;
}
