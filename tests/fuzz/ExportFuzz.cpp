// Sets of measurements that no survey gives: the export writes a row for each vertex, whatever
// numbers stand in it, and tables that follow the set say the same as fresh ones.

#include "measure/MeasurementExport.h"
#include "measure/VertexRows.h"
#include "support/Fuzzing.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

using namespace orbisk;
using fuzz::Bytes;
using fuzz::require;
namespace fs = std::filesystem;

constexpr std::size_t mostItems = 6;
constexpr std::size_t mostVertices = 9;
constexpr VertexColumn columns[] = {VertexColumn::Id, VertexColumn::X,      VertexColumn::Y,
                                    VertexColumn::Z,  VertexColumn::Length, VertexColumn::Total};

osg::Vec3d place(Bytes& bytes) {
    const double x = bytes.number();
    const double y = bytes.number();
    return {x, y, bytes.number()};
}

std::vector<osg::Vec3d> places(Bytes& bytes) {
    std::vector<osg::Vec3d> places(bytes.below(mostVertices));
    for (osg::Vec3d& each : places)
        each = place(bytes);
    return places;
}

VertexRows::Items items(Bytes& bytes) {
    VertexRows::Items items(bytes.below(mostItems));
    for (auto& item : items)
        item = places(bytes);
    return items;
}

std::size_t vertexCount(const VertexRows::Items& items) {
    std::size_t count = 0;
    for (const auto& item : items)
        count += item.size();
    return count;
}

/// One line a row below the heading; no file where there is nothing to write.
void expectRows(const fs::path& file, std::size_t itemCount, std::size_t rows) {
    require(fs::exists(file) == (itemCount != 0), "a file for nothing, or none for something");
    if (itemCount == 0)
        return;
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    const auto lines = std::count(text.begin(), text.end(), '\n');
    require(static_cast<std::size_t>(lines) == rows + 1, "not a row for each vertex");
    require(text.find('\0') == std::string::npos, "a byte that is no text");
}

std::string tableText(const VertexRows& rows) {
    std::string text;
    for (std::size_t row = 0; row <= rows.count(); ++row)
        for (const VertexColumn column : columns) {
            rows.appendText(text, row, column);
            text += '|';
        }
    return text;
}

/// The last item grows, shrinks or is followed by others.
void changeLast(Bytes& bytes, VertexRows::Items& items) {
    switch (bytes.below(3)) {
    case 0:
        items.push_back(places(bytes));
        break;
    case 1:
        if (!items.empty())
            items.back().push_back(place(bytes));
        break;
    default:
        if (!items.empty() && !items.back().empty())
            items.back().pop_back();
        break;
    }
}

void checkFollowing(Bytes& bytes, VertexRows::Items& items) {
    constexpr int changes = 4;
    VertexRows followed(items, extendLength);
    for (int i = 0; i < changes; ++i) {
        tableText(followed);
        changeLast(bytes, items);
        tableText(followed);
        followed.followLast();
        require(tableText(followed) == tableText(VertexRows(items, extendLength)),
                "a table that followed says something else than a fresh one");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    const fs::path& folder = fuzz::workingFolder();
    const fs::path exported = folder / "PickData";
    fs::remove_all(exported);
    Bytes bytes(input, size);
    MeasurementSet set;
    set.points = places(bytes);
    set.lines = items(bytes);
    set.areas = items(bytes);

    const VertexRows lines(set.lines, extendLength);
    const VertexRows areas(set.areas, extendLength);
    const auto textOf = [](const VertexRows& rows) {
        return [&rows](std::string& to, std::size_t row, VertexColumn column) {
            rows.appendText(to, row, column);
        };
    };
    exportMeasurements(set, folder.string(), {textOf(lines), textOf(areas)});
    expectRows(exported / "Points.csv", set.points.size(), set.points.size());
    expectRows(exported / "Lines.csv", set.lines.size(), vertexCount(set.lines));
    expectRows(exported / "Rectangles.txt", set.areas.size(), vertexCount(set.areas));
    checkFollowing(bytes, set.lines);
    return 0;
}
