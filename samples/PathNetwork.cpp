#include "PathNetwork.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kCellSize = 20.0;

int cellOf(double coordinate, int cellsPerSide) {
    const int cell = static_cast<int>(std::floor(coordinate / kCellSize));
    return std::clamp(cell, 0, cellsPerSide - 1);
}

osg::Vec2d curvePoint(const std::array<osg::Vec2d, 4>& p, double t) {
    const osg::Vec2d a = p[1] * 2.0;
    const osg::Vec2d b = p[2] - p[0];
    const osg::Vec2d c = p[0] * 2.0 - p[1] * 5.0 + p[2] * 4.0 - p[3];
    const osg::Vec2d d = p[1] * 3.0 - p[0] - p[2] * 3.0 + p[3];
    return (a + b * t + c * (t * t) + d * (t * t * t)) * 0.5;
}

} // namespace

PathNetwork::PathNetwork(double extent)
    : m_cellsPerSide(static_cast<int>(std::ceil(extent / kCellSize))) {
    const auto side = static_cast<std::size_t>(m_cellsPerSide);
    m_cells.resize(side * side);
}

int PathNetwork::add(const Path& path) {
    const int index = static_cast<int>(m_paths.size());
    m_paths.push_back(path);
    double along = 0.0;
    for (std::size_t i = 0; i + 1 < path.points.size(); ++i) {
        addToCells({index, i, along});
        const osg::Vec3d step = path.points[i + 1] - path.points[i];
        along += std::hypot(step.x(), step.y());
    }
    return index;
}

void PathNetwork::addToCells(const Segment& segment) {
    const auto& points = m_paths[static_cast<std::size_t>(segment.path)].points;
    const osg::Vec3d& a = points[segment.first];
    const osg::Vec3d& b = points[segment.first + 1];
    const int x0 = cellOf(std::min(a.x(), b.x()) - kReach, m_cellsPerSide);
    const int x1 = cellOf(std::max(a.x(), b.x()) + kReach, m_cellsPerSide);
    const int y0 = cellOf(std::min(a.y(), b.y()) - kReach, m_cellsPerSide);
    const int y1 = cellOf(std::max(a.y(), b.y()) + kReach, m_cellsPerSide);
    for (int y = y0; y <= y1; ++y) {
        for (int x = x0; x <= x1; ++x) {
            m_cells[cellIndex(x, y)].push_back(segment);
        }
    }
}

PathHit PathNetwork::project(const Segment& segment, double x, double y) const {
    const auto& points = m_paths[static_cast<std::size_t>(segment.path)].points;
    const osg::Vec3d& a = points[segment.first];
    const osg::Vec3d& b = points[segment.first + 1];
    const osg::Vec2d step(b.x() - a.x(), b.y() - a.y());
    const osg::Vec2d offset(x - a.x(), y - a.y());
    const double length = std::max(step.length(), 1e-9);
    const double t = clampUnit((offset * step) / (length * length));

    PathHit hit;
    hit.path = segment.path;
    hit.point = a + (b - a) * t;
    hit.direction = step / length;
    hit.along = segment.startAlong + t * length;
    hit.distance = std::hypot(x - hit.point.x(), y - hit.point.y());
    const double cross = hit.direction.x() * offset.y() - hit.direction.y() * offset.x();
    hit.side = cross < 0.0 ? -hit.distance : hit.distance;
    return hit;
}

PathHits PathNetwork::near(double x, double y) const {
    PathHits hits;
    const int cellX = cellOf(x, m_cellsPerSide);
    const int cellY = cellOf(y, m_cellsPerSide);
    for (const Segment& segment : m_cells[cellIndex(cellX, cellY)]) {
        const PathHit hit = project(segment, x, y);
        if (hit.distance > kReach) {
            continue;
        }
        std::size_t slot = 0;
        while (slot < hits.count && hits.items[slot].path != hit.path) {
            ++slot;
        }
        if (slot == hits.count) {
            if (hits.count == PathHits::kCapacity) {
                continue;
            }
            hits.items[hits.count++] = hit;
        } else if (hit.distance < hits.items[slot].distance) {
            hits.items[slot] = hit;
        }
    }
    return hits;
}

PathHit PathNetwork::nearest(double x, double y) const {
    const PathHits hits = near(x, y);
    PathHit best;
    double bestEdge = 1e9;
    for (std::size_t i = 0; i < hits.count; ++i) {
        const double edge = hits.items[i].distance - path(hits.items[i].path).halfWidth;
        if (edge < bestEdge) {
            bestEdge = edge;
            best = hits.items[i];
        }
    }
    return best;
}

std::vector<osg::Vec3d> smoothCurve(const std::vector<osg::Vec2d>& controls, double spacing) {
    std::vector<osg::Vec3d> points;
    const std::size_t count = controls.size();
    for (std::size_t i = 0; i + 1 < count; ++i) {
        const std::array<osg::Vec2d, 4> p = {controls[i == 0 ? 0 : i - 1], controls[i],
                                             controls[i + 1], controls[std::min(i + 2, count - 1)]};
        const double length = (p[2] - p[1]).length();
        const int steps = std::max(1, static_cast<int>(std::lround(length / spacing)));
        for (int k = 0; k < steps; ++k) {
            const osg::Vec2d q = curvePoint(p, static_cast<double>(k) / steps);
            points.emplace_back(q.x(), q.y(), 0.0);
        }
    }
    points.emplace_back(controls.back().x(), controls.back().y(), 0.0);
    return points;
}

} // namespace samples
