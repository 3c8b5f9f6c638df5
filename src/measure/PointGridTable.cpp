#include "measure/PointGridTable.h"

#include "app/CommandTable.h"
#include "measure/NumberText.h"

namespace orbisk {

PointGridTable::PointGridTable(const std::vector<osg::Vec3d>& points)
    : MeasurementGridTable(
          {translatable("ID"), translatable("X"), translatable("Y"), translatable("Z")}),
      m_points(points) {}

void PointGridTable::appendText(std::string& text, std::size_t row, int column) const {
    if (row >= m_points.size())
        return;
    if (column == 0)
        appendOrdinal(text, row);
    else
        appendDecimal(text, m_points[row][column - 1]);
}

std::size_t PointGridTable::recountAll() {
    return m_points.size();
}

std::size_t PointGridTable::recountFromLast() {
    return m_points.size();
}

} // namespace orbisk
