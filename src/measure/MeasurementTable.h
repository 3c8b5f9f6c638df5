#pragma once

namespace orbisk {

/// The table's side of measuring: rows that follow the measurement set while it grows. The set is
/// changed first, then the operation of the change is called. Main thread.
class MeasurementTable {
public:
    virtual ~MeasurementTable() = default;

    /// The last point of the set is new.
    virtual void appendPointRow() = 0;
    /// The last travel point of the set is new.
    virtual void appendTravelRow() = 0;
    /// The last vertex of the current (last) line is new.
    virtual void appendLineVertexRow() = 0;
    /// The last vertex of the current (last) area is new.
    virtual void appendAreaVertexRow() = 0;
    /// The current area lost its last vertex, or its last two.
    virtual void removeLastAreaVertexRow() = 0;

    virtual void rebuildPointGrid() = 0;
    virtual void rebuildTravelGrid() = 0;
    virtual void rebuildLineGrid() = 0;
    virtual void rebuildAreaGrid() = 0;
};

/// Told by the table what the user did to the set there, after it was done, so that the drawings
/// follow. The fill of the current area (`MeasurementSet::areaTriangles`) is theirs to compute
/// anew. Outlives the table. Main thread.
class MeasurementEdits {
public:
    virtual ~MeasurementEdits() = default;

    virtual void pointsChanged() = 0;
    /// @param currentErased whether the line that was current is gone.
    virtual void linesChanged(bool currentErased) = 0;
    /// @param currentErased whether the area that was current is gone.
    virtual void areasChanged(bool currentErased) = 0;
    virtual void travelChanged() = 0;
    /// The table is closing, by the user or by `Destroy`, and takes no more row operations.
    virtual void tableClosed() = 0;
};

} // namespace orbisk
