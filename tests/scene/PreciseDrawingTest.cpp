#include "view/PreciseDrawing.h"

#include "support/PickTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelWriter.h"
#include "view/SceneRoot.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>
#include <osg/Camera>
#include <osg/MatrixTransform>

#include <cstring>

namespace orbisk::test {

namespace {

const osg::Vec3d corner(493994.87, 4877429.62, 123.93);

osg::ref_ptr<osg::Geometry> surveyedTriangle() {
    return makeDoubleGeometry({corner, corner + osg::Vec3d(1, 0, 0), corner + osg::Vec3d(0, 1, 0)},
                              new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, 3));
}

/// Under a transform that says of itself that it stays, which is what the optimiser works in.
osg::ref_ptr<osg::MatrixTransform> below(const osg::Matrixd& matrix, osg::Node* node) {
    const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(matrix);
    transform->setDataVariance(osg::Object::STATIC);
    transform->addChild(node);
    return transform;
}

void show(osg::Node& model) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    SceneRoot scene;
    scene.rebuild(model, *camera, false);
    scene.clear();
}

/// Down onto the surveyed triangle.
PickRay rayOnto(const osg::Vec3d& point) {
    return {point + osg::Vec3d(0, 0, 100), osg::Vec3d(0, 0, -1)};
}

class PreciseDrawingTest : public testing::Test {
protected:
    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

} // namespace

TEST_F(PreciseDrawingTest, ModelsOwnVerticesStayAsTheyWere) {
    const osg::ref_ptr<osg::Geometry> geometry = surveyedTriangle();
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(geometry);
    show(*model);
    const ModelContents contents = contentsOf(*model);
    EXPECT_TRUE(contents.doubles);
    EXPECT_EQ(contents.box._min, corner);
}

TEST_F(PreciseDrawingTest, DoubleVerticesArePickedToTheirLastDigits) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(surveyedTriangle());
    show(*model);
    const osg::Vec3d target = corner + osg::Vec3d(0.25, 0.125, 0);
    const auto hit = firstHit(*model, rayOnto(target));
    ASSERT_TRUE(hit);
    EXPECT_LT((*hit - target).length(), 1e-9);
}

TEST_F(PreciseDrawingTest, FileKnowsNothingOfIt) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::Geometry> geometry = surveyedTriangle();
    model->addChild(geometry);
    ASSERT_TRUE(writeModel(*model, nullptr, "before.osgt", "."));
    drawPrecisely(*model);
    ASSERT_TRUE(writeModel(*model, nullptr, "after.osgt", "."));
    EXPECT_EQ(readFile("after.osgt"), readFile("before.osgt"));
    EXPECT_TRUE(geometry->getDrawCallback()) << "it is drawn as before afterwards";
    EXPECT_FALSE(geometry->getUseDisplayList());
}

TEST_F(PreciseDrawingTest, FloatsAndWhatHasACallbackOfItsOwnAreLeftAlone) {
    const osg::ref_ptr<osg::Geometry> floats = makeTriangleAt(0);
    drawPrecisely(*floats);
    EXPECT_FALSE(floats->getDrawCallback());
    const osg::ref_ptr<osg::Geometry> own = surveyedTriangle();
    const osg::ref_ptr<osg::Drawable::DrawCallback> callback = new osg::Drawable::DrawCallback;
    own->setDrawCallback(callback);
    drawPrecisely(*own);
    EXPECT_EQ(own->getDrawCallback(), callback);
}

TEST_F(PreciseDrawingTest, SecondCallChangesNothing) {
    const osg::ref_ptr<osg::Geometry> geometry = surveyedTriangle();
    drawPrecisely(*geometry);
    const osg::ref_ptr<osg::Drawable::DrawCallback> callback = geometry->getDrawCallback();
    drawPrecisely(*geometry);
    EXPECT_EQ(geometry->getDrawCallback(), callback);
}

// Worked into floats, the corner would move by centimetres for good.
TEST_F(PreciseDrawingTest, OptimiserLeavesLargeOffsetsInTheirTransform) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(
        below(osg::Matrixd::translate(corner), makeTriangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}})));
    show(*model);
    EXPECT_TRUE(model->getChild(0)->asTransform());
    EXPECT_LT((osg::Vec3d(contentsOf(*model).box._min) - corner).length(), 1e-9);
    ASSERT_TRUE(writeModel(*model, nullptr, "saved.osgb", "."));
    const osg::ref_ptr<osg::Node> saved = readModel("saved.osgb");
    ASSERT_TRUE(saved);
    EXPECT_LT((osg::Vec3d(contentsOf(*saved).box._min) - corner).length(), 1e-9);
}

// A pick takes the innermost transform only, which would lie elsewhere.
TEST_F(PreciseDrawingTest, NestedTransformsAreWorkedInSoThatTheyArePicked) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(below(
        osg::Matrixd::translate(corner),
        below(osg::Matrixd::translate(2, 0, 0), makeTriangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}))));
    show(*model);
    const auto hit = firstHit(*model, rayOnto(corner + osg::Vec3d(2.25, 0.25, 0)));
    ASSERT_TRUE(hit);
    EXPECT_NEAR(hit->x(), corner.x() + 2.25, 0.05);
}

TEST_F(PreciseDrawingTest, SmallOffsetsAreWorkedInAsEver) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::MatrixTransform> transform =
        below(osg::Matrixd::translate(100, 0, 0), makeTriangleAt(0));
    model->addChild(transform);
    show(*model);
    EXPECT_FALSE(model->getChild(0)->asTransform());
    EXPECT_EQ(contentsOf(*model).box._min, osg::Vec3d(99, -1, 0));
}

} // namespace orbisk::test
