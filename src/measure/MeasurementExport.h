#pragma once

#include "measure/MeasurementSet.h"
#include "measure/VertexRows.h"

#include <cstddef>
#include <functional>
#include <string>

namespace orbisk {

/// Adds the text that a table shows in a cell; nothing where it shows none. Bytes of the local
/// encoding.
using CellText = std::function<void(std::string& text, std::size_t row, VertexColumn column)>;

/// The tables whose texts are exported.
struct ExportedTables {
    CellText lines;
    CellText areas;
};

/// Writes the points, lines and areas as text files into the folder "PickData" below `folder` (a
/// path in the local encoding; if empty, nothing is done), which is made where it is missing.
/// Lengths, totals and areas are the tables' texts. A kind without items writes no file and leaves
/// an old one alone; a file that can't be written whole leaves the old one, and nobody is told.
void exportMeasurements(const MeasurementSet& set, const std::string& folder,
                        const ExportedTables& tables);

} // namespace orbisk
