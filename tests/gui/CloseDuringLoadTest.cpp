#include "support/ChildProcess.h"
#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "support/TestReader.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>

namespace orbisk::test {

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

TEST_F(CloseDuringLoadTest, WholeProgramEndsWell) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish);
    // A reader waits at a pipe until somebody writes into it.
    ASSERT_EQ(mkfifo("model.obj", 0600), 0);
    ChildProcess program({std::string(ORBISK_STAGE_DIR) + "/orbisk", "model.obj"});
    const Screen screen;
    ASSERT_TRUE(runUntil([&screen] {
        const auto titles = screen.titles();
        return std::find(titles.begin(), titles.end(), "Process ") != titles.end();
    }));
    screen.closeWindow("Process ");
    screen.closeWindow("Kelvane");
    runFor(0.5);
    EXPECT_TRUE(program.isRunning());
    std::ofstream("model.obj") << "v 0 0 0\nv 9 0 0\nv 0 9 0\nf 1 2 3\n";
    ASSERT_TRUE(runUntil([&] {
        screen.closeWindow("Kelvane");
        return !program.isRunning();
    }));
    EXPECT_EQ(program.wait(), 0) << program.errorOutput();
    EXPECT_NE(readFile("datafile.json").find("model.obj"), std::string::npos);
}

} // namespace orbisk::test
