#pragma once

#include "measure/MeasurementGridTable.h"

#include <osg/Vec3d>

#include <vector>

namespace orbisk {

/// Shows a list of points, a row each: its number, counted from 1, and its coordinates.
class PointGridTable : public MeasurementGridTable {
public:
    /// @param points outlive the table.
    explicit PointGridTable(const std::vector<osg::Vec3d>& points);

    void appendText(std::string& text, std::size_t row, int column) const override;

protected:
    std::size_t recountAll() override;
    std::size_t recountFromLast() override;

private:
    const std::vector<osg::Vec3d>& m_points;
};

} // namespace orbisk
