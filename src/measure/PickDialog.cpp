#include "measure/PickDialog.h"

#include "app/CommandTable.h"
#include "app/ContextMenu.h"
#include "app/NestedLoop.h"
#include "measure/MeasurementExport.h"
#include "measure/PointGridTable.h"
#include "measure/PolygonMeasure.h"
#include "measure/RowDeletion.h"
#include "measure/VertexGridTable.h"
#include "platform/Platform.h"

#include <wx/button.h>
#include <wx/dirdlg.h>
#include <wx/grid.h>
#include <wx/intl.h>
#include <wx/menu.h>
#include <wx/notebook.h>
#include <wx/sizer.h>

#include <utility>

namespace orbisk {

namespace {

constexpr long dialogStyle = wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX | wxRESIZE_BORDER;
const wxSize clientSize(600, 300);
const wxSize notebookSize(500, 300);

/// Of a grid's width.
constexpr double labelHeightShare = 0.5;
constexpr double columnWidthShare = 0.2;
/// Of its height.
constexpr double rowHeightShare = 0.1;

int share(int length, double part) {
    return static_cast<int>(length * part);
}

wxColour between(const wxColour& one, const wxColour& other) {
    return {static_cast<unsigned char>((one.Red() + other.Red()) / 2),
            static_cast<unsigned char>((one.Green() + other.Green()) / 2),
            static_cast<unsigned char>((one.Blue() + other.Blue()) / 2)};
}

TableRows selectedRows(const wxGrid& grid) {
    const wxArrayInt rows = grid.GetSelectedRows();
    return {rows.begin(), rows.end()};
}

/// The signed area of a polygon; 0 of one that can't be measured.
void computeArea(const MeasureArea& area, ItemTotal& total) {
    total.value = 0.0;
    // A new one each time: the polygon that it keeps can make the next one fail.
    PolygonMeasure().signedAreaOnly(area, total.value);
}

CellText textsOf(const MeasurementGridTable& table) {
    return [&table](std::string& text, std::size_t row, VertexColumn column) {
        table.appendText(text, row, static_cast<int>(column));
    };
}

} // namespace

PickDialog::PickDialog(wxWindow* parent, MeasurementSet& set, MeasurementEdits& edits)
    : m_set(set), m_edits(edits) {
    Create(parent, wxID_ANY, _("Measurement Table"), wxDefaultPosition, wxDefaultSize, dialogStyle);
    buildWindows();
    setUpGrids();
    bindMenu(*m_pointGrid, {{translatable("delete"), &PickDialog::deletePoints},
                            {translatable("clear"), &PickDialog::clearPoints}});
    bindMenu(*m_travelGrid, {{translatable("delete"), &PickDialog::deleteTravelPoints},
                             {translatable("clear"), &PickDialog::clearTravelPoints}});
    bindMenu(*m_lineGrid, {{translatable("delete"), &PickDialog::deleteLineVertices},
                           {translatable("delete list"), &PickDialog::deleteLines},
                           {translatable("clear"), &PickDialog::clearLines}});
    bindMenu(*m_areaGrid, {{translatable("delete"), &PickDialog::deleteAreaVertices},
                           {translatable("delete list"), &PickDialog::deleteAreas},
                           {translatable("clear"), &PickDialog::clearAreas}});
    m_saveButton->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { save(); });
    Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) { Destroy(); });
}

bool PickDialog::Destroy() {
    if (std::exchange(m_closed, true))
        return true;
    m_edits.tableClosed();
    Hide();
    NestedLoop::endAllThen([this] { wxDialog::Destroy(); });
    return true;
}

void PickDialog::buildWindows() {
    SetClientSize(FromDIP(clientSize));
    m_notebook = new wxNotebook(this, wxID_ANY, wxDefaultPosition, FromDIP(notebookSize), 0,
                                "ID_NOTEBOOK_PICK");
    m_pointGrid = addPage(_("Point"), "ID_GRID_POINT");
    m_lineGrid = addPage(_("Line"), "ID_GRID_LINE");
    m_areaGrid = addPage(_("Area"), "ID_GRID_RECT");
    m_travelGrid = addPage(_("Travel"), "ID_GRID_Travel");
    m_saveButton = new wxButton(this, wxID_ANY, _("Save"), wxDefaultPosition, wxDefaultSize, 0,
                                wxDefaultValidator, "ID_BUTTON_LOAD");
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(m_notebook, wxSizerFlags(1).Expand());
    column->Add(m_saveButton, wxSizerFlags().Centre());
    SetSizer(column);
    Layout();
    platform::sizePages(*m_notebook);
    Centre();
}

wxGrid* PickDialog::addPage(const wxString& label, const char* name) {
    auto* grid =
        new wxGrid(m_notebook, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxWANTS_CHARS, name);
    platform::nameForScreenReaders(*grid, label);
    m_notebook->AddPage(grid, label);
    return grid;
}

void PickDialog::setUpGrids() {
    m_lineTable = new VertexGridTable(m_set.lines, translatable("Lengths"), extendLength);
    m_areaTable = new VertexGridTable(m_set.areas, translatable("Area"), computeArea);
    m_pointTable = new PointGridTable(m_set.points);
    m_travelTable = new PointGridTable(m_set.travelPoints);
    setUpGrid(*m_lineGrid, m_lineTable);
    setUpGrid(*m_areaGrid, m_areaTable);
    setUpGrid(*m_pointGrid, m_pointTable);
    setUpGrid(*m_travelGrid, m_travelTable);
}

