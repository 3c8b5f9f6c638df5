#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <fstream>

namespace orbisk::test {

class LanguageSwitchTest : public GuiTest {
protected:
    void startWithModel() {
        start();
        load(writeTestModel());
        runFor(0.3);
    }

    static void switchTo(int language) {
        frame()->switchLanguage(language);
        runFor(0.3);
    }

    static wxRect canvasOnScreen() {
        const wxRect rect = frame()->canvas()->GetScreenRect();
        return rect.Deflate(rect.width / 4, rect.height / 4);
    }

    /// Whether the canvas shows the chequered model and not one flat colour.
    static bool showsTheModel() {
        const Screen screen;
        return runUntil([&] { return screen.colours(canvasOnScreen()).size() > 10; }, 10.0);
    }

    /// Kilobytes of this process in memory.
    static long residentKilobytes() {
        std::ifstream status("/proc/self/status");
        std::string line;
        while (std::getline(status, line))
            if (line.rfind("VmRSS:", 0) == 0)
                return std::stol(line.substr(6));
        return -1;
    }

    static osg::Camera& camera() { return *frame()->viewer().osgViewer()->getCamera(); }
};

TEST_F(LanguageSwitchTest, MakesANewCanvasAndGraphicsWindow) {
    startWithModel();
    const wxWindowID formerCanvas = frame()->canvas()->GetId();
    const osg::ref_ptr<GraphicsWindowWX> formerWindow = frame()->canvas()->graphicsWindow();
    ASSERT_NE(formerWindow->getState(), nullptr);
    switchTo(languageChinese);
    EXPECT_NE(frame()->canvas()->GetId(), formerCanvas);
    ASSERT_NE(frame()->canvas()->graphicsWindow(), nullptr);
    EXPECT_NE(frame()->canvas()->graphicsWindow(), formerWindow);
    EXPECT_EQ(camera().getGraphicsContext(), frame()->canvas()->graphicsWindow());
    // Nobody uses the old one any more.
    EXPECT_EQ(formerWindow->getState(), nullptr);
    EXPECT_EQ(formerWindow->referenceCount(), 1);
}

TEST_F(LanguageSwitchTest, KeepsModelAndView) {
    startWithModel();
    const osg::ref_ptr<osg::Node> model = frame()->loader().modelNode();
    const osg::ref_ptr<osgGA::CameraManipulator> manipulator =
        frame()->viewer().osgViewer()->getCameraManipulator();
    manipulator->setByMatrix(osg::Matrixd::inverse(
        osg::Matrixd::lookAt(osg::Vec3d(300, 200, 250), osg::Vec3d(), osg::Vec3d(0, 0, 1))));
    runFor(0.3);
    const osg::Matrixd view = camera().getViewMatrix();
    const osg::Matrixd projection = camera().getProjectionMatrix();
    switchTo(languageChinese);
    EXPECT_EQ(frame()->loader().modelNode(), model);
    EXPECT_EQ(frame()->viewer().scene().modelSwitch()->getChild(SceneRoot::modelChild), model);
    EXPECT_EQ(frame()->viewer().osgViewer()->getCameraManipulator(), manipulator);
    for (int i = 0; i < 16; ++i) {
        EXPECT_NEAR(camera().getViewMatrix().ptr()[i], view.ptr()[i], 1e-6);
    }
    EXPECT_NEAR(camera().getProjectionMatrix()(1, 1), projection(1, 1), 1e-9);
    EXPECT_EQ(frame()->welcomePanel(), nullptr);
    EXPECT_TRUE(frame()->canvas()->IsShownOnScreen());
}

TEST_F(LanguageSwitchTest, KeepsModeAndChecks) {
    startWithModel();
    choose(Command::Skybox);
    choose(Command::Tin);
    choose(Command::LinePick);
    switchTo(languageChinese);
    for (const Command command : {Command::Tin, Command::LinePick}) {
        EXPECT_TRUE(menuItem(command).IsChecked());
        EXPECT_TRUE(isToolChecked(command));
    }
    EXPECT_FALSE(menuItem(Command::Gray).IsChecked());
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
    EXPECT_FALSE(frame()->viewer().scene().root()->getValue(SceneRoot::skyboxChild));
    EXPECT_EQ(frame()->loader().modelCallback()->mode, DisplayMode::Tin);
    EXPECT_EQ(polygonModeOf(firstGeometry(frame()->loader().modelNode())), GL_LINE);
}

TEST_F(LanguageSwitchTest, KeepsTheHiddenToolbarHidden) {
    startWithModel();
    choose(Command::Toolbar);
    switchTo(languageChinese);
    EXPECT_FALSE(frame()->bars().toolBarPanel()->IsShownOnScreen());
    EXPECT_FALSE(menuItem(Command::Toolbar).IsChecked());
}

TEST_F(LanguageSwitchTest, KeepsTheWelcomePanelWithoutAModel) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish, R"(["/a.obj"])");
    start();
    switchTo(languageChinese);
    ASSERT_NE(frame()->welcomePanel(), nullptr);
    EXPECT_FALSE(frame()->canvas()->IsShownOnScreen());
    load(writeTestModel());
    EXPECT_TRUE(frame()->canvas()->IsShownOnScreen());
    EXPECT_TRUE(showsTheModel());
}

