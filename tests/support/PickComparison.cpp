#include "support/PickComparison.h"

#include "measure/IndexedVisitor.h"
#include "support/PickTools.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

constexpr int raysPerScene = 500;
constexpr unsigned int scenes = 18;

/// Compares the walk and the index on two equal scenes, for what is picked may change them.
void compareOnScene(const MakeScene& makeScene, const MakeRay& makeRay, unsigned int seed,
                    PickOutcome& outcome) {
    Random sceneRandom(seed);
    Random sameRandom(seed);
    const Scene walked = makeScene(sceneRandom);
    const Scene indexed = makeScene(sameRandom);
    PickIndex index;
    index.add(*indexed.model);
    index.finish();
    outcome.trees += static_cast<long>(index.treeCount());
    Random rays(seed + 1000);
    for (int i = 0; i < raysPerScene; ++i) {
        const PickRay ray = makeRay(rays, walked);
        const std::vector<osg::Vec3d> wanted = hitsOf(*walked.model, ray);
        const std::vector<osg::Vec3d> found = indexedHitsOf(*indexed.model, ray, index);
        ASSERT_TRUE(samePick(wanted, found))
            << "seed " << seed << ", ray " << i << ": " << wanted.size() << " hits, with the index "
            << found.size();
        ++outcome.rays;
        outcome.hits += wanted.empty() ? 0 : 1;
        outcome.pruned += found.size() < wanted.size() ? 1 : 0;
        if (!wanted.empty() && (wanted.front() - ray.origin) * ray.direction < 0)
            ++outcome.behind;
    }
}

} // namespace

std::vector<osg::Vec3d> indexedHitsOf(osg::Node& model, const PickRay& ray, PickIndex& index) {
    IndexedVisitor visitor(ray, index);
    model.accept(visitor);
    return visitor.hits().all();
}

PickOutcome expectSamePicks(const MakeScene& makeScene, const MakeRay& makeRay) {
    PickOutcome outcome;
    for (unsigned int seed = 1; seed <= scenes; ++seed) {
        compareOnScene(makeScene, makeRay, seed, outcome);
        if (testing::Test::HasFatalFailure())
            return outcome;
    }
    // The comparison is worth something only if there are trees, and if much is hit.
    EXPECT_GT(outcome.trees, 0);
    EXPECT_GT(outcome.hits, outcome.rays / 20);
    return outcome;
}

} // namespace orbisk::test
