#include "support/TableTest.h"

#include <wx/menu.h>
#include <wx/notebook.h>
#include <wx/timer.h>
#include <wx/uiaction.h>

namespace orbisk::test {

namespace {

using Labels = std::vector<std::string>;
using Told = std::vector<std::string>;
using List = std::vector<osg::Vec3d>;

const List someVertices = {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0},
                           {5, 0, 0}, {6, 0, 0}, {7, 0, 0}};

Labels labelsOf(const wxMenu& menu) {
    Labels labels;
    for (const wxMenuItem* item : menu.GetMenuItems())
        labels.push_back(item->GetItemLabelText().utf8_string());
    return labels;
}

} // namespace

class TableMenuTest : public TableTest {
protected:
    /// Clicks right into the first row of a grid with the mouse and chooses the entry of this label
    /// with the keyboard, or none. @return the menu's labels.
    Labels useMenu(wxGrid& grid, const char* choice) const {
        auto& notebook = named<wxNotebook>("ID_NOTEBOOK_PICK");
        notebook.SetSelection(static_cast<std::size_t>(notebook.FindPage(&grid)));
        runFor(0.2);
        Labels labels;
        // The menu has an event loop of its own, in which timers run.
        wxTimer keys;
        keys.Bind(wxEVT_TIMER, [&](wxTimerEvent&) { pressKeys(labels, choice); });
        bool closed = false;
        const auto onOpen = [&](wxMenuEvent& event) {
            labels = labelsOf(*event.GetMenu());
            keys.StartOnce(menuPause);
        };
        m_dialog->Bind(wxEVT_MENU_OPEN, onOpen);
        const auto onClose = [&closed](wxMenuEvent&) { closed = true; };
        m_dialog->Bind(wxEVT_MENU_CLOSE, onClose);
        clickRight(grid);
        EXPECT_TRUE(runUntil([&closed] { return closed; }));
        runFor(0.1);
        m_dialog->Unbind(wxEVT_MENU_OPEN, onOpen);
        m_dialog->Unbind(wxEVT_MENU_CLOSE, onClose);
        return labels;
    }

    static void select(wxGrid& grid, const std::vector<int>& rows) {
        for (const int row : rows)
            grid.SelectRow(row, true);
    }

private:
    static constexpr int menuPause = 200;

    static void clickRight(const wxGrid& grid) {
        const wxRect cell = grid.CellToRect(0, 1);
        const wxWindow& cells = *grid.GetGridWindow();
        wxUIActionSimulator mouse;
        mouse.MouseMove(onScreen(cells, cell.GetPosition() + cell.GetSize() / 2));
        runFor(0.1);
        mouse.MouseClick(wxMOUSE_BTN_RIGHT);
    }

    static void pressKeys(const Labels& labels, const char* choice) {
        wxUIActionSimulator keyboard;
        if (!choice) {
            keyboard.Char(WXK_ESCAPE);
            return;
        }
        for (const std::string& label : labels) {
            keyboard.Char(WXK_DOWN);
            if (label == choice)
                break;
        }
        keyboard.Char(WXK_RETURN);
    }
};

TEST_F(TableMenuTest, EachGridOffersItsDeletions) {
    m_set.points = m_set.travelPoints = someVertices;
    m_set.lines = m_set.areas = {someVertices};
    open();
    const MeasurementSet before = m_set;
    EXPECT_EQ(useMenu(pointGrid(), nullptr), (Labels{"delete", "clear"}));
    EXPECT_EQ(useMenu(lineGrid(), nullptr), (Labels{"delete", "delete list", "clear"}));
    EXPECT_EQ(useMenu(areaGrid(), nullptr), (Labels{"delete", "delete list", "clear"}));
    EXPECT_EQ(useMenu(travelGrid(), nullptr), (Labels{"delete", "clear"}));
    EXPECT_EQ(m_set.points, before.points);
    EXPECT_EQ(m_set.lines, before.lines);
    EXPECT_EQ(m_set.areas, before.areas);
    EXPECT_EQ(m_set.travelPoints, before.travelPoints);
    EXPECT_EQ(m_edits.told, Told{});
}

