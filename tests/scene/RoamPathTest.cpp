#include "roam/RoamPath.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace orbisk::test {

namespace {

/// A rotation, written down without the library's: w, x, y, z.
using Turn = std::array<double, 4>;

struct Station {
    double time;
    osg::Vec3d position;
    osg::Quat rotation;
};

Turn turnAbout(int axis, double degrees) {
    const double half = degrees * 3.141592653589793 / 180.0 / 2.0;
    Turn turn{std::cos(half), 0.0, 0.0, 0.0};
    turn[static_cast<std::size_t>(axis) + 1] = std::sin(half);
    return turn;
}

/// Hamilton's product: turns by `b` first.
Turn product(const Turn& a, const Turn& b) {
    return {a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3],
            a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
            a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1],
            a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]};
}

osg::Vec3d turned(const Turn& turn, const osg::Vec3d& vector) {
    const Turn back{turn[0], -turn[1], -turn[2], -turn[3]};
    const Turn result = product(product(turn, {0.0, vector.x(), vector.y(), vector.z()}), back);
    return {result[1], result[2], result[3]};
}

Turn orientation(double roll, double pitch, double yaw) {
    return product(turnAbout(2, yaw), product(turnAbout(1, roll), turnAbout(0, pitch)));
}

std::vector<Station> stationsOf(const osg::AnimationPath& path) {
    std::vector<Station> stations;
    for (const auto& [time, point] : path.getTimeControlPointMap())
        stations.push_back({time, point.getPosition(), point.getRotation()});
    return stations;
}

std::vector<Station> build(const TravelPath& points, const RoamParameters& parameters) {
    return stationsOf(*buildRoamPath(points, parameters));
}

/// Parameters of a roam of this height and pace.
RoamParameters roam(double height, double secondsPerMetre) {
    RoamParameters parameters;
    parameters.height = height;
    parameters.secondsPerMetre = secondsPerMetre;
    return parameters;
}

void expectNear(const osg::Vec3d& vector, const osg::Vec3d& expected, double tolerance = 1e-9) {
    EXPECT_NEAR((vector - expected).length(), 0.0, tolerance)
        << vector.x() << " " << vector.y() << " " << vector.z();
}

/// Whether the rotation is the same; each has two quaternions.
void expectRotation(const osg::Quat& rotation, const Turn& expected) {
    const double sign = rotation.w() * expected[0] + rotation.x() * expected[1] +
                                    rotation.y() * expected[2] + rotation.z() * expected[3] <
                                0.0
                            ? -1.0
                            : 1.0;
    EXPECT_NEAR(sign * rotation.w(), expected[0], 1e-12);
    EXPECT_NEAR(sign * rotation.x(), expected[1], 1e-12);
    EXPECT_NEAR(sign * rotation.y(), expected[2], 1e-12);
    EXPECT_NEAR(sign * rotation.z(), expected[3], 1e-12);
}

const osg::Vec3d a(100, 200, 30);
const osg::Vec3d b(110, 200, 30);
const osg::Vec3d c(120, 200, 30);

/// Looks at where the camera of a roam to `b` stands, seen from `b`, and how it is turned.
void expectOffset(const RoamParameters& parameters, const osg::Vec3d& offset,
                  const Turn& rotation) {
    const auto stations = build({a, b}, parameters);
    ASSERT_EQ(stations.size(), 1u);
    expectNear(stations[0].position, b + offset);
    expectRotation(stations[0].rotation, rotation);
}

} // namespace

TEST(RoamPathTest, LoopsEvenWhenEmpty) {
    for (const TravelPath& points : {TravelPath{}, TravelPath{a, b, c}})
        EXPECT_EQ(buildRoamPath(points, roam(5, 0.1))->getLoopMode(), osg::AnimationPath::LOOP);
}

TEST(RoamPathTest, NoPointsGiveAnEmptyPath) {
    EXPECT_TRUE(build({}, roam(5, 0.1)).empty());
}

TEST(RoamPathTest, OnePointGivesAnEmptyPath) {
    EXPECT_TRUE(build({a}, roam(5, 0.1)).empty());
}

TEST(RoamPathTest, TwoPointsGiveTheSecondAlone) {
    const auto stations = build({a, b}, roam(5, 0.1));
    ASSERT_EQ(stations.size(), 1u);
    EXPECT_EQ(stations[0].time, 0.0);
    EXPECT_EQ(stations[0].position, b + osg::Vec3d(0, 0, 5));
}

TEST(RoamPathTest, CameraOfTwoPointsStandsStillAtTheSecond) {
    const auto path = buildRoamPath({a, b}, roam(5, 0.1));
    for (const double time : {0.0, 0.5, 1.0, 77.7}) {
        osg::AnimationPath::ControlPoint point;
        ASSERT_TRUE(path->getInterpolatedControlPoint(time, point));
        EXPECT_EQ(point.getPosition(), b + osg::Vec3d(0, 0, 5));
    }
}

TEST(RoamPathTest, ThreePointsTenMetresApart) {
    const auto stations = build({a, b, c}, roam(0, 0.1));
    ASSERT_EQ(stations.size(), 2u);
    EXPECT_EQ(stations[0].time, 0.0);
    EXPECT_EQ(stations[0].position, b);
    EXPECT_DOUBLE_EQ(stations[1].time, 1.0);
    EXPECT_EQ(stations[1].position, c);
}

