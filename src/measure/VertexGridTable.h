#pragma once

#include "measure/MeasurementGridTable.h"
#include "measure/VertexRows.h"

namespace orbisk {

/// Shows the vertices of lines or areas, with one joined cell an item for its total.
class VertexGridTable : public MeasurementGridTable {
public:
    /// @param items outlive the table.
    /// @param totalLabel of the column of the totals, in English.
    VertexGridTable(const VertexRows::Items& items, const char* totalLabel,
                    TotalExtension extendTotal);

    void appendText(std::string& text, std::size_t row, int column) const override;

    /// Tells which cells are joined: made up when the grid asks, since an attribute stored for
    /// every cell takes the grid's own provider long to set, and as long to find.
    wxGridCellAttr* GetAttr(int row, int column, wxGridCellAttr::wxAttrKind kind) override;

protected:
    std::size_t recountAll() override;
    std::size_t recountFromLast() override;

private:
    VertexRows m_rows;
};

} // namespace orbisk
