#pragma once

#include "view/DisplayMode.h"

#include <osg/NodeCallback>
#include <osg/PolygonMode>
#include <osg/StateSet>
#include <osg/ref_ptr>

#include <array>
#include <unordered_map>

namespace osg {
class Geometry;
}

namespace orbisk {

/// Shows the model it is attached to in a display mode. One callback serves every model of a run.
///
/// The mode is kept right for whatever the model becomes (tiles paged in, children replaced), at
/// next to no cost while neither the mode nor the subtree changes: a change below dirties the
/// model's bounding sphere, and that is watched. What no bounding sphere tells (a child of a camera
/// inside the model, a state set somebody replaces) is found by a walk that comes round every
/// `updatesBetweenWalks` updates.
///
/// A draw thread may still be drawing the last frame when a mode is applied. State sets are
/// therefore replaced by changed copies, never changed in place; geometries that shared a state
/// set share its copy.
///
/// Main thread only, except for the constructor.
class ModelUpdateCallback : public osg::NodeCallback {
public:
    ModelUpdateCallback();

    /// After so many update traversals the subtree is looked at whether it seems changed or not.
    static constexpr int updatesBetweenWalks = 16;

    /// The update operation: applies the mode to `node` where that is needed, then continues the
    /// traversal.
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override;

    /// Applies the current mode to every geometry at and below `node` (null: nothing happens).
    void apply(osg::Node* node);

    /// Takes this callback and its watch off `node`, so that the node can be written to a file;
    /// `attachTo` puts them back.
    void detachFrom(osg::Node& node);

    /// Makes this the update callback of `node`, in place of any it had.
    void attachTo(osg::Node& node);

    DisplayMode mode = DisplayMode::AsLoaded;

protected:
    ~ModelUpdateCallback() override;

private:
    class BoundWatch;
    /// What one walk remembers: the copies it made, by the state set (null included) they replace,
    /// and the last state set it found right, for geometries that share one follow each other.
    struct Walk {
        std::unordered_map<const osg::StateSet*, osg::ref_ptr<osg::StateSet>> copies;
        const osg::StateSet* lastRight = nullptr;
    };

    BoundWatch& watchOn(osg::Node& node);
    bool walkIsDue(osg::Node& node);
    void applyBelow(osg::Node* node, Walk& walk) const;
    void applyToGeometry(osg::Geometry& geometry, Walk& walk) const;
    osg::PolygonMode* polygonMode() const;
    bool texturesOn() const;
    bool shows(const osg::StateSet* stateSet) const;

    std::array<osg::ref_ptr<osg::PolygonMode>, 3> m_polygonModes; ///< points, lines, filled
    osg::ref_ptr<BoundWatch> m_watch;
    DisplayMode m_appliedMode = DisplayMode::AsLoaded;
    int m_updatesSinceWalk = 0;
};

} // namespace orbisk
