#include "view/AnimationCheck.h"

#include "view/GeometryCheck.h"

#include <osg/AnimationPath>
#include <osgAnimation/AnimationManagerBase>
#include <osgAnimation/Channel>
#include <osgAnimation/MorphGeometry>
#include <osgAnimation/MorphTransformSoftware>
#include <osgAnimation/RigGeometry>
#include <osgAnimation/RigTransformSoftware>

#include <algorithm>
#include <cmath>
#include <typeinfo>

namespace orbisk {

namespace {

/// A callback within a callback and so on: nobody needs more.
constexpr int mostNestedCallbacks = 100;

template <typename Class, typename Object>
bool isExactly(const Object* object) {
    return object && typeid(*object) == typeid(Class);
}

std::size_t sizeOf(const osg::Array* array) {
    return array ? array->getNumElements() : 0;
}

/// An array whose class was taken for granted when it was read.
bool isOfVectors(const osg::Array* array) {
    return dynamic_cast<const osg::Vec3Array*>(array) != nullptr;
}

bool fits(const osgAnimation::MorphGeometry::MorphTarget& target, std::size_t vertices,
          std::size_t normals) {
    const osg::Geometry* geometry = target.getGeometry();
    if (!geometry || !std::isfinite(target.getWeight()))
        return false;
    const bool hasNormals = isOfVectors(geometry->getNormalArray());
    return sizeOf(geometry->getVertexArray()) >= vertices &&
           (!hasNormals || sizeOf(geometry->getNormalArray()) >= normals);
}

void checkMorph(osgAnimation::MorphGeometry& morph) {
    if (!isExactly<osgAnimation::MorphTransformSoftware>(morph.getMorphTransformImplementation()))
        morph.setMorphTransformImplementation(new osgAnimation::MorphTransformSoftware);
    if (!isOfVectors(morph.getVertexSource()))
        morph.setVertexSource(nullptr);
    if (!isOfVectors(morph.getNormalSource()))
        morph.setNormalSource(nullptr);
    const std::size_t vertices = sizeOf(morph.getVertexArray());
    const std::size_t normals = sizeOf(morph.getNormalArray());
    auto& targets = morph.getMorphTargetList();
    // Weights are set by number: without one of them the others would mean something else.
    if (!std::all_of(targets.begin(), targets.end(),
                     [=](const auto& target) { return fits(target, vertices, normals); }))
        targets.clear();
}

/// Whether a skin has a form that it can be laid over.
bool hasSource(osgAnimation::RigGeometry& rig) {
    osg::Geometry* source = rig.getSourceGeometry();
    const bool isMorph = isExactly<osgAnimation::MorphGeometry>(source);
    if (!isMorph && !isExactly<osg::Geometry>(source))
        return false;
    checkGeometry(*source);
    if (isMorph)
        checkMorph(static_cast<osgAnimation::MorphGeometry&>(*source));
    return isOfVectors(source->getVertexArray()) && sizeOf(source->getVertexArray()) > 0;
}

void checkRig(osgAnimation::RigGeometry& rig) {
    if (!isExactly<osgAnimation::RigTransformSoftware>(rig.getRigTransformImplementation()))
        rig.setRigTransformImplementation(new osgAnimation::RigTransformSoftware);
    if (!hasSource(rig)) {
        rig.setSourceGeometry(nullptr);
        rig.setUpdateCallback(nullptr);
        return;
    }
    if (!rig.getInfluenceMap())
        rig.setInfluenceMap(new osgAnimation::VertexInfluenceMap);
    const std::size_t vertices = sizeOf(rig.getSourceGeometry()->getVertexArray());
    for (auto& [bone, influence] : *rig.getInfluenceMap())
        influence.erase(std::remove_if(influence.begin(), influence.end(),
                                       [=](const osgAnimation::VertexIndexWeight& vertex) {
                                           return vertex.first >= vertices ||
                                                  !std::isfinite(vertex.second);
                                       }),
                        influence.end());
}

template <typename Vector>
bool areUsable(const Vector& vector, int size) {
    for (int i = 0; i < size; ++i)
        if (!isUsableCoordinate(vector[i]))
            return false;
    return true;
}

bool isUsable(const osg::AnimationPath& path) {
    const auto& points = path.getTimeControlPointMap();
    return std::all_of(points.begin(), points.end(), [](const auto& point) {
        return isUsableCoordinate(point.first) && areUsable(point.second.getPosition(), 3) &&
               areUsable(point.second.getScale(), 3) &&
               areUsable(point.second.getRotation().asVec4(), 4);
    });
}

void checkCallback(osg::Callback& callback) {
    if (auto* moving = dynamic_cast<osg::AnimationPathCallback*>(&callback)) {
        if (moving->getAnimationPath() && !isUsable(*moving->getAnimationPath()))
            moving->setAnimationPath(nullptr);
    } else if (auto* manager = dynamic_cast<osgAnimation::AnimationManagerBase*>(&callback)) {
        for (const auto& animation : manager->getAnimationList()) {
            auto& channels = animation->getChannels();
            channels.erase(std::remove_if(channels.begin(), channels.end(),
                                          [](const auto& channel) {
                                              const auto* sampler = channel->getSampler();
                                              const auto* keys =
                                                  sampler ? sampler->getKeyframeContainer()
                                                          : nullptr;
                                              return !keys || keys->size() == 0;
                                          }),
                           channels.end());
        }
    }
}

/// Looks at a callback and those within it, as far as there should be any.
void checkChain(osg::Callback* callback) {
    for (int count = 1; callback; ++count) {
        checkCallback(*callback);
        // One that contains itself would also never be deleted.
        if (count == mostNestedCallbacks)
            callback->setNestedCallback(nullptr);
        callback = callback->getNestedCallback();
    }
}

} // namespace

void checkAnimation(osg::Drawable& drawable) {
    if (auto* morph = dynamic_cast<osgAnimation::MorphGeometry*>(&drawable))
        checkMorph(*morph);
    else if (auto* rig = dynamic_cast<osgAnimation::RigGeometry*>(&drawable))
        checkRig(*rig);
}

void checkCallbacks(osg::Node& node) {
    checkChain(node.getUpdateCallback());
    checkChain(node.getEventCallback());
    checkChain(node.getCullCallback());
}

} // namespace orbisk
