#pragma once

#include <osg/Array>
#include <osg/ref_ptr>

#include <cstddef>
#include <vector>

namespace orbisk {

/// A vertex normal for each vertex, and the vertices that had to be there twice for it.
struct CreaseNormals {
    osg::ref_ptr<osg::Vec3Array> normals; ///< of unit length, or zero where no triangle has any

    /// The vertices behind the last one that was there: each is a copy of the one named here.
    std::vector<unsigned int> copies;
};

/// Makes normals for a mesh that comes without: those of the triangles at a vertex, averaged, all
/// counting the same. A vertex at a sharp edge, where a triangle stands off the average by more
/// than 45 degrees, is copied for each group of triangles that look the same way; `triangles` then
/// names the copies. The same vertices in the same order as of the library's smoothing with a
/// crease angle of 90 degrees, but its time is bounded by the number of triangles.
///
/// @param vertices a `Vec3Array` or a `Vec3dArray` of finite coordinates.
/// @param triangles three indices each, all of them within the vertices and no two of one triangle
///     the same.
template <class Vertices>
CreaseNormals makeCreaseNormals(const Vertices& vertices, std::vector<unsigned int>& triangles);

/// For these there is one, made once.
extern template CreaseNormals makeCreaseNormals(const osg::Vec3Array&, std::vector<unsigned int>&);
extern template CreaseNormals makeCreaseNormals(const osg::Vec3dArray&, std::vector<unsigned int>&);

} // namespace orbisk
