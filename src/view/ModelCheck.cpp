#include "view/ModelCheck.h"

#include "view/AnimationCheck.h"
#include "view/GeometryCheck.h"
#include "view/NodeCheck.h"
#include "view/StateCheck.h"

#include <osg/Geometry>
#include <osg/Group>

#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orbisk {

namespace {

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
        checkNode(node);
        checkCallbacks(node);
        if (osg::Geometry* geometry = node.asGeometry())
            checkGeometry(*geometry);
        if (osg::Drawable* drawable = node.asDrawable())
            checkAnimation(*drawable);
        if (osg::StateSet* state = node.getStateSet(); state && m_states.insert(state).second)
            checkState(*state);
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
        osg::Node& child = shownChild(*group, place.nextChild++);
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

    /// The child at `index`, with what is shown for it in its place.
    osg::Node& shownChild(osg::Group& group, unsigned int index) {
        const osg::ref_ptr<osg::Node> child = group.getChild(index);
        const auto known = m_forms.find(child);
        const osg::ref_ptr<osg::Node> form =
            known != m_forms.end() ? known->second : shownForm(*child);
        if (form == child)
            return *child;
        m_forms.emplace(child, form);
        group.setChild(index, form);
        return *form;
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
    std::map<osg::ref_ptr<osg::Node>, osg::ref_ptr<osg::Node>> m_forms; ///< of what is not shown
    std::unordered_set<const osg::StateSet*> m_states;
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
