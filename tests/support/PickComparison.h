#pragma once

#include "measure/PickIndex.h"
#include "support/PickScenes.h"

#include <functional>
#include <vector>

namespace orbisk::test {

using MakeScene = std::function<Scene(Random&)>;
using MakeRay = std::function<PickRay(Random&, const Scene&)>;

/// What a comparison was made of, which tells what it is worth.
struct PickOutcome {
    long rays = 0;
    long hits = 0;   ///< rays that hit anything
    long trees = 0;  ///< of all scenes
    long behind = 0; ///< rays whose first hit lies behind the origin
    long pruned = 0; ///< rays of which the index told fewer hits than the walk
};

/// What picking with the index finds along a ray.
std::vector<osg::Vec3d> indexedHitsOf(osg::Node& model, const PickRay& ray, PickIndex& index);

/// Expects that the index picks the same as the walk, to the bit: along many rays in many scenes,
/// in which there must be trees, and enough hits.
PickOutcome expectSamePicks(const MakeScene& makeScene, const MakeRay& makeRay = anyOrGrazingRay);

} // namespace orbisk::test
