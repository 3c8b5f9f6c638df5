#include "support/PickScenes.h"

#include "support/PickTools.h"

#include <osg/Group>

namespace orbisk::test {

namespace {

std::vector<osg::Vec3> asFloats(const std::vector<osg::Vec3d>& points) {
    return {points.begin(), points.end()};
}

osg::ref_ptr<osg::Geometry> soupGeometry(Random& random, const std::vector<osg::Vec3d>& points) {
    const int count = static_cast<int>(points.size());
    if (random.chance(0.3))
        return makeDoubleGeometry(points, new osg::DrawArrays(GL_TRIANGLES, 0, count));
    return makeGeometry(asFloats(points), new osg::DrawArrays(GL_TRIANGLES, 0, count));
}

osg::Vec3d axis(Random& random) {
    osg::Vec3d direction;
    direction[random.below(3)] = random.chance(0.5) ? 1 : -1;
    return direction;
}

/// A barycentric coordinate about a corner, or somewhere around.
double aroundCorner(Random& random) {
    if (random.chance(0.3))
        return random.between(-1, 2);
    return random.below(2) + (random.chance(0.5) ? 1 : -1) * random.scale(1e-5, 0.3);
}

} // namespace

std::vector<Triangle> trianglesOf(const std::vector<osg::Vec3d>& points) {
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i + 2 < points.size(); i += 3)
        triangles.push_back({points[i], points[i + 1], points[i + 2]});
    return triangles;
}

Scene soupScene(Random& random, const AddTriangle& addTriangle, int count) {
    Scene scene;
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int part = 0; part < 2; ++part) {
        std::vector<osg::Vec3d> points;
        for (int i = 0; i < count / 2; ++i)
            addTriangle(points);
        model->addChild(soupGeometry(random, points));
        const std::vector<Triangle> triangles = trianglesOf(points);
        scene.targets.insert(scene.targets.end(), triangles.begin(), triangles.end());
    }
    scene.model = model;
    return scene;
}

osg::Vec3d worldOffset(Random& random) {
    return random.chance(0.5) ? osg::Vec3d() : osg::Vec3d(5e5, 4e6, 100);
}

const Triangle& anyTarget(Random& random, const Scene& scene) {
    return scene
        .targets[static_cast<std::size_t>(random.below(static_cast<int>(scene.targets.size())))];
}

osg::Vec3d pointOn(Random& random, const Triangle& triangle) {
    double u = random.between(-0.1, 1.0);
    double v = random.between(-0.1, 1.0);
    switch (random.below(4)) {
    case 0:
        return triangle.b;
    case 1:
        u = 0;
        break;
    case 2:
        v = 1 - u;
        break;
    default:
        break;
    }
    return triangle.a + (triangle.b - triangle.a) * u + (triangle.c - triangle.a) * v;
}

PickRay anyRay(Random& random, const Scene& scene) {
    const osg::Vec3d target = pointOn(random, anyTarget(random, scene));
    const double distance = random.scale(0.01, 1e5);
    osg::Vec3d direction = random.chance(0.25) ? axis(random) : random.direction();
    const osg::Vec3d origin = target - direction * distance;
    if (random.chance(0.5)) {
        direction = target - origin;
        direction.normalize();
    }
    return {origin, direction};
}

PickRay grazingRay(Random& random, const Scene& scene) {
    const Triangle& triangle = anyTarget(random, scene);
    const osg::Vec3d edge1 = triangle.b - triangle.a;
    const osg::Vec3d edge2 = triangle.c - triangle.a;
    const osg::Vec3d normal = edge1 ^ edge2;
    osg::Vec3d direction = edge1 * random.between(-1, 1) + edge2 * random.between(-1, 1);
    if (direction.normalize() == 0 || normal.length2() == 0)
        return anyRay(random, scene);
    direction += normal * (random.scale(0.9e-7, 1e-6) / normal.length2());
    direction.normalize();
    const double distance = random.scale(100, 1e7);
    const osg::Vec3d target =
        triangle.a + edge1 * aroundCorner(random) + edge2 * aroundCorner(random);
    return {target - direction * distance, direction};
}

PickRay anyOrGrazingRay(Random& random, const Scene& scene) {
    return random.chance(0.3) ? grazingRay(random, scene) : anyRay(random, scene);
}

Scene soup(Random& random, double smallest, double largest) {
    const osg::Vec3d offset = worldOffset(random);
    return soupScene(random, [&](std::vector<osg::Vec3d>& points) {
        const osg::Vec3d corner = offset + random.inCube(100);
        const double size = random.scale(smallest, largest);
        for (int i = 0; i < 3; ++i)
            points.push_back(corner + random.inCube(size));
    });
}

void addPlate(Random& random, std::vector<osg::Vec3d>& points) {
    const int first = random.below(3);
    const double size = random.scale(1, 300);
    const double angle = random.between(0, 6.28);
    const osg::Vec3d corner = random.inCube(1000);
    for (int i = 0; i < 3; ++i)
        points.push_back(corner);
    points[points.size() - 2][first] += size;
    points[points.size() - 1][(first + 1) % 3] += size * std::cos(angle);
    points[points.size() - 1][(first + 2) % 3] += size * std::sin(angle);
}

Scene plates(Random& random) {
    return soupScene(random, [&](std::vector<osg::Vec3d>& points) { addPlate(random, points); });
}

} // namespace orbisk::test
