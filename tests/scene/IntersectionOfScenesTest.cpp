// What the visitor makes of the nodes on its way: their bounds, their transforms, and the vertices
// that it overwrites.

#include "measure/IntersectionVisitor.h"
#include "support/FixedBox.h"
#include "support/PickTools.h"
#include "support/SceneTools.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/LOD>
#include <osg/MatrixTransform>
#include <osg/PositionAttitudeTransform>
#include <osg/Switch>

#include <cmath>
#include <memory>

namespace orbisk::test {

namespace {

/// A triangle around the z axis in the plane z = 0, in double precision.
osg::ref_ptr<osg::Geometry> makeDoubleTriangle() {
    return makeDoubleGeometry({{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}},
                              new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, 3));
}

const osg::Vec3dArray& doublesOf(const osg::Geometry& geometry) {
    return dynamic_cast<const osg::Vec3dArray&>(*geometry.getVertexArray());
}

} // namespace

// The sphere test.

TEST(IntersectionOfScenesTest, SphereBehindTheOriginIsSkipped) {
    EXPECT_FALSE(isHit(*makeTriangleAt(12), rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, SphereThatContainsTheOriginIsSkippedWhenLookingAwayFromItsCentre) {
    // The lower triangle lies before the eye, the centre of both behind it.
    const auto tower =
        makeTriangles({{-1, -1, 9}, {1, -1, 9}, {0, 1, 9}, {-1, -1, 50}, {1, -1, 50}, {0, 1, 50}});
    EXPECT_FALSE(isHit(*tower, rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, SphereOfTheBoxLetsPassWhatTheBoxHolds) {
    // Half the diagonal of the box: the far corner of a long box still lies in it.
    EXPECT_TRUE(isHit(*makeTriangles({{0, 0, 0}, {100, 0, 0}, {0, 1, 0}}), rayDown(0.25, 0.25)));
}

TEST(IntersectionOfScenesTest, BoundCallbackDecidesWhatIsTested) {
    const auto triangle = makeTriangleAt(0);
    const osg::ref_ptr<FixedBox> elsewhere = new FixedBox(osg::BoundingBox(20, 20, -1, 22, 22, 1));
    triangle->setComputeBoundingBoxCallback(elsewhere);
    EXPECT_FALSE(isHit(*triangle, rayDown(0, 0)));
    triangle->setComputeBoundingBoxCallback(new FixedBox(osg::BoundingBox(-1, -1, -1, 1, 1, 1)));
    triangle->dirtyBound();
    EXPECT_TRUE(isHit(*triangle, rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, BoundIsComputedOnceAndKept) {
    const auto triangle = makeTriangleAt(0);
    const osg::ref_ptr<FixedBox> bound = new FixedBox(osg::BoundingBox(-1, -1, -1, 1, 1, 1));
    triangle->setComputeBoundingBoxCallback(bound);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(isHit(*triangle, rayDown(0, 0)));
    EXPECT_EQ(bound->calls, 1);
}

TEST(IntersectionOfScenesTest, RadiusIsNotScaledByTheTransform) {
    // Ten times as large the triangle reaches out to y = 10, but its sphere still ends at sqrt(2).
    const auto model = transformed(makeTriangleAt(0), osg::Matrixd::scale(10, 10, 10));
    EXPECT_TRUE(isHit(*model, rayDown(0, 1.25)));
    EXPECT_FALSE(isHit(*model, rayDown(0, 5)));
}

TEST(IntersectionOfScenesTest, CentreOfTheSphereIsTransformed) {
    const auto model = transformed(makeTriangleAt(0), osg::Matrixd::translate(30, 0, 0));
    EXPECT_TRUE(isHit(*model, rayDown(30, 0)));
    EXPECT_FALSE(isHit(*model, rayDown(0, 0)));
}

// Transforms.

TEST(IntersectionOfScenesTest, NestedTransformsDoNotAccumulate) {
    const auto inner = transformed(makeTriangleAt(0), osg::Matrixd::translate(30, 0, 0));
    const auto outer = transformed(inner, osg::Matrixd::translate(0, 50, 0));
    EXPECT_TRUE(isHit(*outer, rayDown(30, 0)));
    EXPECT_FALSE(isHit(*outer, rayDown(30, 50)));
}

TEST(IntersectionOfScenesTest, TransformStaysInForceForWhatIsVisitedLater) {
    const auto before = makeTriangleAt(0);
    const auto after = makeTriangleAt(5);
    const auto model =
        groupOf({before, transformed(new osg::Group, osg::Matrixd::translate(30, 0, 0)), after});
    const auto first = firstHit(*model, rayDown(0, 0));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->z(), 0);
    const auto moved = firstHit(*model, rayDown(30, 0));
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->z(), 5);
}

TEST(IntersectionOfScenesTest, InnermostTransformSeenLastWinsAfterItsSubtreeToo) {
    const osg::ref_ptr<osg::MatrixTransform> outer =
        new osg::MatrixTransform(osg::Matrixd::translate(0, 50, 0));
    outer->addChild(transformed(makeTriangleAt(0), osg::Matrixd::translate(30, 0, 0)));
    outer->addChild(makeTriangleAt(5));
    const auto moved = firstHit(*outer, rayDown(30, 0));
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->z(), 5);
    EXPECT_FALSE(isHit(*outer, rayDown(0, 50)));
}

TEST(IntersectionOfScenesTest, EachTraversalStartsWithoutATransform) {
    const auto model = groupOf(
        {makeTriangleAt(0), transformed(new osg::Group, osg::Matrixd::translate(30, 0, 0))});
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(isHit(*model, rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, OtherKindsOfTransformsAreIgnored) {
    const osg::ref_ptr<osg::PositionAttitudeTransform> placed = new osg::PositionAttitudeTransform;
    placed->setPosition({30, 0, 0});
    placed->addChild(makeTriangleAt(0));
    EXPECT_TRUE(isHit(*placed, rayDown(0, 0)));
    EXPECT_FALSE(isHit(*placed, rayDown(30, 0)));
}

TEST(IntersectionOfScenesTest, TransformedCoordinatesAreRoundedToSinglePrecision) {
    const double shift = 16777216.0; // from here on floats are two apart
    const auto model = transformed(makeTriangles({{-5, -5, 0}, {5, -5, 0}, {0, 5, 0.3f}}),
                                   osg::Matrixd::translate(shift, 0, 0.1));
    const osg::Vec3d eye(shift, 0, 10);
    const auto hit = firstHit(*model, {eye, {0, 0, -1}});
    ASSERT_TRUE(hit);
    const double low = static_cast<double>(0.1f);
    const double high = static_cast<double>(static_cast<float>(static_cast<double>(0.3f) + 0.1));
    // Corners stand at shift - 4 and shift + 4 or + 6: halfway up whichever.
    EXPECT_NEAR(hit->z(), (low + high) / 2, 1e-12);
    EXPECT_GT(std::abs(hit->z() - (0.1 + 0.1 + 0.3) / 2), 1e-10);
}

TEST(IntersectionOfScenesTest, VerticesInSinglePrecisionAreLeftAlone) {
    const auto triangle = makeTriangleAt(0);
    const auto model = transformed(triangle, osg::Matrixd::translate(30, 0, 0));
    EXPECT_TRUE(isHit(*model, rayDown(30, 0)));
    const auto& vertices = dynamic_cast<const osg::Vec3Array&>(*triangle->getVertexArray());
    EXPECT_EQ(vertices[1], osg::Vec3(1, -1, 0));
    EXPECT_EQ(vertices.getModifiedCount(), 0u);
}

// Vertices in double precision.

TEST(IntersectionOfScenesTest, DoubleVerticesArePickedInFullPrecision) {
    const double height = 1.0 + 1e-12;
    const auto geometry =
        makeDoubleGeometry({{-1, -1, height}, {1, -1, height}, {0, 1, height}},
                           new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, 3));
    const auto hit = firstHit(*geometry, rayDown(0, 0));
    ASSERT_TRUE(hit);
    EXPECT_NEAR(hit->z() - 1.0, 1e-12, 2e-15);
}

TEST(IntersectionOfScenesTest, DoubleVerticesAreOverwrittenWithTheirTransformedValues) {
    const auto triangle = makeDoubleTriangle();
    const auto model = transformed(triangle, osg::Matrixd::translate(0.25, 0, 0));
    EXPECT_TRUE(isHit(*model, rayDown(0.25, 0)));
    EXPECT_EQ(doublesOf(*triangle)[1], osg::Vec3d(1.25, -1, 0));
    EXPECT_TRUE(isHit(*model, rayDown(0.25, 0)));
    EXPECT_EQ(doublesOf(*triangle)[1], osg::Vec3d(1.5, -1, 0));
}

TEST(IntersectionOfScenesTest, DoubleVerticesAreOverwrittenEvenIfNoTriangleIsHit) {
    const auto triangle = makeDoubleTriangle();
    const auto model = transformed(triangle, osg::Matrixd::translate(0, 0, 2));
    EXPECT_FALSE(isHit(*model, rayDown(-1.2, 0.5)));
    EXPECT_EQ(doublesOf(*triangle)[0], osg::Vec3d(-1, -1, 2));
}

TEST(IntersectionOfScenesTest, DoubleVerticesWhoseSphereIsNotMetAreLeftAlone) {
    const auto triangle = makeDoubleTriangle();
    const auto model = transformed(triangle, osg::Matrixd::translate(30, 0, 0));
    EXPECT_FALSE(isHit(*model, rayDown(0, 0)));
    EXPECT_EQ(doublesOf(*triangle)[1], osg::Vec3d(1, -1, 0));
    EXPECT_EQ(doublesOf(*triangle).getModifiedCount(), 0u);
}

TEST(IntersectionOfScenesTest, SphereStaysWhereItWasWhenDoubleVerticesAreOverwritten) {
    const auto triangle = makeDoubleTriangle();
    const auto model = transformed(triangle, osg::Matrixd::translate(30, 0, 0));
    EXPECT_TRUE(isHit(*model, rayDown(30, 0)));
    // The vertices go on to 60, the sphere does not.
    EXPECT_FALSE(isHit(*model, rayDown(60, 0)));
    EXPECT_EQ(doublesOf(*triangle)[1], osg::Vec3d(31, -1, 0));
    EXPECT_FALSE(isHit(*model, rayDown(30, 0)));
    EXPECT_EQ(doublesOf(*triangle)[1], osg::Vec3d(61, -1, 0));
}

TEST(IntersectionOfScenesTest, IdentityLeavesDoubleVerticesUntouched) {
    const auto triangle = makeDoubleTriangle();
    int pauses = 0;
    const auto model = transformed(triangle, osg::Matrixd::identity());
    IntersectionVisitor visitor({0, 0, 10}, {0, 0, -1}, [&pauses] {
        ++pauses;
        return std::shared_ptr<void>();
    });
    model->accept(visitor);
    EXPECT_EQ(visitor.hits().size(), 1u);
    EXPECT_EQ(doublesOf(*triangle).getModifiedCount(), 0u);
    EXPECT_EQ(pauses, 0);
}

TEST(IntersectionOfScenesTest, OverwritingTellsThatTheVerticesChanged) {
    const auto triangle = makeDoubleTriangle();
    const auto model = transformed(triangle, osg::Matrixd::translate(0, 0, 1));
    EXPECT_TRUE(isHit(*model, rayDown(0, 0)));
    EXPECT_EQ(doublesOf(*triangle).getModifiedCount(), 1u);
}

TEST(IntersectionOfScenesTest, DrawingPausesOnceWhileVerticesAreOverwritten) {
    const auto first = makeDoubleTriangle();
    const auto second = makeDoubleTriangle();
    const auto model = transformed(groupOf({first, second}), osg::Matrixd::translate(0, 0, 1));
    int pauses = 0;
    bool paused = false;
    {
        IntersectionVisitor visitor({0, 0, 10}, {0, 0, -1}, [&] {
            ++pauses;
            EXPECT_EQ(doublesOf(*first)[0].z(), 0.0);
            paused = true;
            return std::shared_ptr<void>(&paused,
                                         [](void* flag) { *static_cast<bool*>(flag) = false; });
        });
        model->accept(visitor);
        EXPECT_TRUE(paused);
    }
    EXPECT_FALSE(paused);
    EXPECT_EQ(pauses, 1);
    EXPECT_EQ(doublesOf(*second)[0].z(), 1.0);
}

// What is visited.

TEST(IntersectionOfScenesTest, HiddenChildrenOfSwitchesAndLevelsOfDetailAreTested) {
    const osg::ref_ptr<osg::Switch> off = new osg::Switch;
    off->addChild(makeTriangleAt(1), false);
    EXPECT_TRUE(isHit(*off, rayDown(0, 0)));
    const osg::ref_ptr<osg::LOD> lod = new osg::LOD;
    lod->addChild(makeTriangleAt(2), 1e6f, 2e6f);
    EXPECT_TRUE(isHit(*lod, rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, MaskedNodesAreNotVisited) {
    const auto triangle = makeTriangleAt(0);
    triangle->setNodeMask(0);
    EXPECT_FALSE(isHit(*triangle, rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, GeometriesInGeodesAndPlainDrawablesAreTold) {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::Drawable);
    geode->addDrawable(makeTriangleAt(0));
    EXPECT_TRUE(isHit(*geode, rayDown(0, 0)));
}

TEST(IntersectionOfScenesTest, ModelThatIsAGeometryItselfIsPicked) {
    EXPECT_TRUE(isHit(*makeQuad(), rayDown(0.5, 0.25)));
}

} // namespace orbisk::test
