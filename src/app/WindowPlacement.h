#pragma once

#include "settings/AppSettings.h"

namespace orbisk {

/// Size of the display in screen pixels.
struct DisplaySize {
    int w = 0;
    int h = 0;
};

/// Whether the frame opens maximised: the saved rectangle fills more than 95 % of the display in
/// both directions. Otherwise it is placed as saved.
bool opensMaximised(const WindowRect& saved, const DisplaySize& display);

} // namespace orbisk
