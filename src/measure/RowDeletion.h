#pragma once

#include <osg/Vec3d>

#include <cstddef>
#include <vector>

namespace orbisk {

/// Row numbers of a table, in any order.
using TableRows = std::vector<std::size_t>;

/// Erases the first `count` elements, or all where there are fewer.
void eraseFirst(std::vector<osg::Vec3d>& list, std::size_t count);

/// Erases the elements of the given places, counted before any is erased. Places that don't exist
/// are ignored, as everywhere here.
void erasePlaces(std::vector<osg::Vec3d>& list, TableRows places);

/// Erases the vertices in the given rows, where the items' vertices follow each other as rows,
/// counted before any is erased. Items that lose all their vertices stay, so that the others keep
/// their places.
void eraseVertices(std::vector<std::vector<osg::Vec3d>>& items, TableRows rows);

/// Erases whole the items that hold the given rows, counted as before.
/// @return whether the last item was among them.
bool eraseItems(std::vector<std::vector<osg::Vec3d>>& items, TableRows rows);

} // namespace orbisk
