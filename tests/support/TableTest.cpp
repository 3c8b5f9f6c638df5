#include "support/TableTest.h"

#include "measure/PolygonMeasure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>

namespace orbisk::test {

namespace {

std::string printed(double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

GridRow placeRow(std::size_t number, const osg::Vec3d& place) {
    return {std::to_string(number), printed(place.x()), printed(place.y()), printed(place.z())};
}

double distance(const osg::Vec3d& a, const osg::Vec3d& b) {
    const double x = b.x() - a.x();
    const double y = b.y() - a.y();
    const double z = b.z() - a.z();
    return std::sqrt(x * x + y * y + z * z);
}

double lengthOf(const MeasureLine& line) {
    double sum = 0.0;
    for (std::size_t k = 1; k < line.size(); ++k)
        sum += distance(line[k - 1], line[k]);
    return sum;
}

double areaOf(const MeasureArea& area) {
    double value = 0.0;
    PolygonMeasure().signedAreaOnly(area, value);
    return value;
}

std::vector<GridRow> itemRows(const std::vector<std::vector<osg::Vec3d>>& items,
                              const std::function<double(const std::vector<osg::Vec3d>&)>& total) {
    std::vector<GridRow> rows;
    for (const auto& item : items)
        for (std::size_t k = 0; k < item.size(); ++k) {
            rows.push_back(placeRow(k + 1, item[k]));
            rows.back().push_back(printed(k == 0 ? 0.0 : distance(item[k - 1], item[k])));
            rows.back().push_back(k == 0 ? printed(total(item)) : "");
        }
    return rows;
}

} // namespace

std::vector<GridRow> textsOf(const wxGrid& grid) {
    std::vector<GridRow> rows;
    for (int row = 0; row < grid.GetNumberRows(); ++row) {
        rows.emplace_back();
        for (int column = 0; column < grid.GetNumberCols(); ++column)
            rows.back().push_back(grid.GetCellValue(row, column).utf8_string());
    }
    return rows;
}

std::vector<GridRow> pointRows(const std::vector<osg::Vec3d>& points) {
    std::vector<GridRow> rows;
    for (std::size_t i = 0; i < points.size(); ++i)
        rows.push_back(placeRow(i + 1, points[i]));
    return rows;
}

std::vector<GridRow> lineRows(const std::vector<MeasureLine>& lines) {
    return itemRows(lines, lengthOf);
}

std::vector<GridRow> areaRows(const std::vector<MeasureArea>& areas) {
    return itemRows(areas, areaOf);
}

std::vector<std::pair<int, int>> joinedCells(const wxGrid& grid) {
    const int column = grid.GetNumberCols() - 1;
    std::vector<std::pair<int, int>> joints;
    for (int row = 0; row < grid.GetNumberRows(); ++row) {
        int rows = 0;
        int columns = 0;
        if (grid.GetCellSize(row, column, &rows, &columns) != wxGrid::CellSpan_Inside) {
            EXPECT_EQ(columns, 1) << row;
            joints.emplace_back(row, rows);
        } else {
            EXPECT_EQ(columns, 0) << row;
            EXPECT_EQ(row + rows, joints.empty() ? -1 : joints.back().first) << row;
        }
    }
    return joints;
}

std::vector<std::pair<int, int>> expectedJoints(const std::vector<std::vector<osg::Vec3d>>& items) {
    std::vector<std::pair<int, int>> joints;
    int row = 0;
    for (const auto& item : items)
        if (!item.empty()) {
            joints.emplace_back(row, static_cast<int>(item.size()));
            row += static_cast<int>(item.size());
        }
    return joints;
}

TableTest::~TableTest() {
    // The dialog reads the set to its end.
    if (frame())
        close();
}

void TableTest::open() {
    openAsItIs();
    m_dialog->SetSize(wxRect(100, 50, 800, 800));
    runFor(0.3);
}

void TableTest::openAsItIs() {
    start();
    m_dialog = new PickDialog(frame(), m_set, m_edits);
    m_dialog->Show();
    runFor(0.2);
}

void TableTest::expectToShowTheSet() const {
    EXPECT_EQ(textsOf(pointGrid()), pointRows(m_set.points));
    EXPECT_EQ(textsOf(travelGrid()), pointRows(m_set.travelPoints));
    EXPECT_EQ(textsOf(lineGrid()), lineRows(m_set.lines));
    EXPECT_EQ(joinedCells(lineGrid()), expectedJoints(m_set.lines));
    EXPECT_EQ(textsOf(areaGrid()), areaRows(m_set.areas));
    EXPECT_EQ(joinedCells(areaGrid()), expectedJoints(m_set.areas));
}

} // namespace orbisk::test
