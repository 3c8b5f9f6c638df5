#include "scene/DrawingTest.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

using MeasurementChangesTest = DrawingTest;

} // namespace

TEST_F(MeasurementChangesTest, ChangesOfTheSetAreFollowed) {
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

TEST_F(MeasurementChangesTest, UnchangedLinesKeepTheirDrawing) {
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

TEST_F(MeasurementChangesTest, EarlierLineThatChangedUnseenIsDrawnAnew) {
    m_set.lines = {{a, b, c}, {c, d}};
    m_drawing.drawLine(1);
    m_set.lines[0].erase(m_set.lines[0].begin());
    m_drawing.drawLine(1);
    expectShape(geometry(0), GL_LINE_STRIP, {b, c}, blue);
    expectShape(geometry(1), GL_LINE_STRIP, {c, d}, blue);
}

TEST_F(MeasurementChangesTest, AreaKeepsItsColourWhenOthersAreRemoved) {
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

TEST_F(MeasurementChangesTest, EarlierAreaThatLosesAVertexKeepsItsColour) {
    m_set.areas = {{a, b, c, d}, {b, c, d}};
    m_drawing.drawArea(0, true);
    m_drawing.drawArea(1, false);
    m_set.areas[0].pop_back();
    m_drawing.drawArea(m_set.areas.size(), true);
    expectShape(outline(0), GL_LINE_STRIP, {a, b, c}, blue);
    EXPECT_EQ(outlineColour(1), red);
}

TEST_F(MeasurementChangesTest, AreaNeverDrawnCountsAsNotMeasured) {
    m_set.areas = {{a, b, c}};
    m_drawing.drawArea(m_set.areas.size(), true);
    EXPECT_EQ(outlineColour(0), red);
}

TEST_F(MeasurementChangesTest, ColoursOutliveOtherKinds) {
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

TEST_F(MeasurementChangesTest, VertexAddedToOneOfManyLinesLeavesTheOthersAlone) {
    constexpr unsigned int lines = 1000;
    constexpr int verticesEach = 100;
    for (unsigned int i = 0; i < lines; ++i) {
        m_set.lines.emplace_back();
        for (int k = 0; k < verticesEach; ++k)
            m_set.lines.back().push_back(a + osg::Vec3d(i, k, 0));
    }
    m_drawing.drawLine(lines - 1);
    std::vector<osg::ref_ptr<osg::Geode>> earlier;
    for (unsigned int i = 0; i + 1 < lines; ++i)
        earlier.emplace_back(geode(i));
    m_set.lines.back().push_back(b);
    m_drawing.drawLine(lines - 1);
    for (unsigned int i = 0; i + 1 < lines; ++i)
        ASSERT_EQ(geode(i), earlier[i]) << i;
    EXPECT_EQ(verticesOf(geometry(lines - 1)), m_set.lines.back());
}

// Previews

TEST_F(MeasurementChangesTest, PreviewReplacesOnlyItself) {
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

TEST_F(MeasurementChangesTest, NextDrawingTakesThePreviewAway) {
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

TEST_F(MeasurementChangesTest, PreviewWithoutAVertexToStartFromIsNone) {
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

TEST_F(MeasurementChangesTest, PreviewGoesWhenItsItemLostItsLastVertex) {
    m_set.travelPoints = {a};
    m_drawing.drawTravelPreview(pointer);
    ASSERT_NE(preview(), nullptr);
    m_set.travelPoints.clear();
    m_drawing.drawTravelPreview(pointer);
    EXPECT_EQ(preview(), nullptr);
}

} // namespace orbisk::test
