#include "app/Program.h"

#include "app/CommandLine.h"
#include "app/OrbiskApp.h"
#include "app/SettingsText.h"
#include "platform/Platform.h"
#include "settings/AppSettings.h"
#include "settings/SettingsFile.h"
#include "view/Screenshot.h"

#include <osg/Notify>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace orbisk {

namespace {

int fail(const std::string& message) {
    std::fprintf(stderr, "orbisk: %s\n", message.c_str());
    return EXIT_FAILURE;
}

/// The scene-graph library's own messages can still be asked for.
void limitLibraryMessages(osg::NotifySeverity level) {
    if (!std::getenv("OSG_NOTIFY_LEVEL"))
        osg::setNotifyLevel(level);
}

int takePicture(const CommandLine& commandLine) {
    // What failed is said once, by this program.
    limitLibraryMessages(osg::FATAL);
    AppSettings& settings = appSettings();
    if (const auto error = loadSettings(settings, {}, settingsPathEncoding()))
        return fail(std::string(settingsFileName) + ": " + error->message);
    if (!platform::hasDisplay())
        return fail("there is no display to draw with");
    const auto error = takeScreenshot(*commandLine.screenshot, *commandLine.model, settings);
    return error ? fail(*error) : EXIT_SUCCESS;
}

} // namespace

int runProgram(int argc, char** argv) {
    platform::prepareProcess();
    const CommandLine commandLine =
        parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (commandLine.error)
        return fail(*commandLine.error);
    if (commandLine.help)
        return std::fputs(commandLineHelp().c_str(), stdout) < 0;
    if (commandLine.version)
        return std::fputs(versionLine().c_str(), stdout) < 0;
    if (commandLine.screenshot)
        return takePicture(commandLine);
    if (commandLine.model)
        OrbiskApp::openAtStart(platform::pathText(*commandLine.model));
    limitLibraryMessages(osg::WARN);
    return wxEntry(argc, argv);
}

} // namespace orbisk
