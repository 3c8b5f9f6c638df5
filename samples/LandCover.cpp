#include "LandCover.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kTreeLine = 165.0; ///< above the valley floor
constexpr std::uint32_t kForestSeed = 211;
constexpr std::uint32_t kColumnSeed = 223;
constexpr std::uint32_t kRowSeed = 227;
constexpr std::uint32_t kParcelSeed = 229;
constexpr std::uint32_t kGravelSeed = 233;

/// Irregular division of a line: the cell that holds @p value and the distance to its ends.
struct Division {
    int cell = 0;
    double edgeDistance = 0.0;
};

double boundary(int cell, int row, double spacing, std::uint32_t seed) {
    constexpr double kJitter = 0.55;
    return (cell + kJitter * (hashUnit(cell, row, seed) - 0.5)) * spacing;
}

Division divide(double value, int row, double spacing, std::uint32_t seed) {
    Division result;
    result.cell = static_cast<int>(std::floor(value / spacing));
    if (value < boundary(result.cell, row, spacing, seed)) {
        --result.cell;
    } else if (value >= boundary(result.cell + 1, row, spacing, seed)) {
        ++result.cell;
    }
    const double low = value - boundary(result.cell, row, spacing, seed);
    const double high = boundary(result.cell + 1, row, spacing, seed) - value;
    result.edgeDistance = std::min(low, high);
    return result;
}

} // namespace

double LandCover::forest(double x, double y, double rise) const {
    const double patches = fractalNoise(x / 135.0, y / 135.0, 4, kForestSeed);
    double bias = mix(-0.75, 0.10, smoothStep(6.0, 45.0, rise));
    bias -= 0.75 * smoothStep(kTreeLine - 30.0, kTreeLine + 55.0, rise);
    if (m_terrain.axisOffset(x, y) < 0.0) {
        bias += 0.10 * smoothStep(20.0, 60.0, rise); // the shady side is more wooded
    }
    return patches + bias - 0.5 * village(x, y);
}

double LandCover::village(double x, double y) const {
    const osg::Vec2d d = osg::Vec2d(x, y) - m_terrain.fromAxis(455.0, 45.0);
    return 1.0 - smoothStep(0.75, 1.1, std::hypot(d.x() / 215.0, d.y() / 120.0));
}

double LandCover::farming(double x, double y, double rise, double slope) const {
    const double flat = 1.0 - smoothStep(0.34, 0.44, slope);
    const double low = 1.0 - smoothStep(48.0, 62.0, rise);
    return flat * low * (1.0 - smoothStep(0.40, 0.55, village(x, y)));
}

Parcel LandCover::parcel(double x, double y) const {
    constexpr double kColumnSpacing = 62.0;
    constexpr double kRowSpacing = 74.0;
    const double offset = m_terrain.axisOffset(x, y);
    const bool north = offset > 0.0;
    const double skew = x + (north ? 0.22 : -0.15) * offset;
    const Division column = divide(skew, north ? 1 : 0, kColumnSpacing, kColumnSeed);
    const Division row = divide(offset + 20.0, column.cell, kRowSpacing, kRowSeed);
    Parcel result;
    result.hash = hashCell(column.cell, row.cell * 2 + (north ? 1 : 0), kParcelSeed);
    result.edgeDistance = std::min(column.edgeDistance, row.edgeDistance);
    result.acrossRows = (result.hash & 1U) != 0U ? skew : offset;
    return result;
}

double LandCover::gravelWidth(double along, double side) const {
    const double n = gradientNoise(along / 55.0, side > 0.0 ? 0.3 : 7.3, kGravelSeed);
    return 0.8 + 4.6 * std::max(0.0, n);
}

} // namespace samples
