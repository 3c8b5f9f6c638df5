#pragma once

#include "measure/MeasurementSet.h"
#include "measure/MeasurementTable.h"

#include <wx/dialog.h>

#include <vector>

class wxButton;
class wxGrid;
class wxNotebook;

namespace orbisk {

class MeasurementGridTable;
class VertexGridTable;

/// The "Measurement Table": a dialog, shown beside the frame, whose grids list all measurements.
/// A grid's context menu deletes from the set; the button exports it. The dialog owns itself, as
/// windows do: closing it, or `Destroy`, ends its use, which `MeasurementEdits::tableClosed` tells.
/// Main thread.
class PickDialog : public wxDialog, public MeasurementTable {
public:
    /// @param set shown and edited; outlives the dialog.
    /// @param edits told what the user does here; outlives the dialog.
    PickDialog(wxWindow* parent, MeasurementSet& set, MeasurementEdits& edits);

    bool Destroy() override;

    void appendPointRow() override;
    void appendTravelRow() override;
    void appendLineVertexRow() override;
    void appendAreaVertexRow() override;
    void removeLastAreaVertexRow() override;

    void rebuildPointGrid() override;
    void rebuildTravelGrid() override;
    void rebuildLineGrid() override;
    void rebuildAreaGrid() override;

private:
    struct MenuEntry {
        const char* label;
        void (PickDialog::*run)();
    };

    void buildWindows();
    wxGrid* addPage(const wxString& label, const char* name);
    void setUpGrids();
    void setUpGrid(wxGrid& grid, MeasurementGridTable* table);
    void bindMenu(wxGrid& grid, const std::vector<MenuEntry>& entries);
    void showMenu(const std::vector<MenuEntry>& entries);

    void deletePoints();
    void deleteTravelPoints();
    void deleteLineVertices();
    void deleteAreaVertices();
    void deleteLines();
    void deleteAreas();
    void clearPoints();
    void clearTravelPoints();
    void clearLines();
    void clearAreas();
    void save();

    wxGrid* m_lineGrid = nullptr;
    wxGrid* m_pointGrid = nullptr;
    wxGrid* m_areaGrid = nullptr;
    wxGrid* m_travelGrid = nullptr;
    wxNotebook* m_notebook = nullptr;
    wxButton* m_saveButton = nullptr;
    /// The grids'.
    VertexGridTable* m_lineTable = nullptr;
    MeasurementGridTable* m_pointTable = nullptr;
    VertexGridTable* m_areaTable = nullptr;
    MeasurementGridTable* m_travelTable = nullptr;
    MeasurementSet& m_set;
    MeasurementEdits& m_edits;
    bool m_closed = false;
};

} // namespace orbisk
