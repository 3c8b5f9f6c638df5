#include "measure/PickDialog.h"

#include "support/Screen.h"
#include "support/TableTest.h"

#include <wx/button.h>
#include <wx/notebook.h>
#include <wx/sizer.h>

#include <random>

namespace orbisk::test {

namespace {

osg::Vec3d anyVertex(std::mt19937& random) {
    std::uniform_real_distribution<double> anywhere(-1000.0, 1000.0);
    return {anywhere(random), anywhere(random), anywhere(random)};
}

} // namespace

using PickDialogTest = TableTest;

TEST_F(PickDialogTest, HasTitleStyleAndSize) {
    openAsItIs();
    EXPECT_EQ(m_dialog->GetTitle(), "Measurement Table");
    EXPECT_EQ(m_dialog->GetParent(), frame());
    EXPECT_EQ(m_dialog->GetClientSize(), wxSize(600, 300));
    for (const long style : {wxCAPTION, wxSYSTEM_MENU, wxCLOSE_BOX, wxRESIZE_BORDER})
        EXPECT_TRUE(m_dialog->HasFlag(static_cast<int>(style))) << style;
    EXPECT_FALSE(m_dialog->IsModal());
    EXPECT_TRUE(frame()->IsEnabled());
}

TEST_F(PickDialogTest, HasItsPagesInOrder) {
    openAsItIs();
    const auto& notebook = named<wxNotebook>("ID_NOTEBOOK_PICK");
    const std::vector<std::pair<const char*, const char*>> pages = {{"Point", "ID_GRID_POINT"},
                                                                    {"Line", "ID_GRID_LINE"},
                                                                    {"Area", "ID_GRID_RECT"},
                                                                    {"Travel", "ID_GRID_Travel"}};
    ASSERT_EQ(notebook.GetPageCount(), pages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        EXPECT_EQ(notebook.GetPageText(i), pages[i].first);
        EXPECT_EQ(notebook.GetPage(i)->GetName(), pages[i].second);
    }
    EXPECT_EQ(notebook.GetSelection(), 0);
}

TEST_F(PickDialogTest, ButtonStandsBelowTheNotebook) {
    openAsItIs();
    const auto& button = named<wxButton>("ID_BUTTON_LOAD");
    EXPECT_EQ(button.GetLabel(), "Save");
    EXPECT_GE(button.GetRect().GetTop(),
              named<wxNotebook>("ID_NOTEBOOK_PICK").GetRect().GetBottom());
    EXPECT_LE(button.GetRect().GetBottom(), m_dialog->GetClientSize().y);
    const auto* sizer = dynamic_cast<wxBoxSizer*>(m_dialog->GetSizer());
    ASSERT_NE(sizer, nullptr);
    EXPECT_EQ(sizer->GetOrientation(), wxVERTICAL);
}

TEST_F(PickDialogTest, GridsHaveTheirColumns) {
    openAsItIs();
    const auto labels = [](const wxGrid& grid) {
        GridRow texts;
        for (int column = 0; column < grid.GetNumberCols(); ++column)
            texts.push_back(grid.GetColLabelValue(column).utf8_string());
        return texts;
    };
    EXPECT_EQ(labels(pointGrid()), (GridRow{"ID", "X", "Y", "Z"}));
    EXPECT_EQ(labels(lineGrid()), (GridRow{"ID", "X", "Y", "Z", "Length", "Lengths"}));
    EXPECT_EQ(labels(areaGrid()), (GridRow{"ID", "X", "Y", "Z", "Length", "Area"}));
    EXPECT_EQ(labels(travelGrid()), (GridRow{"ID", "X", "Y", "Z"}));
}

TEST_F(PickDialogTest, ColumnLabelsAreHalfAsHighAsTheGridIsWide) {
    openAsItIs();
    for (const wxGrid* grid : grids()) {
        EXPECT_GT(grid->GetSize().x, 500);
        EXPECT_EQ(grid->GetColLabelSize(), static_cast<int>(grid->GetSize().x * 0.5));
    }
}

TEST_F(PickDialogTest, ColumnsAndRowsAreSharesOfTheGrid) {
    m_set.points = {{1, 2, 3}};
    openAsItIs();
    for (const wxGrid* grid : grids()) {
        EXPECT_EQ(grid->GetRowLabelSize(), 0);
        EXPECT_EQ(grid->GetDefaultColSize(), static_cast<int>(grid->GetSize().x * 0.2));
        EXPECT_EQ(grid->GetColSize(3), grid->GetDefaultColSize());
        EXPECT_EQ(grid->GetDefaultRowSize(), static_cast<int>(grid->GetSize().y * 0.1));
    }
    EXPECT_EQ(pointGrid().GetRowSize(0), pointGrid().GetDefaultRowSize());
}

TEST_F(PickDialogTest, ColumnsKeepTheirSizesWhenTheDialogGrowsOrShrinks) {
    openAsItIs();
    const int width = lineGrid().GetColSize(0);
    for (const wxSize& size : {wxSize(900, 700), wxSize(400, 200)}) {
        m_dialog->SetClientSize(size);
        EXPECT_TRUE(runUntil([&] { return lineGrid().GetParent()->GetSize().x == size.x; }));
        EXPECT_EQ(m_dialog->GetClientSize(), size);
        EXPECT_EQ(lineGrid().GetColSize(0), width);
    }
}

TEST_F(PickDialogTest, CellsAreCentredReadOnlyAndSelectedByRows) {
    m_set.points = m_set.travelPoints = {{1, 2, 3}, {4, 5, 6}};
    m_set.lines = m_set.areas = {{{1, 2, 3}, {4, 5, 6}}};
    openAsItIs();
    for (const wxGrid* grid : grids()) {
        EXPECT_EQ(grid->GetSelectionMode(), wxGrid::wxGridSelectRows);
        for (int row = 0; row < grid->GetNumberRows(); ++row)
            for (int column = 0; column < grid->GetNumberCols(); ++column) {
                int horizontal = 0;
                int vertical = 0;
                grid->GetCellAlignment(row, column, &horizontal, &vertical);
                EXPECT_EQ(horizontal, wxALIGN_CENTRE);
                EXPECT_EQ(vertical, wxALIGN_CENTRE);
                EXPECT_TRUE(grid->IsReadOnly(row, column)) << row << " " << column;
            }
    }
}

TEST_F(PickDialogTest, EmptyKindShowsLabelsAndNoRows) {
    openAsItIs();
    for (const wxGrid* grid : grids()) {
        EXPECT_EQ(grid->GetNumberRows(), 0);
        EXPECT_GE(grid->GetNumberCols(), 4);
    }
}

TEST_F(PickDialogTest, ShowsTheSetOnOpening) {
    std::mt19937 random(1);
    for (int i = 0; i < 20; ++i) {
        m_set.points.push_back(anyVertex(random));
        m_set.travelPoints.push_back(anyVertex(random));
        for (auto* items : {&m_set.lines, &m_set.areas}) {
            items->emplace_back(random() % 5);
            for (osg::Vec3d& vertex : items->back())
                vertex = anyVertex(random);
        }
    }
    openAsItIs();
    EXPECT_EQ(pointGrid().GetNumberRows(), 20);
    expectToShowTheSet();
}

TEST_F(PickDialogTest, LineOfOneVertexHasZeroLengthsInACellOfOneRow) {
    m_set.lines = {{{1, 2, 3}}};
    openAsItIs();
    EXPECT_EQ(textsOf(lineGrid()),
              (std::vector<GridRow>{{"1", "1.000", "2.000", "3.000", "0.000", "0.000"}}));
    EXPECT_EQ(joinedCells(lineGrid()), (std::vector<std::pair<int, int>>{{0, 1}}));
}

TEST_F(PickDialogTest, AreaCellHoldsTheSignedArea) {
    m_set.areas = {{{0, 0, 1}, {2, 0, 1}, {0, 3, 1}}, {{0, 0, 1}, {0, 3, 1}, {2, 0, 1}}};
    openAsItIs();
    EXPECT_EQ(areaGrid().GetCellValue(0, 5), "3.000");
    EXPECT_EQ(areaGrid().GetCellValue(3, 5), "-3.000");
}

TEST_F(PickDialogTest, AreaThatCannotBeMeasuredIsZeroAndLeavesTheNextOneAlone) {
    // Parallel edges count as crossing.
    m_set.areas = {{{0, 0, 1}, {2, 0, 1}, {2, 3, 1}, {0, 3, 1}},
                   {{0, 0, 1}, {2, 0, 1}, {0, 3, 1}},
                   {{0, 0, 1}, {2, 0, 1}}};
    openAsItIs();
    EXPECT_EQ(areaGrid().GetCellValue(0, 5), "0.000");
    EXPECT_EQ(areaGrid().GetCellValue(4, 5), "3.000");
    EXPECT_EQ(areaGrid().GetCellValue(7, 5), "0.000");
}

TEST_F(PickDialogTest, ItemsWithoutVerticesTakeNoRow) {
    m_set.lines = m_set.areas = {{}, {{1, 2, 3}, {4, 5, 6}}, {}};
    openAsItIs();
    EXPECT_EQ(lineGrid().GetNumberRows(), 2);
    expectToShowTheSet();
}

TEST_F(PickDialogTest, RowsFollowTheSet) {
    m_set.lines = {{{0, 0, 0}, {1, 1, 1}}};
    openAsItIs();
    m_set.points.emplace_back(1, 2, 3);
    m_dialog->appendPointRow();
    m_set.travelPoints.emplace_back(4, 5, 6);
    m_dialog->appendTravelRow();
    m_set.lines.back().emplace_back(1, 1, 2);
    m_dialog->appendLineVertexRow();
    expectToShowTheSet();
    m_set.lines.push_back({{7, 8, 9}});
    m_dialog->appendLineVertexRow();
    m_set.areas.push_back({{7, 8, 9}});
    m_dialog->appendAreaVertexRow();
    m_set.areas.back().emplace_back(1, 0, 9);
    m_dialog->appendAreaVertexRow();
    expectToShowTheSet();
    EXPECT_EQ(m_edits.told, std::vector<std::string>{});
}

TEST_F(PickDialogTest, AreaRowsGoOneOrTwoAtATime) {
    m_set.areas = {{{1, 1, 1}}, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}};
    openAsItIs();
    m_set.areas.back().pop_back();
    m_dialog->removeLastAreaVertexRow();
    expectToShowTheSet();
    EXPECT_EQ(areaGrid().GetNumberRows(), 4);
    m_set.areas.back().resize(1);
    m_dialog->removeLastAreaVertexRow();
    expectToShowTheSet();
    m_set.areas.back().clear();
    m_dialog->removeLastAreaVertexRow();
    expectToShowTheSet();
    EXPECT_EQ(areaGrid().GetNumberRows(), 1);
}

