#include "support/ModeTools.h"
#include "support/SceneTools.h"
#include "view/ModelUpdateCallback.h"

#include <gtest/gtest.h>
#include <osg/Sequence>
#include <osg/observer_ptr>

namespace orbisk::test {

namespace {

class GivenBound : public osg::Node::ComputeBoundingSphereCallback {
public:
    explicit GivenBound(float radius) : m_radius(radius) {}

    osg::BoundingSphere computeBound(const osg::Node&) const override {
        return osg::BoundingSphere(osg::Vec3(1, 2, 3), m_radius);
    }

private:
    float m_radius;
};

class StateCounter : public osg::StateSet::Callback {
public:
    void operator()(osg::StateSet*, osg::NodeVisitor*) override { ++calls; }

    int calls = 0;
};

/// How the callback goes on and off a model, and what else the model has to do in a frame.
class ModelCallbackAttachTest : public testing::Test {
protected:
    ModelCallbackAttachTest() { m_model->addChild(m_geode); }

    osg::ref_ptr<osg::Group> m_model = new osg::Group;
    osg::ref_ptr<osg::Geode> m_geode = makeQuadGeode();
    osg::ref_ptr<ModelUpdateCallback> m_callback = new ModelUpdateCallback;
    Frames m_frames;
};

} // namespace

TEST_F(ModelCallbackAttachTest, DetachedNodeIsAsBefore) {
    const osg::BoundingSphere bound = m_model->getBound();
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model, 2);
    m_callback->detachFrom(*m_model);
    EXPECT_EQ(m_model->getUpdateCallback(), nullptr);
    EXPECT_EQ(m_model->getComputeBoundingSphereCallback(), nullptr);
    EXPECT_EQ(m_model->getNumChildrenRequiringUpdateTraversal(), 0u);
    EXPECT_EQ(m_model->getBound().center(), bound.center());
    EXPECT_EQ(m_model->getBound().radius(), bound.radius());
    EXPECT_EQ(m_callback->referenceCount(), 1);
}

TEST_F(ModelCallbackAttachTest, OwnBoundOfTheModelHoldsAllTheTime) {
    const osg::ref_ptr<GivenBound> own = new GivenBound(77.0f);
    m_model->setComputeBoundingSphereCallback(own);
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    m_model->addChild(makeQuadGeode(5000.0f));
    m_frames.update(*m_model);
    EXPECT_EQ(m_model->getBound().radius(), 77.0f);
    m_callback->detachFrom(*m_model);
    EXPECT_EQ(m_model->getComputeBoundingSphereCallback(), own);
    m_model->dirtyBound();
    EXPECT_EQ(m_model->getBound().radius(), 77.0f);
}

TEST_F(ModelCallbackAttachTest, BoundStillFollowsTheChildren) {
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    m_model->addChild(makeQuadGeode(500.0f));
    EXPECT_GT(m_model->getBound().radius(), 300.0f);
    m_frames.update(*m_model);
    EXPECT_GT(m_model->getBound().radius(), 300.0f);
}

TEST_F(ModelCallbackAttachTest, DetachingBeforeTheFirstFrameIsFine) {
    const osg::ref_ptr<GivenBound> own = new GivenBound(7.0f);
    m_model->setComputeBoundingSphereCallback(own);
    m_callback->attachTo(*m_model);
    m_callback->detachFrom(*m_model);
    EXPECT_EQ(m_model->getUpdateCallback(), nullptr);
    EXPECT_EQ(m_model->getComputeBoundingSphereCallback(), own);
}

TEST_F(ModelCallbackAttachTest, DetachingFromAStrangerLeavesItAlone) {
    const osg::ref_ptr<CountingCallback> animation = new CountingCallback;
    const osg::ref_ptr<GivenBound> own = new GivenBound(7.0f);
    m_model->setUpdateCallback(animation);
    m_model->setComputeBoundingSphereCallback(own);
    m_callback->detachFrom(*m_model);
    EXPECT_EQ(m_model->getUpdateCallback(), animation);
    EXPECT_EQ(m_model->getComputeBoundingSphereCallback(), own);
}

TEST_F(ModelCallbackAttachTest, AttachedAgainItGoesOn) {
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    m_callback->detachFrom(*m_model);
    const osg::ref_ptr<osg::Geode> added = makeQuadGeode();
    m_model->addChild(added);
    m_callback->mode = DisplayMode::Gray;
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*m_geode->getDrawable(0), DisplayMode::Gray));
    EXPECT_TRUE(shows(*added->getDrawable(0), DisplayMode::Gray));
}

