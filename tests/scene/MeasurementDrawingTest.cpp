#include "scene/DrawingTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

namespace orbisk::test {

namespace {

using MeasurementDrawingTest = DrawingTest;

} // namespace

// Structure and styles

TEST_F(MeasurementDrawingTest, PointsAreOneGeometryWithTheirSizeOnTheGroup) {
    m_set.points = {a, b, c};
    m_drawing.drawPoints(2);
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 1u);
    ASSERT_EQ(geode(0)->getNumDrawables(), 1u);
    EXPECT_EQ(geode(0)->getStateSet(), nullptr);
    expectShape(geometry(), GL_POINTS, {a, b, c}, translucentBlue);
    expectState(geometry(), nothingElse);
    const osg::StateSet* state = drawn()->getStateSet();
    ASSERT_NE(state, nullptr);
    EXPECT_TRUE(state->getModeList().empty());
    ASSERT_EQ(state->getAttributeList().size(), 1u);
    const auto* point =
        dynamic_cast<const osg::Point*>(state->getAttribute(osg::StateAttribute::POINT));
    ASSERT_NE(point, nullptr);
    EXPECT_EQ(point->getSize(), 10.0f);
}

TEST_F(MeasurementDrawingTest, PointDrawingHasNoVertexButThePoints) {
    m_set.points = {a};
    m_drawing.drawPoints(0);
    expectShape(geometry(), GL_POINTS, {a}, translucentBlue);
}

TEST_F(MeasurementDrawingTest, LineIsAStripOfDoubleWidth) {
    m_set.lines = {{a, b, c}};
    m_drawing.drawLine(0);
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 1u);
    ASSERT_EQ(geode(0)->getNumDrawables(), 1u);
    EXPECT_EQ(drawn()->getStateSet(), nullptr);
    EXPECT_EQ(geode(0)->getStateSet(), nullptr);
    expectShape(geometry(), GL_LINE_STRIP, {a, b, c}, blue);
    expectState(geometry(), doubleWidth);
}

TEST_F(MeasurementDrawingTest, EveryLineIsDrawnInOrder) {
    m_set.lines = {{a, b}, {c, d, a}, {d}};
    m_drawing.drawLine(2);
    ASSERT_EQ(parts(), 3u);
    for (unsigned int i = 0; i < 3; ++i) {
        expectShape(geometry(i), GL_LINE_STRIP, m_set.lines[i], blue);
        expectState(geometry(i), doubleWidth);
    }
}

TEST_F(MeasurementDrawingTest, MeasuredAreaHasABlueOutlineAndAFill) {
    m_set.areas = {{a, b, c}};
    m_set.areaTriangles = {a, b, c};
    m_drawing.drawArea(0, true);
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 1u);
    ASSERT_EQ(geode(0)->getNumDrawables(), 2u);
    EXPECT_EQ(drawn()->getStateSet(), nullptr);
    EXPECT_EQ(geode(0)->getStateSet(), nullptr);
    expectShape(geometry(0, 0), GL_TRIANGLES, {a, b, c}, orange);
    expectState(geometry(0, 0), nothingElse);
    expectShape(geometry(0, 1), GL_LINE_STRIP, {a, b, c}, blue);
    expectState(geometry(0, 1), doubleWidth);
}

TEST_F(MeasurementDrawingTest, AreaOutlineStaysOpen) {
    m_set.areas = {{a, b, c, d}};
    m_drawing.drawArea(0, true);
    expectShape(geometry(), GL_LINE_STRIP, {a, b, c, d}, blue);
}

TEST_F(MeasurementDrawingTest, AreaThatFailsKeepsItsOutlineAndGetsNoNewFill) {
    m_set.areas = {{a, b, c}};
    m_drawing.drawArea(0, false);
    ASSERT_EQ(parts(), 1u);
    ASSERT_EQ(geode(0)->getNumDrawables(), 1u);
    expectShape(geometry(), GL_LINE_STRIP, {a, b, c}, red);
    expectState(geometry(), doubleWidth);
}

