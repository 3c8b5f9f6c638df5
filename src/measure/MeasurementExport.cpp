#include "measure/MeasurementExport.h"

#include "measure/NumberText.h"
#include "platform/RunTimePath.h"
#include "platform/TextFile.h"

#include <filesystem>
#include <system_error>

namespace orbisk {

namespace {

constexpr const char* exportFolder = "PickData";
constexpr const char* pointsFile = "Points.csv";
constexpr const char* linesFile = "Lines.csv";
constexpr const char* areasFile = "Rectangles.txt";
constexpr const char* pointsHeader = "#id,x,y,z\n";
constexpr const char* linesHeader = "#id_lines,id_points,x,y,z,length,lengths\n";
constexpr const char* areasHeader = "#id_rects,id_points,x,y,z,length,area\n";

/// Most rows are shorter.
constexpr std::size_t usualRowLength = 64;

std::string pointsText(const std::vector<MeasurePoint>& points) {
    std::string text(pointsHeader);
    text.reserve(points.size() * usualRowLength);
    for (std::size_t i = 0; i < points.size(); ++i) {
        appendOrdinal(text, i);
        text += ',';
        appendDecimal(text, points[i].x());
        text += ' '; // Not a comma: the format is so.
        appendDecimal(text, points[i].y());
        text += ',';
        appendDecimal(text, points[i].z());
        text += '\n';
    }
    return text;
}

/// The two numbers and the coordinates that a vertex's row begins with.
void appendVertex(std::string& text, std::size_t item, std::size_t number,
                  const osg::Vec3d& vertex) {
    appendOrdinal(text, item);
    text += ',';
    appendOrdinal(text, number);
    for (int axis = 0; axis < osg::Vec3d::num_components; ++axis) {
        text += ',';
        appendDecimal(text, vertex[axis]);
    }
}

std::string itemsText(const VertexRows::Items& items, const char* header, const CellText& cell) {
    std::size_t rows = 0;
    for (const auto& item : items)
        rows += item.size();
    std::string text(header);
    text.reserve(text.size() + rows * usualRowLength);
    std::size_t row = 0;
    for (std::size_t i = 0; i < items.size(); ++i)
        for (std::size_t k = 0; k < items[i].size(); ++k, ++row) {
            appendVertex(text, i, k, items[i][k]);
            text += ',';
            cell(text, row, VertexColumn::Length);
            if (k == 0) {
                text += ',';
                cell(text, row, VertexColumn::Total);
            }
            text += '\n';
        }
    return text;
}

} // namespace

void exportMeasurements(const MeasurementSet& set, const std::string& folder,
                        const ExportedTables& tables) {
    // It would stand for the working directory.
    if (folder.empty())
        return;
    const auto pathOf = [&folder](const char* file) {
        return runTimePath({folder.c_str(), exportFolder, file});
    };
    std::error_code ignored;
    std::filesystem::create_directory(runTimePath({folder.c_str(), exportFolder}), ignored);
    if (!set.points.empty())
        replaceTextFile(pathOf(pointsFile), pointsText(set.points));
    if (!set.lines.empty())
        replaceTextFile(pathOf(linesFile), itemsText(set.lines, linesHeader, tables.lines));
    if (!set.areas.empty())
        replaceTextFile(pathOf(areasFile), itemsText(set.areas, areasHeader, tables.areas));
}

} // namespace orbisk
