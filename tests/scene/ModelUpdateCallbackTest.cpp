#include "view/ModelUpdateCallback.h"

#include "support/ModeTools.h"
#include "support/SceneTools.h"

#include <gtest/gtest.h>
#include <osg/LOD>
#include <osg/LightSource>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osg/Shape>
#include <osg/ShapeDrawable>
#include <osg/Switch>

namespace orbisk::test {

namespace {

constexpr DisplayMode everyMode[] = {DisplayMode::PointCloud, DisplayMode::Tin, DisplayMode::Gray,
                                     DisplayMode::AsLoaded};

class ModelUpdateCallbackTest : public testing::Test {
protected:
    void apply(osg::Node* node, DisplayMode mode) {
        m_callback->mode = mode;
        m_callback->apply(node);
    }

    osg::ref_ptr<ModelUpdateCallback> m_callback = new ModelUpdateCallback;
};

/// A group of a kind that the library has, above a geometry of its own.
template <typename Kind>
struct Above {
    Above() : node(new Kind), geometry(makeQuad()) { node->addChild(geometry); }

    osg::ref_ptr<Kind> node;
    osg::ref_ptr<osg::Geometry> geometry;
};

} // namespace

TEST_F(ModelUpdateCallbackTest, StartsAsLoaded) {
    EXPECT_EQ(m_callback->mode, DisplayMode::AsLoaded);
    EXPECT_EQ(static_cast<int>(m_callback->mode), 6);
}

TEST_F(ModelUpdateCallbackTest, EachModeSetsItsState) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    for (const DisplayMode mode : everyMode) {
        apply(quad, mode);
        EXPECT_TRUE(shows(*quad, mode)) << static_cast<int>(mode);
    }
}

TEST_F(ModelUpdateCallbackTest, EachModeCanFollowEachOther) {
    for (const DisplayMode first : everyMode)
        for (const DisplayMode second : everyMode) {
            const osg::ref_ptr<osg::Geometry> quad = makeQuad();
            apply(quad, first);
            apply(quad, second);
            EXPECT_TRUE(shows(*quad, second))
                << static_cast<int>(first) << " then " << static_cast<int>(second);
        }
}

TEST_F(ModelUpdateCallbackTest, UnknownModesBehaveAsLoaded) {
    for (const int value : unknownModes) {
        const osg::ref_ptr<osg::Geometry> quad = makeQuad();
        apply(quad, DisplayMode::Tin);
        apply(quad, static_cast<DisplayMode>(value));
        EXPECT_TRUE(shows(*quad, DisplayMode::AsLoaded)) << value;
    }
}

TEST_F(ModelUpdateCallbackTest, ValuesOfTheModesAreFixed) {
    EXPECT_EQ(static_cast<int>(DisplayMode::PointCloud), 0);
    EXPECT_EQ(static_cast<int>(DisplayMode::Tin), 1);
    EXPECT_EQ(static_cast<int>(DisplayMode::Gray), 2);
    EXPECT_EQ(static_cast<int>(DisplayMode::AsLoaded), 6);
}

TEST_F(ModelUpdateCallbackTest, TextureUnitsAboveThreeAreLeftAlone) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    for (unsigned int unit = 0; unit < 6; ++unit)
        addTexture(*quad->getOrCreateStateSet(), makeImage({9, 9, 9, 255}), unit);
    quad->getStateSet()->setTextureMode(5, GL_TEXTURE_2D, osg::StateAttribute::OFF);
    for (const DisplayMode mode : everyMode) {
        apply(quad, mode);
        EXPECT_TRUE(shows(*quad, mode));
        EXPECT_EQ(quad->getStateSet()->getTextureMode(4, GL_TEXTURE_2D), 1u);
        EXPECT_EQ(quad->getStateSet()->getTextureMode(5, GL_TEXTURE_2D), 0u);
    }
    const osg::ref_ptr<osg::Geometry> bare = makeQuad();
    apply(bare, DisplayMode::Gray);
    EXPECT_EQ(bare->getStateSet()->getTextureModeList().size(), 4u);
}

