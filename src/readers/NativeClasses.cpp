#include "readers/NativeClasses.h"

#include <osgDB/ObjectWrapper>
#include <osgDB/Registry>

#include <set>

namespace orbisk {

namespace {

using Names = std::set<std::string>;

constexpr const char* nothing = "osg::Object";

const Names shownNodes = {"osg::AutoTransform",
                          "osg::Billboard",
                          "osg::Camera",
                          "osg::CameraView",
                          "osg::ClearNode",
                          "osg::ClipNode",
                          "osg::CoordinateSystemNode",
                          "osg::Drawable",
                          "osg::Geode",
                          "osg::Geometry",
                          "osg::Group",
                          "osg::LOD",
                          "osg::LightSource",
                          "osg::MatrixTransform",
                          "osg::Node",
                          "osg::PagedLOD",
                          "osg::PositionAttitudeTransform",
                          "osg::Projection",
                          "osg::ProxyNode",
                          "osg::Sequence",
                          "osg::ShapeDrawable",
                          "osg::Switch",
                          "osg::TexGenNode",
                          "osg::Transform",
                          "osgAnimation::Bone",
                          "osgAnimation::MorphGeometry",
                          "osgAnimation::RigGeometry",
                          "osgAnimation::Skeleton",
                          "osgSim::DOFTransform",
                          "osgSim::LightPointNode",
                          "osgSim::MultiSwitch",
                          "osgTerrain::Terrain",
                          "osgTerrain::TerrainTile",
                          "osgText::FadeText",
                          "osgText::Text",
                          "osgText::Text3D"};

/// Kits whose nodes are shown; what belongs to them is read.
const Names readKits = {"osg", "osgAnimation", "osgSim", "osgTerrain", "osgText"};

/// What is no node, and is not read either: it runs something, or the graphics card or the library
/// follows its numbers where nobody can look at them before.
const Names unreadHelpers = {"osg::AtomicCounterBufferBinding",
                             "osg::AudioSink",
                             "osg::AudioStream",
                             "osg::BindImageTexture",
                             "osg::BufferIndexBinding",
                             "osg::CallbackObject",
                             "osg::ConvexPlanarOccluder",
                             "osg::DefaultIndirectCommandDrawArrays",
                             "osg::DefaultIndirectCommandDrawElements",
                             "osg::DrawArraysIndirect",
                             "osg::DrawElementsIndirect",
                             "osg::DrawIndirectBufferObject",
                             "osg::MultiDrawArrays",
                             "osg::MultiDrawArraysIndirect",
                             "osg::NodeTrackerCallback",
                             "osg::NodeVisitor",
                             "osg::Script",
                             "osg::ScriptNodeCallback",
                             "osg::ShaderAttribute",
                             "osg::ShaderBinary",
                             "osg::ShaderStorageBufferBinding",
                             "osg::TextureBuffer",
                             "osg::TransformFeedbackBufferBinding",
                             "osg::UniformBufferBinding",
                             "osgAnimation::MorphTransformHardware",
                             "osgAnimation::RigTransformHardware",
                             "osgAnimation::Timeline",
                             "osgAnimation::TimelineAnimationManager",
                             "osgTerrain::DisplacementMappingTechnique"};

bool isKnownKit(const std::string& className) {
    return readKits.count(className.substr(0, className.find("::"))) != 0;
}

} // namespace

bool isShownClass(const std::string& className) {
    return shownNodes.count(className) != 0;
}

std::string readClassFor(const std::string& className) {
    if (isShownClass(className))
        return className;
    osgDB::ObjectWrapper* wrapper =
        osgDB::Registry::instance()->getObjectWrapperManager()->findWrapper(className);
    if (!wrapper)
        return className;
    std::string shownBase;
    bool isNode = false;
    for (const auto& base : wrapper->getAssociates()) {
        isNode = isNode || base._name == "osg::Node" || base._name == "osg::Drawable";
        // A drawable that is nothing more draws nothing.
        if (isShownClass(base._name) && base._name != "osg::Drawable")
            shownBase = base._name;
    }
    if (isNode)
        return shownBase.empty() ? nothing : shownBase;
    return isKnownKit(className) && unreadHelpers.count(className) == 0 ? className : nothing;
}

} // namespace orbisk
