#include "support/GuiTest.h"
#include "support/TestModels.h"

#include <algorithm>

namespace orbisk::test {

namespace {

std::string labelOf(const ::testing::TestParamInfo<Command>& info) {
    std::string label = rowOf(info.param).label;
    label.erase(std::remove(label.begin(), label.end(), ' '), label.end());
    return label;
}

} // namespace

class CheckCommandTest : public GuiTest, public ::testing::WithParamInterface<Command> {
protected:
    static std::vector<Command> checkedInMenu() {
        return checked([](Command command) { return menuItem(command).IsChecked(); });
    }

    static std::vector<Command> checkedInToolBar() {
        return checked([](Command command) { return isToolChecked(command); });
    }

    static std::vector<Command> othersOfTheGroup() {
        std::vector<Command> others;
        for (const CommandRow& row : commandTable)
            if (row.group == rowOf(GetParam()).group && row.command != GetParam())
                others.push_back(row.command);
        return others;
    }

private:
    static std::vector<Command> checked(bool (*isChecked)(Command)) {
        std::vector<Command> commands;
        for (const CommandRow& row : commandTable)
            if (row.group != CommandGroup::None && isChecked(row.command))
                commands.push_back(row.command);
        return commands;
    }
};

using Commands = std::vector<Command>;

TEST_P(CheckCommandTest, MenuItemIsUndoneWithoutAModel) {
    start();
    choose(GetParam());
    EXPECT_EQ(checkedInMenu(), Commands{});
    EXPECT_EQ(checkedInToolBar(), Commands{});
}

TEST_P(CheckCommandTest, ToolIsUndoneWithoutAModel) {
    start();
    bool seen = false;
    frame()->bars().toolBar()->Bind(wxEVT_MENU, [&seen](wxCommandEvent& event) {
        event.Skip();
        seen = true;
    });
    clickTool(GetParam());
    EXPECT_TRUE(seen);
    EXPECT_EQ(checkedInMenu(), Commands{});
    EXPECT_EQ(checkedInToolBar(), Commands{});
}

TEST_P(CheckCommandTest, MenuItemAndToolShowTheSame) {
    start();
    load(writeTestModel());
    choose(GetParam());
    EXPECT_EQ(checkedInMenu(), Commands{GetParam()});
    EXPECT_EQ(checkedInToolBar(), Commands{GetParam()});
    clickTool(GetParam());
    EXPECT_EQ(checkedInMenu(), Commands{});
    EXPECT_EQ(checkedInToolBar(), Commands{});
    clickTool(GetParam());
    EXPECT_EQ(checkedInMenu(), Commands{GetParam()});
    EXPECT_EQ(checkedInToolBar(), Commands{GetParam()});
    choose(GetParam());
    EXPECT_EQ(checkedInMenu(), Commands{});
    EXPECT_EQ(checkedInToolBar(), Commands{});
}

TEST_P(CheckCommandTest, EndsTheOthersOfItsGroup) {
    start();
    load(writeTestModel());
    for (const Command other : othersOfTheGroup()) {
        choose(other);
        EXPECT_EQ(checkedInMenu(), Commands{other});
        choose(GetParam());
        EXPECT_EQ(checkedInMenu(), Commands{GetParam()});
        EXPECT_EQ(checkedInToolBar(), Commands{GetParam()});
    }
    clickTool(othersOfTheGroup().front());
    clickTool(GetParam());
    EXPECT_EQ(checkedInMenu(), Commands{GetParam()});
    EXPECT_EQ(checkedInToolBar(), Commands{GetParam()});
}

TEST_P(CheckCommandTest, IsUncheckedByAnotherModel) {
    start();
    load(writeTestModel());
    choose(GetParam());
    load(writeTestModel());
    EXPECT_EQ(checkedInMenu(), Commands{});
    EXPECT_EQ(checkedInToolBar(), Commands{});
}

TEST_P(CheckCommandTest, IsUncheckedByResetModelOnlyIfItMeasures) {
    start();
    load(writeTestModel());
    choose(GetParam());
    choose(Command::ResetModel);
    const bool measures = rowOf(GetParam()).group == CommandGroup::Measure;
    EXPECT_EQ(checkedInMenu(), measures ? Commands{} : Commands{GetParam()});
    EXPECT_EQ(checkedInToolBar(), checkedInMenu());
}

INSTANTIATE_TEST_SUITE_P(All, CheckCommandTest,
                         ::testing::Values(Command::PointCloud, Command::Tin, Command::Gray,
                                           Command::PointPick, Command::LinePick, Command::AreaPick,
                                           Command::AutomaticRoam),
                         labelOf);

} // namespace orbisk::test
