#pragma once

#include "view/ReadRules.h"

#include <osg/ref_ptr>
#include <osgDB/FileNameUtils>
#include <osgDB/ReaderWriter>
#include <osgDB/Registry>

#include <functional>
#include <string>
#include <vector>

namespace orbisk::test {

/// The file extension that a test's own reader and writer stand for.
inline constexpr const char* testExtension = "orbisktest";

/// A reader and writer that does what a test tells it and notes the option texts it is given.
class ScriptedPlugin : public osgDB::ReaderWriter {
public:
    ScriptedPlugin() { supportsExtension(testExtension, "made by a test"); }

    const char* className() const override { return "ScriptedPlugin"; }

    ReadResult readNode(const std::string& file, const Options* options) const override {
        if (!isOurs(file))
            return ReadResult::FILE_NOT_HANDLED;
        note(options);
        return onRead ? onRead() : ReadResult(ReadResult::ERROR_IN_READING_FILE);
    }

    WriteResult writeNode(const osg::Node& node, const std::string& file,
                          const Options* options) const override {
        if (!isOurs(file))
            return WriteResult::FILE_NOT_HANDLED;
        note(options);
        return onWrite ? onWrite(node, file) : WriteResult(WriteResult::ERROR_IN_WRITING_FILE);
    }

    WriteResult writeImage(const osg::Image&, const std::string& file,
                           const Options*) const override {
        if (!isOurs(file))
            return WriteResult::FILE_NOT_HANDLED;
        return onWriteImage ? onWriteImage() : WriteResult(WriteResult::ERROR_IN_WRITING_FILE);
    }

    std::function<ReadResult()> onRead;
    /// Is given the name of the file that is to be written.
    std::function<WriteResult(const osg::Node&, const std::string&)> onWrite;
    std::function<WriteResult()> onWriteImage;
    mutable std::vector<std::string> optionTexts;

private:
    /// The library offers a file to whatever is registered.
    static bool isOurs(const std::string& file) {
        return osgDB::getLowerCaseFileExtension(file) == testExtension;
    }

    void note(const Options* options) const {
        optionTexts.push_back(options ? options->getOptionString() : "no options");
    }
};

/// Keeps a scripted plug-in registered while it lives.
class PluginInTest {
public:
    PluginInTest() {
        allowReading(testExtension);
        osgDB::Registry::instance()->addReaderWriter(m_plugin);
    }

    ~PluginInTest() { osgDB::Registry::instance()->removeReaderWriter(m_plugin); }

    PluginInTest(const PluginInTest&) = delete;
    PluginInTest& operator=(const PluginInTest&) = delete;

    ScriptedPlugin* operator->() const { return m_plugin.get(); }

private:
    osg::ref_ptr<ScriptedPlugin> m_plugin = new ScriptedPlugin;
};

} // namespace orbisk::test
