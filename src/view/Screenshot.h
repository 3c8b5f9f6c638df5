#pragma once

#include "app/CommandLine.h"
#include "settings/AppSettings.h"

#include <optional>
#include <string>

namespace orbisk {

/// Loads `model` (a path in the local encoding), draws one settled frame of its home view off the
/// screen and writes it to the request's file as PNG. Field of view and sky come from `settings`.
/// @return nothing, or one line saying what failed.
std::optional<std::string> takeScreenshot(const ScreenshotRequest& request,
                                          const std::string& model, const AppSettings& settings);

} // namespace orbisk
