#pragma once

#include <osg/Vec3d>

#include <cstddef>
#include <vector>

namespace orbisk {

/// Points in an array that grows at both ends. Takes no memory while it is empty.
class HitArray {
public:
    bool empty() const { return m_before.empty() && m_after.empty(); }
    std::size_t size() const { return m_before.size() + m_after.size(); }

    /// The point at a place that there is.
    const osg::Vec3d& operator[](std::size_t place) const {
        return place < m_before.size() ? m_before[m_before.size() - 1 - place]
                                       : m_after[place - m_before.size()];
    }

    /// The first of those that there must be.
    const osg::Vec3d& front() const { return (*this)[0]; }

    /// All of them in their order.
    std::vector<osg::Vec3d> all() const {
        std::vector<osg::Vec3d> points(m_before.rbegin(), m_before.rend());
        points.insert(points.end(), m_after.begin(), m_after.end());
        return points;
    }

    void addFront(const osg::Vec3d& point) { m_before.push_back(point); }
    void addBack(const osg::Vec3d& point) { m_after.push_back(point); }

private:
    std::vector<osg::Vec3d> m_before; ///< backwards
    std::vector<osg::Vec3d> m_after;
};

} // namespace orbisk
