#pragma once

#include <cstdint>
#include <vector>

namespace orbisk {

/// Puts the triangles of a mesh into an order in which a graphics card finds most of their vertices
/// in its cache, by Tom Forsyth's linear-speed method ("Linear-Speed Vertex Cache Optimisation",
/// 2006): the same order as the library's `osgUtil::VertexCacheVisitor` gives, but in a time that
/// grows with the mesh and not with the square of the number of its separate pieces. Of a mesh with
/// vertices that more than a thousand triangles share, part may stay in the order it had.
/// @param triangles three vertex numbers each, below `vertexCount`.
/// @return the triangles in their new order, their corners as they were, without those that name a
/// vertex twice.
std::vector<std::uint32_t> cacheFriendlyOrder(const std::vector<std::uint32_t>& triangles,
                                              std::uint32_t vertexCount);

} // namespace orbisk
