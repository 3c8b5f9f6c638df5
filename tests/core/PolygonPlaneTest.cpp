#include "core/PolygonShapes.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

constexpr double relativeError = 1e-12;

} // namespace

TEST(FitPlaneTest, GivesThePlaneOfVerticesThatHaveOne) {
    const auto plane = Measure::fitPlane(quadrilateral());
    ASSERT_TRUE(plane);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR((*plane)[axis], -0.1, relativeError) << axis;
}

TEST(FitPlaneTest, GivesTheLeastSquaresOfOthers) {
    // Normal equations: 2 a = -2, 2 b = -2, 3 c = -1.
    const auto plane =
        Measure::fitPlane({{1, 1, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 1}, {0, 0, -1}});
    ASSERT_TRUE(plane);
    EXPECT_NEAR(plane->x(), -2.0 / 3.0, relativeError);
    EXPECT_NEAR(plane->y(), -2.0 / 3.0, relativeError);
    EXPECT_NEAR(plane->z(), -1.0 / 3.0, relativeError);
}

TEST(FitPlaneTest, HoldsOnCoordinatesOfACountrysGrid) {
    const Places corners = roofFarFromTheOrigin(0.0);
    const auto plane = Measure::fitPlane(corners);
    ASSERT_TRUE(plane);
    for (const osg::Vec3d& corner : corners)
        EXPECT_NEAR((*plane * corner + 1.0) / plane->length(), 0.0, 1e-3);
    osg::Vec3d normal = *plane;
    normal.normalize();
    osg::Vec3d exact(0.25, -0.125, -1.0);
    exact.normalize();
    EXPECT_LT((normal ^ exact).length(), 1e-5);
}

TEST(FitPlaneTest, DeterminantIsComparedAbsolutely) {
    // One vertex on each axis: the determinant is the sixth power of their distance, and
    // 0.1 to the sixth is 1e-6.
    const auto axes = [](double distance) {
        return Places{{distance, 0, 0}, {0, distance, 0}, {0, 0, distance}};
    };
    EXPECT_TRUE(Measure::fitPlane(axes(0.1001)));
    EXPECT_FALSE(Measure::fitPlane(axes(0.0999)));
}

TEST(FitPlaneTest, VerticesOnALineHaveNone) {
    EXPECT_FALSE(Measure::fitPlane({{1, 2, 3}, {2, 4, 5}, {3, 6, 7}, {4, 8, 9}}));
    EXPECT_FALSE(Measure::fitPlane({}));
}

TEST(ProjectToPlaneTest, FewerThanThreeVerticesVanish) {
    EXPECT_TRUE(Measure::projectToPlane({}, {0, 0, -1}).empty());
    EXPECT_TRUE(Measure::projectToPlane({{1, 2, 3}, {4, 5, 6}}, {0, 0, -1}).empty());
}

TEST(ProjectToPlaneTest, ThreeVerticesStayWhereTheyAre) {
    const Places places = {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}};
    EXPECT_EQ(Measure::projectToPlane(places, {0, 0, -1}), places);
}

TEST(ProjectToPlaneTest, MoreVerticesGoStraightToThePlane) {
    // The plane z = 2.
    EXPECT_EQ(Measure::projectToPlane({{1, 2, 3}, {4, 5, 6}, {7, 8, 10}, {1, 1, -1}}, {0, 0, -0.5}),
              (Places{{1, 2, 2}, {4, 5, 2}, {7, 8, 2}, {1, 1, 2}}));
}

} // namespace orbisk::test
