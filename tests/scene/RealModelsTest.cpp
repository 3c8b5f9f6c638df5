// Real models, each against what is known of it: opened, saved and opened again, picked, measured.

#include "support/RealModels.h"

#include "measure/IndexedVisitor.h"
#include "measure/IntersectionVisitor.h"
#include "measure/PickIndex.h"
#include "measure/PolygonMeasure.h"
#include "support/ChildProcess.h"
#include "support/PickTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelWriter.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

/// The list has nine digits of an area, and seven of a sphere, as the spheres themselves have.
constexpr double areaDigits = 2e-8;
constexpr double sphereDigits = 1e-6;

void expectSphere(const osg::BoundingSphere& bound, const osg::Vec3d& center, double radius,
                  double share) {
    EXPECT_EQ(bound.valid(), radius >= 0.0);
    if (radius < 0.0 || !bound.valid())
        return;
    const double tolerance = share * (radius + center.length());
    EXPECT_NEAR(static_cast<double>(bound.radius()), radius, tolerance);
    EXPECT_LE((osg::Vec3d(bound.center()) - center).length(), 2.0 * tolerance);
}

class RealModels : public RealModelsTest {
protected:
    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

/// How a model in `format` may differ from what was saved.
struct FormatLimits {
    const char* format;
    double area;   ///< as a share
    double sphere; ///< as a share; spheres of differently built trees differ in any case
    bool sameTree;
};

constexpr FormatLimits keptWhole[] = {{"osgb", 0.0, 0.0, true}, {"osgt", 1e-12, 1e-12, true}};
constexpr FormatLimits inFloats = {"obj", 1e-4, 1e-6, false};

void expectSameModel(osg::Node& saved, osg::Node& model, const FormatLimits& limits) {
    const ModelContents before = contentsOf(model);
    const ModelContents after = contentsOf(saved);
    // A reader may drop triangles that cannot be seen.
    EXPECT_LE(after.triangles, before.triangles);
    EXPECT_GE(after.triangles - after.flatTriangles, before.triangles - before.flatTriangles);
    if (limits.sameTree) {
        EXPECT_EQ(after.triangles, before.triangles);
    }
    EXPECT_EQ(after.points, before.points);
    EXPECT_NEAR(after.area, before.area, limits.area * before.area);
    ASSERT_EQ(after.box.valid(), before.box.valid());
    if (!before.box.valid())
        return;
    const double size = osg::Vec3d(before.box._max).length() + before.box.radius();
    EXPECT_LE((osg::Vec3d(after.box._min) - osg::Vec3d(before.box._min)).length(),
              limits.sphere * size);
    EXPECT_LE((osg::Vec3d(after.box._max) - osg::Vec3d(before.box._max)).length(),
              limits.sphere * size);
    if (limits.sameTree) {
        EXPECT_EQ(saved.getBound().center(), model.getBound().center());
        EXPECT_EQ(saved.getBound().radius(), model.getBound().radius());
    }
}

/// Rays through the middle of a model from all sides, and past it.
std::vector<PickRay> raysAt(const osg::BoundingSphere& bound) {
    const osg::Vec3d center = bound.center();
    const double radius = static_cast<double>(bound.radius());
    std::vector<PickRay> rays;
    for (int x = -1; x <= 1; ++x)
        for (int y = -1; y <= 1; ++y)
            for (int z = -1; z <= 1; ++z) {
                if (x == 0 && y == 0 && z == 0)
                    continue;
                const osg::Vec3d from = center + osg::Vec3d(x, y, z) * (3.0 * radius);
                const osg::Vec3d aside = osg::Vec3d(0.13 * y, 0.11 * z, 0.17 * x) * radius;
                rays.push_back(rayBetween(from, center));
                rays.push_back(rayBetween(from, center + aside));
            }
    return rays;
}

std::vector<osg::Vec3d> indexedHits(osg::Node& model, const PickRay& ray, PickIndex& index) {
    index.beginPick();
    IndexedVisitor visitor(ray, index);
    model.accept(visitor);
    return visitor.hits().all();
}

/// Measures a triangle of picked points, against its area by the cross product.
/// @return whether it has an area: an edge along an axis makes the polygon's cleaning take a corner
/// away.
bool expectMeasured(const MeasureArea& corners) {
    PolygonMeasure measure;
    std::vector<osg::Vec3d> fill;
    double area = 0.0;
    if (!measure.measureArea(corners, fill, area) || area == 0.0)
        return false;
    const osg::Vec3d normal = (corners[1] - corners[0]) ^ (corners[2] - corners[0]);
    const double size = (corners[1] - corners[0]).length() + (corners[2] - corners[0]).length();
    // Heron's formula loses half of the digits where the triangle is a sliver.
    EXPECT_NEAR(area, 0.5 * normal.length(), 1e-6 * size * size);
    return true;
}

/// The required picking takes only the innermost of nested transforms, so that the triangles of
/// these lie nowhere near what is seen.
bool liesElsewhere(const ModelFacts& facts) {
    return facts.file == "wrl/MotionCaptureROM.WRL";
}

/// The nearest hits of all rays that hit anything; what the index finds has the same bits.
MeasureArea pickedWithAndWithoutIndex(const std::string& file) {
    // Each way has its own model: a pick changes double vertices under a transform.
    const osg::ref_ptr<osg::Node> walked = readModel(file);
    const osg::ref_ptr<osg::Node> indexed = readModel(file);
    MeasureArea nearest;
    PickIndex index;
    index.add(*indexed);
    index.finish();
    for (const PickRay& ray : raysAt(walked->getBound())) {
        const std::vector<osg::Vec3d> slow = hitsOf(*walked, ray);
        const std::vector<osg::Vec3d> fast = indexedHits(*indexed, ray, index);
        EXPECT_TRUE(samePick(slow, fast));
        if (!slow.empty())
            nearest.push_back(slow.front());
    }
    return nearest;
}

/// What the list counts of this model although its mask hides it.
struct Hidden {
    std::size_t triangles = 0;
    double area = 0.0;
};

Hidden hiddenIn(const ModelFacts& facts) {
    return facts.file == "generated/scene_mix_a.osgt" ? Hidden{12, 6.0} : Hidden{};
}

/// The list has an area of what the library's reader makes of a file; of this one's coordinates it
/// loses digits.
double areaOf(const ModelFacts& facts) {
    return facts.file == "generated/tin_utm_textured.obj" ? 1459798.16 : *facts.area;
}

/// What these refer to is not found from where they were converted to.
bool refersToOthersBeside(const ModelFacts& facts) {
    return facts.file == "generated/proxy_a.osgt";
}

} // namespace

