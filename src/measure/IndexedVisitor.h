#pragma once

#include "measure/IntersectionVisitor.h"

namespace orbisk {

class PickIndex;

/// Finds the same hits as its base, to the bit and in the same order, but tests only triangles that
/// the ray can hit where the index has a tree. One visitor is one pick. Main thread.
class IndexedVisitor : public IntersectionVisitor {
public:
    /// @param index outlives the visitor.
    IndexedVisitor(const PickRay& ray, PickIndex& index, PauseDrawing pauseDrawing = {});

    META_NodeVisitor(orbisk, IndexedVisitor)

        protected : void intersectTriangles(const osg::Geometry& geometry) override;
    void beforeOverwriting(const osg::Array& array) override;

private:
    PickIndex& m_index;
    bool m_isServed; ///< whether trees can tell candidates for this ray
};

} // namespace orbisk
