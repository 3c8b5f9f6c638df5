#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <osgGA/OrbitManipulator>
#include <wx/uiaction.h>

#include <cmath>

namespace orbisk::test {

/// Drags with the mouse itself.
class CanvasDragTest : public GuiTest {
protected:
    void startWithModel() {
        start();
        load(writeTestModel());
    }

    static osg::Matrixd viewMatrix() {
        return frame()->viewer().osgViewer()->getCamera()->getViewMatrix();
    }

    static void drag(int button) {
        const wxPoint from = onScreen(*frame()->canvas(), wxPoint(300, 250));
        wxUIActionSimulator mouse;
        mouse.MouseMove(from);
        runFor(0.2);
        mouse.MouseDown(button);
        runFor(0.1);
        for (int step = 1; step <= 10; ++step) {
            mouse.MouseMove(from + wxPoint(8 * step, 5 * step));
            runFor(0.05);
        }
        runFor(0.3);
        mouse.MouseUp(button);
        runFor(0.2);
    }

    static osg::Vec3d direction() {
        osg::Vec3d eye;
        osg::Vec3d centre;
        osg::Vec3d up;
        viewMatrix().getLookAt(eye, centre, up);
        return centre - eye;
    }

    static double distance() {
        const auto* trackball = dynamic_cast<osgGA::OrbitManipulator*>(
            frame()->viewer().osgViewer()->getCameraManipulator());
        return trackball ? trackball->getDistance() : -1.0;
    }
};

TEST_F(CanvasDragTest, LeftButtonTurnsTheCamera) {
    startWithModel();
    const osg::Vec3d before = direction();
    const double distanceBefore = distance();
    drag(wxMOUSE_BTN_LEFT);
    EXPECT_GT((direction() - before).length(), 0.01);
    EXPECT_NEAR(distance(), distanceBefore, 1e-6 * distanceBefore);
}

TEST_F(CanvasDragTest, RightButtonMovesTheCameraSideways) {
    startWithModel();
    const osg::Vec3d before = direction();
    const double distanceBefore = distance();
    const osg::Matrixd matrix = viewMatrix();
    drag(wxMOUSE_BTN_RIGHT);
    EXPECT_NEAR((direction() - before).length(), 0.0, 1e-6);
    EXPECT_NEAR(distance(), distanceBefore, 1e-6 * distanceBefore);
    EXPECT_NE(viewMatrix(), matrix);
}

TEST_F(CanvasDragTest, MiddleButtonChangesTheDistance) {
    startWithModel();
    const osg::Vec3d before = direction();
    const double distanceBefore = distance();
    drag(wxMOUSE_BTN_MIDDLE);
    EXPECT_NEAR((direction() - before).length(), 0.0, 1e-6);
    EXPECT_GT(std::abs(distance() - distanceBefore), 0.01 * distanceBefore);
}

TEST_F(CanvasDragTest, WheelChangesTheDistanceBothWays) {
    startWithModel();
    const Screen screen;
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(*frame()->canvas(), wxPoint(200, 200)));
    runFor(0.3);
    const double before = distance();
    screen.turnWheel(true);
    ASSERT_TRUE(runUntil([&] { return std::abs(distance() - before) > 0.01 * before; }, 10.0));
    runFor(0.2);
    const double away = distance();
    screen.turnWheel(false);
    ASSERT_TRUE(runUntil([&] { return std::abs(distance() - away) > 0.01 * away; }, 10.0));
    runFor(0.2);
    // The way back goes the other way.
    EXPECT_LT((before - away) * (distance() - away), 2.0 * (before - away) * (before - away));
    EXPECT_GT((before - away) * (distance() - away), 0.0);
}

TEST_F(CanvasDragTest, PointerWithoutAButtonDoesNothing) {
    startWithModel();
    const osg::Matrixd before = viewMatrix();
    wxUIActionSimulator mouse;
    for (int step = 1; step <= 10; ++step) {
        mouse.MouseMove(onScreen(*frame()->canvas(), wxPoint(100 + 10 * step, 100)));
        runFor(0.03);
    }
    EXPECT_EQ(viewMatrix(), before);
}

} // namespace orbisk::test
