// Does with one model what the program does with it until a user has looked at it and picked on it:
// reads it, puts it into the scene, shows it in each mode, walks its triangles, picks. Limits of
// its own for time, memory and output make sure that it ends.
//
//     orbisk_look_at_model FILE
//
// Its exit code is 0 where the model was looked at, 3 where the read failed; a signal ends it where
// the program would have gone down.

#include "damage/LookOutcome.h"
#include "measure/IndexedVisitor.h"
#include "measure/IntersectionVisitor.h"
#include "measure/PickIndex.h"
#include "support/SceneTools.h"
#include "view/ModelReader.h"
#include "view/ModelUpdateCallback.h"
#include "view/SceneRoot.h"

#include <osg/Camera>
#include <osg/ComputeBoundsVisitor>
#include <osg/Geometry>
#include <osg/NodeVisitor>
#include <osg/Notify>
#include <osg/TriangleFunctor>
#include <osgUtil/CullVisitor>
#include <osgUtil/RenderStage>
#include <osgUtil/StateGraph>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace orbisk::test {

namespace {

void setLimit(__rlimit_resource resource, rlim_t most) {
    const rlimit limit{most, most};
    setrlimit(resource, &limit);
}

void limitThisProcess() {
    alarm(mostSeconds);
    setLimit(RLIMIT_CORE, 0);
    setLimit(RLIMIT_FSIZE, mostOutput);
#ifndef __SANITIZE_ADDRESS__
    setLimit(RLIMIT_AS, mostMemory);
#endif
}

/// Takes a triangle; the sum keeps the reads of its corners.
struct CornerSum {
    template <typename... Rest>
    void operator()(const osg::Vec3& a, const osg::Vec3& b, const osg::Vec3& c, Rest...) {
        sum += a + b + c;
    }

    osg::Vec3 sum;
};

/// Reads every number that drawing would read: all arrays up to the highest index in use.
class TriangleWalk : public osg::NodeVisitor {
public:
    TriangleWalk() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { setNodeMaskOverride(~0u); }

    void apply(osg::Geometry& geometry) override {
        // The library's functors give up on vertices in double precision, drawing does not.
        if (!dynamic_cast<osg::Vec3dArray*>(geometry.getVertexArray()))
            geometry.accept(m_triangles);
        osg::Geometry::ArrayList arrays;
        geometry.getArrayList(arrays);
        for (const auto& set : geometry.getPrimitiveSetList())
            for (unsigned int i = 0; i < set->getNumIndices(); ++i)
                for (const auto& array : arrays)
                    readElement(*array, set->index(i));
    }

private:
    void readElement(const osg::Array& array, unsigned int index) {
        if (array.getBinding() != osg::Array::BIND_PER_VERTEX)
            return;
        if (index >= array.getNumElements())
            throw std::out_of_range("drawing would read beyond an array");
        m_sum = m_sum + *(static_cast<const unsigned char*>(array.getDataPointer()) +
                          std::size_t(index) * array.getElementSize());
    }

    osg::TriangleFunctor<CornerSum> m_triangles;
    volatile unsigned int m_sum = 0;
};

/// A list whose last triangle is not complete ends a pick, which the program knows how to take.
void acceptPick(osg::Node& model, osg::NodeVisitor& picking) {
    try {
        model.accept(picking);
    } catch (const std::out_of_range&) {
        std::fprintf(stderr, "The pick went beyond the indices.\n");
    }
}

void pick(osg::Node& model) {
    const osg::BoundingSphere bound = model.getBound();
    const osg::Vec3d center = bound.valid() ? osg::Vec3d(bound.center()) : osg::Vec3d();
    PickIndex index;
    index.add(model);
    index.finish();
    for (const osg::Vec3d& direction :
         {osg::Vec3d(0, 0, -1), osg::Vec3d(1, 0, 0), osg::Vec3d(0.1, 0.9, 0.2)}) {
        const PickRay ray{center - direction * 1000.0, direction};
        index.beginPick();
        IndexedVisitor indexed(ray, index);
        acceptPick(model, indexed);
        IntersectionVisitor walked(ray.origin, ray.direction);
        acceptPick(model, walked);
    }
}

/// What comes before drawing, which needs no window: choosing and sorting what is to be drawn.
void cull(osg::Node& scene) {
    const osg::ref_ptr<osgUtil::CullVisitor> visitor = new osgUtil::CullVisitor;
    const osg::ref_ptr<osgUtil::StateGraph> graph = new osgUtil::StateGraph;
    const osg::ref_ptr<osgUtil::RenderStage> stage = new osgUtil::RenderStage;
    const osg::ref_ptr<osg::Viewport> viewport = new osg::Viewport(0, 0, 640, 480);
    visitor->setStateGraph(graph);
    visitor->setRenderStage(stage);
    visitor->pushViewport(viewport);
    visitor->pushProjectionMatrix(new osg::RefMatrix(osg::Matrixd::perspective(30, 1.3, 1, 1e4)));
    visitor->pushModelViewMatrix(new osg::RefMatrix, osg::Transform::ABSOLUTE_RF);
    scene.accept(*visitor);
    visitor->popModelViewMatrix();
    visitor->popProjectionMatrix();
    visitor->popViewport();
    stage->sort();
}

int look(const char* path) {
    const osg::ref_ptr<osg::Node> model = readModel(path);
    if (!model)
        return lookRefused;
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(*model);
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    SceneRoot scene;
    scene.rebuild(*model, *camera, false);
    osg::ComputeBoundsVisitor bounds;
    model->accept(bounds);
    Frames frames;
    for (const DisplayMode mode :
         {DisplayMode::AsLoaded, DisplayMode::PointCloud, DisplayMode::Tin, DisplayMode::Gray}) {
        callback->mode = mode;
        frames.update(*scene.root(), 2);
        cull(*scene.root());
    }
    TriangleWalk walk;
    model->accept(walk);
    pick(*model);
    scene.clear();
    return lookDone;
}

} // namespace

} // namespace orbisk::test

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: orbisk_look_at_model FILE\n");
        return EXIT_FAILURE;
    }
    orbisk::test::limitThisProcess();
    if (!std::getenv("OSG_NOTIFY_LEVEL"))
        osg::setNotifyLevel(osg::WARN);
    return orbisk::test::look(argv[1]);
}
