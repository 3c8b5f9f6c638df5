#pragma once

#include "measure/PickDialog.h"
#include "support/GuiTest.h"
#include "support/NamedWindow.h"

#include <wx/grid.h>

#include <string>
#include <utility>
#include <vector>

namespace orbisk::test {

/// Writes down what the table tells, and changes nothing.
class RecordedEdits : public MeasurementEdits {
public:
    void pointsChanged() override { told.emplace_back("points"); }

    void linesChanged(bool currentErased) override {
        told.emplace_back(currentErased ? "lines, current erased" : "lines");
    }

    void areasChanged(bool currentErased) override {
        told.emplace_back(currentErased ? "areas, current erased" : "areas");
    }

    void travelChanged() override { told.emplace_back("travel"); }

    void tableClosed() override { told.emplace_back("closed"); }

    std::vector<std::string> told;
};

/// The texts of a row's cells.
using GridRow = std::vector<std::string>;

/// All cell texts of a grid.
std::vector<GridRow> textsOf(const wxGrid& grid);

/// What the grids have to show, computed from the set with nothing of the program's but the areas,
/// which `PolygonMeasure` gives.
std::vector<GridRow> pointRows(const std::vector<osg::Vec3d>& points);
std::vector<GridRow> lineRows(const std::vector<MeasureLine>& lines);
std::vector<GridRow> areaRows(const std::vector<MeasureArea>& areas);

/// The joined cells of a grid's last column, as first row and number of rows; a cell that is
/// neither joined nor covered counts one row.
std::vector<std::pair<int, int>> joinedCells(const wxGrid& grid);

/// The same as it has to be for these items.
std::vector<std::pair<int, int>> expectedJoints(const std::vector<std::vector<osg::Vec3d>>& items);

/// Drives the table of a set of its own, over the program's frame.
class TableTest : public GuiTest {
protected:
    ~TableTest() override;

    /// Shows the table, large enough for rows to be seen below the labels.
    void open();

    /// As the program opens it.
    void openAsItIs();

    /// A window of the dialog by its name.
    template <class Window>
    Window& named(const char* name) const {
        return namedWindow<Window>(m_dialog, name);
    }

    wxGrid& pointGrid() const { return named<wxGrid>("ID_GRID_POINT"); }

    wxGrid& lineGrid() const { return named<wxGrid>("ID_GRID_LINE"); }

    wxGrid& areaGrid() const { return named<wxGrid>("ID_GRID_RECT"); }

    wxGrid& travelGrid() const { return named<wxGrid>("ID_GRID_Travel"); }

    std::vector<wxGrid*> grids() const {
        return {&pointGrid(), &lineGrid(), &areaGrid(), &travelGrid()};
    }

    void expectToShowTheSet() const;

    MeasurementSet m_set;
    RecordedEdits m_edits;
    PickDialog* m_dialog = nullptr;
};

} // namespace orbisk::test
