#include "measure/MeasurementDrawing.h"

#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/CullFace>
#include <osg/LineWidth>
#include <osg/Point>

#include <chrono>
#include <limits>

namespace orbisk::test {

namespace {

const osg::Vec4 blue(0.0f, 0.0f, 1.0f, 1.0f);
const osg::Vec4 translucentBlue(0.0f, 0.0f, 1.0f, 0.3f);
const osg::Vec4 red(0.8f, 0.2f, 0.0f, 1.0f);
const osg::Vec4 orange(0.8f, 0.5f, 0.0f, 0.5f);
const osg::Vec4 green(0.0f, 1.0f, 0.0f, 0.8f);

const osg::Vec3d a(500000.125, 4000000.25, 100.5);
const osg::Vec3d b(500010.001, 4000000.002, 101);
const osg::Vec3d c(500005, 4000010, 102);
const osg::Vec3d d(499990, 4000020, 99);
const osg::Vec3d pointer(500001, 4000002, 103);

using Vertices = std::vector<osg::Vec3d>;

Vertices verticesOf(const osg::Geometry& geometry) {
    const auto* array = dynamic_cast<const osg::Vec3dArray*>(geometry.getVertexArray());
    return array ? array->asVector() : Vertices();
}

osg::Vec4 colourOf(const osg::Geometry& geometry) {
    const auto* array = dynamic_cast<const osg::Vec4Array*>(geometry.getColorArray());
    return array && array->size() == 1 ? array->front() : osg::Vec4();
}

/// Checks the arrays and the primitive set, which every geometry of a drawing has alike.
void expectShape(const osg::Geometry& geometry, GLenum mode, const Vertices& vertices,
                 const osg::Vec4& colour) {
    EXPECT_NE(dynamic_cast<const osg::Vec3dArray*>(geometry.getVertexArray()), nullptr);
    EXPECT_EQ(verticesOf(geometry), vertices);
    const auto* colours = dynamic_cast<const osg::Vec4Array*>(geometry.getColorArray());
    ASSERT_NE(colours, nullptr);
    ASSERT_EQ(colours->size(), 1u);
    EXPECT_EQ(colours->front(), colour);
    EXPECT_EQ(colours->getBinding(), osg::Array::BIND_OVERALL);
    ASSERT_EQ(geometry.getNumPrimitiveSets(), 1u);
    const auto* primitives = dynamic_cast<const osg::DrawArrays*>(geometry.getPrimitiveSet(0));
    ASSERT_NE(primitives, nullptr);
    EXPECT_EQ(primitives->getMode(), mode);
    EXPECT_EQ(primitives->getFirst(), 0);
    EXPECT_EQ(primitives->getCount(), static_cast<GLsizei>(vertices.size()));
}

/// What a state set has beside the settings of all measurements.
struct Extra {
    float pointSize = 0.0f; ///< 0: none
    float lineWidth = 0.0f; ///< 0: none
};

const Extra nothingElse{};
const Extra doubleWidth{0.0f, 2.0f};
const Extra largePoints{10.0f, 0.0f};

void expectState(const osg::Geometry& geometry, const Extra& extra) {
    const osg::StateSet* state = geometry.getStateSet();
    ASSERT_NE(state, nullptr);
    const osg::StateSet::ModeList modes{
        {GL_BLEND, osg::StateAttribute::ON},
        {GL_DEPTH_TEST, osg::StateAttribute::OFF},
        {GL_LIGHTING, osg::StateAttribute::OFF | osg::StateAttribute::PROTECTED},
        {GL_CULL_FACE, osg::StateAttribute::OFF}};
    EXPECT_EQ(state->getModeList(), modes);
    EXPECT_EQ(state->getBinNumber(), 20);
    EXPECT_EQ(state->getBinName(), "RenderBin");
    EXPECT_EQ(state->getRenderBinMode(), osg::StateSet::USE_RENDERBIN_DETAILS);
    const auto* cullFace =
        dynamic_cast<const osg::CullFace*>(state->getAttribute(osg::StateAttribute::CULLFACE));
    ASSERT_NE(cullFace, nullptr);
    EXPECT_EQ(cullFace->getMode(), osg::CullFace::BACK);
    const auto* point =
        dynamic_cast<const osg::Point*>(state->getAttribute(osg::StateAttribute::POINT));
    EXPECT_EQ(point ? point->getSize() : 0.0f, extra.pointSize);
    const auto* width =
        dynamic_cast<const osg::LineWidth*>(state->getAttribute(osg::StateAttribute::LINEWIDTH));
    EXPECT_EQ(width ? width->getWidth() : 0.0f, extra.lineWidth);
    const std::size_t attributes = 1 + (point ? 1 : 0) + (width ? 1 : 0);
    EXPECT_EQ(state->getAttributeList().size(), attributes);
    EXPECT_TRUE(state->getTextureAttributeList().empty());
}

class MeasurementDrawingTest : public testing::Test {
protected:
    MeasurementDrawingTest() : m_switch(makeSwitch()), m_drawing(m_set) {
        m_drawing.setModelSwitch(m_switch);
    }

