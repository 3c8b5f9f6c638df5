#include "support/AllocationCount.h"
#include "support/ModeTools.h"
#include "support/SceneTools.h"
#include "view/ModelUpdateCallback.h"

#include <gtest/gtest.h>
#include <osg/AutoTransform>
#include <osg/Camera>
#include <osg/LOD>
#include <osg/MatrixTransform>
#include <osg/PagedLOD>
#include <osg/Switch>

#include <vector>

namespace orbisk::test {

namespace {

/// What changes below a model is to get the mode by the next update traversal, or, where no
/// bounding sphere tells of the change, when the walk comes round.
class ModelChangesTest : public testing::Test {
protected:
    ModelChangesTest() {
        m_model->addChild(m_geode);
        m_callback->mode = DisplayMode::Tin;
        m_callback->attachTo(*m_model);
        m_frames.update(*m_model, 3);
    }

    /// Adds a node below the model and lets some frames pass.
    template <typename Kind>
    osg::ref_ptr<Kind> addBelowModel(const osg::ref_ptr<Kind>& node) {
        m_model->addChild(node);
        m_frames.update(*m_model, 3);
        return node;
    }

    void expectFollows(osg::Group& parent) {
        const osg::ref_ptr<osg::Geode> added = makeQuadGeode();
        parent.addChild(added);
        m_frames.update(*m_model);
        EXPECT_TRUE(shows(*added->getDrawable(0), DisplayMode::Tin));
    }

    /// As `expectFollows`, for a place of which no bounding sphere tells: the walk that comes round
    /// finds it.
    void expectComesRound(osg::Group& parent) {
        const osg::ref_ptr<osg::Geode> added = makeQuadGeode();
        parent.addChild(added);
        m_frames.update(*m_model, ModelUpdateCallback::updatesBetweenWalks);
        EXPECT_TRUE(shows(*added->getDrawable(0), DisplayMode::Tin));
    }

    osg::ref_ptr<osg::Group> m_model = new osg::Group;
    osg::ref_ptr<osg::Geode> m_geode = makeQuadGeode();
    osg::ref_ptr<ModelUpdateCallback> m_callback = new ModelUpdateCallback;
    Frames m_frames;
};

/// A bounding sphere that is given, as some readers do it.
class FixedBound : public osg::Node::ComputeBoundingSphereCallback {
public:
    osg::BoundingSphere computeBound(const osg::Node&) const override {
        return osg::BoundingSphere(osg::Vec3(1, 2, 3), 4.0f);
    }
};

/// Gives its geometry a new state set in a frame, as an effect may do.
class StateChanger : public osg::NodeCallback {
public:
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override {
        if (next) {
            node->setStateSet(next);
            next = nullptr;
        }
        traverse(node, visitor);
    }

    osg::ref_ptr<osg::StateSet> next;
};

} // namespace

TEST_F(ModelChangesTest, AddedChildFollows) {
    expectFollows(*m_model);
}

TEST_F(ModelChangesTest, ReplacedChildFollows) {
    const osg::ref_ptr<osg::Geode> next = makeQuadGeode();
    m_model->replaceChild(m_geode, next);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*next->getDrawable(0), DisplayMode::Tin));
}

TEST_F(ModelChangesTest, ChildSetInAnothersPlaceFollows) {
    const osg::ref_ptr<osg::Geode> next = makeQuadGeode();
    m_model->setChild(0, next);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*next->getDrawable(0), DisplayMode::Tin));
}

TEST_F(ModelChangesTest, NewDrawableFollows) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    m_geode->addDrawable(quad);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*quad, DisplayMode::Tin));
}

TEST_F(ModelChangesTest, ChildDeepBelowFollows) {
    osg::ref_ptr<osg::Group> parent = addBelowModel(osg::ref_ptr<osg::Group>(new osg::Group));
    for (int level = 0; level < 10; ++level) {
        const osg::ref_ptr<osg::MatrixTransform> next =
            new osg::MatrixTransform(osg::Matrixd::translate(1, 0, 0));
        parent->addChild(next);
        parent = next;
    }
    m_frames.update(*m_model);
    expectFollows(*parent);
}

