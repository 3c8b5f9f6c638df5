#include "measure/TriangleTree.h"

#include "support/PickComparison.h"
#include "support/PickScenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <vector>

namespace orbisk::test {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TriangleTree treeOf(const std::vector<Triangle>& triangles) {
    const std::atomic<bool> cancelled = false;
    std::optional<TriangleTree> tree = TriangleTree::build(
        static_cast<std::uint32_t>(triangles.size()),
        [&](std::uint32_t number) { return triangles[number]; }, cancelled);
    EXPECT_TRUE(tree);
    return tree ? *tree : TriangleTree();
}

/// Takes the numbers in, and keeps the limit.
struct Numbers {
    double limit;
    std::vector<std::uint32_t> all;

    void expect(std::uint32_t) {}

    double test(std::uint32_t number) {
        all.push_back(number);
        return limit;
    }
};

std::vector<std::uint32_t> candidates(const TriangleTree& tree, const PickRay& ray, double limit) {
    Numbers numbers{limit, {}};
    tree.forEachCandidate(ray, limit, numbers);
    std::sort(numbers.all.begin(), numbers.all.end());
    return numbers.all;
}

/// Tests them, and lowers the limit to the nearest hit.
struct Nearest {
    const std::vector<Triangle>& triangles;
    PickRay ray;
    double limit = infinity;
    long tested = 0;

    void expect(std::uint32_t) {}

    double test(std::uint32_t number) {
        ++tested;
        if (const std::optional<double> distance = intersect(ray, triangles[number]))
            limit = std::min(limit, *distance);
        return limit;
    }
};

/// Squares of two triangles, one over the other, so far apart.
std::vector<Triangle> floors(int count, double distance) {
    std::vector<Triangle> triangles;
    for (int i = 0; i < count; ++i) {
        const double z = i * distance;
        triangles.push_back({{0, 0, z}, {1, 0, z}, {1, 1, z}});
        triangles.push_back({{0, 0, z}, {1, 1, z}, {0, 1, z}});
    }
    return triangles;
}

/// Every triangle that a ray hits is a candidate, also when the limit is where it is hit; and no
/// number comes twice.
void expectAllHits(const MakeScene& makeScene, const MakeRay& makeRay) {
    long hits = 0;
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        Random random(seed);
        const Scene scene = makeScene(random);
        const TriangleTree tree = treeOf(scene.targets);
        for (int i = 0; i < 500; ++i) {
            const PickRay ray = makeRay(random, scene);
            const std::vector<std::uint32_t> all = candidates(tree, ray, infinity);
            EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
            for (std::uint32_t number = 0; number < scene.targets.size(); ++number) {
                const std::optional<double> distance = intersect(ray, scene.targets[number]);
                if (!distance)
                    continue;
                ++hits;
                const std::vector<std::uint32_t> before = candidates(tree, ray, *distance);
                ASSERT_TRUE(std::binary_search(all.begin(), all.end(), number));
                ASSERT_TRUE(std::binary_search(before.begin(), before.end(), number))
                    << "seed " << seed << ", ray " << i;
            }
        }
    }
    EXPECT_GT(hits, 500);
}

} // namespace

TEST(TriangleTreeTest, NamesFewOfManyTriangles) {
    const TriangleTree tree = treeOf(floors(1000, 1));
    const PickRay down{osg::Vec3d(0.5, 0.25, 999.5), osg::Vec3d(0, 0, -1)};
    EXPECT_GE(candidates(tree, down, infinity).size(), 1000u);
    EXPECT_LE(candidates(tree, down, 3.0).size(), 2u * 5 + 2);
    const PickRay beside{osg::Vec3d(2, 2, 3000), osg::Vec3d(0, 0, -1)};
    EXPECT_TRUE(candidates(tree, beside, infinity).empty());
}

TEST(TriangleTreeTest, WhatIsBehindTheOriginIsNeverBeyondTheLimit) {
    const TriangleTree tree = treeOf(floors(1000, 1));
    const PickRay down{osg::Vec3d(0.5, 0.25, 499.5), osg::Vec3d(0, 0, -1)};
    const std::vector<std::uint32_t> numbers = candidates(tree, down, 0.0);
    // Of each floor the ray meets the first triangle.
    for (std::uint32_t number = 1000; number < 2000; number += 2)
        EXPECT_TRUE(std::binary_search(numbers.begin(), numbers.end(), number));
    EXPECT_LE(numbers.size(), 1010u);
}

TEST(TriangleTreeTest, LoweringTheLimitOnTheWayLeavesOutTheRest) {
    const std::vector<Triangle> triangles = floors(1000, 1);
    const TriangleTree tree = treeOf(triangles);
    const PickRay down{osg::Vec3d(0.5, 0.25, 2000), osg::Vec3d(0, 0, -1)};
    Nearest nearest{triangles, down};
    tree.forEachCandidate(down, infinity, nearest);
    EXPECT_EQ(nearest.limit, 1001.0);
    EXPECT_LE(nearest.tested, 8);
}

TEST(TriangleTreeTest, LimitBelowAnyNamesNothing) {
    const TriangleTree tree = treeOf(floors(100, 1));
    EXPECT_TRUE(
        candidates(tree, {osg::Vec3d(0.5, 0.25, 9.5), osg::Vec3d(0, 0, -1)}, -infinity).empty());
}

TEST(TriangleTreeTest, TriangleIsACandidateUpToWhereItIsHit) {
    expectAllHits([](Random& random) { return soup(random, 1e-3, 1e3); }, anyOrGrazingRay);
    expectAllHits([](Random& random) { return soup(random, 0.5, 20); }, anyRay);
}

TEST(TriangleTreeTest, GrazedTriangleIsACandidateUpToWhereRoundingPutsTheHit) {
    expectAllHits(plates, grazingRay);
}

TEST(TriangleTreeTest, RoundingPutsHitsFarBeforeTheTriangle) {
    // The premise of the test above: by more than the box's own rounding.
    Random random(1);
    long before = 0;
    for (int i = 0; i < 100000; ++i) {
        std::vector<osg::Vec3d> points;
        addPlate(random, points);
        const Scene scene{nullptr, trianglesOf(points)};
        const PickRay ray = grazingRay(random, scene);
        const std::optional<double> distance = intersect(ray, scene.targets.front());
        double nearest = infinity;
        for (const osg::Vec3d& corner : points)
            nearest = std::min(nearest, (corner - ray.origin) * ray.direction);
        if (distance && *distance < nearest - 1e-4 * (points[1] - points[0]).length())
            ++before;
    }
    EXPECT_GT(before, 10);
}

} // namespace orbisk::test
