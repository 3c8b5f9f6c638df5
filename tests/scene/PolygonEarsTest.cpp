#include "readers/PolygonEars.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace orbisk::test {

namespace {

using Outline = std::vector<osg::Vec3d>;

/// The sum of the triangles' areas, where they turn as `up` says; less where some turn back.
double filledArea(const Outline& outline, const osg::Vec3d& up) {
    const std::vector<std::size_t> places = cutIntoEars(outline);
    EXPECT_EQ(places.size(), 3 * (outline.size() - 2));
    double area = 0.0;
    for (std::size_t i = 0; i + 2 < places.size(); i += 3) {
        const osg::Vec3d& a = outline[places[i]];
        const double part =
            0.5 * (((outline[places[i + 1]] - a) ^ (outline[places[i + 2]] - a)) * up);
        EXPECT_GE(part, 0.0);
        area += part;
    }
    return area;
}

} // namespace

TEST(PolygonEarsTest, ConvexPolygonIsAFanFromItsFirstCorner) {
    const Outline pentagon = {{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}};
    EXPECT_EQ(cutIntoEars(pentagon), (std::vector<std::size_t>{0, 1, 2, 0, 2, 3, 0, 3, 4}));
}

TEST(PolygonEarsTest, ConcavePolygonIsFilledAndNoMore) {
    // The fan from the first corner would cover what is cut out.
    const Outline angle = {{0, 2, 0}, {0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {1, 1, 0}, {1, 2, 0}};
    EXPECT_DOUBLE_EQ(filledArea(angle, {0, 0, 1}), 4.0);
    const Outline turned(angle.rbegin(), angle.rend());
    EXPECT_DOUBLE_EQ(filledArea(turned, {0, 0, -1}), 4.0);
}

TEST(PolygonEarsTest, RandomStarsAreFilledInAnyPlane) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> radius(0.2, 1.0);
    for (int round = 0; round < 200; ++round) {
        const std::size_t corners = 5 + static_cast<std::size_t>(round % 40);
        osg::Vec3d right(radius(random), radius(random), -radius(random));
        right.normalize();
        osg::Vec3d normal = right ^ osg::Vec3d(radius(random), -radius(random), 0.3);
        normal.normalize();
        const osg::Vec3d up = normal ^ right;
        Outline star;
        double area = 0.0;
        double before = 0.0;
        const double step = 2.0 * osg::PI / static_cast<double>(corners);
        const double first = radius(random);
        for (std::size_t i = 0; i < corners; ++i) {
            const double length = i == 0 ? first : radius(random);
            const double angle = step * static_cast<double>(i);
            star.push_back(right * (length * std::cos(angle)) + up * (length * std::sin(angle)));
            area += 0.5 * before * length * std::sin(step);
            before = length;
        }
        area += 0.5 * before * first * std::sin(step);
        EXPECT_NEAR(filledArea(star, normal), area, 1e-9);
    }
}

TEST(PolygonEarsTest, CrossingOutlineIsFilledSomehow) {
    const Outline bow = {{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0.5, 0}};
    EXPECT_EQ(cutIntoEars(bow).size(), 9u);
}

TEST(PolygonEarsTest, PolygonOfOnePlaceIsFilledSomehow) {
    EXPECT_EQ(cutIntoEars(Outline(7, osg::Vec3d(1, 2, 3))).size(), 15u);
}

TEST(PolygonEarsTest, AMillionCornersAreAFan) {
    Outline comb;
    for (int i = 0; i < 1'000'000; ++i)
        comb.emplace_back(i, i % 2, 0);
    EXPECT_EQ(cutIntoEars(comb).size(), 3u * 999'998u);
}

} // namespace orbisk::test
