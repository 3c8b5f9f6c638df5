#include "view/Screenshot.h"

#include "platform/FileReplacement.h"
#include "view/ModelReader.h"
#include "view/ModelUpdateCallback.h"
#include "view/SceneRoot.h"
#include "view/ViewCamera.h"

#include <osg/GraphicsContext>
#include <osg/Image>
#include <osgDB/DatabasePager>
#include <osgDB/Registry>
#include <osgViewer/Viewer>

#include <sstream>

namespace orbisk {

namespace {

constexpr unsigned int depthBits = 24;
constexpr int leastFrames = 3;               ///< the sky follows the camera one frame late
constexpr double longestWaitForTiles = 60.0; ///< seconds

/// Copies the finished frame into an image.
class FrameCapture : public osg::Camera::DrawCallback {
public:
    explicit FrameCapture(const ViewSize& size) : m_size(size), m_image(new osg::Image) {}

    void operator()(osg::RenderInfo&) const override {
        m_image->readPixels(0, 0, m_size.w, m_size.h, GL_RGB, GL_UNSIGNED_BYTE);
    }

    const osg::Image& image() const { return *m_image; }

private:
    ViewSize m_size;
    osg::ref_ptr<osg::Image> m_image;
};

osg::ref_ptr<osg::GraphicsContext> makeOffScreenContext(const ViewSize& size) {
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->width = size.w;
    traits->height = size.h;
    traits->depth = depthBits;
    traits->doubleBuffer = false;
    traits->pbuffer = true;
    osg::ref_ptr<osg::GraphicsContext> context =
        osg::GraphicsContext::createGraphicsContext(traits.get());
    return context.valid() && context->valid() ? context : nullptr;
}

bool tilesPending(osgViewer::Viewer& viewer) {
    osgDB::DatabasePager* pager = viewer.getDatabasePager();
    return pager && pager->getRequestsInProgress();
}

/// Draws frames until the scene has all its tiles.
void settle(osgViewer::Viewer& viewer) {
    const double limit = viewer.elapsedTime() + longestWaitForTiles;
    int settledFrames = 0;
    while (settledFrames < leastFrames && viewer.elapsedTime() < limit) {
        viewer.frame();
        settledFrames = tilesPending(viewer) ? 0 : settledFrames + 1;
    }
}

bool writePng(const osg::Image& image, const std::string& file) {
    osgDB::ReaderWriter* writer = osgDB::Registry::instance()->getReaderWriterForExtension("png");
    std::ostringstream bytes;
    return writer && writer->writeImage(image, bytes).success() && replaceFile(file, bytes.str());
}

} // namespace

std::optional<std::string> takeScreenshot(const ScreenshotRequest& request,
                                          const std::string& model, const AppSettings& settings) {
    const osg::ref_ptr<osg::Node> node = readModel(model);
    if (!node)
        return "cannot read the model " + model;
    const ViewSize size{request.width, request.height};
    const osg::ref_ptr<osg::GraphicsContext> context = makeOffScreenContext(size);
    if (!context)
        return "cannot draw off the screen: no display, or the picture is too large for it";

    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->mode = request.mode;
    callback->attachTo(*node);
    SceneRoot scene;
    osgViewer::Viewer viewer;
    viewer.setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
    osg::Camera& camera = *viewer.getCamera();
    setUpCamera(camera, settings.fovy, size);
    camera.setGraphicsContext(context.get());
    camera.setDrawBuffer(GL_FRONT);
    camera.setReadBuffer(GL_FRONT);
    const osg::ref_ptr<osgGA::TrackballManipulator> trackball = makeTrackball();
    viewer.setCameraManipulator(trackball, false);
    viewer.setSceneData(scene.root());
    setHome(*trackball, scene.rebuild(*node, camera, settings.sky_show != 0));
    viewer.realize();
    viewer.home();
    settle(viewer);
    const osg::ref_ptr<FrameCapture> capture = new FrameCapture(size);
    camera.setFinalDrawCallback(capture);
    viewer.frame();
    scene.clear();
    if (!writePng(capture->image(), request.file))
        return "cannot write the picture " + request.file;
    return std::nullopt;
}

} // namespace orbisk
