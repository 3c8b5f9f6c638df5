#include "view/Viewer.h"

#include "view/ThreadingPause.h"

#include <osgGA/AnimationPathManipulator>

namespace orbisk {

Viewer::Viewer() = default;

Viewer::~Viewer() {
    if (!m_viewer)
        return;
    detachCanvas();
    m_scene.clear();
}

void Viewer::create(OSGCanvas& canvas, double fovy) {
    m_viewer = new osgViewer::Viewer;
    setUpCamera(*m_viewer->getCamera(), fovy, canvas.pixelSize());
    m_trackball = makeTrackball();
    m_viewer->setCameraManipulator(m_trackball, true);
    // Pinned to one core, the main thread would pass the pin on to every thread it starts.
    m_viewer->setUseConfigureAffinity(false);
    // Escape ends the library's own viewer; here it must not even be heard.
    m_viewer->setKeyEventSetsDone(0);
    m_viewer->setQuitEventSetsDone(false);
    m_viewer->setSceneData(m_scene.root());
}

void Viewer::bind(OSGCanvas& canvas) {
    m_canvas = &canvas;
    const osg::ref_ptr<GraphicsWindowWX> window = new GraphicsWindowWX(&canvas);
    canvas.setGraphicsWindow(window);
    m_viewer->getCamera()->setGraphicsContext(window);
}

void Viewer::showModel(osg::Node& model, OSGCanvas& canvas, double fovy, bool skyShown) {
    const bool first = !m_viewer;
    if (first) {
        create(canvas, fovy);
        bind(canvas);
        m_viewer->setThreadingModel(osgViewer::ViewerBase::AutomaticSelection);
        m_viewer->realize();
    }
    const ThreadingPause pause(m_viewer.get());
    m_pickIndex.clear();
    m_model = &model;
    m_home = m_scene.rebuild(model, *m_viewer->getCamera(), skyShown);
    // The trackball moves in proportion to the model, not to the sky around it.
    m_trackball->setNode(&model);
    setHome(*m_trackball, m_home);
    if (m_viewer->getCameraManipulator() != m_trackball)
        m_viewer->setCameraManipulator(m_trackball, false);
    canvas.setViewer(m_viewer.get());
    m_viewer->home();
}

void Viewer::detachCanvas() {
    if (!m_canvas)
        return;
    m_viewer->stopThreading();
    const osg::ref_ptr<GraphicsWindowWX> window = m_canvas->graphicsWindow();
    // The window counts its use of the context's number twice. With the second count gone the
    // library sees that nobody shares the context, deletes what it holds and frees the number.
    osg::GraphicsContext::decrementContextIDUsageCount(window->getState()->getContextID());
    window->close();
    m_viewer->getCamera()->setGraphicsContext(nullptr);
    m_canvas->setGraphicsWindow(nullptr);
    m_canvas->setViewer(nullptr);
    m_canvas = nullptr;
}

void Viewer::attachCanvas(OSGCanvas& canvas) {
    bind(canvas);
    const ViewSize size = canvas.pixelSize();
    osg::Camera& camera = *m_viewer->getCamera();
    const double formerAspect = camera.getViewport()->aspectRatio();
    camera.setProjectionMatrix(camera.getProjectionMatrix() *
                               osg::Matrixd::scale(formerAspect * size.h / size.w, 1.0, 1.0));
    camera.setViewport(0, 0, size.w, size.h);
    canvas.setViewer(m_viewer.get());
    m_viewer->startThreading();
}

bool Viewer::renderFrame() {
    if (!m_viewer || !m_viewer->isRealized())
        return false;
    m_viewer->frame();
    return true;
}

void Viewer::resetManipulator() {
    if (!m_viewer)
        return;
    m_trackball = makeTrackball();
    m_viewer->setCameraManipulator(m_trackball, true);
    m_trackball->setNode(m_model.get());
    setHome(*m_trackball, m_home);
    m_viewer->home();
}

void Viewer::startRoam(osg::AnimationPath& path) {
    if (!m_viewer)
        return;
    const osg::ref_ptr<osgGA::AnimationPathManipulator> pilot = new osgGA::AnimationPathManipulator;
    pilot->setAnimationPath(&path);
    // It would print a line for every round, which is every frame on a path of one point.
    pilot->setPrintOutTimingInfo(false);
    m_viewer->setCameraManipulator(pilot, true);
    // The library's reset counts the flight from the viewer's start, not from now.
    pilot->home(m_viewer->elapsedTime());
}

void Viewer::setSkyShown(bool shown) {
    m_scene.setSkyShown(shown);
}

PickSurface* Viewer::pickSurface() {
    if (!m_canvas)
        return nullptr;
    PickView view;
    view.camera = m_viewer->getCamera();
    view.modelSwitch = m_scene.modelSwitch();
    view.canvasHeight = [canvas = m_canvas] { return canvas->pixelSize().h; };
    view.pauseDrawing = [this] { return std::make_shared<ThreadingPause>(m_viewer.get()); };
    m_picker.emplace(std::move(view), &m_pickIndex);
    return &*m_picker;
}

} // namespace orbisk
