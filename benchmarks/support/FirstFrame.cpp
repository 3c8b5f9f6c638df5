#include "support/FirstFrame.h"

#include "support/ChildProcess.h"
#include "support/Terrain.h"

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace orbisk::bench {

namespace {

constexpr int windowWidth = 1000;
constexpr int windowHeight = 700;
constexpr double kibibytesPerMebibyte = 1024.0;

/// The libraries print remarks of their own before.
std::string lastLine(std::string text) {
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

Opening run(const char* helper, std::vector<std::string> arguments, Purpose purpose,
            const std::filesystem::path& folder) {
    if (purpose == Purpose::Measure)
        arguments.emplace_back("measure");
    arguments.insert(arguments.begin(),
                     (std::filesystem::path(ORBISK_BENCH_HELPERS_DIR) / helper).string());
    std::istringstream printed(lastLine(ChildProcess(arguments, folder).output()));
    Opening opening;
    double kibibytes = 0.0;
    if (!(printed >> opening.milliseconds >> kibibytes >> opening.width >> opening.height))
        throw std::runtime_error(std::string(helper) + " failed");
    opening.peakMebibytes = kibibytes / kibibytesPerMebibyte;
    return opening;
}

} // namespace

FirstFrame::FirstFrame() : m_model(writeLargeModel(m_folder.path())) {
    m_folder.writeSettings(windowWidth, windowHeight);
    m_first = inProgram();
}

Opening FirstFrame::inProgram(Purpose purpose) const {
    return run("OpenInProgram", {m_model.string()}, purpose, m_folder.path());
}

Opening FirstFrame::inLibrary(Purpose purpose) const {
    return run("OpenInLibrary",
               {m_model.string(), std::to_string(m_first.width), std::to_string(m_first.height)},
               purpose, m_folder.path());
}

} // namespace orbisk::bench