TEST_F(MeasurementDrawingTest, AreaThatFailsKeepsTheFillTheSetStillHas) {
    m_set.areas = {{a, b, c}};
    m_set.areaTriangles = {a, b, c};
    m_drawing.drawArea(0, true);
    m_set.areas[0].push_back(d);
    m_drawing.drawArea(0, false);
    ASSERT_EQ(geode(0)->getNumDrawables(), 2u);
    expectShape(geometry(0, 0), GL_TRIANGLES, {a, b, c}, orange);
    expectShape(geometry(0, 1), GL_LINE_STRIP, {a, b, c, d}, red);
}

TEST_F(MeasurementDrawingTest, AreaOfTwoVerticesHasNoFillWhateverTheSetHolds) {
    m_set.areas = {{a, b}};
    m_set.areaTriangles = {a, b, c};
    m_drawing.drawArea(0, false);
    ASSERT_EQ(geode(0)->getNumDrawables(), 1u);
    m_set.areas[0].push_back(c);
    m_drawing.drawArea(0, true);
    EXPECT_EQ(geode(0)->getNumDrawables(), 2u);
}

TEST_F(MeasurementDrawingTest, OnlyTheCurrentAreaIsFilled) {
    m_set.areas = {{a, b, c}};
    m_set.areaTriangles = {a, b, c};
    m_drawing.drawArea(0, true);
    m_set.areas.push_back({b, c, d});
    m_set.areaTriangles = {b, c, d};
    m_drawing.drawArea(1, true);
    ASSERT_EQ(parts(), 2u);
    EXPECT_EQ(area(0)->getNumDrawables(), 1u);
    ASSERT_EQ(area(1)->getNumDrawables(), 2u);
    expectShape(*area(1)->getDrawable(0)->asGeometry(), GL_TRIANGLES, {b, c, d}, orange);
}

TEST_F(MeasurementDrawingTest, EarlierAreasKeepTheColourOfTheirOwnState) {
    m_set.areas = {{a, b, c}};
    m_drawing.drawArea(0, true);
    m_set.areas.push_back({b, c, d});
    m_drawing.drawArea(1, false);
    m_set.areas.push_back({c});
    m_drawing.drawArea(2, false);
    m_set.areas.back() = {c, d, a};
    m_drawing.drawArea(2, true);
    ASSERT_EQ(parts(), 3u);
    EXPECT_EQ(outlineColour(0), blue);
    EXPECT_EQ(outlineColour(1), red);
    EXPECT_EQ(outlineColour(2), blue);
}

TEST_F(MeasurementDrawingTest, AreaThatBecomesTheCurrentOneAgainIsFilled) {
    m_set.areas = {{a, b, c}, {b, c, d}};
    m_set.areaTriangles = {b, c, d};
    m_drawing.drawArea(0, true);
    m_drawing.drawArea(1, true);
    m_set.areas.pop_back();
    m_set.areaTriangles = {a, b, c};
    m_drawing.drawArea(0, true);
    ASSERT_EQ(parts(), 1u);
    ASSERT_EQ(area(0)->getNumDrawables(), 2u);
    expectShape(geometry(0, 0), GL_TRIANGLES, {a, b, c}, orange);
    m_set.areaTriangles.clear();
    m_drawing.drawArea(0, true);
    EXPECT_EQ(area(0)->getNumDrawables(), 1u);
}

TEST_F(MeasurementDrawingTest, TravelIsAStripOfTheUsualWidth) {
    m_set.travelPoints = {a, b, c};
    m_drawing.drawTravel();
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 1u);
    ASSERT_EQ(geode(0)->getNumDrawables(), 1u);
    expectShape(geometry(), GL_LINE_STRIP, {a, b, c}, green);
    expectState(geometry(), nothingElse);
}

TEST_F(MeasurementDrawingTest, LinePreviewLeadsFromTheLastVertexOfTheLastLine) {
    m_set.lines = {{c, d}, {a, b}};
    m_drawing.drawLine(1);
    m_drawing.drawLinePreview(pointer);
    ASSERT_EQ(parts(), 3u);
    expectPreview({b, pointer}, blue, doubleWidth);
}

TEST_F(MeasurementDrawingTest, AreaPreviewIsBlueWhateverTheAreasState) {
    m_set.areas = {{c, d, a}, {a, b}};
    m_drawing.drawArea(1, false);
    m_drawing.drawAreaPreview(pointer);
    expectPreview({b, pointer}, blue, doubleWidth);
}

