#include "measure/FrontHits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orbisk::test {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const PickRay ray{osg::Vec3d(100, 0, 0), osg::Vec3d(-1, 0, 0)};

/// Two hits that are no farther apart than that may be mistaken for each other.
constexpr double hardlyAny = 1e-14;

std::vector<double> distances(FrontHits& hits) {
    std::vector<double> distances;
    for (const FrontHits::Hit& hit : hits.inOrder())
        distances.push_back(hit.distance);
    return distances;
}

} // namespace

TEST(FrontHitsTest, NothingIsTooFarBeforeThereIsAHit) {
    const FrontHits hits(ray, std::nullopt);
    EXPECT_EQ(hits.limit(), infinity);
    EXPECT_TRUE(hits.areEnough());
}

TEST(FrontHitsTest, TheLimitIsALittleBeyondTheNearestHit) {
    FrontHits hits(ray, std::nullopt);
    for (const double distance : {50.0, 80.0, 20.0, 30.0})
        hits.add({0, distance});
    EXPECT_GT(hits.limit(), 20.0 + hardlyAny);
    EXPECT_LT(hits.limit(), 20.0 + 1e-9);
    EXPECT_TRUE(hits.areEnough());
}

TEST(FrontHitsTest, TheFrontOfEarlierGeometriesLimits) {
    FrontHits hits(ray, 5.0);
    EXPECT_LT(hits.limit(), 5.0 + 1e-9);
    hits.add({0, 3.0});
    EXPECT_LT(hits.limit(), 3.0 + 1e-9);
    EXPECT_TRUE(hits.areEnough());
}

TEST(FrontHitsTest, InfinitelyFarFrontLimitsNothing) {
    const FrontHits hits(ray, infinity);
    EXPECT_EQ(hits.limit(), infinity);
    EXPECT_TRUE(hits.areEnough());
}

TEST(FrontHitsTest, TheLimitGrowsWithTheOriginsCoordinates) {
    const PickRay far{osg::Vec3d(5e5, 4e6, 0), osg::Vec3d(0, 0, -1)};
    FrontHits hits(far, std::nullopt);
    hits.add({0, 1.0});
    EXPECT_GT(hits.limit(), 1.0 + 1e-9);
}

TEST(FrontHitsTest, HitBehindTheOriginMakesAllCount) {
    for (const double behind : {-1.0, -1e-300, std::numeric_limits<double>::quiet_NaN()}) {
        FrontHits hits(ray, 5.0);
        hits.add({0, 3.0});
        hits.add({1, behind});
        hits.add({2, 1.0});
        EXPECT_EQ(hits.limit(), -infinity);
        EXPECT_FALSE(hits.areEnough());
        hits.takeAll();
        EXPECT_EQ(hits.limit(), infinity);
        EXPECT_TRUE(distances(hits).empty());
        hits.add({1, behind});
        EXPECT_EQ(hits.limit(), infinity);
        EXPECT_TRUE(hits.areEnough());
        EXPECT_EQ(distances(hits).size(), 1u);
    }
}

TEST(FrontHitsTest, HitAtTheOriginIsNotBehindIt) {
    for (const double distance : {0.0, -0.0}) {
        FrontHits hits(ray, std::nullopt);
        hits.add({0, distance});
        EXPECT_TRUE(hits.areEnough());
    }
}

TEST(FrontHitsTest, HitsComeInTheOrderOfTheirNumbers) {
    FrontHits hits(ray, std::nullopt);
    hits.add({7, 3.0});
    hits.add({2, 1.0});
    hits.add({5, 2.0});
    EXPECT_EQ(distances(hits), (std::vector<double>{1.0, 2.0, 3.0}));
}

TEST(FrontHitsTest, LadderOfTiesUpToTheLimitMakesAllCount) {
    FrontHits hits(ray, std::nullopt);
    hits.add({0, 10.0});
    const double limit = hits.limit();
    const double step = (limit - 10.0) / 16;
    for (unsigned int i = 1; i < 16; ++i)
        hits.add({i, 10.0 + i * step});
    EXPECT_EQ(hits.limit(), limit);
    EXPECT_FALSE(hits.areEnough());
}

TEST(FrontHitsTest, LadderWithAGapIsEnough) {
    FrontHits hits(ray, std::nullopt);
    hits.add({0, 10.0});
    const double step = (hits.limit() - 10.0) / 16;
    for (const unsigned int i : {1u, 2u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u})
        hits.add({i, 10.0 + i * step});
    EXPECT_TRUE(hits.areEnough());
}

TEST(FrontHitsTest, TheFrontOfEarlierGeometriesIsOneOfTheLadder) {
    // With the front between them the two hits are one ladder, and else they are two.
    FrontHits bare(ray, std::nullopt);
    bare.add({0, 10.0});
    const double tie = (bare.limit() - 10.0) / 8;
    const auto areEnough = [tie](std::optional<double> front) {
        FrontHits hits(ray, front);
        hits.add({0, 10.0});
        for (const double ties : {1.5, 2.2, 3.0, 3.8, 4.6, 5.4, 6.2, 7.0, 7.8})
            hits.add({1, 10.0 + ties * tie});
        return hits.areEnough();
    };
    EXPECT_TRUE(areEnough(std::nullopt));
    EXPECT_FALSE(areEnough(10.0 + 0.8 * tie));
}

} // namespace orbisk::test