TEST_F(ModelUpdateCallbackTest, RestOfTheStateStays) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    osg::StateSet& before = *quad->getOrCreateStateSet();
    addTexture(before, makeImage({9, 9, 9, 255}));
    const osg::ref_ptr<osg::Material> material = new osg::Material;
    before.setAttributeAndModes(material, osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    before.setMode(GL_BLEND, osg::StateAttribute::ON);
    before.setRenderingHint(osg::StateSet::TRANSPARENT_BIN);
    const osg::ref_ptr<osg::StateAttribute> texture =
        before.getTextureAttribute(0, osg::StateAttribute::TEXTURE);
    apply(quad, DisplayMode::Gray);
    const osg::StateSet& after = *quad->getStateSet();
    EXPECT_EQ(after.getAttribute(osg::StateAttribute::MATERIAL), material);
    EXPECT_EQ(after.getAttributePair(osg::StateAttribute::MATERIAL)->second,
              osg::StateAttribute::OVERRIDE);
    EXPECT_EQ(after.getMode(GL_BLEND), 1u);
    EXPECT_EQ(after.getRenderingHint(), osg::StateSet::TRANSPARENT_BIN);
    EXPECT_EQ(after.getTextureAttribute(0, osg::StateAttribute::TEXTURE), texture);
}

TEST_F(ModelUpdateCallbackTest, StateOfTheModelsOwnIsReplaced) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    osg::StateSet& own = *quad->getOrCreateStateSet();
    own.setAttribute(new osg::PolygonMode(osg::PolygonMode::FRONT, osg::PolygonMode::LINE),
                     osg::StateAttribute::OVERRIDE);
    own.setTextureMode(2, GL_TEXTURE_2D, osg::StateAttribute::ON | osg::StateAttribute::PROTECTED);
    apply(quad, DisplayMode::Gray);
    EXPECT_TRUE(shows(*quad, DisplayMode::Gray));
    EXPECT_EQ(quad->getStateSet()->getAttributePair(osg::StateAttribute::POLYGONMODE)->second, 0u);
}

TEST_F(ModelUpdateCallbackTest, NullIsNoFailure) {
    for (const DisplayMode mode : everyMode)
        apply(nullptr, mode);
}

TEST_F(ModelUpdateCallbackTest, EveryKindOfGroupIsEntered) {
    const Above<osg::Group> group;
    const Above<osg::Geode> geode;
    const Above<osg::MatrixTransform> transform;
    const Above<osg::LOD> lod;
    const Above<osg::Switch> switchOff;
    const Above<osg::LightSource> light;
    switchOff.node->setAllChildrenOff();
    lod.node->setRange(0, 1e6f, 2e6f);
    // Each stands under the one before, so that the last lies five levels down.
    group.node->addChild(geode.node);
    group.node->addChild(transform.node);
    transform.node->addChild(lod.node);
    lod.node->addChild(switchOff.node, 1e6f, 2e6f);
    switchOff.node->addChild(light.node, false);
    apply(group.node, DisplayMode::Tin);
    for (const osg::Geometry* geometry :
         {group.geometry.get(), geode.geometry.get(), transform.geometry.get(), lod.geometry.get(),
          switchOff.geometry.get(), light.geometry.get()})
        EXPECT_TRUE(shows(*geometry, DisplayMode::Tin));
}

TEST_F(ModelUpdateCallbackTest, HiddenSubtreesAreEntered) {
    const Above<osg::Group> group;
    group.node->setNodeMask(0);
    group.geometry->setNodeMask(0);
    apply(group.node, DisplayMode::Gray);
    EXPECT_TRUE(shows(*group.geometry, DisplayMode::Gray));
}

TEST_F(ModelUpdateCallbackTest, GroupsGetNoState) {
    const Above<osg::Group> group;
    apply(group.node, DisplayMode::Tin);
    EXPECT_EQ(group.node->getStateSet(), nullptr);
}

TEST_F(ModelUpdateCallbackTest, WhatIsNoGeometryIsLeftAlone) {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    const osg::ref_ptr<osg::Drawable> plain = new osg::Drawable;
    const osg::ref_ptr<osg::Node> node = new osg::Node;
    geode->addDrawable(plain);
    geode->addChild(node);
    apply(geode, DisplayMode::Tin);
    EXPECT_EQ(plain->getStateSet(), nullptr);
    EXPECT_EQ(node->getStateSet(), nullptr);
}

TEST_F(ModelUpdateCallbackTest, ShapesFollowTheModeAsTheGeometryTheyAre) {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    const osg::ref_ptr<osg::ShapeDrawable> shape = new osg::ShapeDrawable(new osg::Box);
    geode->addDrawable(shape);
    apply(geode, DisplayMode::Tin);
    EXPECT_EQ(shape->asGeometry() != nullptr, bool(shows(*shape, DisplayMode::Tin)));
}

