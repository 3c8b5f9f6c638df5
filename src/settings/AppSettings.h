#pragma once

#include <array>
#include <string>
#include <vector>

namespace orbisk {

/// Geometry of the main frame, screen pixels.
struct WindowRect {
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
};

/// One docking pane as it describes itself: best size, dock layer, row, position and direction,
/// floating position and size, and three flags. Kept in the file for its form; nothing fills it.
struct PaneLayout {
    int w = 0;
    int h = 0;
    int layer = 0;
    int row = 0;
    int pos = 0;
    int direction = 0;
    int fx = 0;
    int fy = 0;
    int fw = 0;
    int fh = 0;
    int floating = 0;
    int maxing = 0;
    int show = 0;
};

/// Values of `AppSettings::language`.
enum Language { languageChinese = 0, languageEnglish = 1 };

inline constexpr double defaultFovy = 30.0; ///< degrees

/// The process-wide user settings. Read and written on the user-interface thread only.
struct AppSettings {
    std::array<PaneLayout, 2> panes{};
    WindowRect rect;
    /// Full paths of the recently opened models in UTF-8, most recent first, at most ten.
    std::vector<std::string> path_recent;
    int sky_show = 0;  ///< non-zero shows the skybox
    int tool_show = 0; ///< non-zero shows the tool bar
    double fovy = 0.0; ///< vertical field of view, degrees
    int language = 0;  ///< one of `Language`; any other value leaves the texts untranslated
};

/// The one settings record of the process, zero-filled at start-up.
AppSettings& appSettings();

} // namespace orbisk
