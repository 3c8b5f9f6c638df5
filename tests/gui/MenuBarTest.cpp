#include "support/GuiTest.h"
#include "support/TestModels.h"

#include <wx/uiaction.h>

#include <algorithm>
#include <set>

namespace orbisk::test {

class MenuBarTest : public GuiTest {
protected:
    /// A menu's items in order: "-" stands for a separator, "[label]" for a check item,
    /// "(label)" for a radio item, "label >" for a submenu.
    static std::vector<std::string> itemsOf(const wxMenu& menu) {
        std::vector<std::string> items;
        for (const wxMenuItem* item : menu.GetMenuItems()) {
            const std::string label = item->GetItemLabel().utf8_string();
            if (item->IsSeparator())
                items.emplace_back("-");
            else if (item->IsCheck())
                items.push_back("[" + label + "]");
            else if (item->IsRadio())
                items.push_back("(" + label + ")");
            else
                items.push_back(item->IsSubMenu() ? label + " >" : label);
        }
        return items;
    }

    static std::vector<std::string> itemsOf(std::size_t menu) {
        return itemsOf(*frame()->GetMenuBar()->GetMenu(menu));
    }
};

using Items = std::vector<std::string>;

TEST_F(MenuBarTest, HasSixMenusInOrder) {
    start();
    const wxMenuBar& bar = *frame()->GetMenuBar();
    Items titles;
    for (std::size_t i = 0; i < bar.GetMenuCount(); ++i)
        titles.push_back(bar.GetMenuLabel(i).utf8_string());
    EXPECT_EQ(titles, (Items{"&File", "Set", "Model", "Display", "Measure", "Help"}));
}

TEST_F(MenuBarTest, FileMenuEndsWithASeparator) {
    start();
    EXPECT_EQ(itemsOf(0),
              (Items{"Open", "Open URL", "Recent Files >", "-", "Save", "-", "Quit", "-"}));
}

TEST_F(MenuBarTest, OtherMenusHaveTheirItems) {
    start();
    EXPECT_EQ(itemsOf(1), (Items{"Options", "Language >"}));
    EXPECT_EQ(itemsOf(*menuItem(Command::Language).GetSubMenu()),
              (Items{"(Chinese)", "(English)"}));
    EXPECT_EQ(itemsOf(2), (Items{"Reset Model", "-", "[PointCloud]", "[TIN]", "[Gray]"}));
    EXPECT_EQ(itemsOf(3), (Items{"[Toolbar]", "[Skybox]"}));
    EXPECT_EQ(itemsOf(4), (Items{"[Point Pick]", "[Line Pick]", "[Area Pick]", "[Automatic Roam]",
                                 "-", "Measure table"}));
    EXPECT_EQ(itemsOf(5), (Items{"About", "Help"}));
}

TEST_F(MenuBarTest, HasNoAccelerators) {
    start();
    for (const CommandRow& row : commandTable)
        if (row.menu != CommandMenu::None) {
            EXPECT_EQ(menuItem(row.command).GetAccel(), nullptr) << row.label;
        }
}

TEST_F(MenuBarTest, ChecksFollowTheSettingsAtTheStart) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish, "[]", 0, 1);
    start();
    EXPECT_TRUE(menuItem(Command::Toolbar).IsChecked());
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
    EXPECT_TRUE(menuItem(Command::English).IsChecked());
    EXPECT_FALSE(menuItem(Command::Chinese).IsChecked());
    for (const CommandRow& row : commandTable)
        if (row.group != CommandGroup::None) {
            EXPECT_FALSE(menuItem(row.command).IsChecked()) << row.label;
        }
}

TEST_F(MenuBarTest, IdentifiersAreAllDifferent) {
    start();
    const CommandBars& bars = frame()->bars();
    std::multiset<wxWindowID> ids;
    for (const CommandRow& row : commandTable) {
        if (row.menu != CommandMenu::None)
            ids.insert(bars.menuId(row.command));
        if (row.tool.name)
            ids.insert(bars.toolId(row.command));
    }
    for (std::size_t i = 0; i < 10; ++i)
        ids.insert(bars.recentId(i));
    for (const wxWindowID id : ids) {
        EXPECT_EQ(ids.count(id), 1u) << id;
        EXPECT_NE(id, wxID_NONE);
    }
    for (std::size_t i = 1; i < 10; ++i)
        EXPECT_EQ(bars.recentId(i), bars.recentId(0) + static_cast<wxWindowID>(i));
}

