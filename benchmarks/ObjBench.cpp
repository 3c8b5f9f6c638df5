// Reading a 100 MB OBJ file, and the most memory held meanwhile, with the program's reader and with
// the library's.

#include "support/ChildProcess.h"
#include "support/Report.h"
#include "support/WorkFolder.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using namespace orbisk::bench;

constexpr int repetitions = 5;
const Subject duration{"read 100 MB OBJ", "ms", Choice::Lowest,
                       Wanted{Wanted::Bound::AtMost, 1.0 / 3.0}};
const Subject peak{"read 100 MB OBJ, peak", "MiB", Choice::Median,
                   Wanted{Wanted::Bound::AtMost, 1.0}};

/// A textured terrain as a survey program writes it: a grid of triangles near the origin.
void writeTerrain(const std::filesystem::path& path) {
    constexpr int across = 910;
    constexpr double spacing = 0.5;
    constexpr double height = 10.0;
    constexpr std::size_t longestLine = 120;
    std::ofstream file(path);
    char line[longestLine];
    for (int y = 0; y < across; ++y)
        for (int x = 0; x < across; ++x) {
            std::snprintf(line, sizeof line, "v %.3f %.3f %.3f\nvt %.5f %.5f\n", x * spacing,
                          height * std::sin(x * 0.03) * std::cos(y * 0.02), y * spacing,
                          static_cast<double>(x) / across, static_cast<double>(y) / across);
            file << line;
        }
    for (int y = 0; y + 1 < across; ++y)
        for (int x = 0; x + 1 < across; ++x) {
            const int a = y * across + x + 1;
            const int b = a + 1;
            const int c = a + across;
            const int d = c + 1;
            std::snprintf(line, sizeof line, "f %d/%d %d/%d %d/%d\nf %d/%d %d/%d %d/%d\n", a, a, b,
                          b, d, d, a, a, d, d, c, c);
            file << line;
        }
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

struct Reading {
    double milliseconds = 0.0;
    double mebibytes = 0.0;
};

Reading read(const char* reader, const std::filesystem::path& file) {
    constexpr double kibibytesPerMebibyte = 1024.0;
    const std::filesystem::path helper =
        std::filesystem::path(ORBISK_BENCH_HELPERS_DIR) / "ReadObj";
    std::istringstream printed(
        ChildProcess({helper.string(), reader, file.string()}, file.parent_path()).output());
    Reading reading;
    if (!(printed >> reading.milliseconds >> reading.mebibytes))
        throw std::runtime_error(std::string(reader) + " failed");
    reading.mebibytes /= kibibytesPerMebibyte;
    return reading;
}

void measure(Report& report) {
    if (!report.wants(duration.name) && !report.wants(peak.name))
        return;
    const WorkFolder folder;
    const std::filesystem::path file = folder.path() / "terrain.obj";
    writeTerrain(file);
    Samples memory;
    const auto readWith = [&](const char* reader, std::vector<double>& mebibytes) {
        const Reading reading = read(reader, file);
        mebibytes.push_back(reading.mebibytes);
        return reading.milliseconds;
    };
    const Samples times = interleave(
        repetitions, [&] { return readWith("program", memory.ours); },
        [&] { return readWith("library", memory.theirs); });
    if (report.wants(duration.name))
        report.add(duration, times);
    if (report.wants(peak.name))
        report.add(peak, memory);
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
