#pragma once

#include "measure/PickIndex.h"
#include "measure/Picker.h"
#include "view/OSGCanvas.h"
#include "view/SceneRoot.h"

#include <osg/AnimationPath>
#include <osgViewer/Viewer>

#include <optional>

namespace orbisk {

/// The scene-graph library's viewer, bound to a canvas, with the scene it shows. Draws on a thread
/// of its own where the machine has more than one core. Main thread.
class Viewer {
public:
    Viewer();
    ~Viewer();

    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    /// Builds the scene around `model` and looks at it from home. The first time the viewer is set
    /// up on `canvas`, which must be shown, with this vertical field of view (degrees).
    void showModel(osg::Node& model, OSGCanvas& canvas, double fovy, bool skyShown);

    /// Takes the viewer off its canvas before that is destroyed; what it holds on the graphics
    /// card is released. Scene, camera and manipulator stay.
    void detachCanvas();

    /// Binds a viewer that shows a model to another canvas.
    void attachCanvas(OSGCanvas& canvas);

    /// Whether a model was shown.
    bool exists() const { return m_viewer.valid(); }

    /// Draws a frame if the canvas is on the screen. @return whether it did.
    bool renderFrame();

    /// Puts a new trackball on the camera and looks from home.
    void resetManipulator();

    /// Flies the camera along `path` from its beginning on, over and over, until another
    /// manipulator is put on it. Along an empty path it stands at the world's origin. Without a
    /// model nothing happens.
    void startRoam(osg::AnimationPath& path);

    void setSkyShown(bool shown);

    /// What the pointer picks on: the model as the camera shows it on the canvas. To be asked for
    /// again after a model was shown or the canvas replaced; null without either.
    PickSurface* pickSurface();

    /// Null before the first model.
    osgViewer::Viewer* osgViewer() const { return m_viewer.get(); }

    const SceneRoot& scene() const { return m_scene; }

    const HomeView& home() const { return m_home; }

private:
    void create(OSGCanvas& canvas, double fovy);
    void bind(OSGCanvas& canvas);

    PickIndex m_pickIndex;
    std::optional<Picker> m_picker;
    SceneRoot m_scene;
    HomeView m_home;
    osg::ref_ptr<osgViewer::Viewer> m_viewer;
    osg::ref_ptr<osgGA::TrackballManipulator> m_trackball;
    osg::observer_ptr<osg::Node> m_model;
    OSGCanvas* m_canvas = nullptr;
};

} // namespace orbisk
