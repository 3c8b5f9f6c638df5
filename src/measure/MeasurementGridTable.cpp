#include "measure/MeasurementGridTable.h"

#include <wx/translation.h>

#include <utility>

namespace orbisk {

MeasurementGridTable::MeasurementGridTable(std::vector<const char*> columns)
    : m_columns(std::move(columns)) {}

void MeasurementGridTable::rebuild() {
    GetView()->ClearSelection();
    showRows(recountAll());
}

void MeasurementGridTable::followLast() {
    showRows(recountFromLast());
}

void MeasurementGridTable::showRows(std::size_t count) {
    const int former = m_rows;
    m_rows = static_cast<int>(count);
    wxGrid& grid = *GetView();
    // The grid's own care for a selection across the end of the remaining rows leaves it one row
    // too long.
    for (int row = m_rows; row < former; ++row)
        if (grid.IsInSelection(row, 0))
            grid.DeselectRow(row);
    wxGridTableMessage deletion(this, wxGRIDTABLE_NOTIFY_ROWS_DELETED, m_rows, former - m_rows);
    wxGridTableMessage addition(this, wxGRIDTABLE_NOTIFY_ROWS_APPENDED, m_rows - former);
    // Sent even if no row came or went: the grid then forgets the spans that it remembers.
    grid.ProcessTableMessage(m_rows < former ? deletion : addition);
    grid.ForceRefresh();
}

int MeasurementGridTable::GetNumberRows() {
    return m_rows;
}

int MeasurementGridTable::GetNumberCols() {
    return static_cast<int>(m_columns.size());
}

wxString MeasurementGridTable::GetColLabelValue(int column) {
    return wxGetTranslation(m_columns[static_cast<std::size_t>(column)]);
}

wxString MeasurementGridTable::GetValue(int row, int column) {
    std::string text;
    appendText(text, static_cast<std::size_t>(row), column);
    return wxString::FromAscii(text.data(), text.size());
}

void MeasurementGridTable::SetValue(int, int, const wxString&) {
    // Measurements are changed elsewhere, and only shown here.
}

} // namespace orbisk
