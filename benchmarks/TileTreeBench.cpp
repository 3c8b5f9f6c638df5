// A roam over a tree of 1 365 tiles, 53 million triangles in its finest level, loaded while it is
// flown over: frame time and memory against the library's own viewer; picks in flight; and whether
// memory stays what it is on a long flight.

#include "support/ChildProcess.h"
#include "support/Report.h"
#include "support/WorkFolder.h"

#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace orbisk::bench;
namespace fs = std::filesystem;

constexpr int levels = 6;
constexpr int cellsAcrossTile = 160;
constexpr int repetitions = 3;
constexpr int windowWidth = 1000;
constexpr int windowHeight = 700;
/// A round of the roam, and several, in seconds.
constexpr int oneRound = 35;
constexpr int longFlight = 4 * oneRound;
constexpr int pickEveryMilliseconds = 100;
constexpr double kibibytesPerMebibyte = 1024.0;

const Subject frameTime{"roam over 53 M triangles in tiles, frame", "ms", Choice::Lowest,
                        Wanted{Wanted::Bound::AtMost, 1.0 / 0.95}};
const Subject slowFrame{"roam over 53 M triangles in tiles, slow frame", "ms", Choice::Lowest,
                        std::nullopt};
const Subject peak{"roam over 53 M triangles in tiles, peak", "MiB", Choice::Median,
                   Wanted{Wanted::Bound::AtMost, 1.3}};
/// A pick follows the pointer: it may take as long as a frame at sixty of them a second.
const Limit pickTime{"roam over 53 M triangles in tiles, pick", "ms",
                     Wanted{Wanted::Bound::AtMost, 16.0}};
const Limit slowPick{"roam over 53 M triangles in tiles, slow pick", "ms",
                     Wanted{Wanted::Bound::AtMost, 50.0}};
const Limit growth{"four rounds over the tiles, peak to that of two", "times",
                   Wanted{Wanted::Bound::AtMost, 1.1}};

/// How a flight went.
struct Flight {
    double frame = 0.0; ///< milliseconds
    double slowFrame = 0.0;
    double peakMebibytes = 0.0;
    double halfTimePeakMebibytes = 0.0;
    double pick = 0.0; ///< milliseconds
    double slowPick = 0.0;
    int width = 0; ///< of the view, pixels
    int height = 0;
};

/// The libraries print remarks of their own before.
std::string lastLine(std::string text) {
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

/// Flies over the tile tree, each time in a new process.
class Tiles {
public:
    /// Makes the tree, which takes minutes, unless the environment names one that is kept.
    Tiles() {
        // The other side has no sky.
        m_folder.writeSettings(windowWidth, windowHeight, false);
        const char* kept = std::getenv("ORBISK_TILE_TREE");
        m_tree = kept ? fs::path(kept) : m_folder.path() / "tree";
        if (!kept)
            ChildProcess({ORBISK_MAKE_SAMPLES, "--tile-tree", std::to_string(levels),
                          std::to_string(cellsAcrossTile), m_tree.string()},
                         m_folder.path())
                .output();
        m_tree /= "tiles.osgb";
        if (!fs::exists(m_tree))
            throw std::runtime_error("there is no " + m_tree.string());
    }

    Flight inProgram(int seconds, int pickEvery) {
        const Flight flight = fly(
            "FlyInProgram", {m_tree.string(), std::to_string(seconds), std::to_string(pickEvery)});
        m_width = flight.width;
        m_height = flight.height;
        return flight;
    }

    /// In a window like the program's last one.
    Flight inLibrary(int seconds) {
        return fly("FlyInLibrary", {m_tree.string(), std::to_string(seconds),
                                    std::to_string(m_width), std::to_string(m_height)});
    }

private:
    Flight fly(const char* helper, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), (fs::path(ORBISK_BENCH_HELPERS_DIR) / helper).string());
        std::istringstream printed(lastLine(ChildProcess(arguments, m_folder.path()).output()));
        Flight flight;
        if (!(printed >> flight.frame >> flight.slowFrame >> flight.peakMebibytes >>
              flight.halfTimePeakMebibytes >> flight.pick >> flight.slowPick >> flight.width >>
              flight.height))
            throw std::runtime_error(std::string(helper) + " failed");
        for (double* memory : {&flight.peakMebibytes, &flight.halfTimePeakMebibytes})
            *memory /= kibibytesPerMebibyte;
        return flight;
    }

    WorkFolder m_folder;
    fs::path m_tree;
    int m_width = 0;
    int m_height = 0;
};

bool wantsAny(const Report& report, std::initializer_list<std::string> names) {
    for (const std::string& name : names)
        if (report.wants(name))
            return true;
    return false;
}

void compareFlights(Report& report, Tiles& tiles) {
    Samples frames;
    Samples slowFrames;
    Samples peaks;
    for (int i = 0; i < repetitions; ++i) {
        const Flight ours = tiles.inProgram(oneRound, 0);
        const Flight theirs = tiles.inLibrary(oneRound);
        frames.ours.push_back(ours.frame);
        frames.theirs.push_back(theirs.frame);
        slowFrames.ours.push_back(ours.slowFrame);
        slowFrames.theirs.push_back(theirs.slowFrame);
        peaks.ours.push_back(ours.peakMebibytes);
        peaks.theirs.push_back(theirs.peakMebibytes);
    }
    report.add(frameTime, frames);
    report.add(slowFrame, slowFrames);
    report.add(peak, peaks);
}

void measure(Report& report) {
    const bool compares = wantsAny(report, {frameTime.name, slowFrame.name, peak.name});
    const bool picks = wantsAny(report, {pickTime.name, slowPick.name, growth.name});
    if (!compares && !picks)
        return;
    Tiles tiles;
    if (compares)
        compareFlights(report, tiles);
    if (!picks)
        return;
    const Flight flight = tiles.inProgram(longFlight, pickEveryMilliseconds);
    report.add(pickTime, flight.pick);
    report.add(slowPick, flight.slowPick);
    report.add(growth, flight.peakMebibytes / flight.halfTimePeakMebibytes);
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
