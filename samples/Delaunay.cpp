#include "Delaunay.h"

#include <algorithm>

namespace samples {

namespace {

/// Twice the signed area of a, b, c; positive when they run counter-clockwise.
std::int64_t orientation(const GridPoint& a, const GridPoint& b, const GridPoint& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

std::size_t next(std::size_t corner) {
    return (corner + 1) % 3;
}

std::size_t previous(std::size_t corner) {
    return (corner + 2) % 3;
}

} // namespace

Delaunay::Delaunay(std::int64_t side) {
    m_points = {{0, 0}, {side, 0}, {side, side}, {0, side}};
    Triangle lower;
    lower.vertex = {0, 1, 2};
    lower.neighbor = {-1, 1, -1};
    Triangle upper;
    upper.vertex = {0, 2, 3};
    upper.neighbor = {-1, -1, 0};
    m_triangles = {lower, upper};
    m_startingAt.assign(m_points.size(), -1);
    m_endingAt.assign(m_points.size(), -1);
}

int Delaunay::locate(const GridPoint& point) {
    int current = m_last;
    for (;;) {
        const Triangle& t = m_triangles[at(current)];
        int ahead = -1;
        for (std::size_t i = 0; i < 3; ++i) {
            const GridPoint& a = m_points[at(t.vertex[next(i)])];
            const GridPoint& b = m_points[at(t.vertex[previous(i)])];
            if (t.neighbor[i] >= 0 && orientation(a, b, point) < 0) {
                ahead = t.neighbor[i];
                break;
            }
        }
        if (ahead < 0) {
            m_last = current;
            return current;
        }
        current = ahead;
    }
}

int Delaunay::duplicateIn(const Triangle& triangle, const GridPoint& point) const {
    for (const int vertex : triangle.vertex) {
        const GridPoint& p = m_points[at(vertex)];
        if (p.x == point.x && p.y == point.y) {
            return vertex;
        }
    }
    return -1;
}

bool Delaunay::circleContains(const Triangle& triangle, const GridPoint& point) const {
    std::array<std::int64_t, 3> dx{};
    std::array<std::int64_t, 3> dy{};
    std::array<std::int64_t, 3> lift{};
    for (std::size_t i = 0; i < 3; ++i) {
        const GridPoint& p = m_points[at(triangle.vertex[i])];
        dx[i] = p.x - point.x;
        dy[i] = p.y - point.y;
        lift[i] = dx[i] * dx[i] + dy[i] * dy[i];
    }
    return lift[0] * (dx[1] * dy[2] - dx[2] * dy[1]) + lift[1] * (dx[2] * dy[0] - dx[0] * dy[2]) +
               lift[2] * (dx[0] * dy[1] - dx[1] * dy[0]) >
           0;
}

void Delaunay::carve(int start, const GridPoint& point) {
    m_hole.assign(1, start);
    m_rim.clear();
    m_triangles[at(start)].alive = false;
    for (std::size_t k = 0; k < m_hole.size(); ++k) {
        const Triangle t = m_triangles[at(m_hole[k])];
        for (std::size_t i = 0; i < 3; ++i) {
            const int across = t.neighbor[i];
            if (across >= 0) {
                Triangle& other = m_triangles[at(across)];
                if (other.alive && circleContains(other, point)) {
                    other.alive = false;
                    m_hole.push_back(across);
                }
            }
        }
    }
    for (const int dead : m_hole) {
        const Triangle& t = m_triangles[at(dead)];
        for (std::size_t i = 0; i < 3; ++i) {
            const int across = t.neighbor[i];
            if (across < 0 || m_triangles[at(across)].alive) {
                m_rim.push_back({t.vertex[next(i)], t.vertex[previous(i)], across});
            }
        }
    }
}

int Delaunay::newTriangle(const Triangle& triangle) {
    if (m_free.empty()) {
        m_triangles.push_back(triangle);
        return static_cast<int>(m_triangles.size()) - 1;
    }
    const int index = m_free.back();
    m_free.pop_back();
    m_triangles[at(index)] = triangle;
    return index;
}

void Delaunay::fill(int vertex) {
    const GridPoint point = m_points[at(vertex)];
    m_free.insert(m_free.end(), m_hole.begin(), m_hole.end());
    std::vector<int> created;
    for (const Edge& edge : m_rim) {
        // A rim edge in line with the point lies on the border of the square.
        if (orientation(m_points[at(edge.from)], m_points[at(edge.to)], point) == 0) {
            continue;
        }
        Triangle t;
        t.vertex = {edge.from, edge.to, vertex};
        t.neighbor = {-1, -1, edge.outside};
        const int index = newTriangle(t);
        created.push_back(index);
        m_startingAt[at(edge.from)] = index;
        m_endingAt[at(edge.to)] = index;
        if (edge.outside >= 0) {
            Triangle& outside = m_triangles[at(edge.outside)];
            for (std::size_t i = 0; i < 3; ++i) {
                if (outside.vertex[next(i)] == edge.to &&
                    outside.vertex[previous(i)] == edge.from) {
                    outside.neighbor[i] = index;
                }
            }
        }
    }
    for (const int index : created) {
        Triangle& t = m_triangles[at(index)];
        t.neighbor[0] = m_startingAt[at(t.vertex[1])];
        t.neighbor[1] = m_endingAt[at(t.vertex[0])];
    }
    for (const Edge& edge : m_rim) {
        m_startingAt[at(edge.from)] = -1;
        m_endingAt[at(edge.to)] = -1;
    }
    m_last = created.front();
}

int Delaunay::insert(const GridPoint& point) {
    const int start = locate(point);
    const int existing = duplicateIn(m_triangles[at(start)], point);
    if (existing >= 0) {
        return existing;
    }
    const int vertex = static_cast<int>(m_points.size());
    m_points.push_back(point);
    m_startingAt.push_back(-1);
    m_endingAt.push_back(-1);
    carve(start, point);
    fill(vertex);
    return vertex;
}

} // namespace samples
