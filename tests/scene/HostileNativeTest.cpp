#include "damage/Damage.h"
#include "damage/LookOutcome.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osg/Billboard>
#include <osg/MatrixTransform>
#include <osg/Sequence>
#include <osg/ShapeDrawable>
#include <osg/Switch>
#include <osg/Uniform>
#include <osgAnimation/BasicAnimationManager>
#include <osgAnimation/Bone>
#include <osgAnimation/Channel>
#include <osgAnimation/MorphGeometry>
#include <osgAnimation/RigGeometry>
#include <osgAnimation/Skeleton>
#include <osgDB/WriteFile>
#include <osgSim/LightPointNode>
#include <osgSim/MultiSwitch>
#include <osgTerrain/Layer>
#include <osgTerrain/TerrainTile>
#include <osgText/Text>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace orbisk::test {

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// A model and words of its text that are replaced in its file.
struct Hostile {
    osg::ref_ptr<osg::Node> model;
    std::vector<std::pair<std::string, std::string>> changes = {};
    std::function<void()> release = [] {}; ///< opens what goes in a circle once it is written
};

using MakeHostile = Hostile (*)();

struct Case {
    const char* name;
    MakeHostile make;
    const char* outcome = "looked at";
};

void PrintTo(const Case& hostile, std::ostream* stream) {
    *stream << hostile.name;
}

template <typename Node>
osg::ref_ptr<Node> withChildren(osg::ref_ptr<Node> parent, int count) {
    for (int i = 0; i < count; ++i)
        parent->addChild(makeQuadGeode(2.0f, osg::Vec3(static_cast<float>(i), 0, 0)));
    return parent;
}

osg::ref_ptr<osg::Billboard> billboard(int drawables) {
    osg::ref_ptr<osg::Billboard> result = new osg::Billboard;
    for (int i = 0; i < drawables; ++i)
        result->addDrawable(makeQuad(), osg::Vec3(static_cast<float>(i), 0, 0));
    return result;
}

std::string positions(int count) {
    std::string text = "PositionList " + std::to_string(count) + " {\n";
    for (int i = 0; i < count; ++i)
        text += "1 2 3\n";
    return text + "}\n";
}

