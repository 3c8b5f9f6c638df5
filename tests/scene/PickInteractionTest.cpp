#include "support/PickInteractionTest.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST_F(PickInteractionTest, ClicksWithoutAModeMeasureNothing) {
    click(1, 2);
    EXPECT_EQ(m_plane.picks, 0);
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, SurfaceIsPreparedWhenAModeBeginsAndNotBefore) {
    EXPECT_EQ(m_plane.preparations, 0);
    m_interaction.setLineMode(true);
    EXPECT_EQ(m_plane.preparations, 1);
    m_interaction.setLineMode(false);
    m_interaction.endMode();
    EXPECT_EQ(m_plane.preparations, 1);
}

TEST_F(PickInteractionTest, AtMostOneModeIsOn) {
    m_interaction.setPointMode(true);
    m_interaction.setLineMode(true);
    EXPECT_FALSE(m_interaction.pointMode());
    EXPECT_TRUE(m_interaction.lineMode());
    m_interaction.setAreaMode(true);
    EXPECT_FALSE(m_interaction.lineMode());
    m_interaction.setTravelMode(true);
    EXPECT_FALSE(m_interaction.areaMode());
    EXPECT_TRUE(m_interaction.travelMode());
    m_interaction.setPointMode(false);
    EXPECT_FALSE(m_interaction.travelMode());
    EXPECT_FALSE(m_interaction.pointMode());
}

TEST_F(PickInteractionTest, ModeSwitchHidesTheDrawing) {
    m_interaction.setPointMode(true);
    click(1, 2);
    EXPECT_TRUE(isDrawn());
    m_interaction.setLineMode(true);
    EXPECT_FALSE(isDrawn());
    EXPECT_EQ(m_set.points.size(), 1u);
}

TEST_F(PickInteractionTest, PointIsStoredDrawnAndListed) {
    m_interaction.setPointMode(true);
    click(3, 4);
    click(5, 6);
    EXPECT_EQ(m_set.points, (Points{{3, 4, 0}, {5, 6, 0}}));
    EXPECT_EQ(drawnVertices(), m_set.points);
    EXPECT_EQ(m_table.take(), (Calls{"append point", "append point"}));
}

TEST_F(PickInteractionTest, SamePixelAddsNoSecondPoint) {
    m_interaction.setPointMode(true);
    click(3, 4);
    click(3, 4);
    EXPECT_EQ(m_set.points.size(), 1u);
    click(5, 6);
    click(3, 4);
    EXPECT_EQ(m_set.points.size(), 3u);
}

TEST_F(PickInteractionTest, BackgroundAddsNothingAndIsNotRemembered) {
    m_interaction.setLineMode(true);
    click(3, 4);
    click(-1, 4);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{3, 4, 0}}}));
    EXPECT_FALSE(m_interaction.lineFinished());
    click(3, 4);
    EXPECT_TRUE(m_interaction.lineFinished());
}

TEST_F(PickInteractionTest, DamagedModelIsLikeBackground) {
    m_interaction.setPointMode(true);
    m_plane.damaged = true;
    click(3, 4);
    EXPECT_TRUE(m_set.points.empty());
}

TEST_F(PickInteractionTest, NothingIsPickedWithoutASurface) {
    m_interaction.setPointMode(true);
    m_interaction.setSurface(nullptr);
    click(3, 4);
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, FirstClickInTheUpperLeftCornerIsTakenForASecondOne) {
    m_interaction.setPointMode(true);
    click(0, 0);
    EXPECT_TRUE(m_set.points.empty());
    click(1, 0);
    click(0, 0);
    EXPECT_EQ(m_set.points.size(), 2u);
}

TEST_F(PickInteractionTest, MeasuresWithoutATable) {
    m_interaction.setTable(nullptr);
    m_interaction.setAreaMode(true);
    click(quadrangle);
    m_interaction.run(PickCommand::BackArea);
    m_interaction.run(PickCommand::ClearArea);
    EXPECT_TRUE(m_set.areas.empty());
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 5}});
    m_interaction.run(PickCommand::BackLine);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}}}));
}

TEST_F(PickInteractionTest, PointMenuNeedsPointsAndAHit) {
    m_interaction.setPointMode(true);
    EXPECT_TRUE(menu().empty());
    click(3, 4);
    EXPECT_EQ(menu(), Labels{"delete"});
    EXPECT_TRUE(menu(-1, 4).empty());
}

TEST_F(PickInteractionTest, DeleteTakesThePointNearThePointer) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{3, 4}, {3.5, 4.5, 10.5}}, {{8, 8}, {8.5, 8.5, 10.5}}};
    click({{3, 4}, {8, 8}});
    m_table.take();
    m_plane.places[{20, 20}] = {3.9, 4.2, 10.9};
    ASSERT_EQ(menu(20, 20), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_EQ(m_set.points, (Points{{8.5, 8.5, 10.5}}));
    EXPECT_EQ(m_table.take(), Calls{"rebuild points"});
    EXPECT_EQ(drawnVertices(), m_set.points);
}

TEST_F(PickInteractionTest, DeleteTakesTheNewestOfSeveral) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{1, 1}, {3.5, 4.5, 10.5}}, {{2, 2}, {3.6, 4.4, 10.4}}, {{3, 3}, {9, 9, 9}}};
    click({{1, 1}, {2, 2}, {3, 3}});
    ASSERT_EQ(menu(1, 1), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_EQ(m_set.points, (Points{{3.5, 4.5, 10.5}, {9, 9, 9}}));
}