TEST_F(MeasurementDrawingTest, TravelPreviewIsGreenAndOfTheUsualWidth) {
    m_set.travelPoints = {a, b};
    m_drawing.drawTravel();
    m_drawing.drawTravelPreview(pointer);
    expectPreview({b, pointer}, green, nothingElse);
}

TEST_F(MeasurementDrawingTest, PlacesAreKeptInDoublePrecision) {
    const osg::Vec3d fine(500000.0001, 3999999.9999, 1e-7);
    m_set.points = {fine};
    m_drawing.drawPoints(0);
    EXPECT_EQ(verticesOf(geometry()).front(), fine);
}

// Nothing to draw

TEST_F(MeasurementDrawingTest, DeletingTheLastPointHidesTheDrawing) {
    m_set.points = {a};
    m_drawing.drawPoints(0);
    m_set.points.clear();
    m_drawing.drawPoints(m_set.points.size() - 1);
    EXPECT_FALSE(isShown());
    EXPECT_EQ(parts(), 0u);
    m_set.points = {b};
    m_drawing.drawPoints(0);
    EXPECT_TRUE(isShown());
    expectShape(geometry(), GL_POINTS, {b}, translucentBlue);
}

TEST_F(MeasurementDrawingTest, EveryKindIsHiddenWhileEmpty) {
    const auto expectHidden = [&] {
        EXPECT_FALSE(isShown());
        EXPECT_EQ(parts(), 0u);
        m_switch->setValue(SceneRoot::drawingSlot, true);
    };
    m_drawing.drawPoints(0);
    expectHidden();
    m_drawing.drawLine(0);
    expectHidden();
    m_drawing.drawArea(0, true);
    expectHidden();
    m_drawing.drawTravel();
    expectHidden();
    EXPECT_TRUE(m_switch->getValue(SceneRoot::modelChild));
}

TEST_F(MeasurementDrawingTest, ItemsWithoutVerticesLeaveNoGeometry) {
    m_set.lines = {{}};
    m_drawing.drawLine(0);
    EXPECT_FALSE(isShown());
    EXPECT_EQ(parts(), 0u);
    m_set.lines = {{a, b}, {}};
    m_drawing.drawLine(1);
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 1u);
    expectShape(geometry(), GL_LINE_STRIP, {a, b}, blue);
    m_set.areas = {{}};
    m_drawing.drawArea(0, false);
    EXPECT_FALSE(isShown());
}

TEST_F(MeasurementDrawingTest, ItemsOfOneVertexAreDrawn) {
    m_set.lines = {{a}};
    m_drawing.drawLine(0);
    EXPECT_TRUE(isShown());
    expectShape(geometry(), GL_LINE_STRIP, {a}, blue);
    m_set.travelPoints = {b};
    m_drawing.drawTravel();
    expectShape(geometry(), GL_LINE_STRIP, {b}, green);
}

TEST_F(MeasurementDrawingTest, IndexBeyondTheLastItemIsAnItemThatIsGone) {
    m_set.lines = {{a, b}};
    m_drawing.drawLine(5);
    ASSERT_EQ(parts(), 1u);
    m_set.areas = {{a, b, c}};
    m_drawing.drawArea(std::numeric_limits<std::size_t>::max(), true);
    ASSERT_EQ(parts(), 1u);
    EXPECT_EQ(outlineColour(0), red);
}

TEST_F(MeasurementDrawingTest, HidingLeavesTheModelOn) {
    m_set.points = {a};
    m_drawing.drawPoints(0);
    m_drawing.hide();
    EXPECT_FALSE(isShown());
    EXPECT_TRUE(m_switch->getValue(SceneRoot::modelChild));
    m_drawing.drawPoints(0);
    EXPECT_TRUE(isShown());
}

// Only the active kind

