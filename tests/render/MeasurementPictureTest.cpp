#include "measure/MeasurementDrawing.h"
#include "support/KnownModel.h"
#include "support/OffScreenView.h"
#include "support/Pictures.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/MatrixTransform>
#include <osg/Notify>

#include <algorithm>
#include <limits>
#include <string>

namespace orbisk::test {

namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr double fovy = 14.0;

constexpr float faint = 0.02f;
const osg::Vec3 background(0.8f, 0.8f, 0.8f);
const osg::Vec3 pureBlue(0, 0, 1);
const osg::Vec3 unmeasuredRed(0.8f, 0.2f, 0);

/// A colour over another.
osg::Vec3 blend(const osg::Vec3& colour, float alpha, const osg::Vec3& below) {
    return colour * alpha + below * (1.0f - alpha);
}

bool near(const osg::Vec3& colour, const osg::Vec3& wanted) {
    return (colour - wanted).length() < faint;
}

/// Places around the known model, above, on and below its hills.
const osg::Vec3d west(-12, -8, 4);
const osg::Vec3d middle(0, 6, -6);
const osg::Vec3d east(13, -9, 2);
const osg::Vec3d north(3, 15, 10);
const osg::Vec3d south(2, -16, 0);

class MeasurementPictureTest : public testing::Test {
protected:
    MeasurementPictureTest() : m_view(width, height, fovy), m_drawing(m_set) {
        m_view.setScene(m_scene.root());
    }

    /// Shows a model from its home.
    void show(osg::Node& model) {
        m_model = &model;
        const HomeView home = m_scene.rebuild(model, m_view.camera(), false);
        m_drawing.setModelSwitch(m_scene.modelSwitch());
        m_view.camera().setViewMatrixAsLookAt(home.eye, home.center, home.up);
    }

    void showKnownModel() { show(*makeKnownModel()); }

    void hideModel() { m_scene.modelSwitch()->setValue(SceneRoot::modelChild, false); }

    osg::Matrixd toWindow() {
        const osg::Camera& camera = m_view.camera();
        return camera.getViewMatrix() * camera.getProjectionMatrix() *
               camera.getViewport()->computeWindowMatrix();
    }

    /// Where a place in the world is seen, in pixels.
    osg::Vec2d onScreen(const osg::Vec3d& place) {
        const osg::Vec3d window = place * toWindow();
        return {window.x(), window.y()};
    }

    /// The colour at a place in the world.
    osg::Vec3 colourAt(const osg::Image& picture, const osg::Vec3d& place) {
        const osg::Vec2d spot = onScreen(place);
        return pixel(picture, static_cast<int>(spot.x()), static_cast<int>(spot.y()));
    }

    /// A picture after what the library sets once, with its first frame, is set.
    osg::ref_ptr<osg::Image> settled() {
        m_view.draw();
        return m_view.draw();
    }

    struct DepthRange {
        double nearest = 0;
        double farthest = 0;
    };

    /// What the viewer fitted to the scene with the last frame; it writes it into the camera.
    DepthRange depthRange() {
        double fovyNow = 0;
        double aspect = 0;
        DepthRange range;
        m_view.camera().getProjectionMatrixAsPerspective(fovyNow, aspect, range.nearest,
                                                         range.farthest);
        return range;
    }

