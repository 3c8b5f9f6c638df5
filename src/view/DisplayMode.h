#pragma once

namespace orbisk {

/// How the model is shown. Any other value behaves as `AsLoaded`.
enum class DisplayMode { PointCloud = 0, Tin = 1, Gray = 2, AsLoaded = 6 };

} // namespace orbisk