TEST_F(PickDialogTest, AnyChangesOfTheSetAreShown) {
    std::mt19937 random(4);
    openAsItIs();
    for (int step = 0; step < 300; ++step) {
        auto& areas = m_set.areas;
        auto& lines = m_set.lines;
        switch (random() % 8) {
        case 0:
            lines.push_back({anyVertex(random)});
            m_dialog->appendLineVertexRow();
            break;
        case 1:
            areas.push_back({anyVertex(random)});
            m_dialog->appendAreaVertexRow();
            break;
        case 2:
            if (!areas.empty() && !areas.back().empty()) {
                areas.back().pop_back();
                m_dialog->removeLastAreaVertexRow();
            }
            break;
        case 3:
            if (!lines.empty() && !lines.back().empty())
                lines.back().pop_back();
            m_dialog->rebuildLineGrid();
            break;
        case 4:
            if (!areas.empty())
                areas.pop_back();
            m_dialog->rebuildAreaGrid();
            break;
        default:
            if (!areas.empty() && !lines.empty()) {
                lines.back().push_back(anyVertex(random));
                m_dialog->appendLineVertexRow();
                areas.back().push_back(anyVertex(random));
                m_dialog->appendAreaVertexRow();
            }
        }
        if (step % 10 == 0) {
            runFor(0.0);
            expectToShowTheSet();
        }
    }
    expectToShowTheSet();
}