    /// The place on the near plane under a pixel.
    osg::Vec3d onNearPlane(double x, double y) {
        return osg::Vec3d(x, y, 0) * osg::Matrixd::inverse(toWindow());
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    OffScreenView m_view;
    SceneRoot m_scene;
    MeasurementSet m_set;
    MeasurementDrawing m_drawing;
    osg::ref_ptr<osg::Node> m_model;
};

/// The middle of the pixels that a picture has of a colour.
osg::Vec2d middleOf(const osg::Image& picture, const osg::Vec3& colour) {
    osg::Vec2d sum;
    int count = 0;
    for (int y = 0; y < picture.t(); ++y)
        for (int x = 0; x < picture.s(); ++x)
            if (near(pixel(picture, x, y), colour)) {
                sum += osg::Vec2d(x + 0.5, y + 0.5);
                ++count;
            }
    return count ? sum / count : osg::Vec2d(-1, -1);
}

int countOf(const osg::Image& picture, const osg::Vec3& colour) {
    return countPixels(picture, [&](const osg::Vec3& found) { return near(found, colour); });
}

bool equal(const osg::Image& one, const osg::Image& other) {
    return one.getTotalSizeInBytes() == other.getTotalSizeInBytes() &&
           std::equal(one.data(), one.data() + one.getTotalSizeInBytes(), other.data());
}

/// Counts what the library says while it lives.
class MessageCount : public osg::NotifyHandler {
public:
    void notify(osg::NotifySeverity, const char*) override { ++count; }

