#pragma once

#include <osg/Image>
#include <osg/Node>
#include <osg/ref_ptr>
#include <osgViewer/Viewer>

namespace orbisk::test {

/// A viewer without a window whose frames can be looked at.
class OffScreenView {
public:
    OffScreenView(
        int width, int height, double fovy,
        osgViewer::ViewerBase::ThreadingModel threading = osgViewer::ViewerBase::SingleThreaded);

    osg::Camera& camera() { return *m_viewer.getCamera(); }

    void setScene(osg::Node* scene) { m_viewer.setSceneData(scene); }

    /// Draws a frame with the camera as it stands.
    osg::ref_ptr<osg::Image> draw();

    /// Draws a frame that nobody looks at; with a draw thread, returns while it is being drawn.
    void drawUnseen();

private:
    osgViewer::Viewer m_viewer;
    int m_width;
    int m_height;
};

} // namespace orbisk::test
