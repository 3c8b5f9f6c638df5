#pragma once

#include "measure/GeometryTriangles.h"
#include "measure/HitArray.h"
#include "measure/PickRay.h"

#include <osg/Geometry>
#include <osg/MatrixTransform>
#include <osg/Matrixd>
#include <osg/NodeVisitor>
#include <osg/Vec3d>

#include <functional>
#include <memory>

namespace orbisk {

/// Makes drawing stand still for as long as what it returns is kept.
using PauseDrawing = std::function<std::shared_ptr<void>()>;

/// Finds where a ray meets the triangles of what it visits; every triangle of a drawable whose
/// bounding sphere the ray meets is tested. What picking gives is defined here, peculiarities
/// included; `PickIndex` finds the same faster.
///
/// The matrix of a transform replaces the one in force and stays in force for whatever is visited
/// later, below this transform or beside it. Vertices in double precision are overwritten with
/// their transformed values. A triangle behind the ray's origin counts as hit, and as nearest.
///
/// Main thread. A triangle whose indices go beyond its primitive set or its vertices throws
/// `std::out_of_range` out of the traversal.
class IntersectionVisitor : public osg::NodeVisitor {
public:
    /// @param pauseDrawing is called before vertices are overwritten, once at most; what it returns
    /// is kept as long as the visitor. May be empty: nothing draws then.
    IntersectionVisitor(const osg::Vec3d& origin, const osg::Vec3d& direction,
                        PauseDrawing pauseDrawing = {});
    ~IntersectionVisitor() override;

    META_NodeVisitor(orbisk, IntersectionVisitor)

        void apply(osg::MatrixTransform& transform) override;
    void apply(osg::Geometry& geometry) override;

    /// What was hit so far, in world coordinates: the nearest first, the others in no order.
    const HitArray& hits() const { return m_hits; }

protected:
    /// Called for each drawable that the ray's sphere test lets through and whose vertices can be
    /// picked: tests its triangles in their order. This one tests all of them.
    virtual void intersectTriangles(const osg::Geometry& geometry, const PickVertices& vertices);

    /// Called before the vertices of `array` are overwritten.
    virtual void beforeOverwriting(const osg::Array& array);

    /// Takes in the hit at `distance`, in lengths of the direction.
    void keep(double distance);

    /// How far off the first hit is, as it counts for the next; there must be one.
    double frontLength() const { return (m_hits.front() - m_ray.origin).length(); }

    const PickRay& ray() const { return m_ray; }
    double directionLength() const { return m_directionLength; }
    const osg::Matrixd& matrix() const { return m_matrix; }

private:
    bool meetsSphere(const osg::Geometry& geometry) const;
    void overwriteVertices(osg::Geometry& geometry);

    PickRay m_ray;
    double m_directionLength;
    osg::Matrixd m_matrix;
    HitArray m_hits;
    PauseDrawing m_pauseDrawing;
    std::shared_ptr<void> m_pause;
};

} // namespace orbisk
