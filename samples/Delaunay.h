// Incremental Delaunay triangulation on an integer grid, where all tests are exact.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace samples {

/// A point in grid units. Coordinates up to 2^14 keep every predicate inside 64 bits.
struct GridPoint {
    std::int64_t x = 0;
    std::int64_t y = 0;
};

/// Delaunay triangulation of points inside a square, starting from its four corners.
class Delaunay {
public:
    struct Triangle {
        std::array<int, 3> vertex = {-1, -1, -1};   ///< counter-clockwise
        std::array<int, 3> neighbor = {-1, -1, -1}; ///< opposite to the vertex, -1 outside
        bool alive = true;
    };

    /// @param side  length of the square in grid units
    explicit Delaunay(std::int64_t side);

    /// Adds a point inside the square; returns its vertex, an existing one for a duplicate.
    int insert(const GridPoint& point);
    /// The triangle that contains @p point. Fast when the last call asked for a place nearby.
    int locate(const GridPoint& point);

    const Triangle& triangle(int index) const {
        return m_triangles[static_cast<std::size_t>(index)];
    }
    const GridPoint& point(int vertex) const { return m_points[static_cast<std::size_t>(vertex)]; }
    const std::vector<GridPoint>& points() const { return m_points; }
    /// All triangles, including dead ones.
    const std::vector<Triangle>& triangles() const { return m_triangles; }

private:
    struct Edge {
        int from;
        int to;
        int outside;
    };

    int duplicateIn(const Triangle& triangle, const GridPoint& point) const;
    bool circleContains(const Triangle& triangle, const GridPoint& point) const;
    void carve(int start, const GridPoint& point);
    void fill(int vertex);
    int newTriangle(const Triangle& triangle);

    std::vector<GridPoint> m_points;
    std::vector<Triangle> m_triangles;
    std::vector<int> m_free;
    int m_last = 0;
    // Scratch space of insert(): the hole that the new point sees, and its rim.
    std::vector<int> m_hole;
    std::vector<Edge> m_rim;
    std::vector<int> m_startingAt;
    std::vector<int> m_endingAt;
};

} // namespace samples