TEST_F(MenuBarTest, IdentifiersAreMadeInTheOrderOfTheCommands) {
    start();
    std::vector<wxWindowID> ids;
    for (const CommandRow& row : commandTable)
        if (row.menu != CommandMenu::None)
            ids.push_back(frame()->bars().menuId(row.command));
    // The toolkit counts down, which is its own affair.
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()) || std::is_sorted(ids.rbegin(), ids.rend()));
}

TEST_F(MenuBarTest, IdentifiersOutliveALanguageSwitch) {
    start();
    const wxWindowID menuId = frame()->bars().menuId(Command::Gray);
    const wxWindowID toolId = frame()->bars().toolId(Command::Gray);
    frame()->switchLanguage(languageChinese);
    EXPECT_EQ(frame()->bars().menuId(Command::Gray), menuId);
    EXPECT_EQ(frame()->bars().toolId(Command::Gray), toolId);
    EXPECT_NE(frame()->GetMenuBar()->FindItem(menuId), nullptr);
}

TEST_F(MenuBarTest, EveryToolHasItsNameHelpAndIcon) {
    struct Tool {
        Command command;
        const char* name;
        const char* help;
        bool check;
    };
    const Tool tools[] = {
        {Command::Open, "ToolOpen", "Open File", false},
        {Command::Save, "ToolSave", "Save File", false},
        {Command::ResetModel, "Original", "Reset Model", false},
        {Command::PointCloud, "PointCloud", "Point Cloud Model", true},
        {Command::Tin, "TIN", "TIN Model", true},
        {Command::Gray, "Gray", "Gray model", true},
        {Command::PointPick, "ToolPickPoint", "Point Pick", true},
        {Command::LinePick, "ToolPickLine", "Line Pick", true},
        {Command::AreaPick, "ToolPickRect", "Area Pick", true},
        {Command::AutomaticRoam, "ToolTravel", "Automatic Roam", true},
        {Command::Tips, "Tips", "Brenholt tip message", false},
    };
    start();
    wxAuiToolBar& bar = *frame()->bars().toolBar();
    ASSERT_EQ(bar.GetToolCount(), std::size(tools));
    int former = -1;
    for (std::size_t i = 0; i < std::size(tools); ++i) {
        const Tool& expected = tools[i];
        const wxAuiToolBarItem* tool = bar.FindToolByIndex(static_cast<int>(i));
        EXPECT_EQ(tool->GetId(), frame()->bars().toolId(expected.command)) << expected.name;
        EXPECT_EQ(tool->GetLabel(), expected.name);
        EXPECT_EQ(tool->GetShortHelp(), expected.help);
        EXPECT_EQ(tool->GetKind(), expected.check ? wxITEM_CHECK : wxITEM_NORMAL) << expected.name;
        EXPECT_TRUE(tool->GetBitmapBundle().IsOk()) << expected.name;
        EXPECT_GT(bar.GetToolRect(tool->GetId()).x, former) << expected.name;
        former = bar.GetToolRect(tool->GetId()).x;
    }
}

TEST_F(MenuBarTest, QuitEndsTheProgram) {
    start();
    load(writeTestModel());
    frame()->CallAfter([] { choose(Command::Quit); });
    EXPECT_TRUE(runToEnd());
    EXPECT_EQ(frame(), nullptr);
}

TEST_F(MenuBarTest, ItemsAnswerToTheKeyboard) {
    start();
    load(writeTestModel());
    bool opened = false;
    withNextDialog([&opened](wxDialog& dialog) {
        opened = true;
        dialog.EndModal(wxID_CANCEL);
    });
    wxUIActionSimulator keys;
    keys.Char('F', wxMOD_ALT);
    runFor(0.3);
    // The menu is open and its first item selected.
    keys.Char(WXK_RETURN);
    EXPECT_TRUE(runUntil([&opened] { return opened; }, 10.0));
}

} // namespace orbisk::test
