#pragma once

#include <osg/Array>
#include <osg/Geometry>
#include <osg/Vec3d>
#include <osg/Vec4>
#include <osg/ref_ptr>

#include <vector>

namespace orbisk {

/// A geometry of one colour and one primitive set that is drawn over the model as exactly as its
/// world coordinates are known.
///
/// The graphics card computes in single precision, which at coordinates of several million is half
/// a metre. What it is given is therefore taken relative to the first vertex, and the view is moved
/// there in double precision.
///
/// It has no bound. So it is never culled, not even where it is a single point; the depth range is
/// fitted to the model alone, and the near plane does not cut what is drawn; a vertex that is not a
/// number troubles nobody else.
///
/// It is complete once it is made, and never changes. A draw thread may still draw it after it was
/// taken out of the scene.
class MeasurementGeometry : public osg::Geometry {
public:
    /// @param mode how OpenGL joins the vertices, such as GL_LINE_STRIP.
    /// @param vertices world frame; shared with the caller, who changes them no more.
    /// @param colour red, green, blue, alpha.
    MeasurementGeometry(GLenum mode, osg::Vec3dArray& vertices, const osg::Vec4& colour);

    osg::BoundingBox computeBoundingBox() const override;

    /// Leaves the current colour of OpenGL as it was: models without a colour are drawn in it.
    void drawImplementation(osg::RenderInfo& renderInfo) const override;

protected:
    ~MeasurementGeometry() override;

private:
    osg::Vec3d m_origin;
    osg::ref_ptr<osg::Geometry> m_relative; ///< the same with its vertices relative to the origin
};

} // namespace orbisk
