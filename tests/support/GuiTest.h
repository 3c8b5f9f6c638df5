#pragma once

#include "app/OrbiskMain.h"
#include "settings/AppSettings.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <wx/dialog.h>

#include <functional>
#include <string>

namespace orbisk::test {

/// Runs the real program in a real window: a test prepares the working directory, starts the
/// application, drives it and looks at it. The working directory is a fresh folder that holds the
/// run-time files (sky, catalog, help, samples) as links, and no settings file.
class GuiTest : public ::testing::Test {
protected:
    GuiTest();
    ~GuiTest() override;

    /// Starts the application; its frame is on the screen afterwards. Without a settings file of
    /// the test's own, an English one with an 900 x 700 window stands there.
    void start();

    /// Writes a settings file with this rectangle, language and recent paths.
    static void writeSettings(const std::string& rect, int language,
                              const std::string& recentJson = "[]", int sky = 1, int tool = 1);

    /// The frame; null before `start` and after it was closed.
    static OrbiskFrame* frame();

    /// Lets the program run until `done` holds. @return whether it did within `seconds`.
    static bool runUntil(const std::function<bool()>& done, double seconds = 30.0);

    /// Lets the program run for a while.
    static void runFor(double seconds);

    /// Opens a model as the menu does and waits for the end of the load.
    static void load(const std::string& path);

    /// Sends the menu event of a command, as a click on its item does; a check command gets the
    /// opposite state of the one it shows.
    static void choose(Command command);

    /// Clicks a command's tool in the tool bar with the mouse.
    static void clickTool(Command command);

    /// Closes the frame and waits until it is gone.
    static void close();

    /// Path of a sample model in the stage.
    static std::string sample(const std::string& name);

    /// While the next modal dialog is up, runs `act` on it; `act` must end it.
    static void withNextDialog(std::function<void(wxDialog&)> act);

private:
    WorkingFolder m_folder;
};

} // namespace orbisk::test