TEST_F(ModelChangesTest, SubtreeWithoutExtentFollows) {
    const osg::ref_ptr<osg::Group> below = addBelowModel(osg::ref_ptr<osg::Group>(new osg::Group));
    const osg::ref_ptr<osg::Geometry> empty = new osg::Geometry;
    below->addChild(empty);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*empty, DisplayMode::Tin));
}

TEST_F(ModelChangesTest, TileAddedByThePagerFollows) {
    const osg::ref_ptr<osg::PagedLOD> tiles = new osg::PagedLOD;
    tiles->addChild(makeQuadGeode(), 1000.0f, 1e9f);
    tiles->setFileName(1, "finer.osgb");
    tiles->setRange(1, 0.0f, 1000.0f);
    addBelowModel(tiles);
    expectFollows(*tiles);
}

TEST_F(ModelChangesTest, TileBelowATileFollows) {
    const auto makeTiles = [] {
        const osg::ref_ptr<osg::PagedLOD> tiles = new osg::PagedLOD;
        tiles->setCenterMode(osg::LOD::USER_DEFINED_CENTER);
        tiles->setCenter(osg::Vec3(1, 2, 3));
        tiles->setRadius(50.0f);
        tiles->addChild(makeQuadGeode(), 1000.0f, 1e9f);
        return tiles;
    };
    const osg::ref_ptr<osg::PagedLOD> coarse = addBelowModel(makeTiles());
    const osg::ref_ptr<osg::PagedLOD> fine = makeTiles();
    coarse->addChild(fine, 0.0f, 1000.0f);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*fine->getChild(0)->asGroup()->getChild(0), DisplayMode::Tin));
    expectComesRound(*fine);
}

TEST_F(ModelChangesTest, SwitchChildTurnedOnLaterFollows) {
    const osg::ref_ptr<osg::Switch> options = new osg::Switch;
    const osg::ref_ptr<osg::Group> off = new osg::Group;
    options->addChild(off, false);
    addBelowModel(options);
    const osg::ref_ptr<osg::Geode> added = makeQuadGeode();
    off->addChild(added);
    m_frames.update(*m_model);
    options->setValue(0, true);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*added->getDrawable(0), DisplayMode::Tin));
}

TEST_F(ModelChangesTest, ChildOfASwitchedOffGroupComesRound) {
    const osg::ref_ptr<osg::Switch> options = new osg::Switch;
    const osg::ref_ptr<osg::Group> off = new osg::Group;
    options->addChild(off, false);
    addBelowModel(options);
    expectComesRound(*off);
}

TEST_F(ModelChangesTest, ChildOfAnAbsoluteTransformComesRound) {
    const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
    transform->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    transform->addChild(makeQuadGeode());
    addBelowModel(transform);
    expectComesRound(*transform);
}

TEST_F(ModelChangesTest, ChildOfACameraOfTheModelComesRound) {
    const osg::ref_ptr<osg::Camera> display = new osg::Camera;
    display->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    display->setRenderOrder(osg::Camera::POST_RENDER);
    addBelowModel(display);
    expectComesRound(*display);
}

TEST_F(ModelChangesTest, ChildBelowALevelWithAGivenCentreComesRound) {
    const osg::ref_ptr<osg::LOD> levels = new osg::LOD;
    const osg::ref_ptr<osg::Group> level = new osg::Group;
    levels->setCenterMode(osg::LOD::USER_DEFINED_CENTER);
    levels->setRadius(10.0f);
    levels->addChild(level, 0.0f, 1e6f);
    addBelowModel(levels);
    expectComesRound(*level);
}

TEST_F(ModelChangesTest, ChildBelowAGivenBoundComesRound) {
    const osg::ref_ptr<osg::Group> bounded = new osg::Group;
    const osg::ref_ptr<osg::Group> below = new osg::Group;
    bounded->setComputeBoundingSphereCallback(new FixedBound);
    bounded->addChild(below);
    addBelowModel(bounded);
    expectComesRound(*below);
}

