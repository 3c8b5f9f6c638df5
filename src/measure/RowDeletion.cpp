#include "measure/RowDeletion.h"

#include <algorithm>
#include <utility>

namespace orbisk {

namespace {

using Items = std::vector<std::vector<osg::Vec3d>>;

void sortOnce(TableRows& rows) {
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
}

/// Erases places, sorted and each once, in a single pass.
template <class Element>
void eraseSorted(std::vector<Element>& list, const TableRows& places) {
    auto next = places.begin();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (next != places.end() && *next == i)
            ++next;
        else if (kept++ != i)
            list[kept - 1] = std::move(list[i]);
    }
    list.resize(kept);
}

/// For each item the vertices in these rows, sorted and each once.
std::vector<TableRows> verticesByItem(const Items& items, TableRows rows) {
    sortOnce(rows);
    std::vector<TableRows> vertices(items.size());
    auto row = rows.begin();
    std::size_t firstRow = 0;
    for (std::size_t i = 0; i < items.size() && row != rows.end(); ++i) {
        const std::size_t nextRow = firstRow + items[i].size();
        for (; row != rows.end() && *row < nextRow; ++row)
            vertices[i].push_back(*row - firstRow);
        firstRow = nextRow;
    }
    return vertices;
}

} // namespace

void eraseFirst(std::vector<osg::Vec3d>& list, std::size_t count) {
    list.erase(list.begin(),
               list.begin() + static_cast<std::ptrdiff_t>(std::min(count, list.size())));
}

void erasePlaces(std::vector<osg::Vec3d>& list, TableRows places) {
    sortOnce(places);
    eraseSorted(list, places);
}

void eraseVertices(Items& items, TableRows rows) {
    const std::vector<TableRows> vertices = verticesByItem(items, std::move(rows));
    for (std::size_t i = 0; i < items.size(); ++i)
        if (!vertices[i].empty())
            eraseSorted(items[i], vertices[i]);
}

bool eraseItems(Items& items, TableRows rows) {
    const std::vector<TableRows> vertices = verticesByItem(items, std::move(rows));
    TableRows doomed;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (!vertices[i].empty())
            doomed.push_back(i);
    const bool lastErased = !doomed.empty() && doomed.back() + 1 == items.size();
    eraseSorted(items, doomed);
    return lastErased;
}

} // namespace orbisk
