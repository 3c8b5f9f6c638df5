#pragma once

#include "app/OrbiskMain.h"
#include "settings/AppSettings.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <wx/dialog.h>
#include <wx/evtloop.h>

#include <filesystem>
#include <functional>
#include <string>

namespace orbisk::test {

/// Runs the real program in a real window: a test prepares the working directory, starts the
/// application, drives it and looks at it. The working directory is a fresh folder that holds the
/// run-time files (sky, catalog, help) as links, and no settings file. Nobody is asked for a tip,
/// unless the test has a server for it. A failed assertion of the toolkit and a dialog that no test
/// waits for fail the test.
class GuiTest : public ::testing::Test {
protected:
    GuiTest();
    ~GuiTest() override;

    /// Starts the application; its frame is on the screen afterwards. Without a settings file of
    /// the test's own, an English one with an 900 x 700 window stands there. After `close` it may
    /// be started again.
    void start();

    /// The same where the frame has no room for anything to be painted in it.
    void startWithoutRoom();

    /// Writes a settings file with this rectangle, language and recent paths.
    static void writeSettings(const std::string& rect, int language,
                              const std::string& recentJson = "[]", int sky = 1, int tool = 1);

    /// The frame; null before `start` and after it was closed.
    static OrbiskFrame* frame();

    /// Lets the program run until `done` holds. @return whether it did within `seconds`.
    static bool runUntil(const std::function<bool()>& done, double seconds = 30.0);

    /// Lets the program run for a while.
    static void runFor(double seconds);

    /// Runs the program's own event loop. @return whether it ended by itself within `seconds`.
    static bool runToEnd(double seconds = 30.0);

    /// Opens a model as the menu does and waits for the end of the load.
    static void load(const std::string& path);

    /// Chooses a command's menu item; that of a check command changes its state first, as the
    /// toolkit has it.
    static void choose(Command command);

    static wxMenuItem& menuItem(Command command);

    /// Whether the command's tool shows a check.
    static bool isToolChecked(Command command);

    /// Clicks a command's tool in the tool bar with the mouse.
    static void clickTool(Command command);

    /// Clicks into the middle of a window with the mouse.
    static void click(const wxWindow& window);

    /// A place inside a window in screen coordinates, for the mouse.
    static wxPoint onScreen(const wxWindow& window, const wxPoint& place);

    /// Closes the frame and waits until it is gone.
    static void close();

    /// Number of threads and of open files of this process.
    static std::size_t threadCount();
    static std::size_t openFileCount();

    /// Runs this test once more, in a process that has these variables from its start on.
    /// @return true in that process: there the test goes on; false here, where it is done.
    static bool inEnvironment(const Environment& environment);

    /// Path of a sample model in the stage.
    static std::string sample(const std::string& name);

    /// While the next modal dialog is up, runs `act` on it; `act` must end it. Called again before
    /// that, it is for the dialog after.
    static void withNextDialog(std::function<void(wxDialog&)> act);

    /// The next modal dialog is not shown but gets this answer.
    static void answerNextDialog(int answer);

    /// The next dialog has to be one for files: `path` is chosen there.
    static void chooseInNextFileDialog(const std::string& path);

    /// Presses the button that saves in a measurement table.
    static void pressSave(wxWindow& table);

    /// Does so, and chooses a folder in the dialog that it shows. @return the working directory
    /// thereafter; it is the former one again.
    static std::filesystem::path saveTableInto(wxWindow& table,
                                               const std::filesystem::path& folder);

    /// Whether such a dialog has yet to come.
    static bool isDialogAwaited();

private:
    WorkingFolder m_folder;
    wxGUIEventLoop m_loop;
};

} // namespace orbisk::test
