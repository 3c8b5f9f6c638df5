#include "readers/TriangleOrder.h"

#include <gtest/gtest.h>
#include <osg/Geometry>
#include <osgUtil/MeshOptimizers>

#include <algorithm>
#include <array>
#include <chrono>
#include <random>

namespace orbisk::test {

namespace {

using Numbers = std::vector<std::uint32_t>;

/// What the library makes of the triangles.
Numbers libraryOrder(const Numbers& triangles, std::uint32_t vertexCount) {
    const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec3Array(vertexCount));
    geometry->addPrimitiveSet(
        new osg::DrawElementsUInt(GL_TRIANGLES, triangles.begin(), triangles.end()));
    osgUtil::VertexCacheVisitor visitor;
    visitor.optimizeVertices(*geometry);
    Numbers order;
    const osg::PrimitiveSet& primitives = *geometry->getPrimitiveSet(0);
    for (unsigned int i = 0; i < primitives.getNumIndices(); ++i)
        order.push_back(primitives.index(i));
    return order;
}

/// A grid of squares, each split in two.
Numbers grid(std::uint32_t across, std::uint32_t along) {
    Numbers triangles;
    for (std::uint32_t y = 0; y + 1 < along; ++y)
        for (std::uint32_t x = 0; x + 1 < across; ++x) {
            const std::uint32_t at = y * across + x;
            for (const std::uint32_t corner :
                 {at, at + 1, at + across + 1, at, at + across + 1, at + across})
                triangles.push_back(corner);
        }
    return triangles;
}

void shuffle(Numbers& triangles, std::mt19937& random) {
    std::vector<std::array<std::uint32_t, 3>> all;
    for (std::size_t i = 0; i < triangles.size(); i += 3)
        all.push_back({triangles[i], triangles[i + 1], triangles[i + 2]});
    std::shuffle(all.begin(), all.end(), random);
    triangles.clear();
    for (const auto& triangle : all)
        triangles.insert(triangles.end(), triangle.begin(), triangle.end());
}

} // namespace

TEST(TriangleOrderTest, IsTheLibrarysOnGrids) {
    std::mt19937 random(1);
    for (const std::uint32_t along : {5u, 17u, 60u}) {
        Numbers triangles = grid(20, along);
        EXPECT_EQ(cacheFriendlyOrder(triangles, 20 * along), libraryOrder(triangles, 20 * along));
        shuffle(triangles, random);
        EXPECT_EQ(cacheFriendlyOrder(triangles, 20 * along), libraryOrder(triangles, 20 * along));
    }
}

TEST(TriangleOrderTest, IsTheLibrarysOnRandomTriangles) {
    std::mt19937 random(2);
    for (int run = 0; run < 60; ++run) {
        const std::uint32_t vertexCount = 17 + random() % 300;
        Numbers triangles;
        for (std::size_t i = 0; i < 3 * (1 + random() % 700); ++i)
            triangles.push_back(random() % vertexCount);
        triangles.resize(triangles.size() / 3 * 3);
        triangles.insert(triangles.end(), {0, 1, 2});
        EXPECT_EQ(cacheFriendlyOrder(triangles, vertexCount), libraryOrder(triangles, vertexCount))
            << run;
    }
}

TEST(TriangleOrderTest, LeavesOutTrianglesThatNameAVertexTwice) {
    EXPECT_EQ(cacheFriendlyOrder({0, 0, 1, 2, 1, 2, 0, 1, 2}, 3), (Numbers{0, 1, 2}));
    EXPECT_EQ(cacheFriendlyOrder({}, 0), Numbers{});
}

TEST(TriangleOrderTest, SeparatePiecesCostNoSquare) {
    constexpr std::uint32_t count = 400'000;
    Numbers triangles(3 * count);
    for (std::uint32_t i = 0; i < triangles.size(); ++i)
        triangles[i] = i;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(cacheFriendlyOrder(triangles, 3 * count), triangles);
    // Going through all of them for each takes minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TriangleOrderTest, ManyTrianglesAtOneVertexCostNoSquare) {
    constexpr std::uint32_t count = 200'000;
    Numbers triangles;
    for (std::uint32_t i = 1; i <= count; ++i)
        triangles.insert(triangles.end(), {0, i, i + 1});
    const auto start = std::chrono::steady_clock::now();
    const Numbers order = cacheFriendlyOrder(triangles, count + 2);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    Numbers left = order;
    std::sort(left.begin(), left.end());
    std::sort(triangles.begin(), triangles.end());
    EXPECT_EQ(left, triangles);
}

} // namespace orbisk::test
