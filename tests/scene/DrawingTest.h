#pragma once

#include "measure/MeasurementDrawing.h"
#include "support/SceneTools.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/CullFace>
#include <osg/LineWidth>
#include <osg/Point>

#include <vector>

namespace orbisk::test {

inline const osg::Vec4 blue(0.0f, 0.0f, 1.0f, 1.0f);
inline const osg::Vec4 translucentBlue(0.0f, 0.0f, 1.0f, 0.3f);
inline const osg::Vec4 red(0.8f, 0.2f, 0.0f, 1.0f);
inline const osg::Vec4 orange(0.8f, 0.5f, 0.0f, 0.5f);
inline const osg::Vec4 green(0.0f, 1.0f, 0.0f, 0.8f);

inline const osg::Vec3d a(500000.125, 4000000.25, 100.5);
inline const osg::Vec3d b(500010.001, 4000000.002, 101);
inline const osg::Vec3d c(500005, 4000010, 102);
inline const osg::Vec3d d(499990, 4000020, 99);
inline const osg::Vec3d pointer(500001, 4000002, 103);

using Vertices = std::vector<osg::Vec3d>;

inline Vertices verticesOf(const osg::Geometry& geometry) {
    const auto* array = dynamic_cast<const osg::Vec3dArray*>(geometry.getVertexArray());
    return array ? array->asVector() : Vertices();
}

inline osg::Vec4 colourOf(const osg::Geometry& geometry) {
    const auto* array = dynamic_cast<const osg::Vec4Array*>(geometry.getColorArray());
    return array && array->size() == 1 ? array->front() : osg::Vec4();
}

/// Checks the arrays and the primitive set, which every geometry of a drawing has alike.
inline void expectShape(const osg::Geometry& geometry, GLenum mode, const Vertices& vertices,
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

inline const Extra nothingElse{};
inline const Extra doubleWidth{0.0f, 2.0f};
inline const Extra largePoints{10.0f, 0.0f};

inline void expectState(const osg::Geometry& geometry, const Extra& extra) {
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

/// A drawing in the switch of a scene with a model in country coordinates.
class DrawingTest : public testing::Test {
protected:
    DrawingTest() : m_switch(makeSwitch()), m_drawing(m_set) { m_drawing.setModelSwitch(m_switch); }

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

} // namespace orbisk::test
