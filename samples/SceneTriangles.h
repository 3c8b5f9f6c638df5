// Finds the first triangle that a ray meets.
#pragma once

#include "Mesh.h"

#include <osg/BoundingBox>

#include <vector>

namespace samples {

/// A triangle of the scanned scene.
struct SceneTriangle {
    std::array<osg::Vec3d, 3> corners;
    std::array<osg::Vec2d, 3> uv;
    Surface surface = Surface::Ground;
};

/// Where a ray ends.
struct RayHit {
    bool found = false;
    double range = 0.0;
    osg::Vec2d uv;
    osg::Vec3d normal;
    Surface surface = Surface::Ground;
};

/// The triangles that a scanner stands among, in a binary tree of boxes.
class SceneTriangles {
public:
    explicit SceneTriangles(std::vector<SceneTriangle> triangles);
    /// @param direction  of unit length
    RayHit firstHit(const osg::Vec3d& origin, const osg::Vec3d& direction, double maxRange) const;

private:
    struct Node {
        osg::BoundingBoxd box;
        std::size_t first = 0; ///< triangle, or left child of an inner node
        std::size_t count = 0; ///< 0 for an inner node
    };

    void split(std::size_t nodeIndex, std::size_t first, std::size_t count);

    std::vector<SceneTriangle> m_triangles;
    std::vector<Node> m_nodes;
};

} // namespace samples
