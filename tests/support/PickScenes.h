#pragma once

#include "measure/PickRay.h"
#include "measure/TriangleTest.h"

#include <osg/Geometry>
#include <osg/Node>
#include <osg/Vec3>
#include <osg/Vec3d>
#include <osg/ref_ptr>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace orbisk::test {

/// Numbers by chance, the same from the same seed.
class Random {
public:
    explicit Random(unsigned int seed) : m_engine(seed) {}

    /// Even between the two.
    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }

    /// Even in the logarithm.
    double scale(double low, double high) {
        return std::exp(between(std::log(low), std::log(high)));
    }

    /// From 0 to `count` - 1.
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_engine); }

    /// Whether something happens that happens in this part of all cases.
    bool chance(double part) { return between(0, 1) < part; }

    /// In the cube around the origin that is twice as wide.
    osg::Vec3d inCube(double half) {
        return {between(-half, half), between(-half, half), between(-half, half)};
    }

    /// Of length one.
    osg::Vec3d direction() {
        osg::Vec3d vector;
        do
            vector = inCube(1);
        while (vector.length2() > 1 || vector.length2() < 1e-4);
        vector.normalize();
        return vector;
    }

private:
    std::mt19937 m_engine;
};

/// A model, and points on and near it to aim at.
struct Scene {
    osg::ref_ptr<osg::Node> model;
    std::vector<Triangle> targets;
};

/// Puts the corners of one more triangle to those of others.
using AddTriangle = std::function<void(std::vector<osg::Vec3d>&)>;

/// A model of two geometries of separate triangles, in single or double precision.
Scene soupScene(Random& random, const AddTriangle& addTriangle, int count = 180);

/// Triangles of any shape in a cube, with sides between these, more or less.
Scene soup(Random& random, double smallest, double largest);

/// Right-angled triangles, one leg along an axis, the other askew between the other two.
Scene plates(Random& random);

/// One of these.
void addPlate(Random& random, std::vector<osg::Vec3d>& points);

/// The triangles that these points make, three each.
std::vector<Triangle> trianglesOf(const std::vector<osg::Vec3d>& points);

/// Nowhere, or as far from there as national grids are.
osg::Vec3d worldOffset(Random& random);

/// One of a scene's targets.
const Triangle& anyTarget(Random& random, const Scene& scene);

/// A corner, a point on an edge, or one inside or just outside.
osg::Vec3d pointOn(Random& random, const Triangle& triangle);

/// From near or far, along an axis or not, onto the model.
PickRay anyRay(Random& random, const Scene& scene);

/// Almost in the plane of a triangle, with a determinant around the limit, about a corner.
PickRay grazingRay(Random& random, const Scene& scene);

/// One or the other.
PickRay anyOrGrazingRay(Random& random, const Scene& scene);

} // namespace orbisk::test
