#pragma once

#include "measure/IntersectionVisitor.h"

#include <optional>

namespace orbisk {

class FrontHits;
class GeometryIndex;
class PickIndex;

/// Finds the same front hit as its base, to the bit, but where the index has a tree it tests only
/// triangles that can decide which hit that is. The other hits are some of those that the base
/// finds, and in the same order. One visitor is one pick. Main thread.
class IndexedVisitor : public IntersectionVisitor {
public:
    /// @param index outlives the visitor.
    IndexedVisitor(const PickRay& ray, PickIndex& index, PauseDrawing pauseDrawing = {});

    META_NodeVisitor(orbisk, IndexedVisitor)

        using IntersectionVisitor::apply;
    void apply(osg::Group& group) override;
    void apply(osg::Geode& geode) override;

protected:
    void intersectTriangles(const osg::Geometry& geometry, const PickVertices& vertices) override;
    void beforeOverwriting(const osg::Array& array) override;

private:
    std::optional<double> frontDistance() const;
    void collect(const GeometryIndex& index, const osg::Geometry& geometry,
                 const PickVertices& vertices, FrontHits& hits) const;

    PickIndex& m_index;
    bool m_isServed; ///< whether trees can tell candidates for this ray
};

} // namespace orbisk
