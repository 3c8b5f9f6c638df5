#pragma once

#include "view/ModelUpdateCallback.h"

#include <gtest/gtest.h>
#include <osg/Geometry>
#include <osg/PolygonMode>

#include <climits>

namespace orbisk::test {

/// Modes that the table of display modes does not have; they behave as `AsLoaded`.
inline constexpr int unknownModes[] = {3, 4, 5, 7, -1, 100, INT_MAX, INT_MIN};

/// The polygon mode that belongs to a display mode.
inline osg::PolygonMode::Mode polygonModeOf(DisplayMode mode) {
    switch (mode) {
    case DisplayMode::PointCloud:
        return osg::PolygonMode::POINT;
    case DisplayMode::Tin:
        return osg::PolygonMode::LINE;
    default:
        return osg::PolygonMode::FILL;
    }
}

/// Whether `node`'s own state set is what a display mode asks for.
inline testing::AssertionResult shows(const osg::Node& node, DisplayMode mode) {
    const osg::StateSet* state = node.getStateSet();
    if (!state)
        return testing::AssertionFailure() << "no state set";
    const auto* polygons = dynamic_cast<const osg::PolygonMode*>(
        state->getAttribute(osg::StateAttribute::POLYGONMODE));
    if (!polygons)
        return testing::AssertionFailure() << "no polygon mode";
    const osg::PolygonMode::Mode wanted = polygonModeOf(mode);
    if (polygons->getMode(osg::PolygonMode::FRONT) != wanted ||
        polygons->getMode(osg::PolygonMode::BACK) != wanted || !polygons->getFrontAndBack())
        return testing::AssertionFailure() << "polygon mode is not " << wanted << " on both faces";
    for (unsigned int unit = 0; unit < 4; ++unit) {
        const unsigned int textures = mode == DisplayMode::Gray ? 0 : 1;
        if (state->getTextureMode(unit, GL_TEXTURE_2D) != textures)
            return testing::AssertionFailure()
                   << "texturing of unit " << unit << " is "
                   << state->getTextureMode(unit, GL_TEXTURE_2D) << ", not " << textures;
    }
    return testing::AssertionSuccess();
}

} // namespace orbisk::test