TEST_P(RealModels, AreWhatTheirListSays) {
    for (const ModelFacts& facts : models()) {
        SCOPED_TRACE(facts.file);
        const osg::ref_ptr<osg::Node> model = readModel(pathOf(facts).string());
        ASSERT_TRUE(model);
        expectSphere(model->getBound(), facts.center, facts.radius, sphereDigits);
        const ModelContents contents = contentsOf(*model);
        const Hidden hidden = hiddenIn(facts);
        EXPECT_EQ(contents.triangles + hidden.triangles, facts.triangles);
        if (facts.area) {
            EXPECT_NEAR(contents.area + hidden.area, areaOf(facts), areaDigits * areaOf(facts));
        }
    }
}

TEST_P(RealModels, AreWhatTheLibrarysOwnToolMakesOfThem) {
    for (const ModelFacts& facts : models()) {
        if (refersToOthersBeside(facts))
            continue;
        SCOPED_TRACE(facts.file);
        const std::string converted = "converted.osgb";
        fs::remove(converted);
        ChildProcess tool({"osgconv", pathOf(facts).string(), converted},
                          {{"OSG_OPTIMIZER", "OFF"}, {"OSG_NOTIFY_LEVEL", "FATAL"}});
        EXPECT_EQ(tool.wait(), 0) << tool.errorOutput();
        const osg::ref_ptr<osg::Node> theirs = readModel(converted);
        const osg::ref_ptr<osg::Node> ours = readModel(pathOf(facts).string());
        ASSERT_TRUE(theirs);
        ASSERT_TRUE(ours);
        expectSameModel(*ours, *theirs, inFloats);
    }
}

TEST_P(RealModels, ComeBackAsTheyWereSaved) {
    for (const ModelFacts& facts : models()) {
        const osg::ref_ptr<osg::Node> model = readModel(pathOf(facts).string());
        ASSERT_TRUE(model);
        const std::string source = pathOf(facts).parent_path().string();
        for (const FormatLimits& limits : keptWhole) {
            const std::string file = std::string("saved.") + limits.format;
            SCOPED_TRACE(facts.file + " as " + limits.format);
            EXPECT_TRUE(writeModel(*model, nullptr, file, source));
            const osg::ref_ptr<osg::Node> saved = readModel(file);
            EXPECT_TRUE(saved);
            if (saved)
                expectSameModel(*saved, *model, limits);
        }
    }
}

TEST_P(RealModels, ComeBackFromObjInTheSamePlace) {
    for (const ModelFacts& facts : models()) {
        SCOPED_TRACE(facts.file);
        const osg::ref_ptr<osg::Node> model = readModel(pathOf(facts).string());
        ASSERT_TRUE(model);
        const bool somethingToWrite = !contentsOf(*model).empty();
        const bool written =
            writeModel(*model, nullptr, "saved.obj", pathOf(facts).parent_path().string());
        EXPECT_EQ(written, somethingToWrite);
        if (!written)
            continue;
        const osg::ref_ptr<osg::Node> saved = readModel("saved.obj");
        EXPECT_TRUE(saved);
        if (saved)
            expectSameModel(*saved, *model, inFloats);
    }
}

TEST_P(RealModels, ArePickedTheSameWithTheIndexAndWithout) {
    int picked = 0;
    int measured = 0;
    bool expectsAny = false;
    for (const ModelFacts& facts : models()) {
        if (facts.triangles == 0)
            continue;
        SCOPED_TRACE(facts.file);
        const MeasureArea points = pickedWithAndWithoutIndex(pathOf(facts).string());
        for (std::size_t i = 0; i + 3 <= points.size(); i += 3)
            measured += expectMeasured({points[i], points[i + 1], points[i + 2]}) ? 1 : 0;
        picked += points.empty() ? 0 : 1;
        expectsAny = expectsAny || !liesElsewhere(facts);
    }
    if (expectsAny) {
        EXPECT_GT(picked, 0);
        EXPECT_GT(measured, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(All, RealModels, testing::ValuesIn(realModelFolders), realModelFolderName);

} // namespace orbisk::test
