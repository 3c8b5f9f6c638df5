// Frames a second of a million triangles, 800 x 600 pixels, in each display mode: the program's
// scene against the library's viewer with the same state at the root of the same model.

#include "support/Report.h"
#include "support/Terrain.h"
#include "view/DisplayMode.h"
#include "view/ModelUpdateCallback.h"
#include "view/SceneRoot.h"
#include "view/ViewCamera.h"

#include <osg/Image>
#include <osg/PolygonMode>
#include <osg/Switch>
#include <osgUtil/Optimizer>
#include <osgViewer/Viewer>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

using namespace orbisk::bench;
using orbisk::DisplayMode;
using Clock = std::chrono::steady_clock;

constexpr int leastRepetitions = 31;
constexpr double secondsPerMode = 15.0;
constexpr int warmUpFrames = 3;
constexpr orbisk::ViewSize viewSize{800, 600};
constexpr double fovy = 30.0;
constexpr double closeUp = 0.35;                 ///< of home's distance: the model fills the view
constexpr TerrainSize terrainSize{5, 142, true}; ///< 1 008 200 triangles
constexpr unsigned int textureUnits = 4;

struct ModeCase {
    DisplayMode mode;
    const char* name;
    osg::PolygonMode::Mode polygons;
    bool textures;
};

constexpr ModeCase modeCases[] = {
    {DisplayMode::AsLoaded, "as loaded", osg::PolygonMode::FILL, true},
    {DisplayMode::PointCloud, "points", osg::PolygonMode::POINT, true},
    {DisplayMode::Tin, "tin", osg::PolygonMode::LINE, true},
    {DisplayMode::Gray, "gray", osg::PolygonMode::FILL, false},
};

/// Waits until a frame is really drawn, and copies it if asked to.
class FrameEnd : public osg::Camera::DrawCallback {
public:
    void operator()(osg::RenderInfo&) const override {
        glFinish();
        if (image)
            image->readPixels(0, 0, viewSize.w, viewSize.h, GL_RGB, GL_UNSIGNED_BYTE);
    }

    osg::ref_ptr<osg::Image> image;
};

/// A viewer without a window.
class View {
public:
    View() : m_end(new FrameEnd) {
        const osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
        traits->readDISPLAY();
        traits->setUndefinedScreenDetailsToDefaultScreen();
        traits->width = viewSize.w;
        traits->height = viewSize.h;
        traits->pbuffer = true;
        traits->doubleBuffer = false;
        const osg::ref_ptr<osg::GraphicsContext> context =
            osg::GraphicsContext::createGraphicsContext(traits.get());
        if (!context || !context->valid())
            throw std::runtime_error("cannot draw off the screen");
        m_viewer.setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
        orbisk::setUpCamera(camera(), fovy, viewSize);
        camera().setGraphicsContext(context);
        camera().setDrawBuffer(GL_FRONT);
        camera().setReadBuffer(GL_FRONT);
        camera().setFinalDrawCallback(m_end);
    }

    osg::Camera& camera() { return *m_viewer.getCamera(); }

    void show(osg::Node& scene, const orbisk::HomeView& home) {
        m_viewer.setSceneData(&scene);
        const osg::Vec3d eye = home.center + (home.eye - home.center) * closeUp;
        camera().setViewMatrixAsLookAt(eye, home.center, home.up);
        m_viewer.realize();
    }

    /// Draws a frame. @return what it took in seconds.
    double drawFrame() {
        const auto begin = Clock::now();
        m_viewer.frame();
        return std::chrono::duration<double>(Clock::now() - begin).count();
    }

    osg::ref_ptr<osg::Image> picture() {
        m_end->image = new osg::Image;
        drawFrame();
        osg::ref_ptr<osg::Image> picture = m_end->image;
        m_end->image = nullptr;
        return picture;
    }

private:
    osgViewer::Viewer m_viewer;
    osg::ref_ptr<FrameEnd> m_end;
};

/// The model on both sides.
class Comparison {
public:
    Comparison() : m_callback(new orbisk::ModelUpdateCallback) {
        const osg::ref_ptr<osg::Group> ourModel = makeTerrain(terrainSize);
        m_callback->attachTo(*ourModel);
        const orbisk::HomeView home = m_scene.rebuild(*ourModel, m_ours.camera(), false);
        m_ours.show(*m_scene.root(), home);

        m_theirRoot = new osg::Group;
        m_theirRoot->addChild(makeTerrain(terrainSize));
        osgUtil::Optimizer().optimize(m_theirRoot.get());
        osg::Switch& lit = *m_scene.modelSwitch();
        m_theirRoot->addChild(lit.getChild(orbisk::SceneRoot::upperLight));
        m_theirRoot->addChild(lit.getChild(orbisk::SceneRoot::lowerLight));
        m_theirs.show(*m_theirRoot, home);
    }

    ~Comparison() { m_scene.clear(); }

    void setMode(const ModeCase& which) {
        m_callback->mode = which.mode;
        osg::StateSet* state = new osg::StateSet;
        for (const unsigned int mode : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1})
            state->setMode(mode, osg::StateAttribute::ON);
        state->setAttribute(new osg::PolygonMode(osg::PolygonMode::FRONT_AND_BACK, which.polygons));
        // What the model says of its textures is overruled on both sides.
        const unsigned int textures =
            which.textures ? osg::StateAttribute::ON : osg::StateAttribute::OFF;
        for (unsigned int unit = 0; unit < textureUnits; ++unit)
            state->setTextureMode(unit, GL_TEXTURE_2D, textures | osg::StateAttribute::OVERRIDE);
        m_theirRoot->setStateSet(state);
        for (int i = 0; i < warmUpFrames; ++i) {
            m_ours.drawFrame();
            m_theirs.drawFrame();
        }
    }

    Samples framesPerSecond() {
        const double pair = m_ours.drawFrame() + m_theirs.drawFrame();
        const int repetitions = std::max(leastRepetitions, static_cast<int>(secondsPerMode / pair));
        return interleave(
            repetitions, [this] { return 1.0 / m_ours.drawFrame(); },
            [this] { return 1.0 / m_theirs.drawFrame(); });
    }

    /// Whether both sides draw the same, to the last pixel.
    bool sameOnBothSides() {
        const osg::ref_ptr<osg::Image> ours = m_ours.picture();
        const osg::ref_ptr<osg::Image> theirs = m_theirs.picture();
        return std::memcmp(ours->data(), theirs->data(), ours->getTotalSizeInBytes()) == 0;
    }

private:
    View m_ours;
    View m_theirs;
    orbisk::SceneRoot m_scene;
    osg::ref_ptr<orbisk::ModelUpdateCallback> m_callback;
    osg::ref_ptr<osg::Group> m_theirRoot;
};

void measure(Report& report) {
    Comparison comparison;
    for (const ModeCase& which : modeCases) {
        const Subject subject{std::string("a million triangles, ") + which.name, "fps",
                              Choice::Highest, Wanted{Wanted::Bound::AtLeast, 0.95}};
        if (!report.wants(subject.name))
            continue;
        comparison.setMode(which);
        report.add(subject, comparison.framesPerSecond());
        if (!comparison.sameOnBothSides())
            Report::note("the pictures of the two sides differ");
    }
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