Hostile billboardWithMorePositions() {
    // What stands behind the vector is overwritten by each position that no drawable has.
    return {billboard(2), {{"PositionList 2 {", positions(100'000) + "Other 1 {"}}};
}

Hostile billboardWithFewerPositions() {
    const osg::ref_ptr<osg::Billboard> model = billboard(2000);
    model->getPositionList().resize(1);
    return {model};
}

osg::ref_ptr<osg::Geode> shapeModel(osg::Shape* shape) {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(shape));
    return geode;
}

osg::ref_ptr<osg::HeightField> heightField(unsigned int columns, unsigned int rows) {
    osg::ref_ptr<osg::HeightField> field = new osg::HeightField;
    field->allocate(columns, rows);
    return field;
}

Hostile heightFieldOfOverflowingArea() {
    return {shapeModel(heightField(4, 4)), {{"Area 4 4", "Area 65536 65536"}}};
}

Hostile heightFieldOfAbsurdArea() {
    return {shapeModel(heightField(4, 4)), {{"Area 4 4", "Area 60000 60000"}}};
}

Hostile heightFieldWithFewerHeights() {
    return {shapeModel(heightField(4, 4)), {{"Area 4 4", "Area 3000 3000"}}};
}

Hostile heightFieldOfOneColumn() {
    return {shapeModel(heightField(1, 4))};
}

Hostile triangleMeshBeyondItsVertices() {
    // What the library writes of a mesh it does not read.
    const char* mesh =
        "osg::TriangleMesh {\n UniqueID 900\n Vertices ArrayID 901 Vec3fArray 3 {\n 0 0 "
        "0\n 1 0 0\n 0 1 0\n }\n Indices ArrayID 902 UIntArray 3 {\n 0 1 "
        "900000000\n }\n }\n";
    return {shapeModel(new osg::Sphere), {{"osg::Sphere {", std::string(mesh) + "osg::Unknown {"}}};
}

Hostile compositeShapeInsideItself() {
    const osg::ref_ptr<osg::CompositeShape> composite = new osg::CompositeShape;
    const osg::ref_ptr<osg::CompositeShape> inner = new osg::CompositeShape;
    composite->addChild(inner);
    const osg::ref_ptr<osg::Geode> geode = shapeModel(composite);
    inner->addChild(composite);
    return {geode, {}, [inner] { inner->removeChild(0u); }};
}

Hostile callbackInsideItself() {
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    const osg::ref_ptr<osg::NodeCallback> callback = new osg::NodeCallback;
    geode->setUpdateCallback(callback);
    callback->setNestedCallback(callback);
    return {geode, {}, [callback] { callback->setNestedCallback(nullptr); }};
}

Hostile shapeOfAbsurdDetail() {
    const osg::ref_ptr<osg::Geode> geode = shapeModel(new osg::Sphere);
    const osg::ref_ptr<osg::TessellationHints> hints = new osg::TessellationHints;
    hints->setDetailRatio(2.0f);
    dynamic_cast<osg::ShapeDrawable&>(*geode->getDrawable(0)).setTessellationHints(hints);
    return {geode, {{"DetailRatio 2", "DetailRatio 5000"}}};
}

Hostile switchWithFewerValues() {
    const osg::ref_ptr<osg::Switch> model = withChildren<osg::Switch>(new osg::Switch, 4000);
    model->setValueList({true});
    return {model};
}

Hostile multiSwitchWithFewerValues() {
    const osg::ref_ptr<osgSim::MultiSwitch> model =
        withChildren<osgSim::MultiSwitch>(new osgSim::MultiSwitch, 4000);
    model->setValueList(0, {true});
    return {model};
}

osg::ref_ptr<osg::Sequence> sequence() {
    osg::ref_ptr<osg::Sequence> model = withChildren<osg::Sequence>(new osg::Sequence, 3);
    model->setMode(osg::Sequence::START);
    return model;
}

Hostile sequenceBeyondItsFrames() {
    const osg::ref_ptr<osg::Sequence> model = sequence();
    model->setInterval(osg::Sequence::LOOP, 100'000'000, 200'000'000);
    return {model};
}

Hostile sequenceWithoutTime() {
    const osg::ref_ptr<osg::Sequence> model = sequence();
    for (unsigned int i = 0; i < 3; ++i)
        model->setTime(i, 0.0);
    model->setSync(true);
    model->setDuration(0.0f);
    return {model};
}

osg::ref_ptr<osgAnimation::RigGeometry> rig(int lastVertex, float weight) {
    osg::ref_ptr<osgAnimation::RigGeometry> geometry = new osgAnimation::RigGeometry;
    const osg::ref_ptr<osg::Geometry> source = makeQuad();
    // Normals that do not go with the vertices would leave the skin as it is.
    source->setNormalArray(nullptr);
    geometry->setSourceGeometry(source);
    const osg::ref_ptr<osgAnimation::VertexInfluenceMap> map = new osgAnimation::VertexInfluenceMap;
    osgAnimation::VertexInfluence& influence = (*map)["bone"];
    influence.setName("bone");
    for (const int vertex : {0, 1, 2, lastVertex})
        influence.emplace_back(vertex, weight);
    geometry->setInfluenceMap(map);
    return geometry;
}

Hostile skeletonWith(osg::Drawable* drawable) {
    const osg::ref_ptr<osgAnimation::Skeleton> skeleton = new osgAnimation::Skeleton;
    skeleton->setDefaultUpdateCallback();
    skeleton->addChild(new osgAnimation::Bone("bone"));
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(drawable);
    skeleton->addChild(geode);
    return {skeleton};
}

Hostile skeletonBeyondTheVertices() {
    return skeletonWith(rig(100'000'000, 1.0f));
}

Hostile skeletonOfWrongWeights() {
    const osg::ref_ptr<osgAnimation::RigGeometry> geometry = rig(3, notANumber);
    auto& influence = (*geometry->getInfluenceMap())["bone"];
    for (int i = 0; i < 10'000; ++i)
        influence.emplace_back(0, i % 3 == 0 ? notANumber : static_cast<float>(i % 7));
    return skeletonWith(geometry);
}

Hostile skeletonWithoutSource() {
    const osg::ref_ptr<osgAnimation::RigGeometry> geometry = rig(3, 1.0f);
    geometry->setSourceGeometry(nullptr);
    return skeletonWith(geometry);
}

Hostile skeletonWithSourceWithoutVertices() {
    const osg::ref_ptr<osgAnimation::RigGeometry> geometry = rig(3, 1.0f);
    geometry->getSourceGeometry()->setVertexArray(nullptr);
    return skeletonWith(geometry);
}

Hostile skeletonOfIndicesBeyondTheSource() {
    const osg::ref_ptr<osgAnimation::RigGeometry> geometry = rig(3, 1.0f);
    geometry->getSourceGeometry()->addPrimitiveSet(
        new osg::DrawArrays(GL_TRIANGLES, 0, 900'000'000));
    return skeletonWith(geometry);
}

Hostile skeletonMovedByAnotherClass() {
    Hostile hostile = skeletonWith(rig(3, 1.0f));
    hostile.changes = {{"osgAnimation::RigTransformSoftware", "osgAnimation::Animation"}};
    return hostile;
}

osg::ref_ptr<osgAnimation::MorphGeometry> morph(unsigned int vertices) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    osg::ref_ptr<osgAnimation::MorphGeometry> geometry = new osgAnimation::MorphGeometry(*quad);
    const osg::ref_ptr<osg::Geometry> target = makeQuad(3.0f);
    target->setVertexArray(new osg::Vec3Array(vertices));
    target->setNormalArray(new osg::Vec3Array(vertices), osg::Array::BIND_PER_VERTEX);
    geometry->addMorphTarget(target, 0.5f);
    return geometry;
}

Hostile morphOfShortTargets() {
    const osg::ref_ptr<osgAnimation::MorphGeometry> geometry = morph(0);
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(geometry);
    return {geode};
}

Hostile morphOfNormalsOfAnotherKind() {
    const osg::ref_ptr<osgAnimation::MorphGeometry> geometry = morph(4);
    geometry->setNormalArray(new osg::Vec3bArray(4), osg::Array::BIND_PER_VERTEX);
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(geometry);
    return {geode};
}

Hostile animationWithoutKeys() {
    const osg::ref_ptr<osgAnimation::BasicAnimationManager> manager =
        new osgAnimation::BasicAnimationManager;
    const osg::ref_ptr<osgAnimation::Animation> animation = new osgAnimation::Animation;
    const osg::ref_ptr<osgAnimation::FloatLinearChannel> channel =
        new osgAnimation::FloatLinearChannel;
    channel->getOrCreateSampler()->getOrCreateKeyframeContainer()->push_back(
        osgAnimation::FloatKeyframe(1.0, 2.0f));
    channel->setTargetName("bone");
    channel->setName("x");
    animation->addChannel(channel);
    manager->registerAnimation(animation);
    Hostile hostile = skeletonWith(rig(3, 1.0f));
    hostile.model->setUpdateCallback(manager);
    hostile.changes = {{"KeyFrameContainer TRUE 1 {\n", "KeyFrameContainer TRUE 0 {\n#"}};
    return hostile;
}

Hostile uniform(const std::string& elements) {
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    geode->getOrCreateStateSet()->addUniform(new osg::Uniform("name", 1.0f));
    return {geode, {{"NumElements 1", "NumElements " + elements}}};
}

Hostile uniformOfAbsurdSize() {
    return uniform("2000000000");
}

Hostile uniformOfOverflowingSize() {
    Hostile hostile = uniform("268435457");
    hostile.changes.emplace_back("Type FLOAT", "Type FLOAT_MAT4");
    return hostile;
}

osg::ref_ptr<osgText::Text> label() {
    osg::ref_ptr<osgText::Text> text = new osgText::Text;
    text->setText("label");
    return text;
}

Hostile textOfAbsurdResolution() {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    const osg::ref_ptr<osgText::Text> text = label();
    text->setFontResolution(33, 34);
    geode->addDrawable(text);
    return {geode, {{"FontSize 33 34", "FontSize 60000 60000"}}};
}

Hostile textOfNoSize() {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    const osg::ref_ptr<osgText::Text> text = label();
    text->setCharacterSize(notANumber, notANumber);
    text->setMaximumWidth(notANumber);
    text->setPosition(osg::Vec3(notANumber, 0, 0));
    geode->addDrawable(text);
    return {geode};
}

Hostile lightPoints(float pixels, const osg::ref_ptr<osgSim::BlinkSequence>& blinking) {
    const osg::ref_ptr<osgSim::LightPointNode> node = new osgSim::LightPointNode;
    osgSim::LightPoint point;
    point._radius = 1e18f;
    point._blinkSequence = blinking;
    node->addLightPoint(point);
    node->setMaxPixelSize(pixels);
    return {node};
}

Hostile lightPointsOfAbsurdSize() {
    return lightPoints(1e9f, nullptr);
}

Hostile lightPointsThatBlinkWithoutPulses() {
    return lightPoints(10.0f, new osgSim::BlinkSequence);
}

Hostile terrainLayerOfAbsurdNumber() {
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    tile->setColorLayer(0, new osgTerrain::ImageLayer(makeImage({1, 2, 3, 4})));
    return {tile, {{"Layer 0", "Layer 4294967295"}}};
}

Hostile drawableThatIsThereTwice() {
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    const osg::ref_ptr<osg::Geometry> quad = geode->getDrawable(0)->asGeometry();
    for (int i = 0; i < 40; ++i)
        quad->addPrimitiveSet(new osg::DrawArrays(GL_POINTS, 0, 4));
    geode->addDrawable(quad);
    return {geode};
}

Hostile levelsAboveIndicesBeyondTheVertices() {
    const osg::ref_ptr<osg::LOD> levels = new osg::LOD;
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    const GLuint corners[] = {0, 1, 900'000'000};
    geode->getDrawable(0)->asGeometry()->addPrimitiveSet(
        new osg::DrawElementsUInt(GL_TRIANGLES, 3, corners));
    levels->addChild(geode, 0.0f, 1e6f);
    return {levels};
}

Hostile terrainWithoutAPlace() {
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    tile->setElevationLayer(new osgTerrain::HeightFieldLayer(heightField(4, 4)));
    return {tile};
}

Hostile terrainWithoutLayers() {
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    return {tile};
}

constexpr Case cases[] = {
    {"BillboardWithMorePositions", billboardWithMorePositions},
    {"BillboardWithFewerPositions", billboardWithFewerPositions},
    {"HeightFieldOfOverflowingArea", heightFieldOfOverflowingArea},
    {"HeightFieldOfAbsurdArea", heightFieldOfAbsurdArea},
    {"HeightFieldWithFewerHeights", heightFieldWithFewerHeights},
    {"HeightFieldOfOneColumn", heightFieldOfOneColumn},
    {"TriangleMeshBeyondItsVertices", triangleMeshBeyondItsVertices},
    {"CompositeShapeInsideItself", compositeShapeInsideItself},
    {"ShapeOfAbsurdDetail", shapeOfAbsurdDetail},
    {"CallbackInsideItself", callbackInsideItself},
    {"SwitchWithFewerValues", switchWithFewerValues},
    {"MultiSwitchWithFewerValues", multiSwitchWithFewerValues},
    {"SequenceBeyondItsFrames", sequenceBeyondItsFrames},
    {"SequenceWithoutTime", sequenceWithoutTime},
    {"SkeletonBeyondTheVertices", skeletonBeyondTheVertices},
    {"SkeletonOfWrongWeights", skeletonOfWrongWeights},
    {"SkeletonWithoutSource", skeletonWithoutSource},
    {"SkeletonWithSourceWithoutVertices", skeletonWithSourceWithoutVertices},
    {"SkeletonOfIndicesBeyondTheSource", skeletonOfIndicesBeyondTheSource},
    {"SkeletonMovedByAnotherClass", skeletonMovedByAnotherClass},
    {"MorphOfShortTargets", morphOfShortTargets},
    {"MorphOfNormalsOfAnotherKind", morphOfNormalsOfAnotherKind},
    {"AnimationWithoutKeys", animationWithoutKeys, "refused"},
    {"UniformOfAbsurdSize", uniformOfAbsurdSize, "refused"},
    {"UniformOfOverflowingSize", uniformOfOverflowingSize, "refused"},
    {"TerrainLayerOfAbsurdNumber", terrainLayerOfAbsurdNumber, "refused"},
    {"DrawableThatIsThereTwice", drawableThatIsThereTwice},
    {"LevelsAboveIndicesBeyondTheVertices", levelsAboveIndicesBeyondTheVertices},
    {"TerrainWithoutAPlace", terrainWithoutAPlace},
    {"TerrainWithoutLayers", terrainWithoutLayers},
    {"TextOfAbsurdResolution", textOfAbsurdResolution},
    {"TextOfNoSize", textOfNoSize},
    {"LightPointsOfAbsurdSize", lightPointsOfAbsurdSize},
    {"LightPointsThatBlinkWithoutPulses", lightPointsThatBlinkWithoutPulses},
};

/// A bit of everything that is shown, with numbers that make sense.
osg::ref_ptr<osg::Group> everything() {
    osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(billboard(3));
    model->addChild(shapeModel(heightField(4, 3)));
    model->addChild(shapeModel(new osg::Capsule));
    model->addChild(withChildren<osg::Switch>(new osg::Switch, 3));
    const osg::ref_ptr<osgSim::MultiSwitch> multi =
        withChildren<osgSim::MultiSwitch>(new osgSim::MultiSwitch, 3);
    multi->setAllChildrenOn(1);
    model->addChild(multi);
    model->addChild(sequence());
    model->addChild(skeletonWith(rig(3, 0.5f)).model);
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(morph(4));
    geode->addDrawable(label());
    geode->getOrCreateStateSet()->addUniform(new osg::Uniform("name", osg::Vec3(1, 2, 3)));
    addTexture(*geode->getOrCreateStateSet(), makeImage({1, 2, 3, 4}));
    model->addChild(geode);
    const osg::ref_ptr<osgSim::BlinkSequence> blinking = new osgSim::BlinkSequence;
    blinking->addPulse(1.0, osg::Vec4(1, 1, 1, 1));
    model->addChild(lightPoints(10.0f, blinking).model);
    const osg::ref_ptr<osg::LOD> lod = new osg::LOD;
    lod->addChild(makeQuadGeode(), 0.0f, 1e6f);
    model->addChild(lod);
    return model;
}

class HostileNativeTest : public testing::Test {
protected:
    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

class HostileCaseTest : public HostileNativeTest, public testing::WithParamInterface<Case> {};

} // namespace

TEST_P(HostileCaseTest, EndsAsItShould) {
    const Hostile hostile = GetParam().make();
    ASSERT_TRUE(osgDB::writeNodeFile(*hostile.model, "hostile.osgt"));
    hostile.release();
    std::string text = readFile("hostile.osgt");
    for (const auto& [from, to] : hostile.changes) {
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from << " in " << text;
        text.replace(place, from.size(), to);
    }
    writeFile("hostile.osgt", text);
    const LookOutcome outcome = lookAt(ORBISK_LOOK_AT_MODEL, "hostile.osgt", "messages");
    EXPECT_EQ(outcome.text(), GetParam().outcome) << "\n" << readFile("messages").substr(0, 2000);
}

INSTANTIATE_TEST_SUITE_P(Case, HostileCaseTest, testing::ValuesIn(cases),
                         [](const auto& hostile) { return std::string(hostile.param.name); });

TEST_F(HostileNativeTest, NothingOfWhatIsShownBreaksWithWrongNumbers) {
    const osg::ref_ptr<osg::Group> model = everything();
    constexpr std::uint64_t tries = 60;
    for (const std::string name : {"model.osgt", "model.osgb"}) {
        const osg::ref_ptr<osgDB::Options> options =
            new osgDB::Options("WriteImageHint=IncludeData");
        ASSERT_TRUE(osgDB::writeNodeFile(*model, name, options));
        const std::string good = readFile(name);
        EXPECT_EQ(lookAt(ORBISK_LOOK_AT_MODEL, name, "messages").text(), "looked at") << name;
        for (std::uint64_t seed = 0; seed < tries; ++seed) {
            writeFile("damaged" + name, damagedMeaning(good, seed));
            const LookOutcome outcome = lookAt(ORBISK_LOOK_AT_MODEL, "damaged" + name, "messages");
            EXPECT_TRUE(outcome.isSafe()) << name << ", " << seed << ": " << outcome.text();
        }
    }
}

} // namespace orbisk::test