TEST_F(PickDialogTest, RebuildShowsOtherSpansInAsManyRows) {
    m_set.lines = {{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}};
    openAsItIs();
    // The grid remembers the span that it was asked for last.
    int rows = 0;
    int columns = 0;
    lineGrid().GetCellSize(2, 5, &rows, &columns);
    EXPECT_EQ(rows, 3);
    std::swap(m_set.lines[0], m_set.lines[1]);
    m_dialog->rebuildLineGrid();
    lineGrid().GetCellSize(2, 5, &rows, &columns);
    EXPECT_EQ(rows, -2);
    expectToShowTheSet();
}

TEST_F(PickDialogTest, SelectionForgetsRowsThatVanish) {
    m_set.areas = {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}};
    openAsItIs();
    areaGrid().SelectBlock(1, 0, 3, 5);
    m_set.areas.back().resize(2);
    m_dialog->removeLastAreaVertexRow();
    const wxArrayInt selected = areaGrid().GetSelectedRows();
    EXPECT_EQ((std::vector<int>(selected.begin(), selected.end())), std::vector<int>{1});
    m_dialog->rebuildAreaGrid();
    EXPECT_TRUE(areaGrid().GetSelectedRows().empty());
}

TEST_F(PickDialogTest, UnannouncedLossDoesNoHarm) {
    m_set.points = {{1, 2, 3}, {4, 5, 6}};
    m_set.lines = m_set.areas = {{{1, 2, 3}, {4, 5, 6}}, {{7, 8, 9}}};
    openAsItIs();
    m_set.clear();
    for (wxGrid* grid : grids())
        grid->ForceRefresh();
    runFor(0.2);
    EXPECT_EQ(textsOf(pointGrid()), (std::vector<GridRow>{GridRow(4), GridRow(4)}));
    EXPECT_EQ(textsOf(lineGrid()), (std::vector<GridRow>{GridRow(6), GridRow(6), GridRow(6)}));
    m_dialog->rebuildPointGrid();
    m_dialog->rebuildLineGrid();
    m_dialog->rebuildAreaGrid();
    expectToShowTheSet();
}

