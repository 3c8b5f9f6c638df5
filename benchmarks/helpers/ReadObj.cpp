// Reads an OBJ file once, with the program's reader or with the library's, and prints the
// milliseconds it took and the most memory held, in KiB.
// Usage: ReadObj program|library FILE

#include "readers/ModelReaders.h"

#include <osg/Node>
#include <osgDB/Options>
#include <osgDB/Registry>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    if (argc != 3)
        return EXIT_FAILURE;
    osgDB::Registry& registry = *osgDB::Registry::instance();
    osgDB::ReaderWriter* const reader = std::string(argv[1]) == "program"
                                            ? orbisk::modelReaderFor("obj")
                                            : registry.getReaderWriterForExtension("obj");
    const auto start = std::chrono::steady_clock::now();
    const osg::ref_ptr<osg::Node> scene = reader->readNode(argv[2], nullptr).getNode();
    const std::chrono::duration<double, std::milli> duration =
        std::chrono::steady_clock::now() - start;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%f %ld\n", duration.count(), usage.ru_maxrss);
    return scene && scene->getBound().valid() ? EXIT_SUCCESS : EXIT_FAILURE;
}