TEST_F(PickInteractionTest, DeleteFarFromEveryPointDeletesNothing) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{1, 1}, {3.5, 4.5, 10.5}}, {{2, 2}, {5.1, 4.5, 10.5}}};
    click(1, 1);
    m_table.take();
    ASSERT_EQ(menu(2, 2), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_EQ(m_set.points.size(), 1u);
    EXPECT_TRUE(m_table.take().empty());
}

TEST_F(PickInteractionTest, DeletesBoxIsCutToWholeUnits) {
    m_interaction.setPointMode(true);
    // The pointer at 3.2 reaches from 2 to 4 on each axis, both left out.
    m_plane.places = {{{1, 1}, {3.2, 3.2, 3.2}},
                      {{2, 2}, {4.1, 3.2, 3.2}},
                      {{3, 3}, {2.05, 3.2, 3.2}},
                      {{4, 4}, {2.0, 3.2, 3.2}}};
    click({{2, 2}, {4, 4}, {3, 3}});
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(menu(1, 1), Labels{"delete"});
        m_interaction.run(PickCommand::DeletePoint);
    }
    EXPECT_EQ(m_set.points, (Points{{4.1, 3.2, 3.2}, {2.0, 3.2, 3.2}}));
}

TEST_F(PickInteractionTest, DeletesBoxAroundZeroIsCutTowardsZero) {
    m_interaction.setPointMode(true);
    // The pointer at 0.5 reaches from 0 to 1.
    m_plane.places = {
        {{1, 1}, {0.5, 0.5, 0.5}}, {{2, 2}, {-0.3, 0.5, 0.5}}, {{3, 3}, {0.3, 0.5, 0.5}}};
    click({{2, 2}, {3, 3}});
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(menu(1, 1), Labels{"delete"});
        m_interaction.run(PickCommand::DeletePoint);
    }
    EXPECT_EQ(m_set.points, (Points{{-0.3, 0.5, 0.5}}));
}

TEST_F(PickInteractionTest, DeletedLastPointHidesTheDrawing) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{1, 1}, {3.5, 4.5, 10.5}}};
    click(1, 1);
    ASSERT_EQ(menu(1, 1), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_FALSE(isDrawn());
}

TEST_F(PickInteractionTest, PreviewFollowsThePointerWhileALineGrows) {
    m_interaction.setLineMode(true);
    movePointer(4, 4);
    EXPECT_FALSE(isDrawn());
    click(1, 1);
    movePointer(7, 8);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {1, 1, 0}, {7, 8, 0}, {7, 8, 0}}));
    movePointer(-5, 8);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(-5, 8, nearPlane));
    click(1, 1);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}}));
    movePointer(9, 9);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}}));
}

TEST_F(PickInteractionTest, PreviewFollowsInAreaAndTravelMode) {
    m_interaction.setAreaMode(true);
    click(1, 1);
    movePointer(7, 8);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(7, 8, 0));
    m_interaction.setTravelMode(true);
    movePointer(7, 8);
    EXPECT_FALSE(isDrawn());
    click(2, 1);
    movePointer(7, 9);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(7, 9, 0));
    m_interaction.setPointMode(true);
    click(3, 1);
    movePointer(7, 10);
    EXPECT_EQ(drawnVertices(), (Points{{3, 1, 0}}));
}

TEST_F(PickInteractionTest, ManyMotionsCostOnePick) {
    m_interaction.setLineMode(true);
    click(1, 1);
    m_plane.picks = 0;
    for (int x = 0; x < 50; ++x)
        m_interaction.onMouseMotion({x, 8});
    EXPECT_EQ(m_plane.picks, 0);
    m_interaction.updatePreview();
    m_interaction.updatePreview();
    EXPECT_EQ(m_plane.picks, 1);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(49, 8, 0));
}

TEST_F(PickInteractionTest, ClearForgetsEverythingAndBeginsAnew) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}});
    m_table.take();
    m_interaction.clear();
    EXPECT_TRUE(m_set.lines.empty());
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_FALSE(isDrawn());
    EXPECT_EQ(m_table.take().size(), 4u);
    click(5, 1);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{5, 1, 0}}}));
}

TEST_F(PickInteractionTest, TableThatErasesTheCurrentLineFinishesIt) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 1}, {8, 8}});
    m_set.lines.pop_back();
    m_interaction.linesChanged(true);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    click(9, 9);
    EXPECT_EQ(m_set.lines.size(), 2u);
    m_set.lines.front().pop_back();
    m_interaction.linesChanged(false);
    click(10, 9);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{9, 9, 0}, {10, 9, 0}}));
}

TEST_F(PickInteractionTest, TableThatChangesTheCurrentAreaFillsItAnew) {
    m_interaction.setAreaMode(true);
    m_plane.places = {{{10, 0}, {10, 0, 1}}, {{0, 10}, {0, 10, 2}}};
    click({{0, -1}, {10, 0}, {0, 10}});
    m_set.areas.back().pop_back();
    m_interaction.areasChanged(false);
    EXPECT_TRUE(m_set.areaTriangles.empty());
    EXPECT_EQ(drawnVertices().size(), 2u);
}

TEST_F(PickInteractionTest, TableRedrawsOnlyWhatIsShown) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}});
    m_set.points.emplace_back(1, 2, 3);
    m_interaction.pointsChanged();
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    m_interaction.setTravelMode(true);
    m_set.travelPoints.emplace_back(1, 2, 3);
    m_interaction.travelChanged();
    EXPECT_EQ(drawnVertices(), (Points{{1, 2, 3}}));
}

} // namespace orbisk::test