TEST_F(ModelCallbackAttachTest, NextModelFollowsWhileTheFormerIsStillShown) {
    const osg::ref_ptr<GivenBound> own = new GivenBound(77.0f);
    m_model->setComputeBoundingSphereCallback(own);
    m_callback->mode = DisplayMode::Tin;
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    const osg::ref_ptr<osg::Geode> next = makeQuadGeode();
    m_callback->attachTo(*next);
    m_frames.update(*next);
    EXPECT_TRUE(shows(*next->getDrawable(0), DisplayMode::Tin));
    m_model->dirtyBound();
    EXPECT_EQ(m_model->getBound().radius(), 77.0f);
}

TEST_F(ModelCallbackAttachTest, ReturningModelGetsTheModeOfNow) {
    m_callback->mode = DisplayMode::Tin;
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    const osg::ref_ptr<osg::Geode> between = makeQuadGeode();
    m_callback->attachTo(*between);
    m_callback->mode = DisplayMode::Gray;
    m_frames.update(*between);
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    EXPECT_TRUE(shows(*m_geode->getDrawable(0), DisplayMode::Gray));
}

TEST_F(ModelCallbackAttachTest, ModelAndCallbackLetEachOtherGo) {
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model);
    const osg::observer_ptr<osg::Group> modelSeen = m_model;
    const osg::observer_ptr<ModelUpdateCallback> callbackSeen = m_callback;
    m_model = nullptr;
    EXPECT_FALSE(modelSeen.valid());
    m_callback = nullptr;
    EXPECT_FALSE(callbackSeen.valid());
}

TEST_F(ModelCallbackAttachTest, AnimationsBelowRunOnceAFrame) {
    const osg::ref_ptr<CountingCallback> onGeode = new CountingCallback;
    const osg::ref_ptr<CountingCallback> onDrawable = new CountingCallback;
    const osg::ref_ptr<StateCounter> onState = new StateCounter;
    m_geode->setUpdateCallback(onGeode);
    m_geode->getDrawable(0)->setUpdateCallback(onDrawable);
    m_geode->getDrawable(0)->getOrCreateStateSet()->setUpdateCallback(onState);
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model, 3);
    m_callback->mode = DisplayMode::Gray;
    m_frames.update(*m_model, 2);
    EXPECT_EQ(onGeode->calls, 5);
    EXPECT_EQ(onDrawable->calls, 5);
    EXPECT_EQ(onState->calls, 5);
}

TEST_F(ModelCallbackAttachTest, AnimationsAddedLaterRunToo) {
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model, 2);
    const osg::ref_ptr<CountingCallback> added = new CountingCallback;
    m_geode->setUpdateCallback(added);
    m_frames.update(*m_model, 4);
    EXPECT_EQ(added->calls, 4);
}

TEST_F(ModelCallbackAttachTest, NestedCallbacksRunOnceAFrame) {
    const osg::ref_ptr<CountingCallback> nested = new CountingCallback;
    m_callback->addNestedCallback(nested);
    m_callback->attachTo(*m_model);
    m_callback->mode = DisplayMode::Tin;
    m_frames.update(*m_model, 3);
    EXPECT_EQ(nested->calls, 3);
    EXPECT_TRUE(shows(*m_geode->getDrawable(0), DisplayMode::Tin));
}

TEST_F(ModelCallbackAttachTest, NestedCallbacksReachTheAnimationsBelow) {
    const osg::ref_ptr<CountingCallback> below = new CountingCallback;
    m_callback->addNestedCallback(new CountingCallback);
    m_geode->setUpdateCallback(below);
    m_callback->attachTo(*m_model);
    m_frames.update(*m_model, 3);
    EXPECT_EQ(below->calls, 3);
}

TEST_F(ModelCallbackAttachTest, SequenceAtTheTopGoesOn) {
    const osg::ref_ptr<osg::Sequence> pictures = new osg::Sequence;
    for (int i = 0; i < 3; ++i)
        pictures->addChild(makeQuadGeode(), 0.015);
    pictures->setInterval(osg::Sequence::LOOP, 0, -1);
    pictures->setDuration(1.0f, -1);
    pictures->setMode(osg::Sequence::START);
    m_callback->attachTo(*pictures);
    bool moved = false;
    for (int frame = 0; frame < 10; ++frame) {
        const int before = pictures->getValue();
        m_frames.update(*pictures);
        moved = moved || (before >= 0 && pictures->getValue() != before);
    }
    EXPECT_TRUE(moved);
}

} // namespace orbisk::test
