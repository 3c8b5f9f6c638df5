#include "support/GuiTest.h"
#include "support/LogCapture.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <wx/aui/auibar.h>
#include <wx/utils.h>

namespace orbisk::test {

class WindowPlacementRunTest : public GuiTest {
protected:
    static void writeRect(int x, int y, int w, int h) {
        writeSettings("{\"x\":" + std::to_string(x) + ",\"y\":" + std::to_string(y) +
                          ",\"w\":" + std::to_string(w) + ",\"h\":" + std::to_string(h) + "}",
                      languageEnglish);
    }

    static void expectRect(int x, int y, int w, int h) {
        EXPECT_EQ(frame()->GetRect(), wxRect(x, y, w, h))
            << frame()->GetRect().x << " " << frame()->GetRect().y << " "
            << frame()->GetRect().width << " " << frame()->GetRect().height;
        EXPECT_FALSE(frame()->IsMaximized());
    }
};

TEST_F(WindowPlacementRunTest, RestoresTheRectangleExactly) {
    writeRect(120, 90, 830, 610);
    start();
    runFor(0.5);
    expectRect(120, 90, 830, 610);
}

TEST_F(WindowPlacementRunTest, RestoresTheCornerOfTheScreen) {
    writeRect(0, 0, 800, 600);
    start();
    runFor(0.5);
    expectRect(0, 0, 800, 600);
}

TEST_F(WindowPlacementRunTest, FullWidthAloneDoesNotMaximise) {
    const wxSize display = wxGetDisplaySize();
    writeRect(0, 30, display.x, 700);
    start();
    expectRect(0, 30, display.x, 700);
}

TEST_F(WindowPlacementRunTest, NearlyTheWholeScreenIsMaximised) {
    const wxSize display = wxGetDisplaySize();
    writeRect(5, 5, display.x * 97 / 100, display.y * 97 / 100);
    start();
    EXPECT_TRUE(runUntil([] { return frame()->IsMaximized(); }));
}

TEST_F(WindowPlacementRunTest, MaximisedFrameShowsTheToolsToTheLast) {
    const wxSize display = wxGetDisplaySize();
    writeRect(5, 5, display.x, display.y);
    start();
    ASSERT_TRUE(runUntil([] { return frame()->IsMaximized(); }));
    runFor(0.5);
    wxAuiToolBar& bar = *frame()->bars().toolBar();
    wxRect lastTool = bar.GetToolRect(frame()->bars().toolId(Command::Tips));
    lastTool.SetPosition(bar.ClientToScreen(lastTool.GetPosition()));
    // The bar itself has but a few grays.
    EXPECT_GT(Screen().colours(lastTool).size(), 60u);
}

TEST_F(WindowPlacementRunTest, MaximisedFrameHasASizeToGoBackTo) {
    const wxSize display = wxGetDisplaySize();
    writeRect(5, 5, display.x, display.y);
    start();
    ASSERT_TRUE(runUntil([] { return frame()->IsMaximized(); }));
    frame()->Maximize(false);
    ASSERT_TRUE(runUntil([&] { return frame()->GetSize().x < display.x; }));
    runFor(0.3);
    const wxRect rect = frame()->GetRect();
    EXPECT_NEAR(rect.width, 0.75 * display.x, 0.05 * display.x);
    EXPECT_NEAR(rect.height, 0.75 * display.y, 0.05 * display.y);
    EXPECT_NEAR(rect.x, 0.125 * display.x, 0.05 * display.x);
    EXPECT_NEAR(rect.y, 0.125 * display.y, 0.05 * display.y);
}

TEST_F(WindowPlacementRunTest, WithoutSettingsTheProgramStartsMaximisedInChinese) {
    ASSERT_TRUE(wxTheApp->CallOnInit());
    EXPECT_TRUE(runUntil([] { return frame()->IsShownOnScreen() && frame()->IsMaximized(); }));
    EXPECT_EQ(appSettings().language, languageChinese);
    EXPECT_TRUE(menuItem(Command::Chinese).IsChecked());
    EXPECT_TRUE(menuItem(Command::Toolbar).IsChecked());
    EXPECT_TRUE(menuItem(Command::Skybox).IsChecked());
    EXPECT_EQ(appSettings().fovy, 30.0);
    EXPECT_TRUE(appSettings().path_recent.empty());
}

TEST_F(WindowPlacementRunTest, MaximisedFrameStoresItsGeometryAndComesBackMaximised) {
    ASSERT_TRUE(wxTheApp->CallOnInit());
    ASSERT_TRUE(runUntil([] { return frame()->IsShownOnScreen() && frame()->IsMaximized(); }));
    runFor(0.5);
    const wxRect rect = frame()->GetRect();
    close();
    EXPECT_EQ(appSettings().rect.w, rect.width);
    EXPECT_EQ(appSettings().rect.h, rect.height);
    start();
    EXPECT_TRUE(runUntil([] { return frame()->IsMaximized(); }));
}

TEST_F(WindowPlacementRunTest, ClosingSavesTheRectangleAndARestartRestoresIt) {
    writeRect(100, 80, 820, 620);
    start();
    frame()->SetSize(160, 110, 780, 560);
    runFor(0.5);
    const wxRect moved = frame()->GetRect();
    close();
    const AppSettings& saved = appSettings();
    EXPECT_EQ(wxRect(saved.rect.x, saved.rect.y, saved.rect.w, saved.rect.h), moved);
    EXPECT_EQ(moved, wxRect(160, 110, 780, 560));
    start();
    runFor(0.5);
    expectRect(160, 110, 780, 560);
}

TEST_F(WindowPlacementRunTest, PlaceDoesNotDriftOverRestarts) {
    writeRect(100, 80, 820, 620);
    for (int i = 0; i < 4; ++i) {
        start();
        runFor(0.3);
        close();
    }
    start();
    runFor(0.3);
    expectRect(100, 80, 820, 620);
}

TEST_F(WindowPlacementRunTest, MissingRectangleIsNoErrorAndModelsShowOnceThereIsRoom) {
    writeFile("datafile.json", R"({"project":{"data":{"language":1,"fovy":30.0}}})");
    startWithoutRoom();
    load(writeTestModel());
    frame()->SetSize(100, 100, 900, 700);
    runFor(0.5);
    const osg::Camera& camera = *frame()->viewer().osgViewer()->getCamera();
    double fovy = 0;
    double aspect = 0;
    double nearPlane = 0;
    double farPlane = 0;
    ASSERT_TRUE(camera.getProjectionMatrixAsPerspective(fovy, aspect, nearPlane, farPlane));
    const ViewSize size = frame()->canvas()->pixelSize();
    EXPECT_NEAR(fovy, 30.0, 0.01);
    EXPECT_NEAR(aspect, static_cast<double>(size.w) / size.h, 0.01);
}

TEST_F(WindowPlacementRunTest, MissingFieldOfViewIsNoError) {
    writeFile("datafile.json", R"({"project":{"layout":{"rect":{"x":40,"y":40,"w":900,"h":700}},)"
                               R"("data":{"language":1}}})");
    start();
    EXPECT_EQ(appSettings().fovy, 0.0);
    load(writeTestModel());
    runFor(0.5);
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(WindowPlacementRunTest, MissingRunTimeFoldersAreNoError) {
    for (const char* folder : {"image", "internation", "help"})
        std::filesystem::remove(folder);
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageChinese);
    LogCapture log;
    start();
    load(writeTestModel());
    runFor(0.3);
    EXPECT_TRUE(frame()->viewer().exists());
    EXPECT_EQ(menuItem(Command::Open).GetItemLabel(), "Open");
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(WindowPlacementRunTest, OtherWorkingFolderHasItsOwnSettings) {
    writeRect(100, 80, 820, 620);
    const std::string before = readFile("datafile.json");
    const std::filesystem::path first = std::filesystem::current_path();
    const WorkingFolder other;
    start();
    frame()->SetSize(160, 110, 780, 560);
    close();
    EXPECT_EQ(readFile(first / "datafile.json"), before);
    EXPECT_TRUE(std::filesystem::exists("datafile.json"));
}

} // namespace orbisk::test
