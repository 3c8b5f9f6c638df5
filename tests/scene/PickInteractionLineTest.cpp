#include "support/PickInteractionTest.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST_F(PickInteractionTest, LineGrowsUntilItsLastPixelIsClickedAgain) {
    m_interaction.setLineMode(true);
    EXPECT_TRUE(m_interaction.lineFinished());
    click(1, 1);
    EXPECT_FALSE(m_interaction.lineFinished());
    click({{5, 1}, {5, 4}, {5, 4}});
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}, {5, 1, 0}, {5, 4, 0}}}));
    EXPECT_EQ(m_table.take(),
              (Calls{"append line vertex", "append line vertex", "append line vertex"}));
    click(5, 5);
    EXPECT_EQ(m_set.lines.size(), 2u);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{5, 5, 0}}));
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}, {5, 4, 0}, {5, 5, 0}}));
}

TEST_F(PickInteractionTest, ThirdClickAtThePixelLeavesTheLineFinished) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 1}, {5, 1}});
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_set.lines.size(), 1u);
}

TEST_F(PickInteractionTest, LineGoesOnAfterAnotherMode) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}});
    m_interaction.setPointMode(true);
    m_interaction.setLineMode(true);
    click(9, 9);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}, {5, 1, 0}, {9, 9, 0}}}));
}

TEST_F(PickInteractionTest, LineMenuNeedsTwoVerticesToFinishAndLoop) {
    m_interaction.setLineMode(true);
    EXPECT_TRUE(menu().empty());
    click(1, 1);
    EXPECT_EQ(menu(), (Labels{"(finish)", "(loop)", "back", "clear"}));
    click(5, 1);
    EXPECT_EQ(menu(), (Labels{"finish", "loop", "back", "clear"}));
    m_interaction.run(PickCommand::FinishLine);
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, MenusCommandsHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(PickCommand::DeletePoint), 6050);
    EXPECT_EQ(static_cast<int>(PickCommand::FinishLine), 6051);
    EXPECT_EQ(static_cast<int>(PickCommand::FinishArea), 6055);
    EXPECT_EQ(static_cast<int>(PickCommand::FinishTravel), 6058);
    EXPECT_EQ(static_cast<int>(PickCommand::ClearTravel), 6060);
}

TEST_F(PickInteractionTest, LoopRepeatsTheFirstVertexAndFinishes) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 4}});
    m_table.take();
    m_interaction.run(PickCommand::LoopLine);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{1, 1, 0}, {5, 1, 0}, {5, 4, 0}, {1, 1, 0}}));
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_table.take(), Calls{"append line vertex"});
    EXPECT_EQ(drawnVertices().size(), 4u);
}

TEST_F(PickInteractionTest, LoopOfOneVertexGivesTwoEqualOnes) {
    m_interaction.setLineMode(true);
    click(1, 1);
    m_interaction.run(PickCommand::LoopLine);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{1, 1, 0}, {1, 1, 0}}));
}

TEST_F(PickInteractionTest, LineBackLeavesAnEmptyCurrentLine) {
    m_interaction.setLineMode(true);
    click(1, 1);
    m_table.take();
    m_interaction.run(PickCommand::BackLine);
    EXPECT_EQ(m_set.lines, std::vector<MeasureLine>(1));
    EXPECT_FALSE(m_interaction.lineFinished());
    EXPECT_EQ(m_table.take(), Calls{"rebuild lines"});
    EXPECT_EQ(menu(), (Labels{"(finish)", "(loop)", "(back)", "clear"}));
    m_interaction.run(PickCommand::BackLine);
    EXPECT_EQ(m_set.lines, std::vector<MeasureLine>(1));
    click(7, 7);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{7, 7, 0}}}));
}

TEST_F(PickInteractionTest, LineClearRemovesTheCurrentLineOnly) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 1}, {8, 8}, {9, 9}});
    m_table.take();
    m_interaction.run(PickCommand::ClearLine);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}, {5, 1, 0}}}));
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_table.take(), Calls{"rebuild lines"});
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    m_interaction.run(PickCommand::ClearLine);
    EXPECT_TRUE(m_set.lines.empty());
    EXPECT_FALSE(isDrawn());
}

} // namespace orbisk::test
