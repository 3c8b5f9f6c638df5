// The export of a million vertices against one that prints the same bytes with the C library.

#include "measure/MeasurementExport.h"
#include "support/Report.h"
#include "support/WorkFolder.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using namespace orbisk;
using namespace orbisk::bench;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int lineCount = 1000;
constexpr int verticesPerLine = 1000;
constexpr int repetitions = 7;
const Subject subject{"export 1 000 000 vertices", "ms", Choice::Lowest,
                      Wanted{Wanted::Bound::AtMost, 1.2}};

/// Lines with coordinates as surveys have them.
MeasurementSet makeLines() {
    MeasurementSet set;
    set.lines.resize(lineCount);
    for (int i = 0; i < lineCount; ++i)
        for (int k = 0; k < verticesPerLine; ++k)
            set.lines[static_cast<std::size_t>(i)].emplace_back(
                512000.0 + i * 7.3 + std::sin(k), 5412000.0 + k * 1.37, 300.0 + std::cos(i + k));
    return set;
}

void printLine(std::FILE* file, std::size_t number, const MeasureLine& line) {
    double sum = 0.0;
    for (std::size_t k = 1; k < line.size(); ++k)
        sum += (line[k] - line[k - 1]).length();
    for (std::size_t k = 0; k < line.size(); ++k) {
        const double length = k == 0 ? 0.0 : (line[k] - line[k - 1]).length();
        std::fprintf(file, "%d,%d,%.3f,%.3f,%.3f,%.3f", static_cast<int>(number),
                     static_cast<int>(k + 1), line[k].x(), line[k].y(), line[k].z(), length);
        if (k == 0)
            std::fprintf(file, ",%.3f\n", sum);
        else
            std::fputc('\n', file);
    }
}

void printLines(const MeasurementSet& set, const fs::path& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "w"),
                                                               std::fclose);
    if (!file)
        throw std::runtime_error("cannot write " + path.string());
    std::fputs("#id_lines,id_points,x,y,z,length,lengths\n", file.get());
    for (std::size_t i = 0; i < set.lines.size(); ++i)
        printLine(file.get(), i + 1, set.lines[i]);
}

/// The table is rebuilt each time, so that its totals are computed within the measurement.
void exportLines(const MeasurementSet& set, const fs::path& folder) {
    const VertexRows rows(set.lines, extendLength);
    const auto text = [&rows](std::string& to, std::size_t row, VertexColumn column) {
        rows.appendText(to, row, column);
    };
    exportMeasurements(set, folder.string(), {text, nullptr});
}

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <class Work>
double milliseconds(const Work& work) {
    const auto begin = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

void measure(Report& report) {
    if (!report.wants(subject.name))
        return;
    const MeasurementSet set = makeLines();
    const WorkFolder folder;
    const fs::path printed = folder.path() / "printed.csv";
    report.add(subject, interleave(
                            repetitions,
                            [&] { return milliseconds([&] { exportLines(set, folder.path()); }); },
                            [&] { return milliseconds([&] { printLines(set, printed); }); }));
    const std::string bytes = bytesOf(printed);
    if (bytesOf(folder.path() / "PickData" / "Lines.csv") != bytes)
        throw std::runtime_error("the two files differ");
    Report::note("bytes written by each: " + std::to_string(bytes.size()));
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
