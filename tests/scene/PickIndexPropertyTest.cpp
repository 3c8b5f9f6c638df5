// Random scenes and rays: what the index finds has the same bits as what the walk finds.

#include "measure/IndexedVisitor.h"
#include "measure/PickIndex.h"
#include "measure/TriangleTest.h"
#include "support/PickTools.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/MatrixTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <utility>

namespace orbisk::test {

namespace {

constexpr int raysPerScene = 500;
constexpr int scenes = 18;

class Random {
public:
    explicit Random(unsigned int seed) : m_engine(seed) {}

    double between(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }

    /// Even in the logarithm.
    double scale(double low, double high) {
        return std::exp(between(std::log(low), std::log(high)));
    }

    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_engine); }

    bool chance(double part) { return between(0, 1) < part; }

    osg::Vec3d inCube(double half) {
        return {between(-half, half), between(-half, half), between(-half, half)};
    }

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

using MakeScene = std::function<Scene(Random&)>;
using MakeRay = std::function<PickRay(Random&, const Scene&)>;

std::vector<osg::Vec3> asFloats(const std::vector<osg::Vec3d>& points) {
    return {points.begin(), points.end()};
}

osg::ref_ptr<osg::Geometry> soupGeometry(Random& random, const std::vector<osg::Vec3d>& points) {
    const int count = static_cast<int>(points.size());
    if (random.chance(0.3))
        return makeDoubleGeometry(points, new osg::DrawArrays(GL_TRIANGLES, 0, count));
    return makeGeometry(asFloats(points), new osg::DrawArrays(GL_TRIANGLES, 0, count));
}

/// The triangles of a model without transforms, as they are tested.
std::vector<Triangle> trianglesOf(const std::vector<osg::Vec3d>& points) {
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i + 2 < points.size(); i += 3)
        triangles.push_back({points[i], points[i + 1], points[i + 2]});
    return triangles;
}