TEST_F(LanguageSwitchTest, ViewStillFollowsTheCanvas) {
    startWithModel();
    switchTo(languageChinese);
    frame()->SetSize(1000, 500);
    runFor(0.5);
    const wxSize client = frame()->canvas()->GetClientSize();
    EXPECT_EQ(camera().getViewport()->width(), client.x);
    EXPECT_EQ(camera().getViewport()->height(), client.y);
    double fovy = 0;
    double aspect = 0;
    double nearPlane = 0;
    double farPlane = 0;
    camera().getProjectionMatrixAsPerspective(fovy, aspect, nearPlane, farPlane);
    EXPECT_NEAR(fovy, 30.0, 0.01);
    EXPECT_NEAR(aspect, static_cast<double>(client.x) / client.y, 1e-3);
}

TEST_F(LanguageSwitchTest, PictureIsNotBlankAfterwards) {
    startWithModel();
    ASSERT_TRUE(showsTheModel());
    for (int i = 0; i < 3; ++i) {
        switchTo(i % 2 == 0 ? languageChinese : languageEnglish);
        EXPECT_TRUE(showsTheModel()) << "after switch " << i + 1;
    }
}

TEST_F(LanguageSwitchTest, AnotherModelCanFollow) {
    startWithModel();
    switchTo(languageChinese);
    load(writeTestModel("second.osgb"));
    EXPECT_TRUE(showsTheModel());
}

TEST_F(LanguageSwitchTest, ContextNumbersAreUsedAgain) {
    startWithModel();
    switchTo(languageChinese);
    const unsigned int before = osg::GraphicsContext::getMaxContextID();
    for (int i = 0; i < 4; ++i)
        switchTo(i % 2);
    EXPECT_EQ(osg::GraphicsContext::getMaxContextID(), before);
}

TEST_F(LanguageSwitchTest, TenSwitchesLeaveNothingBehind) {
    startWithModel();
    // The first ones fill the caches of toolkit and driver.
    for (int i = 0; i < 4; ++i)
        switchTo(i % 2);
    const Screen screen;
    const std::size_t windows = screen.windowCount();
    const std::size_t threads = threadCount();
    const std::size_t files = openFileCount();
    const long memory = residentKilobytes();
    for (int i = 0; i < 10; ++i)
        switchTo(i % 2);
    EXPECT_LE(screen.windowCount(), windows);
    EXPECT_LE(threadCount(), threads);
    EXPECT_LE(openFileCount(), files);
    EXPECT_LT(residentKilobytes() - memory, 30 * 1024);
    EXPECT_TRUE(showsTheModel());
}

TEST_F(LanguageSwitchTest, ProgramEndsWellAfterwards) {
    startWithModel();
    switchTo(languageChinese);
    frame()->CallAfter([] { frame()->Close(); });
    EXPECT_TRUE(runToEnd());
    EXPECT_EQ(frame(), nullptr);
}

} // namespace orbisk::test
