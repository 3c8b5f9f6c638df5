#include "settings/RoamParameters.h"

#include <gtest/gtest.h>

#include <cmath>
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

TEST(RoamParametersTest, SpeedIsTheReciprocalOfThePace) {
    RoamParameters parameters;
    parameters.resetForModel(250.0);
    EXPECT_EQ(parameters.speed(), 25.0);
    parameters.setSpeed(4.0);
    EXPECT_EQ(parameters.secondsPerMetre, 0.25);
    EXPECT_EQ(parameters.speed(), 4.0);
    EXPECT_EQ(parameters.modelRadius, 250.0);
}

TEST(RoamParametersTest, SpeedIsInfiniteAtTheStart) {
    EXPECT_EQ(RoamParameters().speed(), std::numeric_limits<double>::infinity());
}

TEST(RoamParametersTest, MillionthOfAMetreASecondIsTheSlowestSpeed) {
    RoamParameters parameters;
    parameters.resetForModel(250.0);
    parameters.setSpeed(1e-6);
    EXPECT_EQ(parameters.secondsPerMetre, 1.0 / 1e-6);
    parameters.setSpeed(std::nextafter(1e-6, 0.0));
    EXPECT_EQ(parameters.secondsPerMetre, 0.04);
}

TEST(RoamParametersTest, SpeedThatIsNoneGivesThePaceOfTheModel) {
    for (const double speed : {0.0, -0.0, -3.0, -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        RoamParameters parameters;
        parameters.resetForModel(250.0);
        parameters.setSpeed(7.0);
        parameters.setSpeed(speed);
        EXPECT_EQ(parameters.secondsPerMetre, 0.04) << speed;
        EXPECT_EQ(parameters.speed(), 25.0) << speed;
    }
}

TEST(RoamParametersTest, SpeedThatIsNoneGivesAnInfinitePaceBeforeAnyModel) {
    RoamParameters parameters;
    parameters.setSpeed(0.0);
    EXPECT_EQ(parameters.secondsPerMetre, std::numeric_limits<double>::infinity());
    EXPECT_EQ(parameters.speed(), 0.0);
    parameters.setSpeed(-3.0);
    EXPECT_EQ(parameters.secondsPerMetre, std::numeric_limits<double>::infinity());
}

TEST(RoamParametersTest, OneRecordForTheProcess) {
    EXPECT_EQ(&roamParameters(), &roamParameters());
}

} // namespace orbisk::test