Scene soupScene(Random& random, const std::function<void(std::vector<osg::Vec3d>&)>& addTriangle,
                int count = 180) {
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

/// A corner, a point on an edge, or one inside or just outside.
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

osg::Vec3d axis(Random& random) {
    osg::Vec3d direction;
    direction[random.below(3)] = random.chance(0.5) ? 1 : -1;
    return direction;
}

/// From near or far, along an axis or not, onto the model.
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

/// A barycentric coordinate about a corner, or somewhere around.
double aroundCorner(Random& random) {
    if (random.chance(0.3))
        return random.between(-1, 2);
    return random.below(2) + (random.chance(0.5) ? 1 : -1) * random.scale(1e-5, 0.3);
}

/// Almost in the plane of a triangle, with a determinant around the limit, about a corner.
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

struct Outcome {
    long rays = 0;
    long hits = 0;
    long trees = 0;
};

std::vector<osg::Vec3d> hitsWithIndex(osg::Node& model, const PickRay& ray, PickIndex& index) {
    IndexedVisitor visitor(ray, index);
    model.accept(visitor);
    return visitor.hits().all();
}

/// Compares the walk and the index on two equal scenes, for what is picked may change them.
void compareOnScene(const MakeScene& makeScene, const MakeRay& makeRay, unsigned int seed,
                    Outcome& outcome) {
    Random sceneRandom(seed);
    Random sameRandom(seed);
    const Scene walked = makeScene(sceneRandom);
    const Scene indexed = makeScene(sameRandom);
    PickIndex index;
    index.add(*indexed.model);
    index.finish();
    outcome.trees += static_cast<long>(index.treeCount());
    Random rays(seed + 1000);
    for (int i = 0; i < raysPerScene; ++i) {
        const PickRay ray = makeRay(rays, walked);
        const std::vector<osg::Vec3d> wanted = hitsOf(*walked.model, ray);
        const std::vector<osg::Vec3d> found = hitsWithIndex(*indexed.model, ray, index);
        ASSERT_TRUE(samePick(wanted, found))
            << "seed " << seed << ", ray " << i << ": " << wanted.size() << " hits, with the index "
            << found.size();
        ++outcome.rays;
        outcome.hits += wanted.empty() ? 0 : 1;
    }
}

void compare(const MakeScene& makeScene, const MakeRay& makeRay = anyOrGrazingRay) {
    Outcome outcome;
    for (unsigned int seed = 1; seed <= scenes; ++seed) {
        compareOnScene(makeScene, makeRay, seed, outcome);
        if (testing::Test::HasFatalFailure())
            return;
    }
    // The comparison is worth something only if there are trees, and if much is hit.
    EXPECT_GT(outcome.trees, 0);
    EXPECT_GT(outcome.hits, outcome.rays / 20);
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

/// A right-angled triangle, one leg along an axis, the other askew between the other two.
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

/// Whether the line of `ray` meets the box around a triangle, a little enlarged.
bool meetsBox(const PickRay& ray, const Triangle& triangle, double slack) {
    double begin = -std::numeric_limits<double>::infinity();
    double end = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 3; ++i) {
        const auto [low, high] = std::minmax({triangle.a[i], triangle.b[i], triangle.c[i]});
        const double one = (low - slack - ray.origin[i]) / ray.direction[i];
        const double other = (high + slack - ray.origin[i]) / ray.direction[i];
        begin = std::max(begin, std::min(one, other));
        end = std::min(end, std::max(one, other));
    }
    return begin <= end;
}

osg::ref_ptr<osg::Geometry> terrain(const osg::Vec3d& offset, double side, unsigned int cells) {
    std::vector<osg::Vec3> points;
    for (unsigned int j = 0; j <= cells; ++j)
        for (unsigned int i = 0; i <= cells; ++i) {
            const double x = side * i / cells;
            const double y = side * j / cells;
            points.emplace_back(offset + osg::Vec3d(x, y, 3 * std::sin(x / 7) * std::cos(y / 9)));
        }
    const osg::ref_ptr<osg::DrawElementsUShort> set = new osg::DrawElementsUShort(GL_TRIANGLES);
    for (unsigned int j = 0; j < cells; ++j)
        for (unsigned int i = 0; i < cells; ++i) {
            const unsigned int corner = j * (cells + 1) + i;
            for (const unsigned int step : {0u, 1u, cells + 2, 0u, cells + 2, cells + 1})
                set->push_back(static_cast<unsigned short>(corner + step));
        }
    return makeGeometry(points, set);
}

/// The triangles of a terrain before any transform.
std::vector<Triangle> terrainTriangles(const osg::Geometry& geometry) {
    const auto& points = dynamic_cast<const osg::Vec3Array&>(*geometry.getVertexArray());
    const osg::PrimitiveSet& set = *geometry.getPrimitiveSet(0);
    std::vector<Triangle> triangles;
    for (unsigned int i = 0; i + 2 < set.getNumIndices(); i += 3)
        triangles.push_back(
            {points[set.index(i)], points[set.index(i + 1)], points[set.index(i + 2)]});
    return triangles;
}

void transformTargets(Scene& scene, std::size_t begin, const osg::Matrixd& matrix) {
    for (std::size_t i = begin; i < scene.targets.size(); ++i)
        for (osg::Vec3d* corner : {&scene.targets[i].a, &scene.targets[i].b, &scene.targets[i].c})
            *corner = *corner * matrix;
}

osg::Matrixd anyMatrix(Random& random) {
    osg::Matrixd matrix = osg::Matrixd::rotate(random.between(0, 6), random.direction()) *
                          osg::Matrixd::translate(random.inCube(1000));
    if (random.chance(0.3))
        matrix = osg::Matrixd::scale(random.scale(0.3, 1.5), random.scale(0.3, 1.5),
                                     random.scale(0.3, 1.5)) *
                 matrix;
    if (random.chance(0.2))
        matrix.postMultTranslate(osg::Vec3d(5e5, 4e6, 0));
    if (random.chance(0.1))
        matrix(0, 3) = 1e-4;
    return matrix;
}

} // namespace

TEST(PickIndexPropertyTest, SoupOfTrianglesOfAllSizes) {
    compare([](Random& random) { return soup(random, 1e-4, 1e4); });
}

TEST(PickIndexPropertyTest, SoupOfUsualTriangles) {
    compare([](Random& random) { return soup(random, 0.5, 20); });
}

TEST(PickIndexPropertyTest, TinyTrianglesAroundTheLimitOfTheDeterminant) {
    compare([](Random& random) {
        return soupScene(random, [&](std::vector<osg::Vec3d>& points) {
            const osg::Vec3d corner = random.inCube(0.01);
            const double size = random.scale(1e-4, 1e-2);
            for (int i = 0; i < 3; ++i)
                points.push_back(corner + random.inCube(size));
        });
    });
}

TEST(PickIndexPropertyTest, DegenerateTrianglesAndSlivers) {
    compare([](Random& random) {
        const osg::Vec3d offset = worldOffset(random);
        return soupScene(random, [&](std::vector<osg::Vec3d>& points) {
            const osg::Vec3d a = offset + random.inCube(50);
            const osg::Vec3d along = random.direction() * random.scale(0.01, 1000);
            const double width = random.chance(0.3) ? 0 : random.scale(1e-12, 1);
            points.push_back(a);
            points.push_back(random.chance(0.1) ? a : a + along);
            points.push_back(a + along * random.between(-1, 2) + random.direction() * width);
        });
    });
}

