#include "measure/BoxNode.h"

#include "support/PickScenes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace orbisk::test {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

BoxLine lineOf(const std::array<float, 3>& origin, const std::array<float, 3>& direction) {
    BoxLine line{};
    line.origin = origin;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        line.inverse[axis] = 1.0f / direction[axis];
        line.nearBound[axis] = direction[axis] > 0 ? axis : axis + 3;
        line.farBound[axis] = direction[axis] > 0 ? axis + 3 : axis;
    }
    return line;
}

/// Cubes of a side of ten in a row along x, the first at the origin, with as much between them.
BoxNode rowOfCubes(std::uint8_t count) {
    BoxNode node{};
    node.step = {1, 1, 1};
    node.children = count;
    for (std::uint8_t i = 0; i < count; ++i)
        for (std::size_t axis = 0; axis < 3; ++axis) {
            node.bounds[axis][i] = static_cast<std::uint8_t>(axis == 0 ? 20 * i : 0);
            node.bounds[axis + 3][i] = static_cast<std::uint8_t>(node.bounds[axis][i] + 10);
        }
    return node;
}

const BoxLine alongTheRow = lineOf({-100, 5, 5}, {1, 1e-12f, 1e-12f});

float anyNumber(Random& random) {
    switch (random.below(8)) {
    case 0:
        return infinity;
    case 1:
        return static_cast<float>(random.scale(1e-30, 1e38));
    default:
        return static_cast<float>(random.between(-2, 2));
    }
}

BoxNode anyNode(Random& random) {
    BoxNode node{};
    for (BoxNode::Steps& steps : node.bounds)
        for (std::uint8_t& step : steps)
            step = static_cast<std::uint8_t>(random.below(256));
    for (std::size_t axis = 0; axis < 3; ++axis) {
        node.low[axis] = static_cast<float>(random.between(-1, 1));
        node.step[axis] = static_cast<float>(random.between(0, 0.02));
    }
    node.gain = random.chance(0.1) ? infinity : static_cast<float>(random.scale(1e-12, 1));
    node.children = static_cast<std::uint8_t>(1 + random.below(BoxNode::width));
    return node;
}

BoxLine anyLine(Random& random) {
    const auto direction = [&random] {
        const double size = random.chance(0.1) ? 1e-12 : random.between(0.01, 1);
        return static_cast<float>(random.chance(0.5) ? size : -size);
    };
    BoxLine line = lineOf({anyNumber(random), anyNumber(random), anyNumber(random)},
                          {direction(), direction(), direction()});
    line.padding = std::abs(anyNumber(random)) * (random.chance(0.8) ? 1e-6f : 1.0f);
    line.paddingPerGain = std::abs(anyNumber(random));
    return line;
}

std::uint32_t bitsOf(float number) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

bool sameBits(const BoxNode::Places& one, const BoxNode::Places& other) {
    const auto same = [](float a, float b) { return (a != a && b != b) || bitsOf(a) == bitsOf(b); };
    return std::equal(one.begin(), one.end(), other.begin(), same);
}

} // namespace

TEST(BoxNodeTest, MeetsTheBoxesOnTheLineAndTellsWhereTheyBegin) {
    const BoxNode node = rowOfCubes(8);
    BoxNode::Places begins{};
    EXPECT_EQ(node.meet(alongTheRow, infinity, begins), 0xffu);
    for (std::size_t i = 0; i < BoxNode::width; ++i)
        EXPECT_EQ(begins[i], 100 + 20 * static_cast<float>(i));
    const BoxLine across = lineOf({45, -30, 5}, {1e-12f, 1, 1e-12f});
    EXPECT_EQ(node.meet(across, infinity, begins), 0x04u);
    EXPECT_EQ(begins[2], 30.0f);
    EXPECT_EQ(node.meet(lineOf({35, -30, 5}, {1e-12f, 1, 1e-12f}), infinity, begins), 0u);
}

TEST(BoxNodeTest, MeetsBoxesBehindTheOriginOfTheLineToo) {
    const BoxNode node = rowOfCubes(8);
    BoxNode::Places begins{};
    EXPECT_EQ(node.meet(lineOf({75, 5, 5}, {-1, 1e-12f, 1e-12f}), infinity, begins), 0xffu);
    EXPECT_EQ(begins[7], -75.0f);
}

TEST(BoxNodeTest, BoxesThatBeginBeyondTheLimitAreNotMet) {
    const BoxNode node = rowOfCubes(8);
    BoxNode::Places begins{};
    EXPECT_EQ(node.meet(alongTheRow, 140.0f, begins), 0x07u);
    EXPECT_EQ(node.meet(alongTheRow, 139.9f, begins), 0x03u);
    EXPECT_EQ(node.meet(alongTheRow, 0.0f, begins), 0u);
}

TEST(BoxNodeTest, PaddingWidensBoxesAndTheLimit) {
    BoxNode node = rowOfCubes(8);
    node.gain = 0.5f;
    BoxLine line = lineOf({45, -30, 13}, {1e-12f, 1, 1e-12f});
    BoxNode::Places begins{};
    EXPECT_EQ(node.meet(line, infinity, begins), 0u);
    line.padding = 1;
    line.paddingPerGain = 6;
    EXPECT_EQ(node.meet(line, infinity, begins), 0x04u);
    // Four for the box, and as much for how exactly distances are known.
    EXPECT_EQ(begins[2], 22.0f);
    EXPECT_EQ(node.meet(line, 22.0f, begins), 0x04u);
    EXPECT_EQ(node.meet(line, 21.9f, begins), 0u);
}

TEST(BoxNodeTest, ChildrenThatAreNotThereAreNeverMet) {
    BoxNode node = rowOfCubes(3);
    BoxNode::Places begins{};
    EXPECT_EQ(node.meet(alongTheRow, infinity, begins), 0x07u);
    node.gain = infinity;
    BoxLine line = alongTheRow;
    line.paddingPerGain = 1;
    EXPECT_EQ(node.meet(line, -1e9f, begins), 0x07u);
}

TEST(BoxNodeTest, WhatHasNoBoundIsAlwaysMet) {
    BoxNode node = rowOfCubes(8);
    node.gain = infinity;
    BoxLine line = lineOf({1e6f, 1e6f, -1e6f}, {1, 0.5f, 0.25f});
    line.paddingPerGain = 1;
    BoxNode::Places begins{};
    EXPECT_EQ(node.meet(line, -1e30f, begins), 0xffu);
    EXPECT_EQ(begins[0], -infinity);
}

TEST(BoxNodeTest, VectorInstructionsGiveTheSameBits) {
    Random random(1);
    long met = 0;
    for (int i = 0; i < 100000; ++i) {
        const BoxNode node = anyNode(random);
        const BoxLine line = anyLine(random);
        const float limit = random.chance(0.3) ? infinity : anyNumber(random);
        BoxNode::Places begins{};
        BoxNode::Places portably{};
        const unsigned int children = node.meet(line, limit, begins);
        ASSERT_EQ(children, node.meetPortably(line, limit, portably)) << i;
        ASSERT_TRUE(sameBits(begins, portably)) << i;
        met += children == 0 ? 0 : 1;
    }
    EXPECT_GT(met, 1000);
    EXPECT_LT(met, 90000);
}

} // namespace orbisk::test
