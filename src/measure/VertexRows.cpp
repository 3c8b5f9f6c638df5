#include "measure/VertexRows.h"

#include "measure/NumberText.h"

#include <algorithm>
#include <utility>

namespace orbisk {

void extendLength(const std::vector<osg::Vec3d>& line, ItemTotal& total) {
    for (std::size_t i = std::max<std::size_t>(total.vertices, 1); i < line.size(); ++i)
        total.value += (line[i] - line[i - 1]).length();
}

VertexRows::VertexRows(const Items& items, TotalExtension extendTotal)
    : m_items(items), m_extendTotal(std::move(extendTotal)) {
    rebuild();
}

void VertexRows::rebuild() {
    m_listed.clear();
    m_count = 0;
    listFrom(0);
}

void VertexRows::followLast() {
    if (m_listed.empty() || m_items.size() < m_listed.size()) {
        rebuild();
        return;
    }
    const std::size_t last = m_listed.size() - 1;
    const Item former = m_listed[last];
    const std::size_t formerVertices = m_count - former.firstRow;
    m_listed.pop_back();
    m_count = former.firstRow;
    listFrom(last);
    // One that shrank may grow again before anybody asks, to other vertices of the same number.
    if (m_items[last].size() >= formerVertices)
        m_listed[last].total = former.total;
}

void VertexRows::listFrom(std::size_t item) {
    for (; item < m_items.size(); ++item) {
        m_listed.push_back({m_count, {}});
        m_count += m_items[item].size();
    }
}

std::optional<VertexRows::Place> VertexRows::at(std::size_t row) const {
    if (row >= m_count)
        return std::nullopt;
    // An item without rows begins where the next one does, and that one is behind it.
    const auto next = std::upper_bound(
        m_listed.begin(), m_listed.end(), row,
        [](std::size_t wanted, const Item& item) { return wanted < item.firstRow; });
    const auto item = static_cast<std::size_t>(next - m_listed.begin()) - 1;
    return Place{item, row - m_listed[item].firstRow};
}

std::size_t VertexRows::rowsOf(std::size_t item) const {
    const std::size_t end = item + 1 < m_listed.size() ? m_listed[item + 1].firstRow : m_count;
    return end - m_listed[item].firstRow;
}

void VertexRows::appendText(std::string& text, std::size_t row, VertexColumn column) const {
    const auto place = at(row);
    if (!place || place->item >= m_items.size() || place->vertex >= m_items[place->item].size())
        return;
    const std::vector<osg::Vec3d>& item = m_items[place->item];
    const osg::Vec3d& vertex = item[place->vertex];
    switch (column) {
    case VertexColumn::Id:
        return appendOrdinal(text, place->vertex);
    case VertexColumn::X:
        return appendDecimal(text, vertex.x());
    case VertexColumn::Y:
        return appendDecimal(text, vertex.y());
    case VertexColumn::Z:
        return appendDecimal(text, vertex.z());
    case VertexColumn::Length:
        return appendDecimal(
            text, place->vertex == 0 ? 0.0 : (vertex - item[place->vertex - 1]).length());
    case VertexColumn::Total:
        if (place->vertex == 0)
            appendDecimal(text, totalOf(place->item));
    }
}

double VertexRows::totalOf(std::size_t item) const {
    ItemTotal& total = m_listed[item].total;
    if (total.vertices < m_items[item].size()) {
        m_extendTotal(m_items[item], total);
        total.vertices = m_items[item].size();
    }
    return total.value;
}

} // namespace orbisk
