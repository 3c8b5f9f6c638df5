#include "view/ModelCheck.h"

#include "view/GeometryCheck.h"

#include <osg/AutoTransform>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/LOD>
#include <osg/MatrixTransform>
#include <osg/PositionAttitudeTransform>
#include <osg/Projection>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orbisk {

namespace {

template <typename Vector>
bool areUsable(const Vector& vector, int size) {
    for (int i = 0; i < size; ++i)
        if (!isUsableCoordinate(static_cast<double>(vector[i])))
            return false;
    return true;
}

bool isUsable(const osg::Vec3d& vector) {
    return areUsable(vector, 3);
}

bool isUsable(const osg::Quat& rotation) {
    return areUsable(rotation, 4);
}

bool isUsable(const osg::Matrixd& matrix) {
    constexpr int elements = 16;
    return areUsable(matrix.ptr(), elements);
}

bool isUsable(const osg::BoundingSphere& sphere) {
    return isUsable(sphere.center()) && isUsableCoordinate(static_cast<double>(sphere.radius()));
}

/// Whether the numbers that place a transform's children make sense.
bool placesItsChildren(osg::Transform& transform) {
    if (const osg::MatrixTransform* matrix = transform.asMatrixTransform())
        return isUsable(matrix->getMatrix());
    if (const osg::PositionAttitudeTransform* place = transform.asPositionAttitudeTransform())
        return isUsable(place->getPosition()) && isUsable(place->getAttitude()) &&
               isUsable(place->getScale()) && isUsable(place->getPivotPoint());
    if (const auto* turned = dynamic_cast<const osg::AutoTransform*>(&transform))
        return isUsable(turned->getPosition()) && isUsable(turned->getRotation()) &&
               isUsable(turned->getScale()) && isUsable(turned->getPivotPoint());
    return true;
}

void checkNumbers(osg::LOD& lod) {
    if (isUsable(lod.getCenter()) && isUsableCoordinate(static_cast<double>(lod.getRadius())))
        return;
    lod.setCenterMode(osg::LOD::USE_BOUNDING_SPHERE_CENTER);
    lod.setCenter(osg::Vec3());
    lod.setRadius(-1.0f);
}

void checkNumbers(osg::Node& node) {
    if (node.getInitialBound().valid() && !isUsable(node.getInitialBound()))
        node.setInitialBound(osg::BoundingSphere());
    osg::Group* group = node.asGroup();
    if (!group)
        return;
    if (osg::Transform* transform = node.asTransform()) {
        if (!placesItsChildren(*transform))
            group->removeChildren(0, group->getNumChildren());
    } else if (auto* lod = dynamic_cast<osg::LOD*>(group)) {
        checkNumbers(*lod);
    } else if (const auto* projection = dynamic_cast<const osg::Projection*>(group)) {
        if (!isUsable(projection->getMatrix()))
            group->removeChildren(0, group->getNumChildren());
    }
}

/// Walks a model with a stack of its own, each node once.
class ModelWalk {
public:
    std::optional<std::string> run(osg::Node& model) {
        enter(model);
        while (!m_path.empty() && !m_fault)
            step();
        return m_fault;
    }

private:
    struct Facts {
        bool isOpen = true;     ///< the walk is below it
        std::size_t height = 1; ///< nodes on the longest path downwards
        std::size_t visits = 1; ///< nodes met by a walk from here
    };

    struct Place {
        osg::Group* group;
        unsigned int nextChild;
    };

    void enter(osg::Node& node) {
        checkNumbers(node);
        if (osg::Geometry* geometry = node.asGeometry())
            checkGeometry(*geometry);
        Facts& facts = m_facts[&node];
        osg::Group* group = node.asGroup();
        facts.isOpen = group != nullptr;
        if (!group)
            return;
        m_path.push_back({group, 0});
        if (m_path.size() > deepestModel)
            m_fault = "its nodes are nested too deeply";
    }

    void step() {
        Place& place = m_path.back();
        osg::Group* group = place.group;
        if (place.nextChild == group->getNumChildren()) {
            m_facts[group].isOpen = false;
            m_path.pop_back();
            if (!m_path.empty())
                add(*m_path.back().group, *group);
            return;
        }
        osg::Node& child = *group->getChild(place.nextChild++);
        const auto known = m_facts.find(&child);
        if (known != m_facts.end() && known->second.isOpen) {
            m_fault = "it contains itself";
            return;
        }
        if (known == m_facts.end())
            enter(child);
        if (!m_facts[&child].isOpen)
            add(*group, child);
    }

    /// Takes what is known of a finished child into its parent.
    void add(osg::Group& parent, osg::Node& child) {
        const Facts below = m_facts[&child];
        Facts& facts = m_facts[&parent];
        facts.height = std::max(facts.height, below.height + 1);
        facts.visits += below.visits;
        if (facts.height > deepestModel)
            m_fault = "its nodes are nested too deeply";
        if (facts.visits > mostVisits)
            m_fault = "too many paths lead through it";
    }

    std::unordered_map<const osg::Node*, Facts> m_facts;
    std::vector<Place> m_path;
    std::optional<std::string> m_fault;
};

/// Separates all nodes from each other: deleting them one inside the other takes a stack as deep as
/// they are, and those in a circle are never deleted.
void takeApart(osg::Node& model) {
    std::unordered_set<const osg::Node*> seen = {&model};
    std::vector<osg::ref_ptr<osg::Node>> nodes = {&model};
    while (!nodes.empty()) {
        const osg::ref_ptr<osg::Node> node = nodes.back();
        nodes.pop_back();
        osg::Group* group = node->asGroup();
        if (!group)
            continue;
        for (unsigned int i = 0; i < group->getNumChildren(); ++i)
            if (seen.insert(group->getChild(i)).second)
                nodes.emplace_back(group->getChild(i));
        group->removeChildren(0, group->getNumChildren());
    }
}

} // namespace

std::optional<std::string> checkModel(osg::Node& model) {
    std::optional<std::string> fault = ModelWalk().run(model);
    if (fault)
        takeApart(model);
    return fault;
}

} // namespace orbisk
