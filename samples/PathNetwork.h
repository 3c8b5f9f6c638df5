// Roads and rivers: polylines with widths and heights that answer nearest-point queries.
#pragma once

#include <osg/Vec2d>
#include <osg/Vec3d>

#include <array>
#include <vector>

namespace samples {

/// What a path looks like on the ground.
enum class PathKind { MainRoad, Street, Track, River };

/// One road or river axis.
struct Path {
    PathKind kind = PathKind::Track;
    double halfWidth = 1.0;
    bool hasHouses = false;
    std::vector<osg::Vec3d> points;
};

/// The place of a path nearest to a queried point.
struct PathHit {
    int path = -1;
    double distance = 0.0;
    double along = 0.0; ///< distance from the start of the path
    double side = 0.0;  ///< signed distance, positive to the left
    osg::Vec3d point;
    osg::Vec2d direction;
};

/// At most one hit for each path in reach, in no particular order.
struct PathHits {
    static constexpr std::size_t kCapacity = 6;
    std::array<PathHit, kCapacity> items;
    std::size_t count = 0;
};

/// A spatial index over paths inside a square area.
class PathNetwork {
public:
    /// Distances beyond this are not found.
    static constexpr double kReach = 26.0;

    explicit PathNetwork(double extent);

    int add(const Path& path);
    const Path& path(int index) const { return m_paths[static_cast<std::size_t>(index)]; }
    const std::vector<Path>& paths() const { return m_paths; }

    /// The nearest place of every path in reach.
    PathHits near(double x, double y) const;
    /// The hit whose edge is nearest (path < 0 when nothing is in reach).
    PathHit nearest(double x, double y) const;

private:
    struct Segment {
        int path = 0;
        std::size_t first = 0;
        double startAlong = 0.0;
    };

    std::size_t cellIndex(int column, int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_cellsPerSide) +
               static_cast<std::size_t>(column);
    }
    void addToCells(const Segment& segment);
    PathHit project(const Segment& segment, double x, double y) const;

    int m_cellsPerSide;
    std::vector<Path> m_paths;
    std::vector<std::vector<Segment>> m_cells;
};

/// A smooth curve through @p controls, sampled about every @p spacing metres (heights stay 0).
std::vector<osg::Vec3d> smoothCurve(const std::vector<osg::Vec2d>& controls, double spacing);

} // namespace samples
