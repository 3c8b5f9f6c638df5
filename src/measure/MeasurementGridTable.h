#pragma once

#include <wx/grid.h>

#include <string>
#include <vector>

namespace orbisk {

/// What a grid of measurements shows: texts made from the measurement set when the grid asks for
/// them, so that nothing is copied and many rows cost no more than few. Read-only. The grid that it
/// is given to owns it. Main thread.
class MeasurementGridTable : public wxGridTableBase {
public:
    /// @param columns the column labels, in English.
    explicit MeasurementGridTable(std::vector<const char*> columns);

    /// Adds a cell's text; nothing where none belongs, nor for a row whose measurement is gone.
    virtual void appendText(std::string& text, std::size_t row, int column) const = 0;

    /// Makes the grid show the set as it is now, with no row selected.
    void rebuild();

    /// Makes the grid show what came, or went, at the end of the last measurement or behind it. The
    /// other rows stay selected.
    void followLast();

    int GetNumberRows() override;
    int GetNumberCols() override;
    wxString GetColLabelValue(int column) override;
    wxString GetValue(int row, int column) override;
    void SetValue(int row, int column, const wxString& text) override;

protected:
    /// Counts the rows anew, of all measurements or from the last one on. @return their number.
    virtual std::size_t recountAll() = 0;
    virtual std::size_t recountFromLast() = 0;

private:
    void showRows(std::size_t count);

    std::vector<const char*> m_columns;
    int m_rows = 0;
};

} // namespace orbisk
