#include "measure/PickDialog.h"
#include "support/ChildProcess.h"
#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "support/TestReader.h"

#include <algorithm>

namespace orbisk::test {

namespace {

/// Where no tip server listens.
constexpr const char* portOfNobody = "1";

} // namespace

class CloseDuringLoadTest : public GuiTest {
protected:
    void startAndLoad() {
        start();
        frame()->openFile(writeSlowModel("gate.slow", "gate"));
        ASSERT_TRUE(runUntil([] { return isReading(); }));
        runFor(0.3);
    }

    /// After the frame was asked to close: it stays until the reader is done, and goes then.
    static void expectEndAfterTheReader() {
        runFor(0.5);
        ASSERT_NE(frame(), nullptr);
        EXPECT_TRUE(isReading());
        openGate();
        EXPECT_TRUE(runToEnd());
        EXPECT_EQ(frame(), nullptr);
        EXPECT_EQ(modelsRead(), 1);
        EXPECT_FALSE(isReading());
    }
};

TEST_F(CloseDuringLoadTest, FrameWaitsForTheReader) {
    startAndLoad();
    frame()->Close();
    expectEndAfterTheReader();
}

TEST_F(CloseDuringLoadTest, ForcedCloseWaitsForTheReader) {
    startAndLoad();
    frame()->Close(true);
    expectEndAfterTheReader();
}

TEST_F(CloseDuringLoadTest, SecondCloseWaitsToo) {
    startAndLoad();
    frame()->Close();
    frame()->Close(true);
    expectEndAfterTheReader();
}

TEST_F(CloseDuringLoadTest, QuitWaitsForTheReader) {
    startAndLoad();
    choose(Command::Quit);
    expectEndAfterTheReader();
}

TEST_F(CloseDuringLoadTest, LaterLoadIsWaitedForToo) {
    start();
    load(writeTestModel());
    frame()->openFile(writeSlowModel("gate.slow", "gate"));
    ASSERT_TRUE(runUntil([] { return isReading(); }));
    frame()->Close();
    expectEndAfterTheReader();
}

TEST_F(CloseDuringLoadTest, SavesTheSettings) {
    startAndLoad();
    frame()->Close();
    expectEndAfterTheReader();
    EXPECT_NE(readFile("datafile.json").find("gate.slow"), std::string::npos);
}

TEST_F(CloseDuringLoadTest, WindowManagersCloseDoesNoHarm) {
    startAndLoad();
    const Screen screen;
    // The frame is disabled while the progress dialog is up, so the toolkit may drop the wish.
    ASSERT_TRUE(screen.closeWindow(frame()->GetTitle().utf8_string()));
    runFor(0.5);
    ASSERT_NE(frame(), nullptr);
    EXPECT_TRUE(isReading());
    openGate();
    ASSERT_TRUE(
        runUntil([] { return !isReading() && (!frame() || !frame()->loader().isLoading()); }));
    runFor(0.3);
    if (frame()) {
        EXPECT_TRUE(screen.closeWindow(frame()->GetTitle().utf8_string()));
    }
    EXPECT_TRUE(runUntil([] { return frame() == nullptr; }));
}

TEST_F(CloseDuringLoadTest, WindowManagersCloseOfTheProgressDialogDoesNotStopTheReader) {
    startAndLoad();
    const Screen screen;
    ASSERT_TRUE(screen.closeWindow("Process "));
    runFor(0.5);
    EXPECT_TRUE(isReading());
    EXPECT_TRUE(frame()->loader().isLoading());
    openGate();
    EXPECT_TRUE(runUntil([] { return frame()->viewer().exists(); }));
}

TEST_F(CloseDuringLoadTest, FrameGoesOnlyAfterTheDialogThatIsOpenAtTheEndOfTheLoad) {
    start();
    load(writeTestModel());
    choose(Command::MeasureTable);
    frame()->openFile(writeSlowModel("gate.slow", "gate"));
    ASSERT_TRUE(runUntil([] { return isReading(); }));
    withNextDialog([](wxDialog& folders) {
        frame()->Close();
        openGate();
        EXPECT_TRUE(runUntil([&] { return !folders.IsModal(); }));
        // Below the dialog's loop the table still waits for its answer.
        ASSERT_NE(frame(), nullptr);
    });
    pressSave(*frame()->measurementTable());
    EXPECT_TRUE(runUntil([] { return frame() == nullptr; }));
    EXPECT_EQ(modelsRead(), 1);
}

TEST_F(CloseDuringLoadTest, ClosedFrameStartsNoLoad) {
    start();
    // The frame is deleted later, and what was queued for it may still come.
    frame()->Close();
    ASSERT_NE(frame(), nullptr);
    frame()->openFile(writeSlowModel("gate.slow", "gate"));
    EXPECT_FALSE(frame()->loader().isLoading());
    EXPECT_TRUE(runUntil([] { return frame() == nullptr; }));
    EXPECT_EQ(modelsRead(), 0);
    EXPECT_EQ(readFile("datafile.json").find("gate.slow"), std::string::npos);
}

TEST_F(CloseDuringLoadTest, ClosedFrameFollowsNoCommand) {
    start();
    const int toolbarBefore = appSettings().tool_show;
    frame()->Close();
    ASSERT_NE(frame(), nullptr);
    wxCommandEvent event(wxEVT_MENU, frame()->bars().menuId(Command::Toolbar));
    event.SetInt(toolbarBefore == 0);
    frame()->ProcessWindowEvent(event);
    EXPECT_EQ(appSettings().tool_show, toolbarBefore);
    EXPECT_TRUE(runUntil([] { return frame() == nullptr; }));
}

TEST_F(CloseDuringLoadTest, WholeProgramEndsWell) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish);
    ChildProcess program(
        {ORBISK_WITH_TIPS, portOfNobody, writeSlowModel("model.slow", "seconds 5")});
    const Screen screen;
    ASSERT_TRUE(runUntil([&screen] {
        const auto titles = screen.titles();
        return std::find(titles.begin(), titles.end(), "Process ") != titles.end();
    }));
    screen.closeWindow("Process ");
    screen.closeWindow("Kelvane");
    runFor(0.5);
    EXPECT_TRUE(program.isRunning());
    // While the progress dialog is up, the window manager may not be listened to.
    ASSERT_TRUE(runUntil([&] {
        screen.closeWindow("Kelvane");
        return !program.isRunning();
    }));
    EXPECT_EQ(program.wait(), 0) << program.errorOutput();
    EXPECT_NE(readFile("datafile.json").find("model.slow"), std::string::npos);
}

} // namespace orbisk::test