TEST_F(PickDialogTest, LookingAtCellsLeavesTheSetAlone) {
    m_set.points = {{1, 2, 3}, {4, 5, 6}};
    openAsItIs();
    pointGrid().SetGridCursor(1, 2);
    pointGrid().SelectRow(0);
    pointGrid().SetCellValue(0, 1, "99");
    runFor(0.1);
    EXPECT_EQ(m_set.points, (std::vector<osg::Vec3d>{{1, 2, 3}, {4, 5, 6}}));
    EXPECT_EQ(m_edits.told, std::vector<std::string>{});
    expectToShowTheSet();
}

TEST_F(PickDialogTest, CloseBoxEndsItAndTellsSo) {
    openAsItIs();
    EXPECT_TRUE(runUntil([] { return Screen().closeWindow("Measurement Table"); }));
    EXPECT_TRUE(runUntil([this] { return !m_edits.told.empty(); }));
    EXPECT_EQ(m_edits.told, std::vector<std::string>{"closed"});
    EXPECT_TRUE(runUntil([] { return wxTopLevelWindows.GetCount() == 1; }));
}

TEST_F(PickDialogTest, DestroyTellsOnceAndAtOnce) {
    openAsItIs();
    m_dialog->Destroy();
    EXPECT_EQ(m_edits.told, std::vector<std::string>{"closed"});
    m_dialog->Destroy();
    m_dialog->Close();
    EXPECT_EQ(m_edits.told, std::vector<std::string>{"closed"});
    EXPECT_TRUE(runUntil([] { return wxTopLevelWindows.GetCount() == 1; }));
}

TEST_F(PickDialogTest, FrameTakesItAlong) {
    m_set.points = {{1, 2, 3}};
    openAsItIs();
    close();
    EXPECT_TRUE(wxTopLevelWindows.empty());
}

TEST_F(PickDialogTest, SpeaksChinese) {
    m_set.lines = {{{1, 2, 3}}};
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageChinese);
    openAsItIs();
    EXPECT_EQ(m_dialog->GetTitle(), wxString::FromUTF8("量测表"));
    EXPECT_EQ(lineGrid().GetColLabelValue(5), wxString::FromUTF8("总长度"));
    EXPECT_EQ(named<wxNotebook>("ID_NOTEBOOK_PICK").GetPageText(0), wxString::FromUTF8("点"));
    expectToShowTheSet();
}

} // namespace orbisk::test
