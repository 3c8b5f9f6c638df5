#include "view/SceneRoot.h"

#include "settings/RoamParameters.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelUpdateCallback.h"
#include "view/Skybox.h"

#include <gtest/gtest.h>
#include <osg/Light>
#include <osg/LightSource>
#include <osg/MatrixTransform>
#include <osg/observer_ptr>

#include <cmath>
#include <typeinfo>

namespace orbisk::test {

namespace {

constexpr float modelSide = 200.0f;
const osg::Vec3 modelCenter(1000, -2000, 300);

/// A model with the program's callback on it, as a load hands it over.
osg::ref_ptr<osg::Node> makeModel(const osg::Vec3& center = modelCenter, float side = modelSide) {
    osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(makeQuadGeode(side, center));
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(*model);
    return model;
}

/// What the library gives a light of that number.
osg::Vec4 usualSpecular(unsigned int number) {
    const osg::ref_ptr<osg::Light> light = new osg::Light(number);
    return light->getSpecular();
}

class SceneRootTest : public testing::Test {
protected:
    SceneRootTest() : m_camera(new osg::Camera) {}

    HomeView rebuild(osg::Node& model, bool skyShown = true) {
        return m_scene.rebuild(model, *m_camera, skyShown);
    }

    const osg::Light* light(unsigned int child) const {
        const auto* source =
            dynamic_cast<const osg::LightSource*>(m_scene.modelSwitch()->getChild(child));
        return source ? source->getLight() : nullptr;
    }

    void expectLayout(const osg::Node* model) {
        const osg::Switch* root = m_scene.root();
        ASSERT_EQ(root->getNumChildren(), 5u);
        EXPECT_EQ(root->getChild(0), m_scene.modelSwitch());
        const osg::Node* sky = root->getChild(1);
        EXPECT_NE(dynamic_cast<const osg::MatrixTransform*>(sky), nullptr);
        EXPECT_NE(dynamic_cast<const TransformCallback*>(sky->getUpdateCallback()), nullptr);
        for (unsigned int i = 2; i < 5; ++i) {
            EXPECT_EQ(typeid(*root->getChild(i)), typeid(osg::Group)) << i;
            EXPECT_EQ(root->getChild(i)->asGroup()->getNumChildren(), 0u) << i;
            EXPECT_TRUE(root->getValue(i)) << i;
        }
        EXPECT_TRUE(root->getValue(0));
        const osg::Switch* modelSwitch = m_scene.modelSwitch();
        ASSERT_EQ(modelSwitch->getNumChildren(), 4u);
        EXPECT_EQ(typeid(*modelSwitch->getChild(0)), typeid(osg::Group));
        EXPECT_EQ(modelSwitch->getChild(0)->asGroup()->getNumChildren(), 0u);
        EXPECT_EQ(modelSwitch->getChild(1), model);
        EXPECT_NE(light(2), nullptr);
        EXPECT_NE(light(3), nullptr);
        for (unsigned int i = 0; i < 4; ++i)
            EXPECT_TRUE(modelSwitch->getValue(i)) << i;
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    osg::ref_ptr<osg::Camera> m_camera;
    SceneRoot m_scene;
};

} // namespace

TEST_F(SceneRootTest, GeometryAloneStaysInItsPlaceAndCountsAsUnchanging) {
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode(modelSide, modelCenter);
    const osg::ref_ptr<osg::Geometry> geometry = geode->getDrawable(0)->asGeometry();
    geode->removeDrawables(0);
    rebuild(*geometry);
    EXPECT_EQ(m_scene.modelSwitch()->getChild(SceneRoot::modelChild), geometry);
    EXPECT_NE(geometry->getDataVariance(), osg::Object::DYNAMIC);
}

TEST_F(SceneRootTest, IsEmptyBeforeTheFirstModel) {
    ASSERT_NE(m_scene.root(), nullptr);
    EXPECT_EQ(m_scene.root()->getNumChildren(), 0u);
    EXPECT_EQ(m_scene.modelSwitch(), nullptr);
    m_scene.setSkyShown(true);
    m_scene.clear();
    EXPECT_EQ(m_scene.root()->getNumChildren(), 0u);
}

TEST_F(SceneRootTest, LayoutHoldsAfterTheOptimiser) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    rebuild(*model);
    expectLayout(model);
}

TEST_F(SceneRootTest, LayoutHoldsAroundASampleModel) {
    const osg::ref_ptr<osg::Node> model = readModel(ORBISK_STAGE_DIR "/samples/assembly.osgt");
    if (!model)
        GTEST_SKIP() << "the sample models are not built";
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(*model);
    rebuild(*model);
    expectLayout(model);
}

TEST_F(SceneRootTest, LayoutHoldsAroundATransformThatCouldBeFlattened) {
    const osg::ref_ptr<osg::MatrixTransform> model =
        new osg::MatrixTransform(osg::Matrixd::translate(10, 0, 0));
    model->setDataVariance(osg::Object::STATIC);
    model->addChild(makeQuadGeode());
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(*model);
    rebuild(*model);
    expectLayout(model);
    EXPECT_EQ(model->getMatrix(), osg::Matrixd::translate(10, 0, 0));
}

TEST_F(SceneRootTest, LayoutHoldsAroundAnEmptyModel) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(*model);
    const HomeView home = rebuild(*model);
    expectLayout(model);
    EXPECT_TRUE(home.eye.valid());
    EXPECT_TRUE(home.center.valid());
}