TEST_F(MeasurementDrawingTest, OneKindTakesThePlaceOfAnother) {
    m_set.points = {a};
    m_set.lines = {{a, b}};
    m_drawing.drawPoints(0);
    m_drawing.drawLine(0);
    ASSERT_EQ(parts(), 1u);
    expectShape(geometry(), GL_LINE_STRIP, {a, b}, blue);
    EXPECT_EQ(drawn()->getStateSet(), nullptr);
    m_drawing.drawPoints(0);
    ASSERT_EQ(parts(), 1u);
    expectShape(geometry(), GL_POINTS, {a}, translucentBlue);
}

TEST_F(MeasurementDrawingTest, PreviewBringsItsOwnKindAlong) {
    m_set.points = {c};
    m_set.lines = {{a, b}};
    m_drawing.drawPoints(0);
    m_drawing.hide();
    m_drawing.drawLinePreview(pointer);
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 2u);
    expectShape(geometry(), GL_LINE_STRIP, {a, b}, blue);
    expectPreview({b, pointer}, blue, doubleWidth);
}

// The scene

TEST_F(MeasurementDrawingTest, ReplacedDrawingsAreReleased) {
    m_set.points = {a};
    m_set.lines = {{a, b}};
    m_set.areas = {{a, b, c}};
    m_set.areaTriangles = {a, b, c};
    m_set.travelPoints = {a, b};
    osg::observer_ptr<osg::Group> formerGroup = drawn();
    osg::observer_ptr<osg::Geometry> formerGeometry;
    const auto expectReleased = [&] {
        EXPECT_FALSE(formerGroup.valid());
        EXPECT_FALSE(formerGeometry.valid());
        formerGroup = drawn();
        formerGeometry = geode(0)->getDrawable(0)->asGeometry();
    };
    m_drawing.drawPoints(0);
    expectReleased();
    m_drawing.drawPoints(0);
    expectReleased();
    m_drawing.drawLine(0);
    expectReleased();
    m_set.lines[0].push_back(c);
    m_drawing.drawLine(0);
    expectReleased();
    m_set.lines.clear();
    m_drawing.drawLine(0);
    EXPECT_FALSE(formerGroup.valid());
    EXPECT_FALSE(formerGeometry.valid());
    m_drawing.drawArea(0, true);
    expectReleased();
    m_drawing.drawArea(0, false);
    expectReleased();
    m_drawing.drawTravel();
    EXPECT_FALSE(formerGroup.valid());
}

TEST_F(MeasurementDrawingTest, AnotherSceneStartsWithoutADrawing) {
    m_set.lines = {{a, b}};
    m_drawing.drawLine(0);
    m_drawing.drawLinePreview(pointer);
    const osg::observer_ptr<osg::Group> former = drawn();
    m_switch = makeSwitch();
    m_drawing.setModelSwitch(m_switch);
    EXPECT_FALSE(former.valid());
    EXPECT_EQ(parts(), 0u);
    m_drawing.drawLinePreview(pointer);
    EXPECT_TRUE(isShown());
    ASSERT_EQ(parts(), 2u);
    expectShape(geometry(), GL_LINE_STRIP, {a, b}, blue);
}

TEST_F(MeasurementDrawingTest, SceneIsNotKeptAlive) {
    m_set.lines = {{a, b}};
    m_drawing.drawLine(0);
    const osg::observer_ptr<osg::Switch> seen = m_switch;
    m_switch = nullptr;
    EXPECT_FALSE(seen.valid());
    m_drawing.drawLine(0);
    m_drawing.drawLinePreview(pointer);
    m_drawing.hide();
}

TEST_F(MeasurementDrawingTest, WithoutASceneNothingHappens) {
    const osg::ref_ptr<osg::Node> former = drawn();
    m_drawing.setModelSwitch(nullptr);
    m_set.points = {a};
    m_set.lines = {{a}};
    m_set.areas = {{a, b, c}};
    m_set.travelPoints = {a};
    m_drawing.drawPoints(0);
    m_drawing.drawLine(0);
    m_drawing.drawArea(0, true);
    m_drawing.drawTravel();
    m_drawing.drawLinePreview(pointer);
    m_drawing.drawAreaPreview(pointer);
    m_drawing.drawTravelPreview(pointer);
    m_drawing.hide();
    EXPECT_EQ(drawn(), former);
    EXPECT_TRUE(isShown());
    // What was learnt meanwhile is not lost.
    m_drawing.setModelSwitch(m_switch);
    m_drawing.drawArea(m_set.areas.size(), true);
    EXPECT_EQ(outlineColour(0), blue);
}

