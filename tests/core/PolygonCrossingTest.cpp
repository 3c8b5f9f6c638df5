#include "core/PolygonShapes.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(SegmentsIntersectTest, CrossingAndDistantSegments) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {0, 2, 0}, {2, 0, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {3, 2, 0}, {5, 0, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({3, 2, 0}, {5, 0, 0}, {0, 0, 0}, {2, 2, 0}));
}

TEST(SegmentsIntersectTest, TouchingAtAnEndIsMeeting) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {2, 2, 0}, {4, 0, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {1, 1, 0}, {4, 0, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({1, 1, 0}, {4, 0, 0}, {0, 0, 0}, {2, 2, 0}));
}

TEST(SegmentsIntersectTest, HeightsDoNotMatter) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {0, 2, 100}, {2, 0, 200}));
}

TEST(SegmentsIntersectTest, SegmentsOverEachOtherAreSeenFromTheSide) {
    // Parallel from above; from along x they cross or don't, whatever their x.
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {0, 2, 2}, {9, 0, 2}, {9, 2, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {0, 2, 2}, {0, 3, 2}, {0, 5, 0}));
}

TEST(SegmentsIntersectTest, SegmentsOfEqualYAreSeenAlongY) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 0, 2}, {0, 7, 2}, {2, 7, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 0, 2}, {3, 0, 2}, {5, 0, 0}));
}

TEST(SegmentsIntersectTest, ViewAlongXComesBeforeTheOneAlongY) {
    // Parallel from above; from one side they cross, from the other they don't.
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 2}, {0, 3, 2}, {2, 5, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 2}, {3, 0, 2}, {5, 2, 0}));
}

TEST(SegmentsIntersectTest, FirstProjectionThatIsNotParallelDecidesAlone) {
    // They meet from the side, not from above.
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 2}, {3, 2, 2}, {5, 0, 0}));
}

TEST(SegmentsIntersectTest, ParallelSegmentsMeetHoweverFarApart) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1, 2, 3}, {1000, 0, 0}, {1001, 2, 3}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1, 2, 3}, {1001, 2, 3}, {1000, 0, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1, 2, 3}, {1000, 0, 0}, {1000, 0, 0}));
}

TEST(SegmentsIntersectTest, ParallelIsMeasuredAbsolutely) {
    // A right angle, but of segments so short that their determinant is nothing.
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1e-3, 0, 0}, {500, 0, 0}, {500, 1e-3, 0}));
    EXPECT_FALSE(
        Measure::segmentsIntersect({0, 0, 0}, {1.1e-3, 0, 0}, {500, 0, 0}, {500, 1e-3, 0}));
}

TEST(ClosingEdgeCrossesTest, NeverWithFewerThanFourVertices) {
    EXPECT_FALSE(Measure::closingEdgeCrosses({}));
    EXPECT_FALSE(Measure::closingEdgeCrosses({at(0, 0), at(1, 1), at(2, 2)}));
}

TEST(ClosingEdgeCrossesTest, LooksAtEveryEdgeButItsNeighbours) {
    EXPECT_FALSE(Measure::closingEdgeCrosses(quadrilateral()));
    EXPECT_TRUE(Measure::closingEdgeCrosses(crossedByClosingEdge()));
    // Only with the edge from the third to the fourth vertex.
    EXPECT_TRUE(Measure::closingEdgeCrosses({at(0, 0), at(9, 1), at(7, 5), at(5, -2), at(8, -1)}));
}

TEST(ClosingEdgeCrossesTest, ParallelEdgeCrosses) {
    EXPECT_TRUE(Measure::closingEdgeCrosses({at(0, 0), at(4, 0), at(4, 3), at(0, 3)}));
}

} // namespace orbisk::test