TEST(PickIndexPropertyTest, StacksOfPlanesInOneAnother) {
    compare([](Random& random) {
        const osg::Vec3d offset = worldOffset(random);
        const osg::Vec3d side1 =
            random.chance(0.5) ? osg::Vec3d(10, 0, 0) : random.direction() * 10;
        const osg::Vec3d side2 =
            random.chance(0.5) ? osg::Vec3d(0, 10, 0) : random.direction() * 10;
        return soupScene(random, [&](std::vector<osg::Vec3d>& points) {
            const double lift = random.chance(0.5) ? 0 : random.scale(1e-16, 1e-9);
            const osg::Vec3d corner =
                offset + osg::Vec3d(0, 0, lift) + side1 * random.below(2) + side2 * random.below(2);
            const bool turned = random.chance(0.5);
            points.push_back(corner);
            points.push_back(corner + (turned ? side1 : side2));
            points.push_back(corner + (turned ? side2 : side1));
        });
    });
}

TEST(PickIndexPropertyTest, VerticesThatAreInfiniteHugeOrNoNumbers) {
    compare([](Random& random) {
        constexpr std::array<double, 8> odd{std::numeric_limits<double>::quiet_NaN(),
                                            std::numeric_limits<double>::quiet_NaN(),
                                            std::numeric_limits<double>::infinity(),
                                            -1e38,
                                            1e31,
                                            1e25,
                                            1e12,
                                            -1e9};
        const double value = odd[static_cast<std::size_t>(random.below(8))];
        const double part = random.scale(0.005, 0.5);
        return soupScene(random, [&](std::vector<osg::Vec3d>& points) {
            const osg::Vec3d corner = random.inCube(30);
            for (int i = 0; i < 3; ++i)
                points.push_back(corner + random.inCube(10));
            if (random.chance(part))
                points.back()[random.below(3)] = value;
        });
    });
}

TEST(PickIndexPropertyTest, TerrainWithSharedEdges) {
    compare([](Random& random) {
        Scene scene;
        const auto geometry = terrain(worldOffset(random), random.scale(1, 1000), 10);
        scene.targets = terrainTriangles(*geometry);
        scene.model = geometry;
        return scene;
    });
}

TEST(PickIndexPropertyTest, NestedTransforms) {
    compare([](Random& random) {
        Scene scene;
        const osg::ref_ptr<osg::Group> model = new osg::Group;
        osg::ref_ptr<osg::Group> parent = model;
        osg::Matrixd inForce;
        for (int i = 0; i < 4; ++i) {
            if (random.chance(0.7)) {
                const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
                inForce = random.chance(0.1) ? osg::Matrixd() : anyMatrix(random);
                transform->setMatrix(inForce);
                parent->addChild(transform);
                parent = random.chance(0.5) ? osg::ref_ptr<osg::Group>(transform) : model;
            }
            const auto geometry = terrain({}, 60, 12);
            const std::vector<Triangle> triangles = terrainTriangles(*geometry);
            const std::size_t begin = scene.targets.size();
            scene.targets.insert(scene.targets.end(), triangles.begin(), triangles.end());
            transformTargets(scene, begin, inForce);
            parent->addChild(geometry);
        }
        scene.model = model;
        return scene;
    });
}

TEST(PickIndexPropertyTest, OneGeometryInManyPlaces) {
    compare([](Random& random) {
        Scene scene;
        const osg::ref_ptr<osg::Group> model = new osg::Group;
        const auto geometry = terrain({}, 60, 10);
        for (int i = 0; i < 17; ++i) {
            const osg::Matrixd matrix = osg::Matrixd::translate(random.inCube(60));
            const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(matrix);
            transform->addChild(geometry);
            model->addChild(transform);
            const std::vector<Triangle> triangles = terrainTriangles(*geometry);
            const std::size_t begin = scene.targets.size();
            scene.targets.insert(scene.targets.end(), triangles.begin(), triangles.end());
            transformTargets(scene, begin, matrix);
        }
        scene.model = model;
        return scene;
    });
}

