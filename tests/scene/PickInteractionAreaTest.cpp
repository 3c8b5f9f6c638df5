#include "support/PickInteractionTest.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST_F(PickInteractionTest, AreaIsMeasuredFromThreeVerticesOn) {
    m_interaction.setAreaMode(true);
    m_plane.places = {{{10, 0}, {10, 0, 1}}, {{0, 10}, {0, 10, 2}}};
    click({{0, -1}, {10, 0}});
    EXPECT_TRUE(m_set.areaTriangles.empty());
    click(0, 10);
    EXPECT_EQ(m_set.areaTriangles.size(), 3u);
    EXPECT_EQ(m_set.areas.size(), 1u);
    EXPECT_EQ(m_table.take(),
              (Calls{"append area vertex", "append area vertex", "append area vertex"}));
    EXPECT_EQ(drawnVertices().size(), 6u); // the filling and the outline
    click(0, 10);
    EXPECT_TRUE(m_interaction.areaFinished());
    EXPECT_EQ(m_set.areaTriangles.size(), 3u);
    click(3, 3);
    EXPECT_EQ(m_set.areas.size(), 2u);
    EXPECT_TRUE(m_set.areaTriangles.empty());
}

TEST_F(PickInteractionTest, CrossingVertexIsKept) {
    m_interaction.setAreaMode(true);
    click({{0, -1}, {10, 10}, {10, 1}, {1, 11}});
    EXPECT_EQ(m_set.areas.back().size(), 4u);
    EXPECT_FALSE(m_interaction.areaFinished());
}

TEST_F(PickInteractionTest, AreaMenuNeedsThreeVerticesToFinish) {
    m_interaction.setAreaMode(true);
    EXPECT_TRUE(menu().empty());
    click({{0, -1}, {10, 1}});
    EXPECT_EQ(menu(), (Labels{"(finish)", "back", "clear"}));
    click(13, 12);
    EXPECT_EQ(menu(), (Labels{"finish", "back", "clear"}));
    m_interaction.run(PickCommand::FinishArea);
    EXPECT_TRUE(m_interaction.areaFinished());
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, AreaBackMeasuresAgain) {
    m_interaction.setAreaMode(true);
    click(quadrangle);
    m_table.take();
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas.back().size(), 3u);
    EXPECT_FALSE(m_interaction.areaFinished());
    EXPECT_EQ(m_table.take(), Calls{"remove area vertex"});
}

TEST_F(PickInteractionTest, FailedAreaBackRemovesOneVertexMore) {
    m_interaction.setAreaMode(true);
    // With the fourth vertex the polygon crosses itself, whatever the fifth.
    click({{0, -1}, {10, 10}, {10, 1}, {1, 11}, {-0, 30}});
    ASSERT_EQ(m_set.areas.back().size(), 5u);
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas.back().size(), 3u);
}

TEST_F(PickInteractionTest, AreaBackToNothingIsNotOffered) {
    m_interaction.setAreaMode(true);
    click(0, -1);
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas, std::vector<MeasureArea>(1));
    EXPECT_EQ(menu(), (Labels{"(finish)", "(back)", "clear"}));
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas, std::vector<MeasureArea>(1));
}

TEST_F(PickInteractionTest, AreaClearOfTheOnlyAreaLeavesNone) {
    m_interaction.setAreaMode(true);
    click({{0, -1}, {10, 1}});
    m_table.take();
    m_interaction.run(PickCommand::ClearArea);
    EXPECT_TRUE(m_set.areas.empty());
    EXPECT_TRUE(m_interaction.areaFinished());
    EXPECT_EQ(m_table.take(), Calls{"rebuild areas"});
    EXPECT_FALSE(isDrawn());
    click(13, 12);
    EXPECT_EQ(m_set.areas, (std::vector<MeasureArea>{{{13, 12, 0}}}));
}

TEST_F(PickInteractionTest, AreaClearFillsTheAreaBeforeIt) {
    m_interaction.setAreaMode(true);
    m_plane.places = {{{10, 0}, {10, 0, 1}}, {{0, 10}, {0, 10, 2}}};
    click({{0, -1}, {10, 0}, {0, 10}, {0, 10}, {30, 30}, {40, 30}});
    m_interaction.run(PickCommand::ClearArea);
    EXPECT_EQ(m_set.areaTriangles.size(), 3u);
    EXPECT_EQ(drawnVertices().size(), 6u);
}

TEST_F(PickInteractionTest, TravelPathIsCollectedAndFlown) {
    m_interaction.setTravelMode(true);
    click(1, 1);
    EXPECT_EQ(m_table.take(), (Calls{"rebuild travel", "append travel"}));
    click(5, 1);
    EXPECT_EQ(m_table.take(), Calls{"append travel"});
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    EXPECT_FALSE(m_flown);
    click(5, 1);
    ASSERT_TRUE(m_flown);
    EXPECT_EQ(*m_flown, (TravelPath{{1, 1, 0}, {5, 1, 0}}));
    EXPECT_TRUE(m_set.travelPoints.empty());
    EXPECT_FALSE(isDrawn());
    m_flown.reset();
    click(5, 1);
    EXPECT_FALSE(m_flown) << "a third click would end the roam by flying along nothing";
}

TEST_F(PickInteractionTest, RoamStartsWhenItsPointsAreConsumed) {
    m_interaction.setTravelMode(true);
    click(1, 1);
    click(5, 1);
    m_interaction.run(PickCommand::FinishTravel);
    EXPECT_EQ(m_flown, (TravelPath{{1, 1, 0}, {5, 1, 0}}));
    EXPECT_TRUE(m_collectedAtStart.empty());
    EXPECT_FALSE(m_drawnAtStart);
}

TEST_F(PickInteractionTest, TravelMenuIsAlwaysThere) {
    m_interaction.setTravelMode(true);
    EXPECT_EQ(menu(), (Labels{"finish", "(back)", "clear"}));
    click(1, 1);
    click(5, 1);
    EXPECT_EQ(menu(-1, 0), (Labels{"finish", "back", "clear"}));
    m_interaction.run(PickCommand::BackTravel);
    EXPECT_EQ(m_set.travelPoints, (TravelPath{{1, 1, 0}}));
    m_interaction.run(PickCommand::ClearTravel);
    EXPECT_TRUE(m_set.travelPoints.empty());
    m_interaction.run(PickCommand::ClearTravel);
    m_interaction.run(PickCommand::BackTravel);
    EXPECT_TRUE(m_set.travelPoints.empty());
    EXPECT_FALSE(isDrawn());
    EXPECT_FALSE(m_flown);
    m_interaction.run(PickCommand::FinishTravel);
    EXPECT_EQ(m_flown, TravelPath());
}

TEST_F(PickInteractionTest, ClearingAnEmptyTravelPathStillRedraws) {
    m_interaction.setTravelMode(true);
    m_switch->setValue(SceneRoot::drawingSlot, true);
    m_interaction.run(PickCommand::ClearTravel);
    EXPECT_TRUE(m_set.travelPoints.empty());
    EXPECT_FALSE(isDrawn());
    EXPECT_EQ(m_table.take(), Calls{"rebuild travel"});
}

} // namespace orbisk::test