TEST_F(SceneRootTest, LayoutHoldsAroundAGeometry) {
    const osg::ref_ptr<osg::Geometry> model = makeQuad();
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(*model);
    rebuild(*model);
    expectLayout(model);
}

TEST_F(SceneRootTest, ModelSwitchTurnsLightsOn) {
    rebuild(*makeModel());
    const osg::StateSet* state = m_scene.modelSwitch()->getStateSet();
    ASSERT_NE(state, nullptr);
    const osg::StateSet::ModeList wanted{{GL_LIGHTING, osg::StateAttribute::ON},
                                         {GL_LIGHT0, osg::StateAttribute::ON},
                                         {GL_LIGHT1, osg::StateAttribute::ON}};
    EXPECT_EQ(state->getModeList(), wanted);
}

TEST_F(SceneRootTest, UpperLightShinesDownFromFiveRadii) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    const float radius = model->getBound().radius();
    rebuild(*model);
    const osg::Light* upper = light(SceneRoot::upperLight);
    ASSERT_NE(upper, nullptr);
    EXPECT_EQ(upper->getLightNum(), 0);
    EXPECT_EQ(upper->getAmbient(), osg::Vec4(0.5f, 0.5f, 0.5f, 1.0f));
    EXPECT_EQ(upper->getDiffuse(), osg::Vec4(0.8f, 0.8f, 0.8f, 1.0f));
    EXPECT_EQ(upper->getSpecular(), usualSpecular(0));
    EXPECT_EQ(upper->getPosition(), osg::Vec4(0, 0, 5.0f * radius, 1));
    EXPECT_EQ(upper->getDirection(), osg::Vec3(0, 0, -1));
}

TEST_F(SceneRootTest, LowerLightShinesUpFromFiveRadii) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    const float radius = model->getBound().radius();
    rebuild(*model);
    const osg::Light* lower = light(SceneRoot::lowerLight);
    ASSERT_NE(lower, nullptr);
    EXPECT_EQ(lower->getLightNum(), 1);
    EXPECT_EQ(lower->getAmbient(), osg::Vec4(0.1f, 0.1f, 0.1f, 1.0f));
    EXPECT_EQ(lower->getDiffuse(), osg::Vec4(0.1f, 0.1f, 0.1f, 1.0f));
    EXPECT_EQ(lower->getSpecular(), usualSpecular(1));
    EXPECT_EQ(lower->getPosition(), osg::Vec4(0, 0, -5.0f * radius, 1));
    EXPECT_EQ(lower->getDirection(), osg::Vec3(0, 0, 1));
}

TEST_F(SceneRootTest, SkyThatIsOffIsBuiltAllTheSame) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    rebuild(*model, false);
    expectLayout(model);
    EXPECT_FALSE(m_scene.root()->getValue(SceneRoot::skyboxChild));
    rebuild(*model, true);
    EXPECT_TRUE(m_scene.root()->getValue(SceneRoot::skyboxChild));
}

TEST_F(SceneRootTest, SwitchingTheSkyNeverRebuildsIt) {
    rebuild(*makeModel(), false);
    const osg::ref_ptr<osg::Node> sky = m_scene.root()->getChild(SceneRoot::skyboxChild);
    for (const bool shown : {true, false, false, true}) {
        m_scene.setSkyShown(shown);
        EXPECT_EQ(m_scene.root()->getValue(SceneRoot::skyboxChild), shown);
        EXPECT_EQ(m_scene.root()->getChild(SceneRoot::skyboxChild), sky);
        EXPECT_TRUE(m_scene.root()->getValue(SceneRoot::modelSwitchChild));
    }
}

TEST_F(SceneRootTest, SkyStandsAroundTheModelsCentre) {
    m_camera->setViewMatrix(osg::Matrixd::translate(-modelCenter + osg::Vec3(0, 0, -50)));
    rebuild(*makeModel());
    Frames().update(*m_scene.root());
    const auto* sky =
        dynamic_cast<osg::MatrixTransform*>(m_scene.root()->getChild(SceneRoot::skyboxChild));
    ASSERT_NE(sky, nullptr);
    EXPECT_LT((sky->getMatrix().getTrans() - osg::Vec3d(modelCenter)).length(), 1e-3);
    EXPECT_NEAR(sky->getMatrix()(0, 0), 500.0, 1e-2);
}

