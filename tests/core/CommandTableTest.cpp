#include "app/CommandTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace orbisk::test {

namespace {

using Kind = CommandKind;
using Menu = CommandMenu;

struct ExpectedItem {
    Command command;
    const char* label;
    Kind kind;
    Menu menu;
    bool separatorAfter = false;
};

/// The menu items in the order of their creation.
const ExpectedItem expectedItems[] = {
    {Command::Open, "Open", Kind::Normal, Menu::File},
    {Command::OpenUrl, "Open URL", Kind::Normal, Menu::File},
    {Command::RecentFiles, "Recent Files", Kind::Submenu, Menu::File, true},
    {Command::Save, "Save", Kind::Normal, Menu::File, true},
    {Command::Quit, "Quit", Kind::Normal, Menu::File, true},
    {Command::About, "About", Kind::Normal, Menu::Help},
    {Command::Help, "Help", Kind::Normal, Menu::Help},
    {Command::Options, "Options", Kind::Normal, Menu::Set},
    {Command::Language, "Language", Kind::Submenu, Menu::Set},
    {Command::Chinese, "Chinese", Kind::Radio, Menu::LanguageSubmenu},
    {Command::English, "English", Kind::Radio, Menu::LanguageSubmenu},
    {Command::ResetModel, "Reset Model", Kind::Normal, Menu::Model, true},
    {Command::PointCloud, "PointCloud", Kind::Check, Menu::Model},
    {Command::Tin, "TIN", Kind::Check, Menu::Model},
    {Command::Gray, "Gray", Kind::Check, Menu::Model},
    {Command::Toolbar, "Toolbar", Kind::Check, Menu::Display},
    {Command::Skybox, "Skybox", Kind::Check, Menu::Display},
    {Command::PointPick, "Point Pick", Kind::Check, Menu::Measure},
    {Command::LinePick, "Line Pick", Kind::Check, Menu::Measure},
    {Command::AreaPick, "Area Pick", Kind::Check, Menu::Measure},
    {Command::AutomaticRoam, "Automatic Roam", Kind::Check, Menu::Measure, true},
    {Command::MeasureTable, "Measure table", Kind::Normal, Menu::Measure},
};

using Tool = std::tuple<Command, std::string, std::string, std::string>;

/// The tools from left to right: command, icon, name, text.
const std::vector<Tool> expectedTools = {
    {Command::Open, "icon_open32", "ToolOpen", "Open File"},
    {Command::Save, "icon_save32", "ToolSave", "Save File"},
    {Command::ResetModel, "icon_original32", "Original", "Reset Model"},
    {Command::PointCloud, "icon_pts32", "PointCloud", "Point Cloud Model"},
    {Command::Tin, "icon_tin32", "TIN", "TIN Model"},
    {Command::Gray, "icon_gray32", "Gray", "Gray model"},
    {Command::PointPick, "icon_point32", "ToolPickPoint", "Point Pick"},
    {Command::LinePick, "icon_line32", "ToolPickLine", "Line Pick"},
    {Command::AreaPick, "icon_rect32", "ToolPickRect", "Area Pick"},
    {Command::AutomaticRoam, "icon_travel32", "ToolTravel", "Automatic Roam"},
    {Command::Tips, "icon_tips", "Tips", "Brenholt tip message"},
};

std::vector<Command> commandsWhere(bool (*wanted)(const CommandRow&)) {
    std::vector<Command> commands;
    for (const CommandRow& row : commandTable)
        if (wanted(row))
            commands.push_back(row.command);
    return commands;
}

} // namespace

TEST(CommandTableTest, RowsStandInTheOrderOfTheCommands) {
    for (std::size_t i = 0; i < commandTable.size(); ++i)
        EXPECT_EQ(static_cast<std::size_t>(commandTable[i].command), i);
}

TEST(CommandTableTest, MenuItemsAreAsDesigned) {
    ASSERT_EQ(commandCount, std::size(expectedItems) + 1);
    for (std::size_t i = 0; i < std::size(expectedItems); ++i) {
        const ExpectedItem& expected = expectedItems[i];
        const CommandRow& row = commandTable[i];
        EXPECT_EQ(row.command, expected.command) << expected.label;
        EXPECT_STREQ(row.label, expected.label);
        EXPECT_EQ(row.kind, expected.kind) << expected.label;
        EXPECT_EQ(row.menu, expected.menu) << expected.label;
        EXPECT_EQ(row.separatorAfter, expected.separatorAfter) << expected.label;
    }
}

TEST(CommandTableTest, TipsAreAToolAlone) {
    const CommandRow& tips = commandTable.back();
    EXPECT_EQ(tips.command, Command::Tips);
    EXPECT_EQ(tips.label, nullptr);
    EXPECT_EQ(tips.menu, Menu::None);
    EXPECT_EQ(tips.kind, Kind::Normal);
    EXPECT_FALSE(tips.separatorAfter);
}

TEST(CommandTableTest, ToolsAreAsDesigned) {
    std::vector<Tool> tools;
    for (const CommandRow& row : commandTable) {
        if (!row.tool.name) {
            EXPECT_EQ(row.tool.icon, nullptr) << row.label;
            EXPECT_EQ(row.tool.shortHelp, nullptr) << row.label;
            continue;
        }
        tools.emplace_back(row.command, row.tool.icon, row.tool.name, row.tool.shortHelp);
    }
    EXPECT_EQ(tools, expectedTools);
}

TEST(CommandTableTest, DisplayModesExcludeEachOther) {
    EXPECT_EQ(
        commandsWhere([](const CommandRow& row) { return row.group == CommandGroup::Display; }),
        (std::vector{Command::PointCloud, Command::Tin, Command::Gray}));
}

TEST(CommandTableTest, MeasuringCommandsExcludeEachOther) {
    EXPECT_EQ(
        commandsWhere([](const CommandRow& row) { return row.group == CommandGroup::Measure; }),
        (std::vector{Command::PointPick, Command::LinePick, Command::AreaPick,
                     Command::AutomaticRoam}));
}

TEST(CommandTableTest, OnlyModesNeedAModel) {
    EXPECT_EQ(commandsWhere([](const CommandRow& row) { return row.needs == ModelNeed::Needed; }),
              (std::vector{Command::PointCloud, Command::Tin, Command::Gray, Command::PointPick,
                           Command::LinePick, Command::AreaPick, Command::AutomaticRoam}));
}

TEST(CommandTableTest, MenusStandInTheOrderOfTheBar) {
    const std::vector<std::pair<Menu, std::string>> expected = {
        {Menu::File, "&File"},      {Menu::Set, "Set"},         {Menu::Model, "Model"},
        {Menu::Display, "Display"}, {Menu::Measure, "Measure"}, {Menu::Help, "Help"},
    };
    std::vector<std::pair<Menu, std::string>> titles;
    for (const MenuTitle& title : menuTitles)
        titles.emplace_back(title.menu, title.title);
    EXPECT_EQ(titles, expected);
}

TEST(CommandTableTest, FindsARowByItsCommand) {
    for (std::size_t i = 0; i < commandCount; ++i)
        EXPECT_EQ(&rowOf(static_cast<Command>(i)), &commandTable[i]);
    EXPECT_TRUE(isCheck(Command::Skybox));
    EXPECT_FALSE(isCheck(Command::English));
    EXPECT_FALSE(isCheck(Command::Open));
    EXPECT_FALSE(isCheck(Command::RecentFiles));
}

} // namespace orbisk::test