    static osg::ref_ptr<osg::Switch> makeSwitch() {
        osg::ref_ptr<osg::Switch> modelSwitch = new osg::Switch;
        modelSwitch->addChild(new osg::Group);
        modelSwitch->addChild(makeQuadGeode(100.0f, osg::Vec3(5e5f, 4e6f, 100)));
        return modelSwitch;
    }

    osg::Group* drawn() const { return m_switch->getChild(SceneRoot::drawingSlot)->asGroup(); }

    bool isShown() const { return m_switch->getValue(SceneRoot::drawingSlot); }

    unsigned int parts() const { return drawn()->getNumChildren(); }

    osg::Geode* geode(unsigned int part) const {
        return part < parts() ? drawn()->getChild(part)->asGeode() : nullptr;
    }

    /// The geometry of a part of the drawing.
    const osg::Geometry& geometry(unsigned int part = 0, unsigned int number = 0) const {
        static const osg::ref_ptr<osg::Geometry> none = new osg::Geometry;
        const osg::Geode* found = geode(part);
        const bool there = found && number < found->getNumDrawables();
        EXPECT_TRUE(there) << part << " " << number;
        return there ? *found->getDrawable(number)->asGeometry() : *none;
    }

    /// The geode of an area: the current (last) one comes first.
    osg::Geode* area(std::size_t index) const {
        const bool isCurrent = index + 1 == m_set.areas.size();
        return geode(isCurrent ? 0 : static_cast<unsigned int>(index) + 1);
    }

    const osg::Geometry& outline(std::size_t index) const {
        return *area(index)->getDrawable(area(index)->getNumDrawables() - 1)->asGeometry();
    }

    osg::Vec4 outlineColour(std::size_t index) const { return colourOf(outline(index)); }

    /// The geode of the preview; null while there is none.
    osg::Geode* preview() const {
        if (parts() == 0)
            return nullptr;
        osg::Group* last = drawn()->getChild(parts() - 1)->asGroup();
        if (last->asGeode())
            return nullptr;
        EXPECT_EQ(last->getNumChildren(), 1u);
        return last->getChild(0)->asGeode();
    }

    void expectPreview(const Vertices& segment, const osg::Vec4& colour, const Extra& extra) {
        const osg::Geode* found = preview();
        ASSERT_NE(found, nullptr);
        ASSERT_EQ(found->getNumDrawables(), 2u);
        const osg::Geometry& line = *found->getDrawable(0)->asGeometry();
        expectShape(line, GL_LINE_STRIP, segment, colour);
        expectState(line, extra);
        const osg::Geometry& marker = *found->getDrawable(1)->asGeometry();
        expectShape(marker, GL_POINTS, {segment.back()}, colour);
        expectState(marker, largePoints);
    }