TEST(RoamPathTest, EachPointHasTheTimeOfThePointBeforeIt) {
    const auto stations = build({{0, 0, 0}, {3, 4, 0}, {3, 4, 12}, {3, 10, 20}}, roam(0, 2.0));
    ASSERT_EQ(stations.size(), 3u);
    const osg::Vec3d positions[] = {{3, 4, 0}, {3, 4, 12}, {3, 10, 20}};
    const double times[] = {0.0, 10.0, 34.0};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(stations[i].position, positions[i]);
        EXPECT_DOUBLE_EQ(stations[i].time, times[i]);
    }
}

TEST(RoamPathTest, RepeatedPointGivesItsTimeToTheNext) {
    const auto stations = build({a, b, b, c}, roam(0, 0.1));
    ASSERT_EQ(stations.size(), 2u);
    EXPECT_EQ(stations[0].position, b);
    EXPECT_EQ(stations[1].position, c);
    EXPECT_DOUBLE_EQ(stations[1].time, 1.0);
}

TEST(RoamPathTest, WithoutAnglesTheCameraIsUprightAboveThePoints) {
    const auto stations = build({a, b, c}, roam(5, 0.1));
    ASSERT_EQ(stations.size(), 2u);
    EXPECT_EQ(stations[0].position, b + osg::Vec3d(0, 0, 5));
    EXPECT_EQ(stations[1].position, c + osg::Vec3d(0, 0, 5));
    for (const Station& station : stations)
        expectRotation(station.rotation, {1, 0, 0, 0});
}

TEST(RoamPathTest, QuarterRollOffsetsAlongX) {
    RoamParameters parameters = roam(5, 0.1);
    parameters.roll = 90;
    expectOffset(parameters, {5, 0, 0}, {std::sqrt(0.5), 0, std::sqrt(0.5), 0});
}

TEST(RoamPathTest, QuarterPitchOffsetsAgainstY) {
    RoamParameters parameters = roam(5, 0.1);
    parameters.pitch = 90;
    expectOffset(parameters, {0, -5, 0}, {std::sqrt(0.5), std::sqrt(0.5), 0, 0});
}

TEST(RoamPathTest, YawAloneKeepsTheOffsetUpright) {
    RoamParameters parameters = roam(5, 0.1);
    parameters.yaw = 90;
    expectOffset(parameters, {0, 0, 5}, {std::sqrt(0.5), 0, 0, std::sqrt(0.5)});
}

TEST(RoamPathTest, TurnsByPitchThenRollThenYaw) {
    RoamParameters parameters = roam(7, 0.1);
    parameters.pitch = 90;
    parameters.roll = 90;
    parameters.yaw = 90;
    // Upright, tipped to -y by the pitch, left there by the roll, brought to +x by the yaw.
    expectOffset(parameters, {7, 0, 0}, orientation(90, 90, 90));
}

TEST(RoamPathTest, NegativeHeightFliesBelow) {
    EXPECT_EQ(build({a, b}, roam(-5, 0.1)).at(0).position, b - osg::Vec3d(0, 0, 5));
}

TEST(RoamPathTest, PaceOfZeroLeavesTheLastPoint) {
    const auto stations = build({a, b, c}, roam(0, 0.0));
    ASSERT_EQ(stations.size(), 1u);
    EXPECT_EQ(stations[0].position, c);
}

TEST(RoamPathTest, InfinitePaceStandsAtTheSecondPoint) {
    const auto path =
        buildRoamPath({a, b, c, c, a}, roam(0, std::numeric_limits<double>::infinity()));
    for (const double time : {0.0, 1.0, 1e9}) {
        osg::AnimationPath::ControlPoint point;
        ASSERT_TRUE(path->getInterpolatedControlPoint(time, point));
        EXPECT_EQ(point.getPosition(), b);
    }
}

TEST(RoamPathTest, AgreesWithAPathWorkedOutByHand) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> place(-1000.0, 1000.0);
    std::uniform_real_distribution<double> angle(-720.0, 720.0);
    for (int i = 0; i < 2000; ++i) {
        RoamParameters parameters = roam(place(random), std::abs(place(random)) + 1e-3);
        parameters.roll = angle(random);
        parameters.pitch = angle(random);
        parameters.yaw = angle(random);
        TravelPath points(2 + random() % 6);
        for (osg::Vec3d& point : points)
            point = {place(random), place(random), place(random)};
        const Turn turn = orientation(parameters.roll, parameters.pitch, parameters.yaw);
        const osg::Vec3d offset = turned(turn, {0, 0, parameters.height});
        const auto stations = build(points, parameters);
        ASSERT_EQ(stations.size(), points.size() - 1);
        double metres = 0.0;
        for (std::size_t k = 1; k < points.size(); ++k) {
            const Station& station = stations[k - 1];
            EXPECT_NEAR(station.time, metres * parameters.secondsPerMetre,
                        1e-9 * (1.0 + station.time));
            expectNear(station.position, points[k] + offset);
            expectRotation(station.rotation, turn);
            metres += (points[k] - points[k - 1]).length();
        }
    }
}

} // namespace orbisk::test
