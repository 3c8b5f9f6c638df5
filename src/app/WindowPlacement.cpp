#include "app/WindowPlacement.h"

namespace orbisk {

namespace {
constexpr double maximisedShare = 0.95;
}

bool opensMaximised(const WindowRect& saved, const DisplaySize& display) {
    return saved.w > maximisedShare * display.w && saved.h > maximisedShare * display.h;
}

} // namespace orbisk
