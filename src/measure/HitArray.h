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

    /// The first of those that there must be.
    const osg::Vec3d& front() const { return m_before.empty() ? m_after.front() : m_before.back(); }

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
