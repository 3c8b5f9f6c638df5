#include "app/WindowPlacement.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

constexpr DisplaySize display{1920, 1080};

bool opensMaximised(int width, int height) {
    return orbisk::opensMaximised({0, 0, width, height}, display);
}

} // namespace

TEST(WindowPlacementTest, MaximisesWhatFillsTheDisplay) {
    EXPECT_TRUE(opensMaximised(1900, 1030));
    EXPECT_TRUE(opensMaximised(1920, 1080));
    EXPECT_TRUE(opensMaximised(5000, 5000));
    EXPECT_TRUE(opensMaximised(1825, 1027));
}

TEST(WindowPlacementTest, PlacesWhatIsSmallerInEitherDirection) {
    EXPECT_FALSE(opensMaximised(1900, 1000));
    EXPECT_FALSE(opensMaximised(1800, 1080));
    EXPECT_FALSE(opensMaximised(800, 600));
    EXPECT_FALSE(opensMaximised(0, 0));
    EXPECT_FALSE(opensMaximised(-1900, -1030));
}

TEST(WindowPlacementTest, ExactlyNinetyFivePercentIsPlaced) {
    EXPECT_FALSE(opensMaximised(1824, 1026));
    EXPECT_FALSE(opensMaximised(1824, 1080));
    EXPECT_FALSE(opensMaximised(1920, 1026));
    for (int hundredth = 1; hundredth <= 100; ++hundredth) {
        const WindowRect rect{0, 0, 95 * hundredth, 95 * hundredth};
        EXPECT_FALSE(orbisk::opensMaximised(rect, {100 * hundredth, 100 * hundredth})) << hundredth;
    }
}

TEST(WindowPlacementTest, PositionDoesNotMatter) {
    EXPECT_TRUE(orbisk::opensMaximised({-4000, 9000, 1920, 1080}, display));
    EXPECT_FALSE(orbisk::opensMaximised({-4000, 9000, 640, 480}, display));
}

} // namespace orbisk::test