TEST(PickIndexPropertyTest, StripsFansAndListsInOneGeometry) {
    compare([](Random& random) {
        std::vector<osg::Vec3> points;
        const osg::Vec3d offset = worldOffset(random);
        for (int i = 0; i < 300; ++i)
            points.emplace_back(offset + random.inCube(40));
        const osg::ref_ptr<osg::Geometry> geometry =
            makeGeometry(points, new osg::DrawArrays(GL_QUADS, 0, 40));
        Scene scene;
        for (const GLenum mode : {GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN, GL_TRIANGLES, GL_POLYGON}) {
            geometry->addPrimitiveSet(new osg::DrawArrays(mode, random.below(100), 33));
            const osg::ref_ptr<osg::DrawElementsUInt> bytes = new osg::DrawElementsUInt(mode);
            for (int i = 0; i < 36; ++i)
                bytes->push_back(static_cast<unsigned int>(random.below(300)));
            geometry->addPrimitiveSet(bytes);
        }
        for (std::size_t i = 0; i + 2 < points.size(); ++i)
            scene.targets.push_back({points[i], points[i + 1], points[i + 2]});
        scene.model = geometry;
        return scene;
    });
}

TEST(PickIndexPropertyTest, DoubleVerticesUnderTransformsAreOverwrittenAlike) {
    const MakeScene make = [](Random& random) {
        Scene scene;
        const osg::ref_ptr<osg::Group> model = new osg::Group;
        osg::ref_ptr<osg::Geometry> shared;
        for (int i = 0; i < 4; ++i) {
            std::vector<osg::Vec3d> points;
            for (int k = 0; k < 300; ++k)
                points.push_back(random.inCube(40));
            const auto geometry =
                makeDoubleGeometry(points, new osg::DrawArrays(GL_TRIANGLES, 0, 300));
            // Some share their vertices with one that stands elsewhere.
            if (shared && random.chance(0.3))
                geometry->setVertexArray(shared->getVertexArray());
            shared = geometry;
            const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
            if (random.chance(0.4))
                transform->setMatrix(
                    osg::Matrixd::rotate(random.between(-0.01, 0.01), random.direction()));
            transform->addChild(geometry);
            model->addChild(transform);
            const std::vector<Triangle> triangles = trianglesOf(points);
            scene.targets.insert(scene.targets.end(), triangles.begin(), triangles.end());
        }
        scene.model = model;
        return scene;
    };
    compare(make);
}

TEST(PickIndexPropertyTest, RaysThatTheTreesDoNotServe) {
    compare([](Random& random) { return soup(random, 0.5, 20); },
            [](Random& random, const Scene& scene) {
                PickRay ray = anyRay(random, scene);
                switch (random.below(4)) {
                case 0:
                    ray.direction *= random.scale(0.01, 100);
                    break;
                case 1:
                    ray.direction *= 1 + random.between(-1e-9, 1e-9);
                    break;
                case 2:
                    ray.origin[random.below(3)] = 1e31;
                    break;
                default:
                    ray.direction[random.below(3)] *= 1e-300;
                    ray.direction.normalize();
                    break;
                }
                return ray;
            });
}

TEST(PickIndexPropertyTest, ErrorsAreThrownAlike) {
    for (unsigned int seed = 1; seed <= scenes; ++seed) {
        Random random(seed);
        const auto geometry = terrain({}, 30, 12);
        auto& set = dynamic_cast<osg::DrawElementsUShort&>(*geometry->getPrimitiveSet(0));
        if (random.chance(0.5))
            set.pop_back();
        else
            set[static_cast<std::size_t>(random.below(static_cast<int>(set.size())))] = 9999;
        geometry->setInitialBound(osg::BoundingBox(0, 0, -3, 30, 30, 3));
        geometry->setComputeBoundingBoxCallback(new osg::Drawable::ComputeBoundingBoxCallback);
        PickIndex index;
        index.add(*geometry);
        index.finish();
        EXPECT_EQ(index.treeCount(), 0u);
        EXPECT_THROW(hitsOf(*geometry, rayDown(15, 15)), std::out_of_range);
        EXPECT_THROW(hitsWithIndex(*geometry, rayDown(15, 15), index), std::out_of_range);
        EXPECT_TRUE(hitsWithIndex(*geometry, rayDown(90, 15), index).empty());
    }
}

TEST(PickIndexPropertyTest, GrazingRaysOverRightAngledTriangles) {
    compare(plates, grazingRay);
}

TEST(PickIndexPropertyTest, RoundingLetsRaysThroughThatPassTheTrianglesBox) {
    // The premise of the padding: the rays above do that, and by more than the box's own rounding.
    Random random(1);
    long outside = 0;
    for (int i = 0; i < 100000; ++i) {
        Scene scene;
        std::vector<osg::Vec3d> points;
        addPlate(random, points);
        scene.targets = trianglesOf(points);
        const PickRay ray = grazingRay(random, scene);
        if (intersect(ray, scene.targets.front()) &&
            !meetsBox(ray, scene.targets.front(), 1e-4 * (points[1] - points[0]).length()))
            ++outside;
    }
    EXPECT_GT(outside, 10);
}

} // namespace orbisk::test