TEST_F(MeasurementDrawingTest, SwitchWithoutChildrenIsLeftAlone) {
    const osg::ref_ptr<osg::Switch> empty = new osg::Switch;
    m_drawing.setModelSwitch(empty);
    m_set.lines = {{a, b}};
    m_drawing.drawLine(0);
    m_drawing.drawLinePreview(pointer);
    m_drawing.hide();
    EXPECT_EQ(empty->getNumChildren(), 0u);
    EXPECT_TRUE(empty->getValueList().empty());
}

TEST_F(MeasurementDrawingTest, DrawingSurvivesBeingDestroyedFirst) {
    m_set.points = {a};
    {
        MeasurementDrawing other(m_set);
        other.setModelSwitch(m_switch);
        other.drawPoints(0);
    }
    expectShape(geometry(), GL_POINTS, {a}, translucentBlue);
    EXPECT_EQ(geometry().getStateSet()->getBinNumber(), 20);
}

TEST_F(MeasurementDrawingTest, RebuiltSceneIsOptimisedWithoutTheDrawing) {
    WorkingFolder folder;
    QuietLibrary quiet;
    SceneRoot scene;
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    const osg::ref_ptr<osg::Node> model = makeQuadGeode();
    scene.rebuild(*model, *camera, false);
    m_drawing.setModelSwitch(scene.modelSwitch());
    m_set.lines = {{a, b}, {c, d}};
    m_drawing.drawLine(1);
    EXPECT_TRUE(scene.modelSwitch()->getValue(SceneRoot::drawingSlot));
    scene.rebuild(*model, *camera, false);
    m_drawing.setModelSwitch(scene.modelSwitch());
    osg::Group* slot = scene.modelSwitch()->getChild(SceneRoot::drawingSlot)->asGroup();
    EXPECT_EQ(slot->getNumChildren(), 0u);
    m_drawing.drawLine(1);
    slot = scene.modelSwitch()->getChild(SceneRoot::drawingSlot)->asGroup();
    ASSERT_EQ(slot->getNumChildren(), 2u);
    expectShape(*slot->getChild(0)->asGeode()->getDrawable(0)->asGeometry(), GL_LINE_STRIP, {a, b},
                blue);
}

TEST_F(MeasurementDrawingTest, DrawingDoesNotCountAsPartOfTheScenesExtent) {
    const osg::BoundingSphere before = m_switch->getBound();
    m_set.lines = {{a, b}, {osg::Vec3d(1e12, -1e12, 1e12)}};
    m_drawing.drawLine(1);
    m_drawing.drawLinePreview(osg::Vec3d(0, 0, 1e20));
    EXPECT_EQ(m_switch->getBound().center(), before.center());
    EXPECT_EQ(m_switch->getBound().radius(), before.radius());
}

TEST_F(MeasurementDrawingTest, NothingThatIsDrawnIsEverWaitedFor) {
    m_set.lines = {{a, b}};
    m_drawing.drawLine(0);
    m_drawing.drawLinePreview(pointer);
    for (const osg::Geode* part : {geode(0), preview()})
        for (unsigned int i = 0; i < part->getNumDrawables(); ++i) {
            const osg::Drawable* drawable = part->getDrawable(i);
            EXPECT_EQ(drawable->getDataVariance(), osg::Object::STATIC);
            EXPECT_EQ(drawable->getStateSet()->getDataVariance(), osg::Object::STATIC);
        }
}

TEST_F(MeasurementDrawingTest, PlacesThatAreNoNumbersAreDrawnWithoutHarm) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    m_set.lines = {{a, osg::Vec3d(nan, nan, nan), b}, {c, osg::Vec3d(infinity, 0, 0)}};
    const osg::BoundingSphere before = m_switch->getBound();
    m_drawing.drawLine(1);
    m_drawing.drawLine(1);
    EXPECT_EQ(parts(), 2u);
    EXPECT_EQ(m_switch->getBound().center(), before.center());
}

} // namespace orbisk::test
