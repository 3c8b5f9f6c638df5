#include "support/TestBrowser.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* resultName = "opened";

fs::path resultPath() {
    return fs::path(std::getenv("HOME")) / resultName;
}

} // namespace

TestBrowser::TestBrowser() {
    // The toolkit reads commands in lower case, so the script is found by its name alone.
    const fs::path script = m_folder.path() / "orbisk-test-browser";
    const std::string result = (m_folder.path() / resultName).string();
    const std::string written = result + ".new";
    writeFile(script, "#!/bin/sh\nprintf '%s|' \"$#\" \"$@\" > " + written + "\nmv " + written +
                          " " + result + "\n");
    chmod(script.c_str(), 0700);
    fs::create_directories(m_folder.path() / "applications");
    writeFile(m_folder.path() / "applications/browser.desktop",
              "[Desktop Entry]\nType=Application\nName=Browser\nMimeType=text/html;\nExec=" +
                  script.filename().string() + " %u\n");
}

Environment TestBrowser::environment() const {
    const std::string folder = m_folder.path().string();
    return {
        {"XDG_DATA_HOME", folder}, {"HOME", folder}, {"PATH", folder + ":" + std::getenv("PATH")}};
}

std::string TestBrowser::opened() {
    return readFile(resultPath());
}

void TestBrowser::forget() {
    fs::remove(resultPath());
}

} // namespace orbisk::test
