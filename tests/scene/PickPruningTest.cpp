// What a pick leaves out because it lies too far changes nothing, however close a call it is.

#include "support/PickComparison.h"
#include "support/PickScenes.h"
#include "support/PickTools.h"

#include <gtest/gtest.h>
#include <osg/Group>
#include <osg/MatrixTransform>

#include <algorithm>
#include <vector>

namespace orbisk::test {

namespace {

constexpr int platesPerStack = 100;

/// A right-angled triangle that is met by whatever passes its corner at (0, 0, height) closely.
void addLayer(std::vector<osg::Vec3d>& points, const osg::Vec3d& middle, double half) {
    points.push_back(middle + osg::Vec3d(-half, -half, 0));
    points.push_back(middle + osg::Vec3d(3 * half, -half, 0));
    points.push_back(middle + osg::Vec3d(-half, 3 * half, 0));
}

/// Half a layer's smaller width, where it does not matter.
constexpr double usualHalf = 10.0;

/// Layers over each other in a random order, in double precision, their distances from the first
/// between these; some of them twice.
osg::ref_ptr<osg::Geometry> stack(Random& random, const osg::Vec3d& middle, double closest,
                                  double farthest, double half = usualHalf) {
    std::vector<osg::Vec3d> points;
    osg::Vec3d lift;
    for (int i = 0; i < platesPerStack; ++i) {
        if (random.chance(0.8))
            lift.z() = (random.chance(0.5) ? 1 : -1) * random.scale(closest, farthest);
        addLayer(points, middle + lift, half);
    }
    return makeDoubleGeometry(
        points, new osg::DrawArrays(GL_TRIANGLES, 0, static_cast<int>(points.size())));
}

Scene sceneOf(const osg::ref_ptr<osg::Geometry>& stack, const osg::Vec3d& middle,
              double half = usualHalf) {
    std::vector<osg::Vec3d> target;
    addLayer(target, middle, half);
    return {stack, trianglesOf(target)};
}

Scene stackScene(Random& random, double closest, double farthest) {
    const osg::Vec3d middle = worldOffset(random);
    return sceneOf(stack(random, middle, closest, farthest), middle);
}

/// Onto a layer's inside, from not too near.
PickRay rayOntoLayer(Random& random, const Scene& scene) {
    const Triangle& layer = scene.targets.front();
    const osg::Vec3d target = layer.a + (layer.b - layer.a) * random.between(0.1, 0.4) +
                              (layer.c - layer.a) * random.between(0.1, 0.4);
    osg::Vec3d direction = random.chance(0.3) ? osg::Vec3d(0, 0, -1) : random.direction();
    return {target - direction * random.scale(1, 1e4), direction};
}

/// Between the layers: some are behind.
PickRay rayWithinStack(Random& random, const Scene& scene) {
    PickRay ray = rayOntoLayer(random, scene);
    const osg::Vec3d middle = scene.targets.front().a;
    ray.origin.z() = middle.z() + random.between(-3, 3);
    // The sphere lets through what looks at its middle.
    const osg::Vec3d towards = middle + osg::Vec3d(10, 10, 0) - ray.origin;
    if (ray.direction * towards < 0)
        ray.direction = -ray.direction;
    return ray;
}

/// How often the front of the walk depends on the order of the triangles.
long orderedPicks(const MakeScene& makeScene, const MakeRay& makeRay, unsigned int seed) {
    long count = 0;
    Random random(seed);
    Scene scene = makeScene(random);
    auto& geometry = dynamic_cast<osg::Geometry&>(*scene.model);
    auto& points = dynamic_cast<osg::Vec3dArray&>(*geometry.getVertexArray());
    const std::vector<osg::Vec3d> there(points.begin(), points.end());
    for (int i = 0; i < 500; ++i) {
        const PickRay ray = makeRay(random, scene);
        std::copy(there.begin(), there.end(), points.begin());
        const auto front = firstHit(*scene.model, ray);
        for (std::size_t k = 0; k + 2 < there.size(); k += 3)
            std::copy_n(there.end() - static_cast<std::ptrdiff_t>(k + 3), 3,
                        points.begin() + static_cast<std::ptrdiff_t>(k));
        const auto other = firstHit(*scene.model, ray);
        count += front && other && !sameBits(*front, *other) ? 1 : 0;
    }
    return count;
}

} // namespace

TEST(PickPruningTest, WhatLiesBehindTheFirstHitIsLeftOut) {
    const PickOutcome outcome =
        expectSamePicks([](Random& random) { return stackScene(random, 1e-3, 3); }, rayOntoLayer);
    EXPECT_GT(outcome.pruned, outcome.hits / 2);
}

TEST(PickPruningTest, HitsBehindTheEyeInAnyOrder) {
    const PickOutcome outcome =
        expectSamePicks([](Random& random) { return stackScene(random, 1e-3, 3); }, rayWithinStack);
    EXPECT_GT(outcome.behind, outcome.rays / 20);
    EXPECT_LT(outcome.behind, outcome.hits);
}

TEST(PickPruningTest, EyeInsideTheModel) {
    const PickOutcome outcome = expectSamePicks(
        [](Random& random) {
            Scene scene = soup(random, 20, 60);
            return scene;
        },
        [](Random& random, const Scene& scene) {
            PickRay ray{pointOn(random, anyTarget(random, scene)), random.direction()};
            const osg::Vec3d aim = pointOn(random, anyTarget(random, scene));
            return random.chance(0.8) ? rayBetween(ray.origin, aim) : ray;
        });
    EXPECT_GT(outcome.behind, outcome.rays / 20);
}

TEST(PickPruningTest, LayersWhoseOrderRoundingMistakes) {
    const MakeScene make = [](Random& random) { return stackScene(random, 1e-14, 1e-9); };
    long ordered = 0;
    for (unsigned int seed = 1; seed <= 10; ++seed)
        ordered += orderedPicks(make, rayOntoLayer, seed);
    EXPECT_GT(ordered, 100);
    expectSamePicks(make, rayOntoLayer);
}

TEST(PickPruningTest, LaddersOfLayersFromWithinRoundingToFarBeyond) {
    for (const double farthest : {1e-11, 1e-8, 1e-6}) {
        const MakeScene make = [farthest](Random& random) {
            return stackScene(random, farthest * 1e-4, farthest);
        };
        expectSamePicks(make, rayOntoLayer);
    }
}

TEST(PickPruningTest, LayersThatTheTreeTellsApartAndRoundingDoesNot) {
    // Small and far from the origin: what single precision rounds in a tree of that size is less
    // than what double precision rounds there.
    constexpr double half = 1e-2;
    const MakeScene make = [](Random& random) {
        const osg::Vec3d middle(1e11, -1e11, 0);
        const auto layers = stack(random, middle, 1e-6, 1e-4, half);
        // In single precision the sphere would lie elsewhere.
        const osg::Vec3 margin(1e5f, 1e5f, 1e5f);
        layers->setInitialBound(osg::BoundingBox(middle - margin, middle + margin));
        return sceneOf(layers, middle, half);
    };
    const MakeRay near = [](Random& random, const Scene& scene) {
        PickRay ray = rayOntoLayer(random, scene);
        const osg::Vec3d middle = scene.targets.front().a + osg::Vec3d(half, half, 0);
        ray.origin = middle - ray.direction * random.scale(1e-2, 10);
        return ray;
    };
    long ordered = 0;
    for (unsigned int seed = 1; seed <= 10; ++seed)
        ordered += orderedPicks(make, near, seed);
    EXPECT_GT(ordered, 100);
    expectSamePicks(make, near);
}

TEST(PickPruningTest, LayersOneUlpApart) {
    expectSamePicks(
        [](Random& random) {
            Scene scene;
            const osg::Vec3d middle = worldOffset(random) + osg::Vec3d(0, 0, 7);
            std::vector<double> heights{middle.z()};
            for (int i = 1; i < platesPerStack; ++i)
                heights.push_back(std::nextafter(heights.back(), 1e9));
            std::vector<osg::Vec3d> points;
            while (!heights.empty()) {
                const auto next = heights.begin() + random.below(static_cast<int>(heights.size()));
                addLayer(points, {middle.x(), middle.y(), *next}, usualHalf);
                heights.erase(next);
            }
            scene.targets = trianglesOf(points);
            scene.model = makeDoubleGeometry(
                points, new osg::DrawArrays(GL_TRIANGLES, 0, static_cast<int>(points.size())));
            return scene;
        },
        rayOntoLayer);
}

TEST(PickPruningTest, EarlierGeometriesSetTheFront) {
    const PickOutcome outcome = expectSamePicks(
        [](Random& random) {
            Scene scene = stackScene(random, 1e-3, 3);
            const osg::ref_ptr<osg::Group> model = new osg::Group;
            model->addChild(scene.model);
            const Triangle& first = scene.targets.front();
            const osg::Vec3d middle = first.a + osg::Vec3d(10, 10, 0);
            for (int i = 0; i < 4; ++i) {
                const osg::Vec3d lift(0, 0, random.chance(0.3) ? 0 : random.between(-5, 5));
                const double closest = random.scale(1e-17, 1e-3);
                model->addChild(stack(random, middle + lift, closest, closest * 1e3));
            }
            scene.model = model;
            return scene;
        },
        [](Random& random, const Scene& scene) {
            return random.chance(0.7) ? rayOntoLayer(random, scene) : rayWithinStack(random, scene);
        });
    EXPECT_GT(outcome.behind, outcome.rays / 20);
    EXPECT_GT(outcome.pruned, outcome.rays / 2);
}

TEST(PickPruningTest, FrontFromBehindTheEyeOrFromNowhereStays) {
    // The first geometry is walked, for it is small, and leaves a front behind the eye, or one
    // that is no number; the second is pruned by how far off that is.
    constexpr float nothing = std::numeric_limits<float>::quiet_NaN();
    for (const float height : {1e-3f, 0.5f, 4.0f, nothing}) {
        const PickOutcome outcome = expectSamePicks(
            [height](Random& random) {
                Scene scene = stackScene(random, 1e-3, 3);
                const float x = static_cast<float>(scene.targets.front().a.x());
                const float y = static_cast<float>(scene.targets.front().a.y());
                const float z = static_cast<float>(scene.targets.front().a.z());
                const osg::ref_ptr<osg::Geometry> front = makeTriangles(
                    {{x, y, z + height}, {x + 40, y, z + height}, {x, y + 40, z + height}});
                front->setInitialBound(osg::BoundingBox(x - 99, y - 99, -99, x + 99, y + 99, 199));
                scene.model = groupOf({front, scene.model});
                return scene;
            },
            rayWithinStack);
        EXPECT_GT(outcome.hits, 0);
    }
}

} // namespace orbisk::test