TEST_F(ModelUpdateCallbackTest, SharedStateSetsStayShared) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::StateSet> shared = new osg::StateSet;
    const osg::ref_ptr<osg::Geometry> first = makeQuad();
    const osg::ref_ptr<osg::Geometry> second = makeQuad();
    const osg::ref_ptr<osg::Geometry> alone = makeQuad();
    first->setStateSet(shared);
    second->setStateSet(shared);
    alone->setStateSet(new osg::StateSet);
    for (const auto& geometry : {first, second, alone})
        model->addChild(geometry);
    for (const DisplayMode mode : everyMode) {
        apply(model, mode);
        EXPECT_EQ(first->getStateSet(), second->getStateSet());
        EXPECT_NE(first->getStateSet(), alone->getStateSet());
        EXPECT_TRUE(shows(*first, mode));
    }
}

TEST_F(ModelUpdateCallbackTest, StateSetsThatMayBeBeingDrawnAreNeverChanged) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    addTexture(*quad->getOrCreateStateSet(), makeImage({1, 2, 3, 255}));
    for (const DisplayMode mode : everyMode) {
        const osg::ref_ptr<osg::StateSet> drawn = quad->getStateSet();
        const osg::ref_ptr<osg::StateSet> asItWas =
            new osg::StateSet(*drawn, osg::CopyOp::SHALLOW_COPY);
        const auto* polygons = dynamic_cast<const osg::PolygonMode*>(
            drawn->getAttribute(osg::StateAttribute::POLYGONMODE));
        const auto polygonsBefore =
            polygons ? polygons->getMode(osg::PolygonMode::FRONT) : osg::PolygonMode::FILL;
        apply(quad, mode);
        EXPECT_EQ(drawn->compare(*asItWas, true), 0);
        if (polygons) {
            EXPECT_EQ(polygons->getMode(osg::PolygonMode::FRONT), polygonsBefore);
        }
    }
}

TEST_F(ModelUpdateCallbackTest, StateSetHeldByAnotherNodeIsLeftAlone) {
    const osg::ref_ptr<osg::StateSet> shared = new osg::StateSet;
    const osg::ref_ptr<osg::Group> outside = new osg::Group;
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    outside->setStateSet(shared);
    quad->setStateSet(shared);
    apply(quad, DisplayMode::Gray);
    EXPECT_EQ(outside->getStateSet(), shared);
    EXPECT_TRUE(shared->getModeList().empty());
    EXPECT_TRUE(shared->getTextureModeList().empty());
    EXPECT_TRUE(shared->getAttributeList().empty());
    EXPECT_TRUE(shows(*quad, DisplayMode::Gray));
}

TEST_F(ModelUpdateCallbackTest, ApplyingTheSameModeAgainChangesNothing) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    apply(quad, DisplayMode::Gray);
    const osg::ref_ptr<osg::StateSet> state = quad->getStateSet();
    apply(quad, DisplayMode::Gray);
    EXPECT_EQ(quad->getStateSet(), state);
}

TEST_F(ModelUpdateCallbackTest, UpdateTraversalAppliesTheMode) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(makeQuadGeode());
    const osg::Geometry* quad = model->getChild(0)->asGroup()->getChild(0)->asGeometry();
    Frames frames;
    m_callback->attachTo(*model);
    EXPECT_EQ(model->getUpdateCallback(), m_callback);
    frames.update(*model);
    EXPECT_TRUE(shows(*quad, DisplayMode::AsLoaded));
    for (const DisplayMode mode : everyMode) {
        m_callback->mode = mode;
        frames.update(*model);
        EXPECT_TRUE(shows(*quad, mode));
    }
}

TEST_F(ModelUpdateCallbackTest, ModelThatIsItselfAGeometryFollows) {
    const osg::ref_ptr<osg::Geometry> model = makeQuad();
    const osg::ref_ptr<osg::Group> scene = new osg::Group;
    scene->addChild(model);
    Frames frames;
    m_callback->attachTo(*model);
    for (const DisplayMode mode : everyMode) {
        m_callback->mode = mode;
        frames.update(*scene);
        EXPECT_TRUE(shows(*model, mode));
    }
}

TEST_F(ModelUpdateCallbackTest, SecondModelTakesOverTheMode) {
    const osg::ref_ptr<osg::Geode> first = makeQuadGeode();
    const osg::ref_ptr<osg::Geode> second = makeQuadGeode();
    Frames frames;
    m_callback->attachTo(*first);
    m_callback->mode = DisplayMode::Gray;
    frames.update(*first);
    m_callback->detachFrom(*first);
    m_callback->attachTo(*second);
    frames.update(*second);
    EXPECT_TRUE(shows(*second->getDrawable(0), DisplayMode::Gray));
    m_callback->mode = DisplayMode::AsLoaded;
    frames.update(*second);
    EXPECT_TRUE(shows(*second->getDrawable(0), DisplayMode::AsLoaded));
    EXPECT_TRUE(shows(*first->getDrawable(0), DisplayMode::Gray));
}

} // namespace orbisk::test
