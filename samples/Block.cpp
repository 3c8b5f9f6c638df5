#include "Block.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace samples {

namespace {

constexpr double kSlabThickness = 0.22;
constexpr double kRoofAboveWall = 0.20;
constexpr double kWindowSpacing = 2.9;

} // namespace

osg::Vec3d Block::at(double x, double y, double z) const {
    const osg::Vec2d p = m_plan.toWorld(osg::Vec2d(x, y));
    return {p.x(), p.y(), z};
}

void Block::boxWalls(double x0, double y0, double x1, double y1, double bottom, double top,
                     Strip strip, double repeat) {
    const std::array<osg::Vec2d, 5> outline = {osg::Vec2d(x0, y0), osg::Vec2d(x1, y0),
                                               osg::Vec2d(x1, y1), osg::Vec2d(x0, y1),
                                               osg::Vec2d(x0, y0)};
    const double vTop = std::min(1.0, (top - bottom) / kFacadeHeight);
    for (std::size_t i = 0; i < 4; ++i) {
        const osg::Vec2d& a = outline[i];
        const osg::Vec2d& b = outline[i + 1];
        const double u = (b - a).length() / repeat;
        addWall(m_set, {{at(a.x(), a.y(), bottom), atlasPoint(strip, 0.0, 0.0)},
                        {at(b.x(), b.y(), bottom), atlasPoint(strip, u, 0.0)},
                        {at(b.x(), b.y(), top), atlasPoint(strip, u, vTop)},
                        {at(a.x(), a.y(), top), atlasPoint(strip, 0.0, vTop)}});
    }
}

void Block::boxTop(double x0, double y0, double x1, double y1, double z, Strip strip) {
    const double u = (x1 - x0) / kStoneRepeat;
    addPolygon(m_set.mesh(Surface::Roof), {{at(x0, y0, z), atlasPoint(strip, 0.0, 0.2)},
                                           {at(x1, y0, z), atlasPoint(strip, u, 0.2)},
                                           {at(x1, y1, z), atlasPoint(strip, u, 0.8)},
                                           {at(x0, y1, z), atlasPoint(strip, 0.0, 0.8)}});
}

void Block::facadeWalls(double bottom, double top, Strip strip) {
    const double hx = m_plan.halfSize.x();
    const double hy = m_plan.halfSize.y();
    const std::array<osg::Vec2d, 5> outline = {osg::Vec2d(-hx, -hy), osg::Vec2d(hx, -hy),
                                               osg::Vec2d(hx, hy), osg::Vec2d(-hx, hy),
                                               osg::Vec2d(-hx, -hy)};
    for (std::size_t i = 0; i < 4; ++i) {
        const osg::Vec2d& a = outline[i];
        const osg::Vec2d& b = outline[i + 1];
        // Whole windows only; each wall starts somewhere else in the strip.
        const double windows = std::max(1.0, std::floor((b - a).length() / kWindowSpacing));
        const double u0 = static_cast<double>(i) / kWindowsPerRepeat;
        const double u1 = u0 + windows / kWindowsPerRepeat;
        addWall(m_set, {{at(a.x(), a.y(), bottom), atlasPoint(strip, u0, 0.0)},
                        {at(b.x(), b.y(), bottom), atlasPoint(strip, u1, 0.0)},
                        {at(b.x(), b.y(), top), atlasPoint(strip, u1, 1.0)},
                        {at(a.x(), a.y(), top), atlasPoint(strip, u0, 1.0)}});
    }
}

void Block::gables(double bottom, double rise, Strip strip, double vLow, double vHigh) {
    const double hx = m_plan.halfSize.x();
    const double hy = m_plan.halfSize.y();
    const double u = 2.0 * hy / kFacadeHeight;
    for (const double turn : {1.0, -1.0}) {
        addWall(m_set, {{at(turn * hx, -turn * hy, bottom), atlasPoint(strip, 0.0, vLow)},
                        {at(turn * hx, turn * hy, bottom), atlasPoint(strip, u, vLow)},
                        {at(turn * hx, 0.0, bottom + rise), atlasPoint(strip, u / 2.0, vHigh)}});
    }
}

void Block::slope(const osg::Vec3d& left, const osg::Vec3d& right, const osg::Vec3d& topRight,
                  const osg::Vec3d& topLeft, Strip strip) {
    osg::Vec3d along = right - left;
    const double length = along.normalize();
    const auto point = [&](const osg::Vec3d& p) {
        const osg::Vec3d d = p - left;
        const double u = d * along;
        const double v = (d - along * u).length();
        return atlasPoint(strip, u / kRoofRepeat, v / kRoofSlope);
    };
    Mesh& roof = m_set.mesh(Surface::Roof);
    if ((topRight - topLeft).length() < 0.01 * length) {
        addPolygon(roof, {{left, point(left)}, {right, point(right)}, {topLeft, point(topLeft)}});
    } else {
        addPolygon(roof, {{left, point(left)},
                          {right, point(right)},
                          {topRight, point(topRight)},
                          {topLeft, point(topLeft)}});
    }
}

