#pragma once

#include <osg/Vec3d>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orbisk {

/// Columns of a table of lines or areas.
enum class VertexColumn { Id, X, Y, Z, Length, Total };

/// A value of a whole line or area, and how many of its vertices it takes in so far.
struct ItemTotal {
    double value = 0.0;
    std::size_t vertices = 0;
};

/// Extends `total` to all of an item's vertices, which are more than it takes in so far; the
/// caller notes their number.
using TotalExtension = std::function<void(const std::vector<osg::Vec3d>& item, ItemTotal& total)>;

/// Adds the lengths of the segments that a line has grown by, so that a line's total is the sum of
/// its segments from the first to the last, at the cost of the new ones.
void extendLength(const std::vector<osg::Vec3d>& line, ItemTotal& total);

/// Lists the vertices of all lines, or of all areas, as rows of a table: item after item, a row a
/// vertex, none for an item without vertices. It knows only where each item's rows begin; all else
/// is read from the items when it is asked for, so a change costs nothing but its notice.
///
/// The items are the owner's and outlive the object. Between a change and its notice the rows are
/// the old ones; those whose vertex is gone have no text.
class VertexRows {
public:
    using Items = std::vector<std::vector<osg::Vec3d>>;

    /// Where a row's vertex stands.
    struct Place {
        std::size_t item;
        std::size_t vertex;
    };

    VertexRows(const Items& items, TotalExtension extendTotal);

    /// Notices any change.
    void rebuild();

    /// Notices that the last item, as it was at the last notice, gained or lost vertices at its
    /// end, or that items came behind it. Takes no more time for many items than for few.
    void followLast();

    std::size_t count() const { return m_count; }

    /// The vertex of a row; none beyond the last row.
    std::optional<Place> at(std::size_t row) const;

    /// Number of rows of an item that has rows.
    std::size_t rowsOf(std::size_t item) const;

    /// Adds the text of a cell: the vertex's number within its item, its coordinates, its distance
    /// from the vertex before, and in the item's first row the total. Adds nothing where no text
    /// belongs.
    void appendText(std::string& text, std::size_t row, VertexColumn column) const;

private:
    struct Item {
        std::size_t firstRow;
        /// Computed when first asked for.
        mutable ItemTotal total;
    };

    void listFrom(std::size_t item);
    double totalOf(std::size_t item) const;

    const Items& m_items;
    TotalExtension m_extendTotal;
    std::vector<Item> m_listed;
    std::size_t m_count = 0;
};

} // namespace orbisk