void PickDialog::setUpGrid(wxGrid& grid, MeasurementGridTable* table) {
    const wxSize size = grid.GetSize();
    grid.SetTable(table, true, wxGrid::wxGridSelectRows);
    // The toolkit sets a label height of its own with these.
    grid.SetUseNativeColLabels(true);
    grid.SetColLabelSize(share(size.x, labelHeightShare));
    grid.SetRowLabelSize(0);
    grid.SetDefaultColSize(share(size.x, columnWidthShare), true);
    grid.SetDefaultRowSize(share(size.y, rowHeightShare), true);
    grid.SetDefaultCellAlignment(wxALIGN_CENTRE, wxALIGN_CENTRE);
    // Without the focus, as under a menu, selected rows have a pale ground: white is lost on it.
    grid.SetSelectionBackground(
        between(grid.GetSelectionBackground(), grid.GetDefaultCellBackgroundColour()));
    grid.SetSelectionForeground(grid.GetDefaultCellTextColour());
    for (int column = 0; column < grid.GetNumberCols(); ++column) {
        auto* readOnly = new wxGridCellAttr;
        readOnly->SetReadOnly();
        grid.SetColAttr(column, readOnly);
    }
    table->rebuild();
}

void PickDialog::bindMenu(wxGrid& grid, const std::vector<MenuEntry>& entries) {
    grid.Bind(wxEVT_GRID_CELL_RIGHT_CLICK, [this, entries](wxGridEvent&) { showMenu(entries); });
    grid.Bind(wxEVT_GRID_SELECT_CELL, [](wxGridEvent& event) { event.Skip(); });
}

void PickDialog::showMenu(const std::vector<MenuEntry>& entries) {
    wxMenu menu;
    for (const MenuEntry& entry : entries) {
        const wxMenuItem* item = menu.Append(wxID_ANY, wxGetTranslation(entry.label));
        menu.Bind(
            wxEVT_MENU, [this, run = entry.run](wxCommandEvent&) { (this->*run)(); },
            item->GetId());
    }
    popUp(*this, menu);
}

void PickDialog::appendPointRow() {
    m_pointTable->followLast();
}

void PickDialog::appendTravelRow() {
    m_travelTable->followLast();
}

void PickDialog::appendLineVertexRow() {
    m_lineTable->followLast();
}

void PickDialog::appendAreaVertexRow() {
    m_areaTable->followLast();
}

void PickDialog::removeLastAreaVertexRow() {
    m_areaTable->followLast();
}

void PickDialog::rebuildPointGrid() {
    m_pointTable->rebuild();
}

void PickDialog::rebuildTravelGrid() {
    m_travelTable->rebuild();
}

void PickDialog::rebuildLineGrid() {
    m_lineTable->rebuild();
}

void PickDialog::rebuildAreaGrid() {
    m_areaTable->rebuild();
}

void PickDialog::deletePoints() {
    // As many as are selected, but from the first on: so it is wanted.
    eraseFirst(m_set.points, selectedRows(*m_pointGrid).size());
    rebuildPointGrid();
    m_edits.pointsChanged();
}

void PickDialog::deleteTravelPoints() {
    erasePlaces(m_set.travelPoints, selectedRows(*m_travelGrid));
    rebuildTravelGrid();
    m_edits.travelChanged();
}

void PickDialog::deleteLineVertices() {
    eraseVertices(m_set.lines, selectedRows(*m_lineGrid));
    rebuildLineGrid();
    m_edits.linesChanged(false);
}

void PickDialog::deleteAreaVertices() {
    eraseVertices(m_set.areas, selectedRows(*m_areaGrid));
    rebuildAreaGrid();
    m_edits.areasChanged(false);
}

void PickDialog::deleteLines() {
    const bool currentErased = eraseItems(m_set.lines, selectedRows(*m_lineGrid));
    rebuildLineGrid();
    m_edits.linesChanged(currentErased);
}

void PickDialog::deleteAreas() {
    const bool currentErased = eraseItems(m_set.areas, selectedRows(*m_areaGrid));
    rebuildAreaGrid();
    m_edits.areasChanged(currentErased);
}

void PickDialog::clearPoints() {
    m_set.points.clear();
    rebuildPointGrid();
    m_edits.pointsChanged();
}

void PickDialog::clearTravelPoints() {
    m_set.travelPoints.clear();
    rebuildTravelGrid();
    m_edits.travelChanged();
}

void PickDialog::clearLines() {
    const bool currentErased = !m_set.lines.empty();
    m_set.lines.clear();
    rebuildLineGrid();
    m_edits.linesChanged(currentErased);
}

void PickDialog::clearAreas() {
    const bool currentErased = !m_set.areas.empty();
    m_set.areas.clear();
    rebuildAreaGrid();
    m_edits.areasChanged(currentErased);
}

void PickDialog::save() {
    // The chosen folder becomes the working directory too.
    wxDirDialog dialog(this, _("Save File..."), wxEmptyString,
                       wxDD_DEFAULT_STYLE | wxDD_CHANGE_DIR);
    const auto choose = [&dialog] {
        const NestedLoop loop([&dialog] { dialog.EndModal(wxID_CANCEL); });
        return dialog.ShowModal();
    };
    if (choose() == wxID_OK)
        exportMeasurements(m_set, platform::localPath(dialog.GetPath()),
                           {textsOf(*m_lineTable), textsOf(*m_areaTable)});
}

} // namespace orbisk
