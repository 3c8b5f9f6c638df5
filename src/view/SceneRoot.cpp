#include "view/SceneRoot.h"

#include "settings/RoamParameters.h"
#include "view/PreciseDrawing.h"
#include "view/Skybox.h"

#include <osg/Group>
#include <osg/Light>
#include <osg/LightSource>
#include <osg/NodeVisitor>
#include <osg/StateSet>
#include <osg/Texture>
#include <osgUtil/Optimizer>

namespace orbisk {

namespace {

constexpr unsigned int emptyRootGroups = 3;
constexpr double homeDistanceInRadii = 10.0;
constexpr float lightDistanceInRadii = 5.0f;

struct LightStyle {
    int number;
    float ambient;
    float diffuse;
    float side; ///< of the model on which the light stands: +1 above, -1 below
};

constexpr LightStyle upperLightStyle{0, 0.5f, 0.8f, 1.0f};
constexpr LightStyle lowerLightStyle{1, 0.1f, 0.1f, -1.0f};

osg::Vec4 grey(float level) {
    return {level, level, level, 1.0f};
}

osg::ref_ptr<osg::LightSource> makeLight(const LightStyle& style, double modelRadius) {
    const auto height = style.side * lightDistanceInRadii * static_cast<float>(modelRadius);
    osg::ref_ptr<osg::Light> light = new osg::Light(static_cast<unsigned int>(style.number));
    light->setAmbient(grey(style.ambient));
    light->setDiffuse(grey(style.diffuse));
    light->setPosition(osg::Vec4(0.0f, 0.0f, height, 1.0f));
    light->setDirection(osg::Vec3(0.0f, 0.0f, -style.side));
    osg::ref_ptr<osg::LightSource> source = new osg::LightSource;
    source->setLight(light);
    return source;
}

/// Lets textures keep their images once they are on the graphics card. The optimiser has them
/// dropped, but they are needed again for another canvas and for saving the model.
class ImageKeeper : public osg::NodeVisitor {
public:
    ImageKeeper() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Node& node) override {
        if (const osg::StateSet* state = node.getStateSet())
            for (const auto& unit : state->getTextureAttributeList())
                for (const auto& attribute : unit)
                    if (osg::Texture* texture = attribute.second.first->asTexture())
                        texture->setUnRefImageDataAfterApply(false);
        traverse(node);
    }
};

HomeView homeAbove(const osg::Vec3d& center, double sceneRadius) {
    const osg::Vec3d up(0, 1, 0);
    return {center + osg::Vec3d(0, 0, homeDistanceInRadii * sceneRadius), center, up};
}

} // namespace

SceneRoot::SceneRoot() : m_root(new osg::Switch) {}

HomeView SceneRoot::rebuild(osg::Node& model, osg::Camera& camera, bool skyShown) {
    // Picking and saving go by this very node: the optimiser must not put another in its place. It
    // never does with a geometry, which would count as one whose vertices may change.
    if (!model.asGeometry())
        model.setDataVariance(osg::Object::DYNAMIC);
    m_modelSwitch = new osg::Switch;
    m_modelSwitch->addChild(new osg::Group);
    m_modelSwitch->addChild(&model);
    const osg::BoundingSphere bound = model.getBound();
    const osg::Vec3d center = bound.center();
    const double radius = static_cast<double>(bound.radius());
    roamParameters().resetForModel(radius);

    clear();
    m_root->addChild(m_modelSwitch);
    const HomeView home = homeAbove(center, static_cast<double>(m_root->getBound().radius()));

    SkyboxPlacement placement;
    copyPlacement(placement, &camera, center);
    m_root->addChild(buildSkybox(placement), skyShown);
    for (unsigned int i = 0; i < emptyRootGroups; ++i)
        m_root->addChild(new osg::Group);
    addLights(radius);
    keepLargeOffsets(model);
    osgUtil::Optimizer().optimize(m_root.get());
    drawPrecisely(model);
    ImageKeeper keeper;
    m_root->accept(keeper);
    return home;
}

void SceneRoot::addLights(double modelRadius) {
    osg::StateSet* state = m_modelSwitch->getOrCreateStateSet();
    for (const auto mode : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1})
        state->setMode(static_cast<osg::StateAttribute::GLMode>(mode), osg::StateAttribute::ON);
    m_modelSwitch->addChild(makeLight(upperLightStyle, modelRadius));
    m_modelSwitch->addChild(makeLight(lowerLightStyle, modelRadius));
}

void SceneRoot::setSkyShown(bool shown) {
    if (skyboxChild < m_root->getNumChildren())
        m_root->setValue(skyboxChild, shown);
}

void SceneRoot::clear() {
    m_root->removeChildren(0, m_root->getNumChildren());
}

} // namespace orbisk
