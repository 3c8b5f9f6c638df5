// FlyInLibrary MODEL SECONDS WIDTH HEIGHT
//
// Shows MODEL, a tile tree, in the library's own viewer in a window of this size, flies over it as
// the program's roam does and prints how that went, see printFlight.

#include "helpers/TileFlight.h"
#include "view/SceneRoot.h"

#include <osgDB/ReadFile>
#include <osgGA/AnimationPathManipulator>
#include <osgViewer/Viewer>

#include <cstdlib>

namespace {

using orbisk::bench::Clock;
using orbisk::bench::FlightLog;

/// The model under the program's two lights: they cost per vertex.
osg::ref_ptr<osg::Group> litAsInProgram(osg::Node& model) {
    orbisk::SceneRoot scene;
    const osg::ref_ptr<osg::Camera> anyCamera = new osg::Camera;
    anyCamera->setViewport(0, 0, 1, 1);
    scene.rebuild(model, *anyCamera, false);
    osg::ref_ptr<osg::Group> lit = new osg::Group;
    lit->addChild(&model);
    for (const unsigned int light : {orbisk::SceneRoot::upperLight, orbisk::SceneRoot::lowerLight})
        lit->addChild(scene.modelSwitch()->getChild(light));
    for (const unsigned int mode : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1})
        lit->getOrCreateStateSet()->setMode(mode, osg::StateAttribute::ON);
    scene.clear();
    return lit;
}

void flyFor(osgViewer::Viewer& viewer, std::chrono::duration<double> time) {
    const auto end = Clock::now() + time;
    while (Clock::now() < end)
        viewer.frame();
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 5)
        return EXIT_FAILURE;
    const std::chrono::duration<double> halfTime(std::atof(argv[2]) / 2.0);
    const int width = std::atoi(argv[3]);
    const int height = std::atoi(argv[4]);
    osgViewer::Viewer viewer;
    viewer.setUseConfigureAffinity(false);
    viewer.setUpViewInWindow(0, 0, width, height);
    const osg::ref_ptr<osg::Node> model = osgDB::readRefNodeFile(argv[1]);
    if (!model)
        return EXIT_FAILURE;
    viewer.setSceneData(litAsInProgram(*model));
    viewer.realize();
    const osg::ref_ptr<FlightLog> log = new FlightLog;
    viewer.getCamera()->getGraphicsContext()->setSwapCallback(log.get());

    const osg::ref_ptr<osgGA::AnimationPathManipulator> pilot = new osgGA::AnimationPathManipulator;
    pilot->setAnimationPath(orbisk::bench::makeTileFlight().get());
    pilot->setPrintOutTimingInfo(false);
    viewer.setCameraManipulator(pilot);
    log->begin();
    flyFor(viewer, halfTime);
    const long halfTimePeak = orbisk::bench::peakMemory();
    flyFor(viewer, halfTime);
    orbisk::bench::printFlight(log->intervals(), halfTimePeak, {}, width, height);
    std::_Exit(EXIT_SUCCESS);
}
