#include "support/CheckTest.h"
#include "view/ModelCheck.h"

#include <osg/AnimationPath>
#include <osg/MatrixTransform>
#include <osgAnimation/BasicAnimationManager>
#include <osgAnimation/Channel>

namespace orbisk::test {

namespace {

class AnimationCheckTest : public CheckTest {
protected:
    /// Whether a model still follows a path through this point after the check.
    static bool staysMoving(double time, const osg::AnimationPath::ControlPoint& point) {
        const osg::ref_ptr<osg::AnimationPath> path = new osg::AnimationPath;
        path->insert(0.0, osg::AnimationPath::ControlPoint());
        path->insert(time, point);
        const osg::ref_ptr<osg::MatrixTransform> model = new osg::MatrixTransform;
        model->addChild(makeQuadGeode());
        const osg::ref_ptr<osg::AnimationPathCallback> moving =
            new osg::AnimationPathCallback(path);
        model->setUpdateCallback(moving);
        EXPECT_EQ(checkModel(*model), std::nullopt);
        return moving->getAnimationPath() == path;
    }
};

/// A callback that follows a path which cannot be followed.
osg::ref_ptr<osg::AnimationPathCallback> astray() {
    const osg::ref_ptr<osg::AnimationPath> path = new osg::AnimationPath;
    path->insert(0.0, osg::AnimationPath::ControlPoint(osg::Vec3d(0, 0, infinite<double>)));
    return new osg::AnimationPathCallback(path);
}

} // namespace

TEST_F(AnimationCheckTest, PathOfNumbersIsFollowed) {
    EXPECT_TRUE(staysMoving(2.0, osg::AnimationPath::ControlPoint(osg::Vec3d(5e5, 4e6, 10))));
}

TEST_F(AnimationCheckTest, PathThroughWhatIsNoNumberIsNot) {
    using Point = osg::AnimationPath::ControlPoint;
    for (int i = 0; i < 3; ++i) {
        osg::Vec3d position;
        position[i] = notANumber<double>;
        EXPECT_FALSE(staysMoving(2.0, Point(position))) << i;
        osg::Vec3d scale(1, 1, 1);
        scale[i] = infinite<double>;
        EXPECT_FALSE(staysMoving(2.0, Point(osg::Vec3d(), osg::Quat(), scale))) << i;
    }
    for (int i = 0; i < 4; ++i) {
        osg::Vec4d rotation(0, 0, 0, 1);
        rotation[i] = infinite<double>;
        EXPECT_FALSE(staysMoving(2.0, Point(osg::Vec3d(), osg::Quat(rotation)))) << i;
    }
    EXPECT_FALSE(staysMoving(infinite<double>, Point()));
}

TEST_F(AnimationCheckTest, CallbacksOfEveryKindAreLookedAt) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::AnimationPathCallback> update = astray();
    const osg::ref_ptr<osg::AnimationPathCallback> event = astray();
    const osg::ref_ptr<osg::AnimationPathCallback> cull = astray();
    const osg::ref_ptr<osg::AnimationPathCallback> nested = astray();
    update->setNestedCallback(nested);
    model->setUpdateCallback(update);
    model->setEventCallback(event);
    model->setCullCallback(cull);
    EXPECT_EQ(checkModel(*model), std::nullopt);
    for (const osg::AnimationPathCallback* callback :
         {update.get(), event.get(), cull.get(), nested.get()})
        EXPECT_EQ(callback->getAnimationPath(), nullptr);
}

TEST_F(AnimationCheckTest, CallbackThatContainsItselfDoesSoNoMore) {
    const osg::ref_ptr<osg::NodeCallback> outer = new osg::NodeCallback;
    const osg::ref_ptr<osg::NodeCallback> inner = new osg::NodeCallback;
    outer->setNestedCallback(inner);
    inner->setNestedCallback(outer);
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->setUpdateCallback(outer);
    EXPECT_EQ(checkModel(*model), std::nullopt);
    EXPECT_TRUE(!outer->getNestedCallback() || !inner->getNestedCallback());
}

TEST_F(AnimationCheckTest, ChannelsWithoutKeysAreLeftOut) {
    const osg::ref_ptr<osgAnimation::Vec3LinearChannel> good = new osgAnimation::Vec3LinearChannel;
    good->getOrCreateSampler()->getOrCreateKeyframeContainer()->push_back(
        osgAnimation::Vec3Keyframe(0.0, osg::Vec3(1, 2, 3)));
    const osg::ref_ptr<osgAnimation::Vec3LinearChannel> empty = new osgAnimation::Vec3LinearChannel;
    empty->getOrCreateSampler()->getOrCreateKeyframeContainer();
    const osg::ref_ptr<osgAnimation::Vec3LinearChannel> bare = new osgAnimation::Vec3LinearChannel;
    const osg::ref_ptr<osgAnimation::Animation> animation = new osgAnimation::Animation;
    animation->getChannels() = {empty.get(), good.get(), bare.get()};
    const osg::ref_ptr<osgAnimation::BasicAnimationManager> manager =
        new osgAnimation::BasicAnimationManager;
    manager->registerAnimation(animation);
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->setUpdateCallback(manager);
    EXPECT_EQ(checkModel(*model), std::nullopt);
    ASSERT_EQ(animation->getChannels().size(), 1u);
    EXPECT_EQ(animation->getChannels().front(), good);
}

} // namespace orbisk::test
