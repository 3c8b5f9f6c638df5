// The texture that all buildings and trees of the valley share.
#pragma once

#include "Canvas.h"

#include <osg/Vec2d>

namespace samples {

/// Horizontal strips of the atlas; each of them repeats from left to right.
enum class Strip {
    FacadeWhite,
    FacadeCream,
    FacadeOchre,
    Timber,
    RoofRed,
    RoofBrown,
    RoofSlate,
    Stone,
    Asphalt,
    Conifer,
    Broadleaf,
    Trim
};

constexpr int kAtlasWidth = 512;
constexpr int kAtlasHeight = 1024;
/// Windows side by side in one width of a facade strip.
constexpr int kWindowsPerRepeat = 4;
/// Height of wall that a facade strip shows, metres.
constexpr double kFacadeHeight = 6.0;
/// Length of roof that a roof strip shows, both along the eaves and up the slope, metres.
constexpr double kRoofRepeat = 12.0;
constexpr double kRoofSlope = 7.0;
constexpr double kStoneRepeat = 12.0;

/// Texture coordinate inside @p strip: @p u in repeats, @p v in 0 .. 1 from its foot to its head.
osg::Vec2d atlasPoint(Strip strip, double u, double v);
/// The mean colour of a strip.
Color stripColor(Strip strip);
Canvas paintAtlas();

} // namespace samples
