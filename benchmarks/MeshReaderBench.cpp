// Time and memory for reading large meshes, by the program's readers and by those that
// come with the library. Each reading is a process of its own, so that its memory is its own.

#include "readers/ModelReaders.h"
#include "support/Report.h"
#include "support/WorkFolder.h"

#include <osg/Notify>
#include <osgDB/Registry>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace orbisk::bench;

constexpr int repetitions = 5;
constexpr double kibibytesPerMebibyte = 1024.0;

/// Vertices along each side of the grids.
constexpr int plySide = 1600;
constexpr int flatStlSide = 300;
constexpr int hillyStlSide = 140;

/// One of the files, and what is wanted of reading it.
struct Case {
    std::string name;
    std::string extension;
    void (*write)(const std::string& path);
};

struct Figures {
    double milliseconds;
    double mebibytes;
};

float heightAt(int column, int row) {
    return 5.0f * std::sin(0.01f * static_cast<float>(column)) *
           std::cos(0.013f * static_cast<float>(row));
}

template <class Number>
void put(std::string& bytes, Number number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void putPoint(std::string& bytes, int column, int row) {
    put(bytes, static_cast<float>(column));
    put(bytes, static_cast<float>(row));
    put(bytes, heightAt(column, row));
}

/// Calls `put` with the corners of both triangles of each cell.
template <class Put>
void forEachTriangle(int side, const Put& put) {
    for (int row = 0; row + 1 < side; ++row) {
        for (int column = 0; column + 1 < side; ++column) {
            put(column, row, column + 1, row, column, row + 1);
            put(column + 1, row, column + 1, row + 1, column, row + 1);
        }
    }
}

void writePlyOf(const std::string& path, bool withNormals) {
    constexpr int triangles = 2 * (plySide - 1) * (plySide - 1);
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " +
                        std::to_string(plySide * plySide) +
                        "\nproperty float x\nproperty float y\nproperty float z\n";
    if (withNormals)
        bytes += "property float nx\nproperty float ny\nproperty float nz\n";
    bytes += "element face " + std::to_string(triangles) +
             "\nproperty list uchar int vertex_indices\nend_header\n";
    for (int row = 0; row < plySide; ++row) {
        for (int column = 0; column < plySide; ++column) {
            putPoint(bytes, column, row);
            if (withNormals)
                for (const float part : {0.0f, 0.0f, 1.0f})
                    put(bytes, part);
        }
    }
    forEachTriangle(plySide, [&](int ax, int ay, int bx, int by, int cx, int cy) {
        put(bytes, std::uint8_t{3});
        for (const int index : {ay * plySide + ax, by * plySide + bx, cy * plySide + cx})
            put(bytes, index);
    });
    std::ofstream(path, std::ios::binary) << bytes;
}

void writePly(const std::string& path) {
    writePlyOf(path, false);
}

void writePlyWithNormals(const std::string& path) {
    writePlyOf(path, true);
}

void writeStlOf(const std::string& path, int side, bool isFlat) {
    constexpr std::size_t headerSize = 80;
    std::string bytes(headerSize, ' ');
    put(bytes, static_cast<std::uint32_t>(2 * (side - 1) * (side - 1)));
    const auto putCorner = [&](int column, int row) {
        put(bytes, static_cast<float>(column));
        put(bytes, static_cast<float>(row));
        put(bytes, isFlat ? 0.0f : heightAt(column, row));
    };
    forEachTriangle(side, [&](int ax, int ay, int bx, int by, int cx, int cy) {
        for (int i = 0; i < 3; ++i)
            put(bytes, 0.0f);
        putCorner(ax, ay);
        putCorner(bx, by);
        putCorner(cx, cy);
        put(bytes, std::uint16_t{0});
    });
    std::ofstream(path, std::ios::binary) << bytes;
}

/// All facets look the same way, so that corners are one vertex.
void writeFlatStl(const std::string& path) {
    writeStlOf(path, flatStlSide, true);
}

/// No facet shares a vertex with another. The library's time grows with the square of their number.
void writeHillyStl(const std::string& path) {
    writeStlOf(path, hillyStlSide, false);
}

const Case cases[] = {{"read 100 MB ply", "ply", writePly},
                      {"read 130 MB ply with normals", "ply", writePlyWithNormals},
                      {"read 9 MB flat stl", "stl", writeFlatStl},
                      {"read 2 MB hilly stl", "stl", writeHillyStl}};

/// The library's reader, which isn't registered before it is asked for.
osgDB::ReaderWriter* libraryReader(const std::string& extension) {
    return osgDB::Registry::instance()->getReaderWriterForExtension(extension);
}

/// Reads a file in a process of its own.
Figures measureReading(osgDB::ReaderWriter* reader, const std::string& path) {
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        const auto begin = std::chrono::steady_clock::now();
        const bool isRead = reader->readNode(path, nullptr).validNode();
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - begin;
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const Figures figures{isRead ? time.count() : -1.0,
                              static_cast<double>(usage.ru_maxrss) / kibibytesPerMebibyte};
        const bool isWritten = write(ends[1], &figures, sizeof figures) == sizeof figures;
        _exit(isWritten ? 0 : 1);
    }
    Figures figures{};
    const bool isThere = read(ends[0], &figures, sizeof figures) == sizeof figures;
    close(ends[0]);
    close(ends[1]);
    waitpid(child, nullptr, 0);
    if (!isThere || figures.milliseconds < 0.0)
        throw std::runtime_error("reading " + path + " failed");
    return figures;
}

void measure(Report& report, const Case& which) {
    const WorkFolder folder;
    const std::string path = folder.path() / ("model." + which.extension);
    which.write(path);
    Samples memory;
    const auto reading = [&](osgDB::ReaderWriter* reader, std::vector<double>& samples) {
        const Figures figures = measureReading(reader, path);
        samples.push_back(figures.mebibytes);
        return figures.milliseconds;
    };
    const Samples times = interleave(
        repetitions, [&] { return reading(orbisk::modelReaderFor(which.extension), memory.ours); },
        [&] { return reading(libraryReader(which.extension), memory.theirs); });
    report.add({which.name, "ms", Choice::Lowest, Wanted{Wanted::Bound::AtMost, 1.0}}, times);
    report.add({which.name + ", memory", "MiB", Choice::Median, std::nullopt}, memory);
}

} // namespace

int main(int argc, char** argv) {
    osg::setNotifyLevel(osg::ALWAYS);
    return Report::run(argc, argv, [](Report& report) {
        for (const Case& which : cases)
            if (report.wants(which.name))
                measure(report, which);
    });
}
