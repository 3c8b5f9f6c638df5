#pragma once

#include <osg/BoundingBox>
#include <osg/Node>

#include <cstddef>

namespace orbisk {

/// What a model consists of, in world coordinates.
struct ModelContents {
    std::size_t triangles = 0;     ///< a quad counts two, a polygon as many as a fan of it
    std::size_t flatTriangles = 0; ///< those among them that have no area
    std::size_t lines = 0;
    std::size_t points = 0;
    double area = 0.0;     ///< of the triangles
    osg::BoundingBoxd box; ///< of the vertices that something is drawn with
    bool doubles = false;  ///< whether any vertices are in double precision

    /// Whether nothing would be drawn.
    bool empty() const { return triangles + lines + points == 0; }
};

/// Counts and measures the geometries of a model, each once for every place where it stands, all
/// levels of detail and all choices included. What refers to vertices that are not there is left
/// out. May run on any thread that owns the model.
ModelContents contentsOf(osg::Node& model);

} // namespace orbisk
