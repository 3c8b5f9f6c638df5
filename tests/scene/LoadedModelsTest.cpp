#include "support/ModeTools.h"
#include "support/ModelFacts.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelUpdateCallback.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/Geometry>
#include <osg/NodeVisitor>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

/// The library's own update of this old skeleton crashes, so it is loaded only.
constexpr const char* crashesWhenAnimated = "osg/example.osg";

constexpr long mostBytes = 1'500'000;

/// Gathers the geometries that the display mode is for.
class GeometryCollector : public osg::NodeVisitor {
public:
    GeometryCollector() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { setNodeMaskOverride(~0u); }

    void apply(osg::Geometry& geometry) override { geometries.push_back(&geometry); }

    std::vector<osg::Geometry*> geometries;
};

/// Loads a model the way the program does, shows it for some frames and in another mode.
void loadAndShow(osg::Node& model) {
    const osg::ref_ptr<ModelUpdateCallback> callback = new ModelUpdateCallback;
    callback->attachTo(model);
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    SceneRoot scene;
    const HomeView home = scene.rebuild(model, *camera, true);
    EXPECT_TRUE(home.eye.valid());
    ASSERT_EQ(scene.root()->getNumChildren(), 5u);
    ASSERT_EQ(scene.modelSwitch()->getNumChildren(), 4u);
    EXPECT_EQ(scene.modelSwitch()->getChild(SceneRoot::modelChild), &model);
    Frames frames;
    frames.update(*scene.root(), 2);
    callback->mode = DisplayMode::Gray;
    frames.update(*scene.root());
    GeometryCollector collector;
    model.accept(collector);
    for (const osg::Geometry* geometry : collector.geometries)
        EXPECT_TRUE(shows(*geometry, DisplayMode::Gray));
    scene.clear();
}

void expectSphere(const osg::BoundingSphere& bound, const ModelFacts& facts) {
    const double size = std::max(std::fabs(facts.radius), 1e-6);
    // The table has some seven digits, as the spheres themselves have.
    const double tolerance = 2e-4 * size + 1e-6 * facts.center.length();
    EXPECT_NEAR(static_cast<double>(bound.radius()), facts.radius, tolerance);
    if (facts.radius >= 0.0) {
        EXPECT_LT((osg::Vec3d(bound.center()) - facts.center).length(), tolerance);
    }
}

class LoadedModelsTest : public testing::Test {
protected:
    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

class SampleModelTest : public testing::TestWithParam<const char*> {
protected:
    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

} // namespace

TEST_P(SampleModelTest, LoadsAndShows) {
    const fs::path file = fs::path(ORBISK_STAGE_DIR) / "samples" / GetParam();
    ASSERT_TRUE(fs::exists(file));
    const osg::ref_ptr<osg::Node> model = readModel(file.string());
    ASSERT_NE(model, nullptr);
    EXPECT_GT(model->getBound().radius(), 0.0f);
    GeometryCollector collector;
    model->accept(collector);
    EXPECT_FALSE(collector.geometries.empty());
    loadAndShow(*model);
}

INSTANTIATE_TEST_SUITE_P(Stage, SampleModelTest,
                         testing::Values("valley.osgb", "valley.obj", "scan.osgb", "assembly.osgt",
                                         "tiles.osgb"),
                         [](const auto& file) {
                             std::string name = file.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

TEST_F(LoadedModelsTest, RealModelsLoadWithTheirKnownExtent) {
    const char* folder = std::getenv("ORBISK_MODELS");
    if (!folder)
        GTEST_SKIP() << "ORBISK_MODELS names no folder of real models";
    int loaded = 0;
    for (const ModelFacts& facts : readModelFacts(folder)) {
        if (facts.bytes > mostBytes)
            continue;
        SCOPED_TRACE(facts.file);
        const osg::ref_ptr<osg::Node> model = readModel((fs::path(folder) / facts.file).string());
        EXPECT_NE(model, nullptr);
        if (!model)
            continue;
        expectSphere(model->getBound(), facts);
        if (facts.file != crashesWhenAnimated)
            loadAndShow(*model);
        ++loaded;
    }
    EXPECT_GT(loaded, 20);
}

} // namespace orbisk::test
