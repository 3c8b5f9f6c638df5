// Random scenes and rays: what the index finds has the same bits as what the walk finds.

#include "measure/PickIndex.h"
#include "measure/TriangleTest.h"
#include "support/PickComparison.h"
#include "support/PickScenes.h"
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

/// Scenes of those tests that do not leave it to `expectSamePicks`.
constexpr unsigned int scenes = 18;

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
    expectSamePicks([](Random& random) { return soup(random, 1e-4, 1e4); });
}

TEST(PickIndexPropertyTest, SoupOfUsualTriangles) {
    expectSamePicks([](Random& random) { return soup(random, 0.5, 20); });
}

TEST(PickIndexPropertyTest, TinyTrianglesAroundTheLimitOfTheDeterminant) {
    expectSamePicks([](Random& random) {
        return soupScene(random, [&](std::vector<osg::Vec3d>& points) {
            const osg::Vec3d corner = random.inCube(0.01);
            const double size = random.scale(1e-4, 1e-2);
            for (int i = 0; i < 3; ++i)
                points.push_back(corner + random.inCube(size));
        });
    });
}

TEST(PickIndexPropertyTest, DegenerateTrianglesAndSlivers) {
    expectSamePicks([](Random& random) {
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
    expectSamePicks([](Random& random) {
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
    expectSamePicks([](Random& random) {
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
    expectSamePicks([](Random& random) {
        Scene scene;
        const auto geometry = terrain(worldOffset(random), random.scale(1, 1000), 10);
        scene.targets = terrainTriangles(*geometry);
        scene.model = geometry;
        return scene;
    });
}

TEST(PickIndexPropertyTest, NestedTransforms) {
    expectSamePicks([](Random& random) {
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
    expectSamePicks([](Random& random) {
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
    expectSamePicks([](Random& random) {
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
    expectSamePicks(make);
}

TEST(PickIndexPropertyTest, RaysThatTheTreesDoNotServe) {
    expectSamePicks([](Random& random) { return soup(random, 0.5, 20); },
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
        EXPECT_THROW(indexedHitsOf(*geometry, rayDown(15, 15), index), std::out_of_range);
        EXPECT_TRUE(indexedHitsOf(*geometry, rayDown(90, 15), index).empty());
    }
}

TEST(PickIndexPropertyTest, GrazingRaysOverRightAngledTriangles) {
    expectSamePicks(plates, grazingRay);
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