    MeasurementSet m_set;
    osg::ref_ptr<osg::Switch> m_switch;
    MeasurementDrawing m_drawing;
};

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

// Changes

TEST_F(MeasurementDrawingTest, ChangesOfTheSetAreFollowed) {
    m_set.lines = {{a}};
    m_drawing.drawLine(0);
    m_set.lines[0].push_back(b);
    m_drawing.drawLine(0);
    expectShape(geometry(), GL_LINE_STRIP, {a, b}, blue);
    m_set.lines[0].pop_back();
    m_drawing.drawLine(0);
    expectShape(geometry(), GL_LINE_STRIP, {a}, blue);
    m_set.lines[0] = {c};
    m_drawing.drawLine(0);
    expectShape(geometry(), GL_LINE_STRIP, {c}, blue);
}

TEST_F(MeasurementDrawingTest, UnchangedLinesKeepTheirDrawing) {
    m_set.lines = {{a, b}, {c, d}, {a}};
    m_drawing.drawLine(2);
    const osg::ref_ptr<osg::Geode> first = geode(0);
    const osg::ref_ptr<osg::Geode> second = geode(1);
    m_set.lines[2].push_back(d);
    m_drawing.drawLine(2);
    EXPECT_EQ(geode(0), first);
    EXPECT_EQ(geode(1), second);
    expectShape(geometry(2), GL_LINE_STRIP, {a, d}, blue);
    m_set.lines.erase(m_set.lines.begin());
    m_drawing.drawLine(1);
    ASSERT_EQ(parts(), 2u);
    EXPECT_EQ(geode(0), second);
    expectShape(geometry(1), GL_LINE_STRIP, {a, d}, blue);
}

TEST_F(MeasurementDrawingTest, EarlierLineThatChangedUnseenIsDrawnAnew) {
    m_set.lines = {{a, b, c}, {c, d}};
    m_drawing.drawLine(1);
    m_set.lines[0].erase(m_set.lines[0].begin());
    m_drawing.drawLine(1);
    expectShape(geometry(0), GL_LINE_STRIP, {b, c}, blue);
    expectShape(geometry(1), GL_LINE_STRIP, {c, d}, blue);
}

TEST_F(MeasurementDrawingTest, AreaKeepsItsColourWhenOthersAreRemoved) {
    m_set.areas = {{a, b, c}, {b, c, d}, {c, d, a}};
    m_drawing.drawArea(0, false);
    m_drawing.drawArea(1, true);
    m_drawing.drawArea(2, false);
    m_set.areas.pop_back();
    m_drawing.drawArea(2, true);
    ASSERT_EQ(parts(), 2u);
    EXPECT_EQ(outlineColour(0), red);
    EXPECT_EQ(outlineColour(1), blue);
    m_set.areas.erase(m_set.areas.begin());
    m_drawing.drawArea(1, false);
    ASSERT_EQ(parts(), 1u);
    EXPECT_EQ(outlineColour(0), blue);
}

TEST_F(MeasurementDrawingTest, EarlierAreaThatLosesAVertexKeepsItsColour) {
    m_set.areas = {{a, b, c, d}, {b, c, d}};
    m_drawing.drawArea(0, true);
    m_drawing.drawArea(1, false);
    m_set.areas[0].pop_back();
    m_drawing.drawArea(m_set.areas.size(), true);
    expectShape(outline(0), GL_LINE_STRIP, {a, b, c}, blue);
    EXPECT_EQ(outlineColour(1), red);
}

TEST_F(MeasurementDrawingTest, AreaNeverDrawnCountsAsNotMeasured) {
    m_set.areas = {{a, b, c}};
    m_drawing.drawArea(m_set.areas.size(), true);
    EXPECT_EQ(outlineColour(0), red);
}

TEST_F(MeasurementDrawingTest, ColoursOutliveOtherKinds) {
    m_set.areas = {{a, b, c}, {b, c, d}};
    m_drawing.drawArea(0, true);
    m_drawing.drawArea(1, false);
    m_set.points = {a};
    m_drawing.drawPoints(0);
    m_drawing.hide();
    m_drawing.drawAreaPreview(pointer);
    EXPECT_EQ(outlineColour(0), blue);
    EXPECT_EQ(outlineColour(1), red);
}

// Previews

TEST_F(MeasurementDrawingTest, PreviewReplacesOnlyItself) {
    m_set.lines = {{a, b}, {c}};
    m_drawing.drawLine(1);
    const osg::ref_ptr<osg::Group> group = drawn();
    const osg::ref_ptr<osg::Geode> first = geode(0);
    const osg::ref_ptr<osg::Geode> second = geode(1);
    m_drawing.drawLinePreview(pointer);
    osg::observer_ptr<osg::Geode> formerPreview = preview();
    for (int i = 1; i <= 3; ++i) {
        const osg::Vec3d moved = pointer + osg::Vec3d(i, 0, 0);
        m_drawing.drawLinePreview(moved);
        EXPECT_FALSE(formerPreview.valid());
        formerPreview = preview();
        EXPECT_EQ(drawn(), group);
        ASSERT_EQ(parts(), 3u);
        EXPECT_EQ(geode(0), first);
        EXPECT_EQ(geode(1), second);
        expectPreview({c, moved}, blue, doubleWidth);
    }
}

TEST_F(MeasurementDrawingTest, NextDrawingTakesThePreviewAway) {
    m_set.lines = {{a, b}};
    m_set.areas = {{a, b, c}};
    m_set.travelPoints = {a, b};
    m_drawing.drawLinePreview(pointer);
    ASSERT_NE(preview(), nullptr);
    m_drawing.drawLine(0);
    EXPECT_EQ(preview(), nullptr);
    m_drawing.drawAreaPreview(pointer);
    ASSERT_NE(preview(), nullptr);
    m_drawing.drawArea(m_set.areas.size(), true);
    EXPECT_EQ(preview(), nullptr);
    m_drawing.drawTravelPreview(pointer);
    ASSERT_NE(preview(), nullptr);
    m_drawing.drawTravel();
    EXPECT_EQ(preview(), nullptr);
    EXPECT_EQ(parts(), 1u);
}

TEST_F(MeasurementDrawingTest, PreviewWithoutAVertexToStartFromIsNone) {
    m_drawing.drawLinePreview(pointer);
    EXPECT_FALSE(isShown());
    m_drawing.drawAreaPreview(pointer);
    EXPECT_FALSE(isShown());
    m_drawing.drawTravelPreview(pointer);
    EXPECT_FALSE(isShown());
    EXPECT_EQ(parts(), 0u);
    m_set.lines = {{a, b}, {}};
    m_drawing.drawLinePreview(pointer);
    EXPECT_TRUE(isShown());
    EXPECT_EQ(parts(), 1u);
    EXPECT_EQ(preview(), nullptr);
}

TEST_F(MeasurementDrawingTest, PreviewGoesWhenItsItemLostItsLastVertex) {
    m_set.travelPoints = {a};
    m_drawing.drawTravelPreview(pointer);
    ASSERT_NE(preview(), nullptr);
    m_set.travelPoints.clear();
    m_drawing.drawTravelPreview(pointer);
    EXPECT_EQ(preview(), nullptr);
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

// Speed

TEST_F(MeasurementDrawingTest, AddingAVertexToManyIsNoDelay) {
    constexpr int lines = 1000;
    constexpr int verticesEach = 100;
    for (int i = 0; i < lines; ++i) {
        m_set.lines.emplace_back();
        for (int k = 0; k < verticesEach; ++k)
            m_set.lines.back().push_back(a + osg::Vec3d(i, k, 0));
    }
    m_drawing.drawLine(lines - 1);
    const osg::ref_ptr<osg::Geode> first = geode(0);
    using Clock = std::chrono::steady_clock;
    constexpr int clicks = 20;
    const auto start = Clock::now();
    for (int i = 0; i < clicks; ++i) {
        m_set.lines.back().push_back(b);
        m_drawing.drawLine(lines - 1);
    }
    const std::chrono::duration<double, std::milli> passed = Clock::now() - start;
    EXPECT_EQ(geode(0), first);
    EXPECT_LT(passed.count() / clicks, 50.0);
    RecordProperty("millisecondsForEachVertex", std::to_string(passed.count() / clicks));
}

} // namespace orbisk::test