TEST_F(ModelChangesTest, ChildOfAnAutoTransformFollows) {
    const osg::ref_ptr<osg::AutoTransform> label = new osg::AutoTransform;
    label->setAutoScaleToScreen(true);
    label->addChild(makeQuadGeode());
    addBelowModel(label);
    expectFollows(*label);
}

TEST_F(ModelChangesTest, StateSetReplacedLaterComesRound) {
    osg::Drawable& quad = *m_geode->getDrawable(0);
    quad.setStateSet(new osg::StateSet);
    m_frames.update(*m_model, ModelUpdateCallback::updatesBetweenWalks);
    EXPECT_TRUE(shows(quad, DisplayMode::Tin));
}

TEST_F(ModelChangesTest, StateSetReplacedByAnAnimationComesRound) {
    osg::Drawable& quad = *m_geode->getDrawable(0);
    const osg::ref_ptr<StateChanger> changer = new StateChanger;
    quad.setUpdateCallback(changer);
    m_frames.update(*m_model);
    changer->next = new osg::StateSet;
    m_frames.update(*m_model, 1 + ModelUpdateCallback::updatesBetweenWalks);
    EXPECT_TRUE(shows(quad, DisplayMode::Tin));
}

TEST_F(ModelChangesTest, RemovedChildIsNoLongerTouched) {
    const osg::ref_ptr<osg::Geode> removed = m_geode;
    m_model->removeChild(removed);
    m_callback->mode = DisplayMode::Gray;
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*removed->getDrawable(0), DisplayMode::Tin));
}

TEST_F(ModelChangesTest, ModeAndSubtreeMayChangeTogether) {
    const osg::ref_ptr<osg::Geode> added = makeQuadGeode();
    m_model->addChild(added);
    m_callback->mode = DisplayMode::Gray;
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*added->getDrawable(0), DisplayMode::Gray));
    EXPECT_TRUE(shows(*m_geode->getDrawable(0), DisplayMode::Gray));
}

TEST_F(ModelChangesTest, CountSeesWhatTheLibraryAllocates) {
    const long before = allocationCount();
    // The library makes this state set itself, in its own code.
    osg::ref_ptr<osg::Group> group = new osg::Group;
    const long own = allocationCount();
    group->getOrCreateStateSet();
    EXPECT_GT(own, before);
    EXPECT_GT(allocationCount(), own);
}

TEST_F(ModelChangesTest, FramesWithoutAChangeCostNothing) {
    std::vector<const osg::Drawable*> drawables;
    for (int i = 0; i < 50; ++i) {
        const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
        const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
        if (i % 2)
            geode->getDrawable(0)->setStateSet(new osg::StateSet);
        transform->addChild(geode);
        m_model->addChild(transform);
        drawables.push_back(geode->getDrawable(0));
    }
    m_frames.update(*m_model, 2);
    std::vector<const osg::StateSet*> states;
    for (const osg::Drawable* drawable : drawables)
        states.push_back(drawable->getStateSet());
    const long before = allocationCount();
    m_frames.update(*m_model, 100);
    EXPECT_EQ(allocationCount() - before, 0);
    for (std::size_t i = 0; i < drawables.size(); ++i)
        EXPECT_EQ(drawables[i]->getStateSet(), states[i]);
}

TEST_F(ModelChangesTest, FramesOfAnAnimatedModelCostNothing) {
    const osg::ref_ptr<CountingCallback> animation = new CountingCallback;
    m_geode->setUpdateCallback(animation);
    m_frames.update(*m_model);
    const osg::StateSet* state = m_geode->getDrawable(0)->getStateSet();
    const long before = allocationCount();
    m_frames.update(*m_model, 100);
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_EQ(m_geode->getDrawable(0)->getStateSet(), state);
}

} // namespace orbisk::test
