// Time from the start of the process to its shown frame: the program, started for the first time,
// against one with nothing but an empty frame.

#include "support/ChildProcess.h"
#include "support/Report.h"
#include "support/ShownWindow.h"
#include "support/WorkFolder.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int repetitions = 21;
/// In which server and window manager put away what the last one left.
constexpr auto rest = std::chrono::milliseconds(200);
constexpr auto longestWait = std::chrono::seconds(60);
const orbisk::bench::Subject subject{
    "process start to shown frame", "ms", orbisk::bench::Choice::Median,
    orbisk::bench::Wanted{orbisk::bench::Wanted::Bound::AtMost, 2.0}};

/// Milliseconds until the window of this title is on the screen; it is gone again afterwards.
double timeToFrame(const orbisk::bench::ShownWindow& window, const fs::path& program,
                   const std::string& title, const fs::path& folder) {
    std::chrono::duration<double, std::milli> time{};
    {
        const auto begin = Clock::now();
        const orbisk::bench::ChildProcess child({program.string()}, folder);
        window.waitUntilShown(title, longestWait);
        time = Clock::now() - begin;
    }
    window.waitUntilGone(title, longestWait);
    std::this_thread::sleep_for(rest);
    return time.count();
}

void measure(orbisk::bench::Report& report) {
    if (!report.wants(subject.name))
        return;
    const orbisk::bench::WorkFolder folder;
    const orbisk::bench::ShownWindow window;
    const auto ours = [&] {
        return timeToFrame(window, fs::path(ORBISK_STAGE_DIR) / "orbisk", "Kelvane", folder.path());
    };
    const auto theirs = [&] {
        return timeToFrame(window, fs::path(ORBISK_BENCH_HELPERS_DIR) / "EmptyFrame", "Empty frame",
                           folder.path());
    };
    // Brings both programs and their libraries into the machine's memory.
    orbisk::bench::interleave(1, ours, theirs);
    report.add(subject, orbisk::bench::interleave(repetitions, ours, theirs));
}

} // namespace

int main(int argc, char** argv) {
    return orbisk::bench::Report::run(argc, argv, measure);
}
