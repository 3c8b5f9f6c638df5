#include "support/TestReader.h"

#include "support/TemporaryFolder.h"
#include "support/TestModels.h"
#include "view/ReadRules.h"

#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/ReaderWriter>
#include <osgDB/Registry>

#include <atomic>
#include <chrono>
#include <new>
#include <stdexcept>
#include <thread>

namespace orbisk::test {

namespace {

constexpr auto pause = std::chrono::milliseconds(5);

std::atomic<bool> gateOpen{false};
std::atomic<int> reading{0};
std::atomic<int> readToEnd{0};

/// Counts a read while it lasts, however it ends.
struct ReadMark {
    ReadMark() { ++reading; }

    ~ReadMark() { --reading; }
};

void act(const std::string& text) {
    const std::string seconds = "seconds ";
    if (text.compare(0, seconds.size(), seconds) == 0)
        std::this_thread::sleep_for(
            std::chrono::duration<double>(std::stod(text.substr(seconds.size()))));
    while (text == "gate" && !gateOpen)
        std::this_thread::sleep_for(pause);
    if (text == "throw memory")
        throw std::bad_alloc();
    if (text == "throw range")
        throw std::out_of_range("test");
    if (text == "throw number")
        throw 17;
}

class SlowReader : public osgDB::ReaderWriter {
public:
    SlowReader() {
        supportsExtension("slow", "test models");
        allowReading("slow");
    }

    const char* className() const override { return "SlowReader"; }

    ReadResult readNode(const std::string& path, const Options*) const override {
        if (!acceptsExtension(osgDB::getLowerCaseFileExtension(path)))
            return ReadResult::FILE_NOT_HANDLED;
        if (!osgDB::fileExists(path))
            return ReadResult::FILE_NOT_FOUND;
        const ReadMark mark;
        const std::string text = readFile(path);
        act(text);
        if (text == "nothing")
            return ReadResult::ERROR_IN_READING_FILE;
        const osg::ref_ptr<osg::Node> model = makeModel();
        ++readToEnd;
        return model.get();
    }
};

const osgDB::RegisterReaderWriterProxy<SlowReader> registersTheReader;

} // namespace

std::string writeSlowModel(const std::string& name, const std::string& text) {
    writeFile(name, text);
    return (std::filesystem::current_path() / name).string();
}

bool isReading() {
    return reading > 0;
}

int modelsRead() {
    return readToEnd;
}

void openGate() {
    gateOpen = true;
}

} // namespace orbisk::test