    int count = 0;
};

} // namespace

TEST_F(MeasurementPictureTest, PointsAreTranslucentSquares) {
    showKnownModel();
    m_set.points = {west, middle, east, north};
    m_drawing.drawPoints(3);
    EXPECT_TRUE(looksLikeReference(*m_view.draw(), "measured-points"));
    hideModel();
    const osg::ref_ptr<osg::Image> alone = m_view.draw();
    EXPECT_EQ(countOf(*alone, blend(pureBlue, 0.3f, background)), 4 * 10 * 10);
}

TEST_F(MeasurementPictureTest, SinglePointIsNotTooSmallToBeSeen) {
    showKnownModel();
    hideModel();
    m_set.points = {middle};
    m_drawing.drawPoints(0);
    const osg::ref_ptr<osg::Image> picture = m_view.draw();
    const osg::Vec3 colour = blend(pureBlue, 0.3f, background);
    EXPECT_EQ(countOf(*picture, colour), 10 * 10);
    EXPECT_LT((middleOf(*picture, colour) - onScreen(middle)).length(), 1.0);
}

TEST_F(MeasurementPictureTest, LinesAreBlueAndOpen) {
    showKnownModel();
    m_set.lines = {{west, middle, east}, {north, south}};
    m_drawing.drawLine(1);
    const osg::ref_ptr<osg::Image> picture = m_view.draw();
    EXPECT_TRUE(looksLikeReference(*picture, "measured-lines"));
    EXPECT_TRUE(near(colourAt(*picture, (west + middle) / 2), pureBlue));
    EXPECT_TRUE(near(colourAt(*picture, (north + south) / 2), pureBlue));
    EXPECT_FALSE(near(colourAt(*picture, west * 0.7 + east * 0.3), pureBlue));
}

TEST_F(MeasurementPictureTest, MeasuredAreaIsFilled) {
    showKnownModel();
    m_set.areas = {{west, north, middle}, {west, south, east, north}};
    m_set.areaTriangles = {west, south, east, west, east, north};
    m_drawing.drawArea(0, false);
    m_drawing.drawArea(1, true);
    EXPECT_TRUE(looksLikeReference(*m_view.draw(), "measured-area"));
    hideModel();
    const osg::ref_ptr<osg::Image> alone = m_view.draw();
    const osg::Vec3 fill = blend(osg::Vec3(0.8f, 0.5f, 0), 0.5f, background);
    EXPECT_TRUE(near(colourAt(*alone, (west + south + east) / 3), fill));
    EXPECT_GT(countOf(*alone, pureBlue), 100);
    EXPECT_GT(countOf(*alone, unmeasuredRed), 50);
    EXPECT_TRUE(near(colourAt(*alone, osg::Vec3d(16, 16, 0)), background));
}

TEST_F(MeasurementPictureTest, FillLiesUnderAllOutlines) {
    showKnownModel();
    hideModel();
    const osg::Vec3d within(1, -3, 0);
    m_set.areas = {{within, within + osg::Vec3d(1, 5, 0)}, {west, south, east, north, west}};
    m_set.areaTriangles = {west, south, east, west, east, north};
    m_drawing.drawArea(0, false);
    m_drawing.drawArea(1, true);
    const osg::ref_ptr<osg::Image> filled = m_view.draw();
    m_set.areaTriangles.clear();
    m_drawing.drawArea(1, true);
    const osg::ref_ptr<osg::Image> unfilled = m_view.draw();
    EXPECT_GT(countOf(*unfilled, pureBlue), 200);
    EXPECT_EQ(countOf(*filled, pureBlue), countOf(*unfilled, pureBlue));
    EXPECT_GT(countOf(*unfilled, unmeasuredRed), 20);
    EXPECT_EQ(countOf(*filled, unmeasuredRed), countOf(*unfilled, unmeasuredRed));
}

TEST_F(MeasurementPictureTest, AreaThatIsNotMeasuredIsARedOutline) {
    showKnownModel();
    m_set.areas = {{west, south, east, north}};
    m_drawing.drawArea(0, false);
    EXPECT_TRUE(looksLikeReference(*m_view.draw(), "unmeasured-area"));
    hideModel();
    const osg::ref_ptr<osg::Image> alone = m_view.draw();
    EXPECT_TRUE(near(colourAt(*alone, (west + south) / 2), unmeasuredRed));
    EXPECT_TRUE(near(colourAt(*alone, (west + north) / 2), background));
    EXPECT_TRUE(near(colourAt(*alone, (west + south + east) / 3), background));
}

TEST_F(MeasurementPictureTest, FillIsSeenFromBothSides) {
    showKnownModel();
    hideModel();
    const osg::Vec3 fill = blend(osg::Vec3(0.8f, 0.5f, 0), 0.5f, background);
    m_set.areas = {{west, south, east}};
    for (const auto& triangle : {std::vector{west, south, east}, std::vector{east, south, west}}) {
        m_set.areaTriangles = triangle;
        m_drawing.drawArea(0, true);
        EXPECT_TRUE(near(colourAt(*m_view.draw(), (west + south + east) / 3), fill));
    }
}

TEST_F(MeasurementPictureTest, TravelIsGreen) {
    showKnownModel();
    m_set.travelPoints = {west, middle, east, north};
    m_drawing.drawTravel();
    m_drawing.drawTravelPreview(south);
    EXPECT_TRUE(looksLikeReference(*m_view.draw(), "measured-travel"));
    hideModel();
    const osg::ref_ptr<osg::Image> alone = m_view.draw();
    EXPECT_GT(countOf(*alone, blend(osg::Vec3(0, 1, 0), 0.8f, background)), 100);
    EXPECT_EQ(countPixels(*alone, [](const osg::Vec3& colour) { return colour.z() > 0.9f; }), 0);
}

TEST_F(MeasurementPictureTest, PreviewEndsInAMarker) {
    showKnownModel();
    m_set.lines = {{west, middle}};
    m_drawing.drawLine(0);
    m_drawing.drawLinePreview(east);
    EXPECT_TRUE(looksLikeReference(*m_view.draw(), "line-preview"));
    m_drawing.drawLine(0);
    hideModel();
    const int without = countOf(*m_view.draw(), pureBlue);
    m_drawing.drawLinePreview(middle);
    EXPECT_GT(countOf(*m_view.draw(), pureBlue), without + 70);
}

TEST_F(MeasurementPictureTest, PreviewFollowsThePointerAndGoes) {
    showKnownModel();
    m_set.areas = {{west, middle}};
    m_drawing.drawArea(0, false);
    const osg::ref_ptr<osg::Image> without = m_view.draw();
    for (const osg::Vec3d& place : {east, south, north, east}) {
        m_drawing.drawAreaPreview(place);
        const osg::ref_ptr<osg::Image> picture = m_view.draw();
        EXPECT_TRUE(near(colourAt(*picture, place), pureBlue));
        EXPECT_TRUE(near(colourAt(*picture, (place + middle) / 2), pureBlue));
    }
    m_drawing.drawArea(m_set.areas.size(), true);
    EXPECT_TRUE(equal(*m_view.draw(), *without));
}

TEST_F(MeasurementPictureTest, MeasurementsAreSeenThroughTheModel) {
    const osg::ref_ptr<osg::Node> plate = makeQuadGeode(40.0f, osg::Vec3(0, 0, 5));
    show(*plate);
    const osg::Vec3d below(0, 0, -100);
    const osg::Vec3d left(-10, 0, -3);
    m_set.points = {below};
    m_set.lines = {{left, below}};
    m_set.areas = {{left, below, osg::Vec3d(0, 10, -1)}};
    m_set.areaTriangles = m_set.areas.front();
    m_set.travelPoints = m_set.lines.front();
    const osg::ref_ptr<osg::Image> bare = settled();
    m_drawing.drawPoints(0);
    EXPECT_EQ(countPixels(*m_view.draw(),
                          [](const osg::Vec3& colour) { return colour.z() > colour.x() + 0.2f; }),
              10 * 10);
    m_drawing.drawLine(0);
    EXPECT_TRUE(near(colourAt(*m_view.draw(), (left + below) / 2), pureBlue));
    m_drawing.drawArea(0, true);
    const osg::Vec3d inside = (left + below + osg::Vec3d(0, 10, -1)) / 3;
    EXPECT_TRUE(near(colourAt(*m_view.draw(), inside),
                     blend(osg::Vec3(0.8f, 0.5f, 0), 0.5f, colourAt(*bare, inside))));
    m_drawing.drawTravel();
    EXPECT_GT(countPixels(*m_view.draw(),
                          [](const osg::Vec3& colour) { return colour.y() > colour.x() + 0.5f; }),
              30);
    m_drawing.drawLinePreview(osg::Vec3d(8, 0, -50));
    EXPECT_TRUE(near(colourAt(*m_view.draw(), osg::Vec3d(8, 0, -50)), pureBlue));
    m_drawing.hide();
    EXPECT_TRUE(equal(*m_view.draw(), *bare));
}

TEST_F(MeasurementPictureTest, PlacesFarFromTheOriginAreDrawnToThePixel) {
    const osg::Vec3d grid(500000, 4000000, 100);
    const osg::ref_ptr<osg::MatrixTransform> model =
        new osg::MatrixTransform(osg::Matrixd::translate(grid));
    model->addChild(makeQuadGeode(4.0f));
    show(*model);
    hideModel();
    for (int i = 0; i < 8; ++i) {
        // Steps far below what single precision tells apart out there, which is 0.25 m.
        const double step = i * 0.03;
        const osg::Vec3d place = grid + osg::Vec3d(step, step, 0);
        const osg::Vec3d eye = grid + osg::Vec3d(step / 3, -step / 2, 10);
        m_view.camera().setViewMatrixAsLookAt(eye, eye - osg::Vec3d(0, 0, 1), osg::Vec3d(0, 1, 0));
        m_set.points = {place};
        m_drawing.drawPoints(0);
        const osg::Vec2d found = middleOf(*m_view.draw(), blend(pureBlue, 0.3f, background));
        EXPECT_LT((found - onScreen(place)).length(), 1.0) << i;
        m_set.lines = {{place, place + osg::Vec3d(0.5, 0.1, 0)}};
        m_drawing.drawLine(0);
        EXPECT_LT((middleOf(*m_view.draw(), pureBlue) - onScreen(place + osg::Vec3d(0.25, 0.05, 0)))
                      .length(),
                  1.5)
            << i;
    }
}

TEST_F(MeasurementPictureTest, PreviewOnTheNearPlaneIsNotCutOff) {
    showKnownModel();
    m_set.lines = {{middle}};
    m_drawing.drawLine(0);
    constexpr double x = 30.5;
    constexpr double y = 40.5;
    m_view.draw();
    // Half way to the eye: the range may have been another when the place was looked up.
    const osg::Vec3d eye = osg::Vec3d() * m_view.camera().getInverseViewMatrix();
    m_drawing.drawLinePreview((onNearPlane(x, y) + eye) / 2);
    const osg::ref_ptr<osg::Image> picture = m_view.draw();
    EXPECT_TRUE(near(pixel(*picture, static_cast<int>(x), static_cast<int>(y)), pureBlue));
    const osg::Vec2d start = onScreen(middle);
    for (const double part : {0.2, 0.5, 0.8}) {
        const osg::Vec2d spot = start + (osg::Vec2d(x, y) - start) * part;
        EXPECT_TRUE(
            near(pixel(*picture, static_cast<int>(spot.x()), static_cast<int>(spot.y())), pureBlue))
            << part;
    }
}

TEST_F(MeasurementPictureTest, DrawingLeavesTheModelsDepthRangeAlone) {
    showKnownModel();
    m_view.draw();
    const DepthRange fitted = depthRange();
    const auto expectUnchanged = [&] {
        constexpr double rounding = 1e-9;
        EXPECT_NEAR(depthRange().nearest / fitted.nearest, 1.0, rounding);
        EXPECT_NEAR(depthRange().farthest / fitted.farthest, 1.0, rounding);
    };
    m_set.lines = {{middle}};
    m_drawing.drawLine(0);
    for (int i = 0; i < 5; ++i) {
        m_drawing.drawLinePreview(onNearPlane(10 + i, 10));
        m_view.draw();
        expectUnchanged();
    }
    m_set.points = {osg::Vec3d(0, 0, 150), osg::Vec3d(0, 0, -1e6)};
    m_drawing.drawPoints(1);
    m_view.draw();
    expectUnchanged();
}

TEST_F(MeasurementPictureTest, LineFromBehindTheEyeIsDrawnWhereItIsBeforeIt) {
    showKnownModel();
    hideModel();
    const osg::Vec3d eye = osg::Vec3d() * m_view.camera().getInverseViewMatrix();
    m_set.lines = {{eye + osg::Vec3d(1, 0, 50), osg::Vec3d(5, 0, 0)}};
    m_drawing.drawLine(0);
    const osg::ref_ptr<osg::Image> picture = m_view.draw();
    const osg::Vec2d end = onScreen(osg::Vec3d(5, 0, 0));
    EXPECT_GT(countOf(*picture, pureBlue), 50);
    EXPECT_TRUE(
        near(pixel(*picture, static_cast<int>(end.x()) + 2, static_cast<int>(end.y())), pureBlue));
    EXPECT_TRUE(near(pixel(*picture, 10, static_cast<int>(end.y())), background));
    m_set.points = {eye + osg::Vec3d(0, 0, 1)};
    m_drawing.drawPoints(0);
    EXPECT_EQ(countOf(*m_view.draw(), background), width * height);
}

TEST_F(MeasurementPictureTest, ModelWithoutAColourIsNotColoured) {
    const osg::ref_ptr<osg::Node> plain = makeQuadGeode(40.0f);
    for (const osg::ref_ptr<osg::Node>& model : {plain, makeKnownModel()}) {
        show(*model);
        const osg::ref_ptr<osg::Image> bare = settled();
        m_set.areas = {{west, east}};
        m_set.travelPoints = {west, east};
        m_drawing.drawArea(0, false);
        settled();
        m_drawing.drawTravel();
        settled();
        m_drawing.hide();
        EXPECT_TRUE(equal(*m_view.draw(), *bare));
    }
}

TEST_F(MeasurementPictureTest, NewDrawingInAnOldOnesMemoryIsDrawn) {
    showKnownModel();
    hideModel();
    for (int i = 0; i < 20; ++i) {
        const osg::Vec3d place(i - 10, 10 - i, 0);
        m_set.points = {place};
        m_drawing.drawPoints(0);
        const osg::Vec2d found = middleOf(*m_view.draw(), blend(pureBlue, 0.3f, background));
        EXPECT_LT((found - onScreen(place)).length(), 1.0) << i;
        m_set.points.clear();
        m_drawing.drawPoints(0);
        EXPECT_EQ(countOf(*m_view.draw(), background), width * height);
    }
}

TEST_F(MeasurementPictureTest, PlacesThatAreNoNumbersTroubleNobodyElse) {
    showKnownModel();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    m_set.lines = {{west, middle}};
    m_drawing.drawLine(0);
    const osg::ref_ptr<osg::Image> wanted = m_view.draw();
    m_set.lines.push_back({osg::Vec3d(nan, nan, nan), osg::Vec3d(nan, 0, 0)});
    m_set.lines.push_back({osg::Vec3d(infinity, 0, -infinity), osg::Vec3d(nan, 0, 0)});
    m_drawing.drawLine(2);
    m_drawing.drawLinePreview(osg::Vec3d(nan, nan, nan));
    const osg::ref_ptr<MessageCount> messages = new MessageCount;
    const osg::ref_ptr<osg::NotifyHandler> formerHandler = osg::getNotifyHandler();
    const osg::NotifySeverity formerLevel = osg::getNotifyLevel();
    osg::setNotifyHandler(messages);
    osg::setNotifyLevel(osg::NOTICE);
    const osg::ref_ptr<osg::Image> picture = m_view.draw();
    osg::setNotifyLevel(formerLevel);
    osg::setNotifyHandler(formerHandler);
    EXPECT_TRUE(equal(*picture, *wanted));
    EXPECT_EQ(messages->count, 0);
}

TEST_F(MeasurementPictureTest, TransparentPartsOfTheModelAreBelow) {
    const osg::ref_ptr<osg::Geode> glass = makeQuadGeode(40.0f, osg::Vec3(0, 0, 20));
    addTexture(*glass->getOrCreateStateSet(), makeImage({255, 255, 0, 128}));
    glass->getOrCreateStateSet()->setMode(GL_BLEND, osg::StateAttribute::ON);
    glass->getOrCreateStateSet()->setRenderingHint(osg::StateSet::TRANSPARENT_BIN);
    show(*glass);
    m_set.lines = {{osg::Vec3d(-10, 0, 0), osg::Vec3d(10, 0, 0)}};
    m_drawing.drawLine(0);
    EXPECT_TRUE(near(colourAt(*m_view.draw(), osg::Vec3d(1, 0, 0)), pureBlue));
}

TEST(MeasurementDrawThreadTest, DrawingsMayBeReplacedWhileTheyAreDrawn) {
    const WorkingFolder folder;
    const QuietLibrary quiet;
    OffScreenView view(width, height, fovy, osgViewer::ViewerBase::DrawThreadPerContext);
    SceneRoot scene;
    const osg::ref_ptr<osg::Node> model = makeKnownModel();
    const HomeView home = scene.rebuild(*model, view.camera(), false);
    view.setScene(scene.root());
    view.camera().setViewMatrixAsLookAt(home.eye, home.center, home.up);
    MeasurementSet set;
    MeasurementDrawing drawing(set);
    drawing.setModelSwitch(scene.modelSwitch());
    constexpr int manyFrames = 300;
    constexpr int verticesOfAnItem = 10;
    for (int i = 0; i < manyFrames; ++i) {
        if (i % verticesOfAnItem == 0) {
            set.lines.emplace_back();
            set.areas.emplace_back();
        }
        const osg::Vec3d place(i % 17, i % 13, i % 7);
        set.points.push_back(place);
        set.lines.back().push_back(place);
        set.areas.back().push_back(place);
        set.areaTriangles = {west, east, place};
        switch (i / 100) {
        case 0:
            drawing.drawPoints(set.points.size() - 1);
            break;
        case 1:
            drawing.drawLine(set.lines.size() - 1);
            drawing.drawLinePreview(north);
            break;
        default:
            drawing.drawArea(set.areas.size() - 1, i % 2 == 0);
            drawing.drawAreaPreview(south);
            break;
        }
        view.drawUnseen();
    }
    set.points = {west};
    drawing.drawPoints(0);
    scene.modelSwitch()->setValue(SceneRoot::modelChild, false);
    EXPECT_EQ(countOf(*view.draw(), blend(pureBlue, 0.3f, background)), 10 * 10);
}

} // namespace orbisk::test
