#pragma once

#include "measure/IntersectionVisitor.h"
#include "measure/PickSurface.h"

#include <osg/Camera>
#include <osg/Switch>
#include <osg/Vec3d>
#include <osg/observer_ptr>

#include <functional>

namespace orbisk {

class PickIndex;

/// What a picker looks at and through. None of it is kept alive.
struct PickView {
    osg::observer_ptr<osg::Camera> camera;      ///< with a viewport
    osg::observer_ptr<osg::Switch> modelSwitch; ///< its child 1 is the model
    std::function<int()> canvasHeight;          ///< of the client area, pixels
    PauseDrawing pauseDrawing;                  ///< may be empty: nothing draws meanwhile then
};

/// Turns positions on the canvas (pixels, origin top left) into points in world coordinates. Main
/// thread.
class Picker : public PickSurface {
public:
    /// @param index makes picking fast and changes no result; outlives the picker; may be null.
    explicit Picker(PickView view, PickIndex* index = nullptr);

    void prepare() override;

    bool pickPoint(double x, double y, osg::Vec3d& point) override;

    /// The world's origin without a camera.
    osg::Vec3d nearPoint(double x, double y) const override;

private:
    CanvasPosition position(double x, double y) const;
    osg::ref_ptr<osg::Node> model() const;

    PickView m_view;
    PickIndex* m_index;
};

} // namespace orbisk
