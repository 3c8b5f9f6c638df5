#include "settings/RoamParameters.h"

#include <gtest/gtest.h>

#include <limits>

namespace orbisk::test {

TEST(RoamParametersTest, StartsWithZeros) {
    const RoamParameters& parameters = roamParameters();
    EXPECT_EQ(parameters.modelRadius, 0.0);
    EXPECT_EQ(parameters.height, 0.0);
    EXPECT_EQ(parameters.secondsPerMetre, 0.0);
    EXPECT_EQ(parameters.roll, 0.0);
    EXPECT_EQ(parameters.pitch, 0.0);
    EXPECT_EQ(parameters.yaw, 0.0);
}

TEST(RoamParametersTest, FliesOneRadiusHighAndCrossesItInTenSeconds) {
    RoamParameters parameters;
    parameters.height = 1.0;
    parameters.secondsPerMetre = 1.0;
    parameters.resetForModel(250.0);
    EXPECT_EQ(parameters.modelRadius, 250.0);
    EXPECT_EQ(parameters.height, 250.0);
    EXPECT_EQ(parameters.secondsPerMetre, 0.04);
}

TEST(RoamParametersTest, AnotherModelKeepsTheAngles) {
    RoamParameters parameters;
    parameters.roll = 1.0;
    parameters.pitch = -2.0;
    parameters.yaw = 3.0;
    parameters.resetForModel(5.0);
    EXPECT_EQ(parameters.roll, 1.0);
    EXPECT_EQ(parameters.pitch, -2.0);
    EXPECT_EQ(parameters.yaw, 3.0);
}

TEST(RoamParametersTest, ModelWithoutExtentHasAnInfinitePace) {
    RoamParameters parameters;
    parameters.resetForModel(0.0);
    EXPECT_EQ(parameters.modelRadius, 0.0);
    EXPECT_EQ(parameters.height, 0.0);
    EXPECT_EQ(parameters.secondsPerMetre, std::numeric_limits<double>::infinity());
}

TEST(RoamParametersTest, OneRecordForTheProcess) {
    EXPECT_EQ(&roamParameters(), &roamParameters());
}

} // namespace orbisk::test
