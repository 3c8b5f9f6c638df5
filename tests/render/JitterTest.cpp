// The camera moves by millimetres over a model of surveyed coordinates.

#include "support/OffScreenView.h"
#include "support/PickTools.h"
#include "support/Pictures.h"
#include "support/SceneTools.h"
#include "view/PreciseDrawing.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/MatrixTransform>

#include <cmath>

namespace orbisk::test {

namespace {

constexpr int side = 200;
constexpr double metresAcross = 0.2; ///< a pixel is a millimetre
constexpr double eyeHeight = 10.0;
constexpr int frames = 20;
constexpr double step = 0.001;
const osg::Vec3d corner(493994.87, 4877429.62, 123.93);

/// Half a square metre with its left edge at the corner, all corners at odd fractions.
const std::vector<osg::Vec3d> offsets = {{0.0, -0.5, 0.0}, {0.7, -0.5, 0.0}, {0.7, 0.5, 0.0},
                                         {0.0, -0.5, 0.0}, {0.7, 0.5, 0.0},  {0.0, 0.5, 0.0}};

osg::DrawArrays* allTriangles() {
    return new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, static_cast<int>(offsets.size()));
}

/// Without light and colour it would look like the background.
void paintRed(osg::Geometry& geometry) {
    const osg::ref_ptr<osg::Vec4Array> red = new osg::Vec4Array;
    red->push_back(osg::Vec4(1, 0, 0, 1));
    geometry.setColorArray(red, osg::Array::BIND_OVERALL);
}

osg::ref_ptr<osg::Node> doubleModel() {
    std::vector<osg::Vec3d> corners;
    for (const osg::Vec3d& offset : offsets)
        corners.push_back(corner + offset);
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::Geometry> geometry = makeDoubleGeometry(corners, allTriangles());
    paintRed(*geometry);
    model->addChild(geometry);
    return model;
}

osg::ref_ptr<osg::Node> offsetModel() {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::Geometry> geometry =
        makeGeometry({offsets.begin(), offsets.end()}, allTriangles());
    paintRed(*geometry);
    const osg::ref_ptr<osg::Node> transform =
        transformed(geometry, osg::Matrixd::translate(corner));
    // Of such the optimiser would make floats.
    transform->setDataVariance(osg::Object::STATIC);
    model->addChild(transform);
    return model;
}

/// Where the left edge is in the middle row, in pixels; -1 where none is seen.
int edgeIn(const osg::Image& picture) {
    for (int x = 0; x < picture.s(); ++x)
        if ((pixel(picture, x, picture.t() / 2) - osg::Vec3(0.8f, 0.8f, 0.8f)).length() > 0.05f)
            return x;
    return -1;
}

class JitterTest : public testing::Test {
protected:
    /// The greatest distance of the edge from where it should be, in pixels, over all frames.
    double worstError(osg::Node& scene) {
        OffScreenView view(side, side, 30.0);
        view.setScene(&scene);
        view.camera().setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        const double half = metresAcross / 2.0;
        view.camera().setProjectionMatrixAsOrtho(-half, half, -half, half, 1.0, 100.0);
        double worst = 0.0;
        for (int frame = 0; frame < frames; ++frame) {
            const osg::Vec3d eye = corner + osg::Vec3d(frame * step, 0.0, eyeHeight);
            view.camera().setViewMatrixAsLookAt(eye, eye - osg::Vec3d(0, 0, eyeHeight),
                                                osg::Vec3d(0, 1, 0));
            const osg::ref_ptr<osg::Image> picture = view.draw();
            const double expected = side / 2.0 - frame * step / metresAcross * side;
            const int edge = edgeIn(*picture);
            worst = std::max(worst, edge < 0 ? side : std::fabs(edge - expected));
        }
        return worst;
    }

    double worstErrorInProgram(osg::Node& model) {
        const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
        SceneRoot scene;
        scene.rebuild(model, *camera, false);
        scene.modelSwitch()->getOrCreateStateSet()->setMode(
            GL_LIGHTING, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
        const double worst = worstError(*scene.root());
        scene.clear();
        return worst;
    }

    QuietLibrary m_quiet;
};

} // namespace

TEST_F(JitterTest, DoubleVerticesFollowTheCameraToTheMillimetre) {
    EXPECT_LE(worstErrorInProgram(*doubleModel()), 1.5);
}

TEST_F(JitterTest, OffsetTransformFollowsTheCameraToTheMillimetre) {
    EXPECT_LE(worstErrorInProgram(*offsetModel()), 1.5);
}

TEST_F(JitterTest, DoubleVerticesDrawnByTheLibraryAloneDoNot) {
    const osg::ref_ptr<osg::Node> model = doubleModel();
    model->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    EXPECT_GT(worstError(*model), 5.0) << "the graphics library keeps doubles: nothing to do";
}

TEST_F(JitterTest, PickThatOverwritesVerticesIsSeen) {
    const osg::ref_ptr<osg::Node> model = doubleModel();
    const double before = worstErrorInProgram(*model);
    auto* vertices = static_cast<osg::Vec3dArray*>(
        model->asGroup()->getChild(0)->asGeometry()->getVertexArray());
    for (osg::Vec3d& vertex : *vertices)
        vertex += osg::Vec3d(0.05, 0, 0);
    vertices->dirty();
    EXPECT_LE(before, 1.5);
    EXPECT_NEAR(worstErrorInProgram(*model), 50.0, 1.5);
}

} // namespace orbisk::test
