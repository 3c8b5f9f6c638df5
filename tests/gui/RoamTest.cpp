#include "measure/PickSurface.h"
#include "settings/RoamParameters.h"
#include "support/CanvasTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <osgGA/AnimationPathManipulator>
#include <osgGA/TrackballManipulator>

#include <cmath>

namespace orbisk::test {

namespace {

/// Where the tests pick travel points, from the middle of the canvas.
const wxPoint steps[] = {{0, 0}, {50, 0}, {50, 40}};

constexpr Command modeCommands[] = {Command::ResetModel, Command::PointCloud,   Command::Tin,
                                    Command::Gray,       Command::PointPick,    Command::LinePick,
                                    Command::AreaPick,   Command::AutomaticRoam};

} // namespace

/// Picks travel points with the mouse and flies along them.
class RoamTest : public CanvasTest {
protected:
    /// Picks the first `count` places.
    void pick(std::size_t count) {
        if (!menuItem(Command::AutomaticRoam).IsChecked())
            choose(Command::AutomaticRoam);
        for (std::size_t i = 0; i < count; ++i)
            clickAt(middle() + steps[i]);
        m_points = set().travelPoints;
        ASSERT_EQ(m_points.size(), count);
    }

    /// Picks three points and flies.
    void roam() {
        pick(3);
        clickAt(middle() + steps[2]);
        ASSERT_NE(pilot(), nullptr);
    }

    static osgViewer::Viewer& viewer() { return *frame()->viewer().osgViewer(); }

    /// Null while the camera does not roam.
    static osgGA::AnimationPathManipulator* pilot() {
        return dynamic_cast<osgGA::AnimationPathManipulator*>(viewer().getCameraManipulator());
    }

    static osg::Matrixd cameraPlace() { return viewer().getCamera()->getInverseViewMatrix(); }

    /// Of the frame drawn last, seconds since the start of the roam.
    static double flightTime() {
        return viewer().getFrameStamp()->getReferenceTime() + pilot()->getTimeOffset();
    }

    /// A round along the three points takes as long as the way between the first two should.
    double roundSeconds() const {
        return (m_points[1] - m_points[0]).length() * roamParameters().secondsPerMetre;
    }

    /// Whether the camera, which looks straight down, is between the second point and the third.
    void expectOnThePath() const {
        ASSERT_NE(pilot(), nullptr);
        const double part = std::fmod(flightTime(), roundSeconds()) / roundSeconds();
        const osg::Matrixd expected =
            osg::Matrixd::translate(m_points[1] * (1.0 - part) + m_points[2] * part +
                                    osg::Vec3d(0, 0, roamParameters().height));
        const osg::Matrixd place = cameraPlace();
        const double size = static_cast<double>(frame()->loader().modelNode()->getBound().radius());
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                EXPECT_NEAR(place(row, column), expected(row, column), 1e-6 * size)
                    << "after " << flightTime() << " s";
    }

    static void expectHome() {
        EXPECT_NE(dynamic_cast<osgGA::TrackballManipulator*>(viewer().getCameraManipulator()),
                  nullptr);
        const HomeView& home = frame()->viewer().home();
        osg::Vec3d eye;
        osg::Vec3d center;
        osg::Vec3d up;
        viewer().getCamera()->getViewMatrixAsLookAt(eye, center, up);
        EXPECT_LT((eye - home.eye).length(), 1e-6 * home.eye.length());
        EXPECT_LT((up - home.up).length(), 1e-6);
        EXPECT_FALSE(menuItem(Command::AutomaticRoam).IsChecked());
        EXPECT_FALSE(isToolChecked(Command::AutomaticRoam));
    }

