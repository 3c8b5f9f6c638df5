#include "view/ModelUpdateCallback.h"

#include <osg/CopyOp>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/NodeVisitor>

namespace orbisk {

namespace {

constexpr unsigned int texturedUnits = 4; ///< units 0 to 3 follow the mode

enum PolygonModeIndex { pointsIndex, linesIndex, filledIndex };

osg::ref_ptr<osg::PolygonMode> makePolygonMode(osg::PolygonMode::Mode mode) {
    return new osg::PolygonMode(osg::PolygonMode::FRONT_AND_BACK, mode);
}

} // namespace

/// Stands as a node's bounding-sphere callback and notes that the sphere was computed anew, which
/// happens after any child below was added, removed or replaced.
class ModelUpdateCallback::BoundWatch : public osg::Node::ComputeBoundingSphereCallback {
public:
    osg::BoundingSphere computeBound(const osg::Node& node) const override {
        m_changed = true;
        return m_original.valid() ? m_original->computeBound(node) : node.computeBound();
    }

    void putOn(osg::Node& node) {
        m_original = node.getComputeBoundingSphereCallback();
        node.setComputeBoundingSphereCallback(this);
    }

    void takeOff(osg::Node& node) {
        node.setComputeBoundingSphereCallback(m_original.get());
        m_original = nullptr;
    }

    void noteChange() const { m_changed = true; }

    /// Whether the subtree changed since the last call.
    bool takeChange() const {
        const bool changed = m_changed;
        m_changed = false;
        return changed;
    }

private:
    osg::ref_ptr<osg::Node::ComputeBoundingSphereCallback> m_original;
    mutable bool m_changed = true;
};

ModelUpdateCallback::ModelUpdateCallback()
    : m_polygonModes{makePolygonMode(osg::PolygonMode::POINT),
                     makePolygonMode(osg::PolygonMode::LINE),
                     makePolygonMode(osg::PolygonMode::FILL)} {}

ModelUpdateCallback::~ModelUpdateCallback() = default;

void ModelUpdateCallback::operator()(osg::Node* node, osg::NodeVisitor* visitor) {
    if (walkIsDue(*node)) {
        apply(node);
        m_appliedMode = mode;
        m_updatesSinceWalk = 0;
    }
    // An update visitor does not enter a subtree in which nothing wants updating either.
    const bool nothingBelow = visitor->getVisitorType() == osg::NodeVisitor::UPDATE_VISITOR &&
                              node->getNumChildrenRequiringUpdateTraversal() == 0 &&
                              !getNestedCallback();
    if (!nothingBelow)
        traverse(node, visitor);
}

void ModelUpdateCallback::apply(osg::Node* node) {
    Walk walk;
    applyBelow(node, walk);
}

void ModelUpdateCallback::attachTo(osg::Node& node) {
    node.setUpdateCallback(this);
}

void ModelUpdateCallback::detachFrom(osg::Node& node) {
    if (node.getUpdateCallback() == this)
        node.setUpdateCallback(nullptr);
    if (auto* watch = dynamic_cast<BoundWatch*>(node.getComputeBoundingSphereCallback()))
        watch->takeOff(node);
    m_watch = nullptr;
}

/// The watch of this node. Each node keeps its own: it stands for the callback the node had.
ModelUpdateCallback::BoundWatch& ModelUpdateCallback::watchOn(osg::Node& node) {
    osg::Node::ComputeBoundingSphereCallback* current = node.getComputeBoundingSphereCallback();
    if (!m_watch || current != m_watch) {
        m_watch = dynamic_cast<BoundWatch*>(current);
        if (!m_watch) {
            m_watch = new BoundWatch;
            m_watch->putOn(node);
        }
        m_watch->noteChange();
    }
    return *m_watch;
}

bool ModelUpdateCallback::walkIsDue(osg::Node& node) {
    BoundWatch& watch = watchOn(node);
    node.getBound();
    ++m_updatesSinceWalk;
    return watch.takeChange() || mode != m_appliedMode || m_updatesSinceWalk >= updatesBetweenWalks;
}

void ModelUpdateCallback::applyBelow(osg::Node* node, Walk& walk) const {
    if (!node)
        return;
    if (osg::Geometry* geometry = node->asGeometry()) {
        applyToGeometry(*geometry, walk);
    } else if (osg::Group* group = node->asGroup()) {
        for (unsigned int i = 0; i < group->getNumChildren(); ++i)
            applyBelow(group->getChild(i), walk);
    }
}

void ModelUpdateCallback::applyToGeometry(osg::Geometry& geometry, Walk& walk) const {
    const osg::StateSet* current = geometry.getStateSet();
    if (current && current == walk.lastRight)
        return;
    if (shows(current)) {
        walk.lastRight = current;
        return;
    }
    osg::ref_ptr<osg::StateSet>& copy = walk.copies[current];
    if (!copy) {
        copy = current ? new osg::StateSet(*current, osg::CopyOp::SHALLOW_COPY) : new osg::StateSet;
        copy->setAttribute(polygonMode());
        const auto textures = texturesOn() ? osg::StateAttribute::ON : osg::StateAttribute::OFF;
        for (unsigned int unit = 0; unit < texturedUnits; ++unit)
            copy->setTextureMode(unit, GL_TEXTURE_2D, textures);
    }
    geometry.setStateSet(copy);
}

osg::PolygonMode* ModelUpdateCallback::polygonMode() const {
    switch (mode) {
    case DisplayMode::PointCloud:
        return m_polygonModes[pointsIndex].get();
    case DisplayMode::Tin:
        return m_polygonModes[linesIndex].get();
    default:
        return m_polygonModes[filledIndex].get();
    }
}

bool ModelUpdateCallback::texturesOn() const {
    return mode != DisplayMode::Gray;
}

bool ModelUpdateCallback::shows(const osg::StateSet* stateSet) const {
    if (!stateSet || stateSet->getAttribute(osg::StateAttribute::POLYGONMODE) != polygonMode())
        return false;
    const osg::StateAttribute::GLModeValue textures =
        texturesOn() ? osg::StateAttribute::ON : osg::StateAttribute::OFF;
    for (unsigned int unit = 0; unit < texturedUnits; ++unit)
        if (stateSet->getTextureMode(unit, GL_TEXTURE_2D) != textures)
            return false;
    return true;
}

} // namespace orbisk