TEST_F(SceneRootTest, HomeIsTenRadiiAboveTheModel) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    const auto radius = static_cast<double>(model->getBound().radius());
    const HomeView home = rebuild(*model);
    EXPECT_EQ(home.center, osg::Vec3d(modelCenter));
    EXPECT_EQ(home.eye.x(), home.center.x());
    EXPECT_EQ(home.eye.y(), home.center.y());
    // Neither the sky, which is a unit sphere elsewhere so far, nor the lights push the eye away.
    EXPECT_NEAR(home.eye.z() - home.center.z(), 10.0 * radius, 1e-4 * radius);
    EXPECT_EQ(home.up, osg::Vec3d(0, 1, 0));
}

TEST_F(SceneRootTest, HomeDoesNotDependOnTheFormerModel) {
    rebuild(*makeModel(osg::Vec3(-5e4f, 0, 0), 1e4f));
    const HomeView home = rebuild(*makeModel());
    SceneRoot fresh;
    const HomeView wanted = fresh.rebuild(*makeModel(), *m_camera, true);
    EXPECT_EQ(home.eye, wanted.eye);
    EXPECT_EQ(home.center, wanted.center);
}

TEST_F(SceneRootTest, RoamIsResetFromTheModelsRadius) {
    roamParameters() = {1, 2, 3, 4, 5, 6};
    const osg::ref_ptr<osg::Node> model = makeModel();
    const auto radius = static_cast<double>(model->getBound().radius());
    rebuild(*model);
    EXPECT_EQ(roamParameters().modelRadius, radius);
    EXPECT_EQ(roamParameters().height, radius);
    EXPECT_EQ(roamParameters().secondsPerMetre, 10.0 / radius);
    EXPECT_EQ(roamParameters().roll, 4);
    EXPECT_EQ(roamParameters().pitch, 5);
    EXPECT_EQ(roamParameters().yaw, 6);
}

TEST_F(SceneRootTest, ModelWithoutExtentGivesAnInfinitePace) {
    rebuild(*makeModel(osg::Vec3(1, 2, 3), 0.0f));
    EXPECT_EQ(roamParameters().modelRadius, 0.0);
    EXPECT_TRUE(std::isinf(roamParameters().secondsPerMetre));
    EXPECT_GT(roamParameters().secondsPerMetre, 0.0);
}

TEST_F(SceneRootTest, SameModelCanBeBuiltAroundAgain) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    const HomeView first = rebuild(*model);
    const osg::BoundingSphere bound = model->getBound();
    const osg::observer_ptr<osg::Switch> formerSwitch = m_scene.modelSwitch();
    const HomeView second = rebuild(*model);
    expectLayout(model);
    EXPECT_FALSE(formerSwitch.valid());
    EXPECT_EQ(model->getNumParents(), 1u);
    EXPECT_EQ(model->getBound().center(), bound.center());
    EXPECT_EQ(model->getBound().radius(), bound.radius());
    EXPECT_EQ(second.eye, first.eye);
}

TEST_F(SceneRootTest, NothingOfTheFormerModelIsLeft) {
    osg::ref_ptr<osg::Node> model = makeModel();
    rebuild(*model);
    const osg::observer_ptr<osg::Node> modelSeen = model;
    const osg::observer_ptr<osg::Switch> switchSeen = m_scene.modelSwitch();
    const osg::observer_ptr<osg::Node> skySeen = m_scene.root()->getChild(SceneRoot::skyboxChild);
    const osg::observer_ptr<osg::Node> groupSeen = m_scene.root()->getChild(4);
    model = makeModel(osg::Vec3(1, 1, 1), 5.0f);
    rebuild(*model);
    expectLayout(model);
    EXPECT_FALSE(modelSeen.valid());
    EXPECT_FALSE(switchSeen.valid());
    EXPECT_FALSE(skySeen.valid());
    EXPECT_FALSE(groupSeen.valid());
    EXPECT_EQ(light(2)->getPosition().z(), 5.0f * model->getBound().radius());
}

TEST_F(SceneRootTest, RootStaysTheSameForEveryModel) {
    const osg::ref_ptr<osg::Switch> root = m_scene.root();
    rebuild(*makeModel());
    rebuild(*makeModel());
    EXPECT_EQ(m_scene.root(), root);
}

TEST_F(SceneRootTest, ClearingLetsCameraAndSceneGo) {
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    osg::observer_ptr<osg::Switch> rootSeen;
    const osg::observer_ptr<osg::Camera> cameraSeen = camera;
    {
        SceneRoot scene;
        camera->addChild(scene.root());
        rootSeen = scene.root();
        scene.rebuild(*makeModel(), *camera, true);
        scene.clear();
        EXPECT_EQ(scene.root()->getNumChildren(), 0u);
    }
    camera = nullptr;
    EXPECT_FALSE(cameraSeen.valid());
    EXPECT_FALSE(rootSeen.valid());
}

} // namespace orbisk::test
