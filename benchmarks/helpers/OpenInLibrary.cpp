// OpenInLibrary MODEL WIDTH HEIGHT [measure]
//
// Reads MODEL, optimises it and shows it in the library's own viewer, from the same place as the
// program does, in a window of this size; prints how that went, see printOpening. With "measure"
// the library's trees are built before, which make picking fast.

#include "helpers/FrameWatch.h"

#include <osg/KdTree>
#include <osgDB/ReadFile>
#include <osgGA/TrackballManipulator>
#include <osgUtil/Optimizer>
#include <osgViewer/Viewer>

#include <atomic>
#include <cstdlib>

namespace {

using orbisk::bench::Clock;
using orbisk::bench::FrameWatch;

constexpr double homeDistanceInRadii = 10.0;

void lookFromAbove(osgViewer::Viewer& viewer, const osg::BoundingSphere& bound) {
    const osg::Vec3d center = bound.center();
    const double distance = homeDistanceInRadii * static_cast<double>(bound.radius());
    const osg::ref_ptr<osgGA::TrackballManipulator> trackball = new osgGA::TrackballManipulator;
    trackball->setHomePosition(center + osg::Vec3d(0, 0, distance), center, osg::Vec3d(0, 1, 0));
    viewer.setCameraManipulator(trackball);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 4)
        return EXIT_FAILURE;
    const int width = std::atoi(argv[2]);
    const int height = std::atoi(argv[3]);
    // The program's window is open before its model as well. That must not tie the reading to one
    // processor, as the viewer ties itself once its window is there.
    osgViewer::Viewer viewer;
    viewer.setUseConfigureAffinity(false);
    viewer.setUpViewInWindow(0, 0, width, height);
    viewer.realize();
    std::atomic<bool> finished = false;
    const osg::ref_ptr<FrameWatch> watch = new FrameWatch([&finished] { finished = true; });
    viewer.getCamera()->getGraphicsContext()->setSwapCallback(watch.get());

    const Clock::time_point begin = Clock::now();
    const osg::ref_ptr<osg::Node> model = osgDB::readRefNodeFile(argv[1]);
    if (!model)
        return EXIT_FAILURE;
    osgUtil::Optimizer().optimize(model.get());
    viewer.setSceneData(model);
    lookFromAbove(viewer, model->getBound());
    while (!finished)
        viewer.frame();
    if (argc > 4) {
        const osg::ref_ptr<osg::KdTreeBuilder> builder = new osg::KdTreeBuilder;
        model->accept(*builder);
    }
    orbisk::bench::printOpening(watch->firstShown() - begin, width, height);
    std::_Exit(EXIT_SUCCESS);
}