    TravelPath m_points; ///< picked last
};

TEST_F(RoamTest, SecondClickFliesAlongThePath) {
    startWith(sample("valley.osgb"));
    roam();
    EXPECT_TRUE(set().travelPoints.empty());
    EXPECT_FALSE(frame()->viewer().scene().modelSwitch()->getValue(SceneRoot::drawingSlot));
    EXPECT_TRUE(menuItem(Command::AutomaticRoam).IsChecked());
    EXPECT_TRUE(isToolChecked(Command::AutomaticRoam));
    for (int i = 0; i < 6; ++i) {
        expectOnThePath();
        runFor(0.15);
    }
}

TEST_F(RoamTest, MenusFinishFliesAlongThePath) {
    startWith(sample("valley.osgb"));
    pick(3);
    chooseFromMenu(middle() + steps[2], "finish");
    ASSERT_NE(pilot(), nullptr);
    EXPECT_TRUE(set().travelPoints.empty());
    for (int i = 0; i < 3; ++i) {
        expectOnThePath();
        runFor(0.15);
    }
}

TEST_F(RoamTest, BeginsAtTheSecondPointHoweverLongTheProgramRuns) {
    startWith(sample("valley.osgb"));
    pick(3);
    const double before = viewer().elapsedTime();
    clickAt(middle() + steps[2]);
    ASSERT_NE(pilot(), nullptr);
    EXPECT_EQ(pilot()->getAnimationPath()->getFirstTime(), 0.0);
    const double start = -pilot()->getTimeOffset();
    EXPECT_GE(start, before);
    EXPECT_LE(start, viewer().elapsedTime());
    EXPECT_LT(flightTime(), 2.0);
}

TEST_F(RoamTest, FliesRoundAndRound) {
    startWith(sample("valley.osgb"));
    pick(3);
    roamParameters().secondsPerMetre *= 0.4 / roundSeconds();
    ASSERT_NEAR(roundSeconds(), 0.4, 1e-9);
    clickAt(middle() + steps[2]);
    for (int i = 0; i < 8; ++i) {
        expectOnThePath();
        runFor(0.13);
    }
    EXPECT_GT(flightTime(), 2.0 * roundSeconds());
}

TEST_F(RoamTest, ParametersCountWhenTheRoamStarts) {
    startWith(sample("valley.osgb"));
    pick(3);
    roamParameters().height = 1234.0;
    roamParameters().secondsPerMetre = 0.05;
    clickAt(middle() + steps[2]);
    expectOnThePath();
    roamParameters().height = 10.0;
    runFor(0.2);
    roamParameters().height = 1234.0;
    expectOnThePath();
}

TEST_F(RoamTest, CameraTurnsByTheAngles) {
    startWith(sample("valley.osgb"));
    pick(3);
    roamParameters().pitch = 90;
    clickAt(middle() + steps[2]);
    ASSERT_NE(pilot(), nullptr);
    // Down becomes ahead along +y, and up stands upright.
    const osg::Matrixd place = cameraPlace();
    EXPECT_LT(
        (osg::Matrixd::transform3x3(osg::Vec3d(0, 0, -1), place) - osg::Vec3d(0, 1, 0)).length(),
        1e-9);
    EXPECT_LT(
        (osg::Matrixd::transform3x3(osg::Vec3d(0, 1, 0), place) - osg::Vec3d(0, 0, 1)).length(),
        1e-9);
    roamParameters().pitch = 0;
}

TEST_F(RoamTest, TwoPointsStandStillAtTheSecond) {
    startWith(sample("valley.osgb"));
    pick(2);
    clickAt(middle() + steps[1]);
    ASSERT_NE(pilot(), nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_LT(
            (cameraPlace().getTrans() - m_points[1] - osg::Vec3d(0, 0, roamParameters().height))
                .length(),
            1e-6 * roamParameters().height);
        runFor(0.2);
    }
}

TEST_F(RoamTest, ThirdClickDoesNotFlyAlongNothing) {
    startWith(sample("valley.osgb"));
    pick(2);
    clickAt(middle() + steps[1]);
    const osg::ref_ptr<osgGA::AnimationPathManipulator> flying = pilot();
    ASSERT_NE(flying, nullptr);
    const double scale = frame()->canvas()->GetContentScaleFactor();
    osg::Vec3d point;
    ASSERT_TRUE(frame()->viewer().pickSurface()->pickPoint(
        static_cast<int>((middle() + steps[1]).x * scale),
        static_cast<int>((middle() + steps[1]).y * scale), point));
    clickAt(middle() + steps[1]);
    EXPECT_EQ(pilot(), flying);
    EXPECT_FALSE(flying->getAnimationPath()->empty());
    EXPECT_TRUE(set().travelPoints.empty());
}

TEST_F(RoamTest, OnePointIsConsumedByAnEmptyPath) {
    startWith(sample("valley.osgb"));
    pick(1);
    chooseFromMenu(middle() + steps[2], "finish");
    ASSERT_NE(pilot(), nullptr);
    EXPECT_TRUE(pilot()->getAnimationPath()->empty());
    EXPECT_TRUE(set().travelPoints.empty());
    const osg::Matrixd place = cameraPlace();
    runFor(0.3);
    EXPECT_EQ(cameraPlace(), place);
    choose(Command::ResetModel);
    runFor(0.1);
    expectHome();
}

TEST_F(RoamTest, FinishWithoutPointsFliesAlongAnEmptyPath) {
    startWith(sample("valley.osgb"));
    pick(0);
    chooseFromMenu(middle(), "finish");
    ASSERT_NE(pilot(), nullptr);
    EXPECT_TRUE(pilot()->getAnimationPath()->empty());
    const osg::Matrixd place = cameraPlace();
    runFor(0.3);
    EXPECT_EQ(cameraPlace(), place);
}

TEST_F(RoamTest, OtherPointsCanBePickedWhileItFlies) {
    startWith(sample("valley.osgb"));
    roam();
    const osg::ref_ptr<osgGA::AnimationPathManipulator> flying = pilot();
    clickAt(middle());
    clickAt(middle() + wxPoint(0, 30));
    EXPECT_EQ(set().travelPoints.size(), 2u);
    clickAt(middle() + wxPoint(0, 30));
    ASSERT_NE(pilot(), nullptr);
    EXPECT_NE(pilot(), flying);
    EXPECT_TRUE(set().travelPoints.empty());
}

TEST_F(RoamTest, EveryModeCommandEndsItAtHome) {
    startWith(writeTestModel());
    for (const Command command : modeCommands) {
        SCOPED_TRACE(rowOf(command).label);
        roam();
        choose(command);
        for (int i = 0; i < 2; ++i) {
            runFor(0.1);
            expectHome();
        }
        EXPECT_EQ(isCheck(command) && menuItem(command).IsChecked(),
                  isCheck(command) && command != Command::AutomaticRoam);
        choose(Command::ResetModel);
    }
}

TEST_F(RoamTest, ToolsEndItAsWell) {
    startWith(writeTestModel());
    for (const Command command : {Command::ResetModel, Command::Tin, Command::AutomaticRoam}) {
        SCOPED_TRACE(rowOf(command).label);
        roam();
        clickTool(command);
        expectHome();
    }
}

TEST_F(RoamTest, UncheckingADisplayModeDoesNotEndIt) {
    startWith(sample("valley.osgb"));
    choose(Command::Gray);
    roam();
    choose(Command::Gray);
    runFor(0.1);
    EXPECT_FALSE(menuItem(Command::Gray).IsChecked());
    EXPECT_TRUE(menuItem(Command::AutomaticRoam).IsChecked());
    expectOnThePath();
}

TEST_F(RoamTest, OtherCommandsDoNotEndIt) {
    startWith(sample("valley.osgb"));
    roam();
    for (const Command command : {Command::Skybox, Command::Toolbar, Command::MeasureTable}) {
        SCOPED_TRACE(rowOf(command).label);
        choose(command);
        runFor(0.1);
        expectOnThePath();
    }
}

TEST_F(RoamTest, LanguageSwitchDoesNotEndIt) {
    startWith(sample("valley.osgb"));
    roam();
    choose(Command::Chinese);
    ASSERT_TRUE(runUntil([] { return appSettings().language == languageChinese; }));
    runFor(0.3);
    EXPECT_TRUE(menuItem(Command::AutomaticRoam).IsChecked());
    expectOnThePath();
    choose(Command::AutomaticRoam);
    runFor(0.1);
    expectHome();
}

TEST_F(RoamTest, OtherModelEndsItAtItsHome) {
    startWith(sample("valley.osgb"));
    roam();
    load(writeTestModel());
    runFor(0.1);
    expectHome();
}

TEST_F(RoamTest, FrameClosesWhileItFlies) {
    startWith(sample("valley.osgb"));
    roam();
    close();
    EXPECT_EQ(frame(), nullptr);
}

} // namespace orbisk::test