void Block::roofSlab(double turn, double wallTop, double pitch, double eavesOverhang,
                     double gableOverhang, Strip strip) {
    const double x = m_plan.halfSize.x() + gableOverhang;
    const double y = m_plan.halfSize.y() + eavesOverhang;
    const double low = wallTop + kRoofAboveWall - eavesOverhang * pitch;
    const double high = wallTop + kRoofAboveWall + m_plan.halfSize.y() * pitch;
    const auto p = [&](double px, double py, double pz) { return at(turn * px, turn * py, pz); };

    slope(p(x, y, low), p(-x, y, low), p(-x, 0.0, high), p(x, 0.0, high), strip);

    const double t = kSlabThickness;
    const osg::Vec2d wood = atlasPoint(Strip::Timber, 0.1, 0.5);
    const osg::Vec2d edge = atlasPoint(Strip::Trim, 0.1, 0.5);
    Mesh& roof = m_set.mesh(Surface::Roof);
    addPolygon(roof, {{p(x, 0.0, high - t), wood},
                      {p(-x, 0.0, high - t), wood},
                      {p(-x, y, low - t), wood},
                      {p(x, y, low - t), wood}});
    addWall(m_set, {{p(x, y, low - t), wood},
                    {p(-x, y, low - t), wood},
                    {p(-x, y, low), wood},
                    {p(x, y, low), wood}});
    addWall(m_set, {{p(x, 0.0, high - t), edge},
                    {p(x, y, low - t), edge},
                    {p(x, y, low), edge},
                    {p(x, 0.0, high), edge}});
    addWall(m_set, {{p(-x, y, low - t), edge},
                    {p(-x, 0.0, high - t), edge},
                    {p(-x, 0.0, high), edge},
                    {p(-x, y, low), edge}});
}

void Block::gableRoof(double wallTop, double pitch, double eavesOverhang, double gableOverhang,
                      Strip strip) {
    roofSlab(1.0, wallTop, pitch, eavesOverhang, gableOverhang, strip);
    roofSlab(-1.0, wallTop, pitch, eavesOverhang, gableOverhang, strip);
}

void Block::fascia(double halfX, double halfY, double z) {
    boxWalls(-halfX, -halfY, halfX, halfY, z - kSlabThickness, z, Strip::Trim, kStoneRepeat);
    const osg::Vec2d wood = atlasPoint(Strip::Timber, 0.1, 0.5);
    const double low = z - kSlabThickness;
    addPolygon(m_set.mesh(Surface::Roof), {{at(-halfX, -halfY, low), wood},
                                           {at(-halfX, halfY, low), wood},
                                           {at(halfX, halfY, low), wood},
                                           {at(halfX, -halfY, low), wood}});
}

void Block::hipRoof(double wallTop, double pitch, double overhang, Strip strip) {
    const double x = m_plan.halfSize.x() + overhang;
    const double y = m_plan.halfSize.y() + overhang;
    const double low = wallTop + kRoofAboveWall;
    const double high = low + y * pitch;
    const double ridge = std::max(0.3, x - y);
    for (const double turn : {1.0, -1.0}) {
        const auto p = [&](double px, double py, double pz) {
            return at(turn * px, turn * py, pz);
        };
        slope(p(x, y, low), p(-x, y, low), p(-ridge, 0.0, high), p(ridge, 0.0, high), strip);
        slope(p(x, -y, low), p(x, y, low), p(ridge, 0.0, high), p(ridge, 0.0, high), strip);
    }
    fascia(x, y, low);
}

void Block::pyramidRoof(double bottom, double height, double overhang, Strip strip) {
    const double x = m_plan.halfSize.x() + overhang;
    const double y = m_plan.halfSize.y() + overhang;
    const osg::Vec3d apex = at(0.0, 0.0, bottom + height);
    slope(at(-x, -y, bottom), at(x, -y, bottom), apex, apex, strip);
    slope(at(x, -y, bottom), at(x, y, bottom), apex, apex, strip);
    slope(at(x, y, bottom), at(-x, y, bottom), apex, apex, strip);
    slope(at(-x, y, bottom), at(-x, -y, bottom), apex, apex, strip);
    fascia(x, y, bottom);
}

} // namespace samples
