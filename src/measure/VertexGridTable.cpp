#include "measure/VertexGridTable.h"

#include "app/CommandTable.h"

#include <optional>
#include <utility>

namespace orbisk {

VertexGridTable::VertexGridTable(const VertexRows::Items& items, const char* totalLabel,
                                 TotalExtension extendTotal)
    : MeasurementGridTable({translatable("ID"), translatable("X"), translatable("Y"),
                            translatable("Z"), translatable("Length"), totalLabel}),
      m_rows(items, std::move(extendTotal)) {}

void VertexGridTable::appendText(std::string& text, std::size_t row, int column) const {
    m_rows.appendText(text, row, static_cast<VertexColumn>(column));
}

wxGridCellAttr* VertexGridTable::GetAttr(int row, int column, wxGridCellAttr::wxAttrKind kind) {
    const bool joined = column == static_cast<int>(VertexColumn::Total) &&
                        (kind == wxGridCellAttr::Any || kind == wxGridCellAttr::Cell);
    const auto place = joined ? m_rows.at(static_cast<std::size_t>(row)) : std::nullopt;
    if (!place)
        return MeasurementGridTable::GetAttr(row, column, kind);
    auto* attribute = new wxGridCellAttr;
    attribute->SetReadOnly();
    attribute->SetAlignment(wxALIGN_CENTRE, wxALIGN_CENTRE);
    // A covered cell tells how far above it the cell is that covers it.
    if (place->vertex == 0)
        attribute->SetSize(static_cast<int>(m_rows.rowsOf(place->item)), 1);
    else
        attribute->SetSize(-static_cast<int>(place->vertex), 0);
    return attribute;
}

std::size_t VertexGridTable::recountAll() {
    m_rows.rebuild();
    return m_rows.count();
}

std::size_t VertexGridTable::recountFromLast() {
    m_rows.followLast();
    return m_rows.count();
}

} // namespace orbisk
