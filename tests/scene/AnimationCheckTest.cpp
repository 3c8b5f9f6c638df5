#include "support/SceneTools.h"
#include "view/ModelCheck.h"

#include <gtest/gtest.h>
#include <osg/AnimationPath>
#include <osg/MatrixTransform>
#include <osgAnimation/BasicAnimationManager>
#include <osgAnimation/Channel>

#include <limits>

namespace orbisk::test {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

class AnimationCheckTest : public testing::Test {
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

    QuietLibrary m_quiet;
};

} // namespace

TEST_F(AnimationCheckTest, PathOfNumbersIsFollowed) {
    EXPECT_TRUE(staysMoving(2.0, osg::AnimationPath::ControlPoint(osg::Vec3d(5e5, 4e6, 10))));
}

TEST_F(AnimationCheckTest, PathThroughWhatIsNoNumberIsNot) {
    using Point = osg::AnimationPath::ControlPoint;
    EXPECT_FALSE(staysMoving(2.0, Point(osg::Vec3d(0, notANumber, 0))));
    EXPECT_FALSE(staysMoving(2.0, Point(osg::Vec3d(), osg::Quat(0, 0, 0, infinite))));
    EXPECT_FALSE(staysMoving(2.0, Point(osg::Vec3d(), osg::Quat(), osg::Vec3d(1, 1, infinite))));
    EXPECT_FALSE(staysMoving(infinite, Point()));
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