TEST_F(TableMenuTest, DeletingPointRows5And7RemovesPoints1And2) {
    m_set.points = someVertices;
    open();
    select(pointGrid(), {4, 6});
    useMenu(pointGrid(), "delete");
    EXPECT_EQ(m_set.points, List(someVertices.begin() + 2, someVertices.end()));
    EXPECT_EQ(m_edits.told, Told{"points"});
    EXPECT_TRUE(pointGrid().GetSelectedRows().empty());
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingAllPointRowsLeavesNone) {
    m_set.points = someVertices;
    open();
    pointGrid().SelectAll();
    useMenu(pointGrid(), "delete");
    EXPECT_EQ(m_set.points, List{});
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingWithoutASelectionRemovesNothing) {
    m_set.points = m_set.travelPoints = someVertices;
    m_set.lines = m_set.areas = {someVertices, someVertices};
    open();
    const MeasurementSet before = m_set;
    useMenu(pointGrid(), "delete");
    useMenu(travelGrid(), "delete");
    for (const char* label : {"delete", "delete list"}) {
        useMenu(lineGrid(), label);
        useMenu(areaGrid(), label);
    }
    EXPECT_EQ(m_set.points, before.points);
    EXPECT_EQ(m_set.lines, before.lines);
    EXPECT_EQ(m_set.areas, before.areas);
    EXPECT_EQ(m_set.travelPoints, before.travelPoints);
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingTravelRows2And4RemovesThose) {
    m_set.travelPoints = someVertices;
    open();
    select(travelGrid(), {1, 3});
    useMenu(travelGrid(), "delete");
    EXPECT_EQ(m_set.travelPoints, (List{{1, 0, 0}, {3, 0, 0}, {5, 0, 0}, {6, 0, 0}, {7, 0, 0}}));
    EXPECT_EQ(m_edits.told, Told{"travel"});
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingTravelRowsBackwardsIsTheSame) {
    m_set.travelPoints = someVertices;
    open();
    select(travelGrid(), {6, 3, 1, 0});
    useMenu(travelGrid(), "delete");
    EXPECT_EQ(m_set.travelPoints, (List{{3, 0, 0}, {5, 0, 0}, {6, 0, 0}}));
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingLineRowsRemovesTheirVertices) {
    m_set.lines = {{{1, 0, 0}, {2, 0, 0}}, {}, {{3, 0, 0}}, {{4, 0, 0}, {5, 0, 0}, {9, 0, 0}}};
    open();
    select(lineGrid(), {1, 2, 4});
    useMenu(lineGrid(), "delete");
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 0, 0}}, {}, {}, {{4, 0, 0}, {9, 0, 0}}}));
    EXPECT_EQ(m_edits.told, Told{"lines"});
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingAreaRowsRemovesTheirVertices) {
    m_set.areas = {{{1, 0, 0}, {2, 0, 0}, {7, 1, 0}, {8, 1, 0}}, {{3, 0, 0}, {4, 4, 4}}};
    open();
    select(areaGrid(), {0, 5});
    useMenu(areaGrid(), "delete");
    EXPECT_EQ(m_set.areas,
              (std::vector<MeasureArea>{{{2, 0, 0}, {7, 1, 0}, {8, 1, 0}}, {{3, 0, 0}}}));
    EXPECT_EQ(m_edits.told, Told{"areas"});
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingTheListRemovesWholeLines) {
    m_set.lines = {{{1, 0, 0}, {2, 0, 0}}, {{3, 0, 0}}, {{4, 0, 0}, {5, 0, 0}}, {{6, 0, 0}}};
    open();
    select(lineGrid(), {0, 1, 4});
    useMenu(lineGrid(), "delete list");
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{3, 0, 0}}, {{6, 0, 0}}}));
    EXPECT_EQ(m_edits.told, Told{"lines"});
    expectToShowTheSet();
    select(lineGrid(), {1});
    useMenu(lineGrid(), "delete list");
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{3, 0, 0}}}));
    EXPECT_EQ(m_edits.told, (Told{"lines", "lines, current erased"}));
    expectToShowTheSet();
}

TEST_F(TableMenuTest, DeletingTheListRemovesWholeAreas) {
    m_set.areas = {{{1, 0, 0}, {2, 0, 0}}, {{3, 0, 0}}, {{4, 0, 0}, {5, 0, 0}}};
    open();
    select(areaGrid(), {2, 3});
    useMenu(areaGrid(), "delete list");
    EXPECT_EQ(m_set.areas, (std::vector<MeasureArea>{{{1, 0, 0}, {2, 0, 0}}}));
    EXPECT_EQ(m_edits.told, Told{"areas, current erased"});
    expectToShowTheSet();
}

TEST_F(TableMenuTest, ClearingEmptiesOneKindOnly) {
    m_set.points = m_set.travelPoints = someVertices;
    m_set.lines = m_set.areas = {someVertices, someVertices};
    open();
    useMenu(pointGrid(), "clear");
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_EQ(m_set.lines.size(), 2u);
    expectToShowTheSet();
    useMenu(lineGrid(), "clear");
    EXPECT_TRUE(m_set.lines.empty());
    EXPECT_EQ(m_set.areas.size(), 2u);
    expectToShowTheSet();
    useMenu(areaGrid(), "clear");
    EXPECT_TRUE(m_set.areas.empty());
    EXPECT_EQ(m_set.travelPoints.size(), someVertices.size());
    expectToShowTheSet();
    useMenu(travelGrid(), "clear");
    EXPECT_TRUE(m_set.travelPoints.empty());
    for (const wxGrid* grid : grids())
        EXPECT_EQ(grid->GetNumberRows(), 0);
    EXPECT_EQ(m_edits.told,
              (Told{"points", "lines, current erased", "areas, current erased", "travel"}));
}

TEST_F(TableMenuTest, ClickSelectsAWholeRow) {
    m_set.lines = {someVertices};
    open();
    named<wxNotebook>("ID_NOTEBOOK_PICK").SetSelection(1);
    runFor(0.2);
    const wxRect cell = lineGrid().CellToRect(3, 1);
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(*lineGrid().GetGridWindow(), cell.GetPosition() + cell.GetSize() / 2));
    runFor(0.1);
    mouse.MouseClick();
    runFor(0.2);
    const wxArrayInt selected = lineGrid().GetSelectedRows();
    EXPECT_EQ((std::vector<int>(selected.begin(), selected.end())), std::vector<int>{3});
}

} // namespace orbisk::test
