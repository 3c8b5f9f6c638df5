#include "view/NodeCheck.h"

#include "readers/NativeClasses.h"
#include "support/CheckTest.h"
#include "view/ModelCheck.h"
#include "view/StateCheck.h"

#include <osg/Billboard>
#include <osg/OccluderNode>
#include <osg/OcclusionQueryNode>
#include <osg/Sequence>
#include <osg/Switch>
#include <osg/Texture2D>
#include <osg/Uniform>
#include <osgSim/LightPointNode>
#include <osgSim/MultiSwitch>
#include <osgText/Text>

namespace orbisk::test {

namespace {

class NodeCheckTest : public CheckTest {
protected:
    template <typename Node>
    osg::ref_ptr<Node> withChildren(int count) {
        osg::ref_ptr<Node> node = new Node;
        for (int i = 0; i < count; ++i)
            node->addChild(makeQuadGeode());
        return node;
    }
};

/// A picture whose block of memory has room for `bytes`.
osg::ref_ptr<osg::Image> imageIn(std::size_t bytes, int side) {
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->setImage(side, side, 1, GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE, new unsigned char[bytes],
                    osg::Image::USE_NEW_DELETE);
    return image;
}

/// A geode whose texture has this picture.
osg::ref_ptr<osg::Geode> textured(osg::Image* image) {
    osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    addTexture(*geode->getOrCreateStateSet(), image);
    return geode;
}

const osg::Image* imageOf(osg::Geode& geode) {
    return dynamic_cast<osg::Texture&>(
               *geode.getStateSet()->getTextureAttribute(0, osg::StateAttribute::TEXTURE))
        .getImage(0);
}

} // namespace

TEST_F(NodeCheckTest, SwitchHasAValueForEachChild) {
    const osg::ref_ptr<osg::Switch> node = withChildren<osg::Switch>(3);
    node->setValueList({true});
    checkNode(*node);
    EXPECT_EQ(node->getValueList(), osg::Switch::ValueList({true, false, false}));
}

TEST_F(NodeCheckTest, MultiSwitchHasAValueForEachChild) {
    const osg::ref_ptr<osgSim::MultiSwitch> node = withChildren<osgSim::MultiSwitch>(2);
    node->setValueList(0, {});
    node->setValueList(1, {true});
    checkNode(*node);
    EXPECT_EQ(node->getValueList(0).size(), 2u);
    EXPECT_EQ(node->getValueList(1), osgSim::MultiSwitch::ValueList({true, false}));
}

TEST_F(NodeCheckTest, BillboardHasAPositionForEachDrawable) {
    const osg::ref_ptr<osg::Billboard> node = new osg::Billboard;
    for (int i = 0; i < 3; ++i)
        node->addDrawable(makeQuad(), osg::Vec3(1, 2, 3));
    node->getPositionList().resize(1);
    checkNode(*node);
    ASSERT_EQ(node->getPositionList().size(), 3u);
    EXPECT_EQ(node->getPosition(0), osg::Vec3(1, 2, 3));
    EXPECT_EQ(node->getPosition(2), osg::Vec3());
    node->getPositionList().resize(5);
    checkNode(*node);
    EXPECT_EQ(node->getPositionList().size(), 3u);
}

TEST_F(NodeCheckTest, SequenceStaysWithinItsFrames) {
    const osg::ref_ptr<osg::Sequence> node = withChildren<osg::Sequence>(3);
    node->setTimeList({1.0, notANumber<double>, -1.0, 4.0});
    node->setInterval(osg::Sequence::SWING, 1, 7);
    node->setSync(true);
    node->setDuration(notANumber<float>);
    checkNode(*node);
    osg::Sequence::LoopMode mode = osg::Sequence::LOOP;
    int begin = 0;
    int end = 0;
    node->getInterval(mode, begin, end);
    EXPECT_EQ(mode, osg::Sequence::SWING);
    EXPECT_EQ(begin, 1);
    EXPECT_EQ(end, 2);
    EXPECT_EQ(node->getTimeList(), std::vector<double>({1.0, 1.0, 1.0}));
}

TEST_F(NodeCheckTest, GoodSequencePlaysAsItIs) {
    const osg::ref_ptr<osg::Sequence> node = withChildren<osg::Sequence>(3);
    node->setTimeList({1.0, 0.5, 0.0});
    node->setInterval(osg::Sequence::LOOP, 2, -1);
    node->setDuration(2.0f, 5);
    checkNode(*node);
    osg::Sequence::LoopMode mode = osg::Sequence::SWING;
    int begin = 0;
    int end = 0;
    node->getInterval(mode, begin, end);
    EXPECT_EQ(begin, 2);
    EXPECT_EQ(end, -1);
    EXPECT_EQ(node->getTimeList(), std::vector<double>({1.0, 0.5, 0.0}));
}

TEST_F(NodeCheckTest, LightPointsHaveSizesThatCanBeDrawn) {
    const osg::ref_ptr<osgSim::LightPointNode> node = new osgSim::LightPointNode;
    osgSim::LightPoint point;
    point._blinkSequence = new osgSim::BlinkSequence;
    node->addLightPoint(point);
    point._position.x() = notANumber<float>;
    node->addLightPoint(point);
    node->setMaxPixelSize(1e9f);
    node->setMinPixelSize(notANumber<float>);
    checkNode(*node);
    ASSERT_EQ(node->getNumLightPoints(), 1u);
    EXPECT_EQ(node->getLightPoint(0)._blinkSequence, nullptr);
    EXPECT_LE(node->getMaxPixelSize(), 1000.0f);
    EXPECT_EQ(node->getMinPixelSize(), 0.0f);
}

TEST_F(NodeCheckTest, TextHasASize) {
    const osg::ref_ptr<osgText::Text> text = new osgText::Text;
    text->setFontResolution(60'000, 32);
    text->setCharacterSize(notANumber<float>);
    text->setPosition(osg::Vec3(0, notANumber<float>, 0));
    checkNode(*text);
    EXPECT_LE(text->getFontWidth(), 1000u);
    EXPECT_EQ(text->getFontHeight(), 32u);
    EXPECT_EQ(text->getCharacterHeight(), 1.0f);
    EXPECT_EQ(text->getPosition(), osg::Vec3());
}

TEST_F(NodeCheckTest, ImageLargerThanItsMemoryIsLeftOut) {
    constexpr std::size_t bytes = 16 * 16 * 4;
    const osg::ref_ptr<osg::Geode> whole = textured(imageIn(bytes, 16));
    const osg::ref_ptr<osg::Geode> larger = textured(imageIn(bytes, 64));
    const osg::ref_ptr<osg::Geode> absurd = textured(imageIn(bytes, 1 << 16));
    for (const auto& geode : {whole, larger, absurd})
        EXPECT_EQ(checkModel(*geode), std::nullopt);
    EXPECT_NE(imageOf(*whole), nullptr);
    EXPECT_EQ(imageOf(*larger), nullptr);
    EXPECT_EQ(imageOf(*absurd), nullptr);
}

TEST_F(NodeCheckTest, LevelsOfAnImageAreWithinItsMemory) {
    constexpr std::size_t bytes = 16 * 16 * 4 * 2;
    const osg::ref_ptr<osg::Image> image = imageIn(bytes, 16);
    image->setMipmapLevels({16 * 16 * 4, 16 * 16 * 4 + 8 * 8 * 4});
    EXPECT_TRUE(isWhole(*image));
    image->setMipmapLevels({16 * 16 * 4, 4'000'000'000u});
    EXPECT_FALSE(isWhole(*image));
}

TEST_F(NodeCheckTest, UniformWithMoreElementsThanItsArrayGoes) {
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    osg::StateSet& state = *geode->getOrCreateStateSet();
    state.addUniform(new osg::Uniform("good", 1.0f));
    const osg::ref_ptr<osg::Uniform> uniform =
        new osg::Uniform(osg::Uniform::FLOAT_MAT4, "short", 2);
    state.addUniform(uniform);
    uniform->getFloatArray()->resize(16);
    EXPECT_EQ(checkModel(*geode), std::nullopt);
    EXPECT_NE(state.getUniform("good"), nullptr);
    EXPECT_EQ(state.getUniform("short"), nullptr);
}

TEST_F(NodeCheckTest, NodeOfAClassThatIsNotShownBecomesAGroup) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::OcclusionQueryNode> query = new osg::OcclusionQueryNode;
    const osg::ref_ptr<osg::Geode> inside = makeQuadGeode();
    query->addChild(inside);
    query->setName("name");
    query->setUpdateCallback(new CountingCallback);
    model->addChild(query);
    model->addChild(makeQuadGeode());
    model->addChild(query);
    EXPECT_EQ(checkModel(*model), std::nullopt);
    ASSERT_EQ(model->getNumChildren(), 3u);
    EXPECT_STREQ(model->getChild(0)->className(), "Group");
    EXPECT_EQ(model->getChild(0)->getName(), "name");
    EXPECT_EQ(model->getChild(0)->asGroup()->getChild(0), inside);
    EXPECT_EQ(model->getChild(0)->getUpdateCallback(), nullptr);
    EXPECT_EQ(model->getChild(0), model->getChild(2));
}

TEST_F(NodeCheckTest, ShownNodeStaysItself) {
    const osg::ref_ptr<osg::Switch> shown = new osg::Switch;
    EXPECT_EQ(shownForm(*shown), shown);
    const osg::ref_ptr<osg::OccluderNode> occluder = new osg::OccluderNode;
    EXPECT_NE(shownForm(*occluder), occluder);
}

TEST_F(NodeCheckTest, FilesMayAskForClassesThatAreShown) {
    for (const char* name : {"osg::Group", "osg::Geometry", "osg::Vec3Array", "osg::StateSet",
                             "osgAnimation::Bone", "osgText::Text", "osg::StringValueObject"})
        EXPECT_EQ(readClassFor(name), name);
    EXPECT_EQ(readClassFor("osg::OccluderNode"), "osg::Group");
    EXPECT_EQ(readClassFor("osgFX::Cartoon"), "osg::Group");
    EXPECT_EQ(readClassFor("osgSim::Impostor"), "osg::LOD");
    EXPECT_EQ(readClassFor("osgSim::ScalarBar"), "osg::Geode");
    EXPECT_EQ(readClassFor("osgParticle::ModularEmitter"), "osg::Node");
    EXPECT_EQ(readClassFor("osgParticle::ParticleSystem"), "osg::Object");
    EXPECT_EQ(readClassFor("osg::ShaderBinary"), "osg::Object");
    EXPECT_EQ(readClassFor("osgUtil::UpdateVisitor"), "osg::Object");
    EXPECT_EQ(readClassFor("nobody::Knows"), "nobody::Knows");
}

} // namespace orbisk::test
