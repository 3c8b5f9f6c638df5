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

int takePicture(const orbisk::CommandLine& commandLine) {
    // What failed is said once, by this program.
    limitLibraryMessages(osg::FATAL);
    orbisk::AppSettings& settings = orbisk::appSettings();
    if (const auto error = orbisk::loadSettings(settings, {}, orbisk::settingsPathEncoding()))
        return fail(std::string(orbisk::settingsFileName) + ": " + error->message);
    if (!orbisk::platform::hasDisplay())
        return fail("there is no display to draw with");
    const auto error =
        orbisk::takeScreenshot(*commandLine.screenshot, *commandLine.model, settings);
    return error ? fail(*error) : EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    orbisk::platform::prepareProcess();
    const orbisk::CommandLine commandLine =
        orbisk::parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (commandLine.error)
        return fail(*commandLine.error);
    if (commandLine.help)
        return std::fputs(orbisk::commandLineHelp().c_str(), stdout) < 0;
    if (commandLine.version)
        return std::fputs(orbisk::versionLine().c_str(), stdout) < 0;
    if (commandLine.screenshot)
        return takePicture(commandLine);
    if (commandLine.model)
        orbisk::OrbiskApp::openAtStart(orbisk::platform::pathText(*commandLine.model));
    limitLibraryMessages(osg::WARN);
    return wxEntry(argc, argv);
}
