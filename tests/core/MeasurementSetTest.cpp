#include "measure/MeasurementSet.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(MeasurementSetTest, StartsEmpty) {
    const MeasurementSet& set = measurementSet();
    EXPECT_TRUE(set.points.empty());
    EXPECT_TRUE(set.lines.empty());
    EXPECT_TRUE(set.areas.empty());
    EXPECT_TRUE(set.areaTriangles.empty());
    EXPECT_TRUE(set.travelPoints.empty());
}

TEST(MeasurementSetTest, ClearForgetsEverything) {
    const osg::Vec3d vertex(1.0, 2.0, 3.0);
    MeasurementSet set;
    set.points = {vertex};
    set.lines = {{vertex, vertex}, {}};
    set.areas = {{vertex, vertex, vertex}};
    set.areaTriangles = {vertex, vertex, vertex};
    set.travelPoints = {vertex, vertex};
    set.clear();
    EXPECT_TRUE(set.points.empty());
    EXPECT_TRUE(set.lines.empty());
    EXPECT_TRUE(set.areas.empty());
    EXPECT_TRUE(set.areaTriangles.empty());
    EXPECT_TRUE(set.travelPoints.empty());
}

TEST(MeasurementSetTest, KeepsEveryDigitOfAPlace) {
    MeasurementSet set;
    set.points.emplace_back(3512345.678901234, 5412345.000000001, -0.1);
    EXPECT_EQ(set.points.front().x(), 3512345.678901234);
    EXPECT_EQ(set.points.front().y(), 5412345.000000001);
}

TEST(MeasurementSetTest, OneSetForTheProcess) {
    EXPECT_EQ(&measurementSet(), &measurementSet());
}

} // namespace orbisk::test
