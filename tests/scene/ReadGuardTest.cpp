#include "view/ReadGuard.h"

#include "support/LoopbackServer.h"
#include "support/PluginInTest.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/MessageLimit.h"
#include "view/ModelReader.h"
#include "view/ReadRules.h"

#include <gtest/gtest.h>
#include <osg/Notify>
#include <osg/ProxyNode>
#include <osgDB/DatabasePager>
#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

const char* marker = "script-ran";
const char* script = "payload.lua";

class ReadGuardTest : public testing::Test {
protected:
    ReadGuardTest() {
        installReadGuard();
        writeFile(script, std::string("io.open('") + marker + "', 'w'):close()\n");
    }

    static void expectNothingRan() { EXPECT_FALSE(fs::exists(marker)); }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

/// A triangle whose material has this texture.
void writeTexturedModel(const std::string& texture) {
    writeFile("model.mtl", "newmtl m\nmap_Kd " + texture + "\n");
    writeFile("model.obj", "mtllib model.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n"
                           "usemtl m\nf 1/1 2/2 3/3\n");
}

/// A model that stands in another file, named in text as whoever means harm would.
void writeProxy(const std::string& path, const std::string& file) {
    writeFile(path, "#Ascii Scene\n#Version 161\n#Generator OpenSceneGraph 3.6.5\n\n"
                    "osg::ProxyNode {\n  UniqueID 1\n  FileNames 1 {\n    \"" +
                        file + "\"\n  }\n}\n");
}

const std::string pluginPrefix = "osgdb_";

/// The plug-ins in the folders in which the library looks for them.
std::vector<fs::path> installedPlugins() {
    std::vector<fs::path> result;
    const std::string ownFolder = std::string("osgPlugins-") + osgGetVersion();
    for (const fs::path folder : osgDB::Registry::instance()->getLibraryFilePathList())
        for (const fs::path& place : {folder, folder / ownFolder})
            if (fs::is_directory(place))
                for (const auto& entry : fs::directory_iterator(place))
                    if (entry.path().filename().string().compare(0, pluginPrefix.size(),
                                                                 pluginPrefix) == 0)
                        result.push_back(entry.path());
    return result;
}

unsigned int childrenOf(const osg::ref_ptr<osg::Node>& model) {
    return model && model->asGroup() ? model->asGroup()->getNumChildren() : 0;
}

std::string statusOf(const std::string& name) {
    return osgDB::Registry::instance()->readNode(name, nullptr).statusMessage();
}

/// Has the pager read a tile under `parent`, as a model with tiles makes it do.
void readByPager(osg::Group& parent, const std::string& name) {
    const osg::ref_ptr<osgDB::DatabasePager> pager = osgDB::DatabasePager::create();
    const osg::ref_ptr<osg::FrameStamp> stamp = new osg::FrameStamp;
    stamp->setFrameNumber(1);
    osg::NodePath path = {&parent};
    osg::ref_ptr<osg::Referenced> request;
    pager->signalBeginFrame(stamp);
    pager->requestNodeFile(name, path, 1.0f, stamp, request, nullptr);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (pager->getRequestsInProgress() && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (pager->requiresUpdateSceneGraph())
            pager->updateSceneGraph(*stamp);
    }
    pager->updateSceneGraph(*stamp);
    pager->cancel();
}

/// A quad one of whose indices goes beyond its vertices.
osg::ref_ptr<osg::Geode> makeDamagedQuad() {
    osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    dynamic_cast<osg::DrawElementsUByte&>(
        *geode->getDrawable(0)->asGeometry()->getPrimitiveSet(0))[0] = 200;
    return geode;
}

unsigned int primitiveSetsIn(osg::Node& model) {
    osg::Group* group = model.asGroup();
    while (group && !group->asGeode() && group->getNumChildren() > 0)
        group = group->getChild(0)->asGroup();
    const osg::Geode* geode = group ? group->asGeode() : nullptr;
    return geode ? geode->getDrawable(0)->asGeometry()->getNumPrimitiveSets() : 99;
}

} // namespace

TEST_F(ReadGuardTest, TextureThatIsAScriptIsNotRun) {
    writeTexturedModel(script);
    EXPECT_NE(readModel("model.obj"), nullptr);
    expectNothingRan();
}

TEST_F(ReadGuardTest, ProxyOfAScriptIsNotRun) {
    for (const char* name : {"payload.lua", "PAYLOAD.LUA", "payload.lua.", "payload.lua.gz",
                             "payload.lua.90,0,0.rot", "payload.lua.1,1,1.scale"}) {
        if (!fs::exists(name))
            fs::copy_file(script, name);
        writeProxy("model.osgt", name);
        EXPECT_EQ(childrenOf(readModel("model.osgt")), 0u) << name;
        expectNothingRan();
    }
}

TEST_F(ReadGuardTest, TileThatIsAScriptIsNotRun) {
    const osg::ref_ptr<osg::Group> parent = new osg::Group;
    readByPager(*parent, script);
    EXPECT_EQ(parent->getNumChildren(), 0u);
    expectNothingRan();
}

TEST_F(ReadGuardTest, ModelThatIsAScriptIsNotRun) {
    EXPECT_EQ(readModel(script), nullptr);
    EXPECT_EQ(readModel(std::string(script) + ".0,0,0.trans"), nullptr);
    expectNothingRan();
}

TEST_F(ReadGuardTest, NoWayOfReadingRunsAScript) {
    osgDB::readRefObjectFile(script);
    osgDB::readRefImageFile(script);
    osgDB::readRefHeightFieldFile(script);
    osgDB::readRefShaderFile(script);
    osgDB::readRefScriptFile(script);
    osgDB::Registry::instance()->openArchive(script, osgDB::ReaderWriter::READ, 4096, nullptr);
    EXPECT_EQ(osgDB::readRefObjectFile("ScriptEngine.lua"), nullptr);
    expectNothingRan();
}

TEST_F(ReadGuardTest, NothingConnects) {
    LoopbackServer server([](LoopbackServer::Connection&) {});
    const std::string address = "http://127.0.0.1:" + std::to_string(server.port());
    writeTexturedModel(address + "/a.png");
    EXPECT_NE(readModel("model.obj"), nullptr);
    writeProxy("model.osgt", address + "/a.osgt");
    EXPECT_EQ(childrenOf(readModel("model.osgt")), 0u);
    EXPECT_EQ(readModel(address + "/a.osgb"), nullptr);
    writeFile("model.wrl", "#VRML V2.0 utf8\nInline { url \"" + address +
                               "/b.wrl\" }\nShape { appearance Appearance { texture ImageTexture "
                               "{ url \"" +
                               address + "/c.png\" } } geometry Box {} }\n");
    readModel("model.wrl");
    const osg::ref_ptr<osg::Group> parent = new osg::Group;
    readByPager(*parent, address + "/tile.osgb");
    EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(ReadGuardTest, DocumentsThatADocumentRefersToAreNotFetched) {
    LoopbackServer server([](LoopbackServer::Connection&) {});
    // The XML library drops the port of an address, but not that of the proxy it is told to use.
    const std::string proxy = "http://127.0.0.1:" + std::to_string(server.port());
    setenv("http_proxy", proxy.c_str(), 1);
    writeFile("model.dae",
              "<?xml version=\"1.0\"?><COLLADA "
              "xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\">"
              "<library_visual_scenes><visual_scene id=\"S\"><node id=\"n\">"
              "<instance_geometry url=\"http://models.invalid/a.dae#g\"/></node></visual_scene>"
              "</library_visual_scenes><scene><instance_visual_scene url=\"#S\"/></scene>"
              "</COLLADA>");
    readModel("model.dae");
    EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(ReadGuardTest, ArchivesAreNotOpened) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "inner.osgb"));
    for (const char* name : {"a.osga", "a.zip", "a.gz", "a.osgb.gz", "a.tgz", "a.osgtgz"}) {
        fs::copy_file("inner.osgb", name);
        EXPECT_EQ(readModel(name), nullptr) << name;
    }
    EXPECT_NE(statusOf("a.osga/inner.osgb").find("archives"), std::string::npos);
    EXPECT_FALSE(osgDB::Registry::instance()
                     ->openArchive("a.osga", osgDB::ReaderWriter::READ, 4096, nullptr)
                     .validArchive());
}

TEST_F(ReadGuardTest, SharesAreReadOnlyBesideTheModel) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "tile.osgb"));
    const std::string share = "/" + (m_folder.path() / "tile.osgb").string();
    trustFolderOf("/elsewhere/model.osgb");
    EXPECT_FALSE(osgDB::Registry::instance()->readNode(share, nullptr).validNode());
    EXPECT_NE(readModel(share), nullptr);
    EXPECT_TRUE(osgDB::Registry::instance()->readNode(share, nullptr).validNode());
    // Neither a folder whose name only begins like the model's nor one above it.
    const std::string folder = "/" + m_folder.path().string();
    trustFolderOf(folder.substr(0, folder.size() - 1) + "/model.osgb");
    EXPECT_FALSE(osgDB::Registry::instance()->readNode(share, nullptr).validNode());
    trustFolderOf(folder + "/inner/model.osgb");
    const std::string above = folder + "/inner/../tile.osgb";
    EXPECT_FALSE(osgDB::Registry::instance()->readNode(above, nullptr).validNode());
}

TEST_F(ReadGuardTest, EveryInstalledPluginWasLookedAt) {
    const std::vector<fs::path> plugins = installedPlugins();
    EXPECT_GT(plugins.size(), 20u);
    for (const fs::path& path : plugins)
        EXPECT_TRUE(isPluginAllowed(path.stem().string().substr(pluginPrefix.size())).has_value())
            << path << " is neither allowed nor refused";
}

TEST_F(ReadGuardTest, RefusedPluginsAreNotLoaded) {
    osgDB::Registry& registry = *osgDB::Registry::instance();
    for (const char* extension : {"lua", "curl", "gz", "osga", "tgz", "osc", "rot", "p3d"})
        EXPECT_EQ(registry.getReaderWriterForExtension(extension), nullptr) << extension;
    EXPECT_NE(registry.getReaderWriterForExtension("png"), nullptr);
}

TEST_F(ReadGuardTest, LibrariesComeFromTheirOwnFoldersOnly) {
    const std::vector<fs::path> plugins = installedPlugins();
    ASSERT_FALSE(plugins.empty());
    const fs::path some = plugins.front();
    const std::string folder = std::string("osgPlugins-") + osgGetVersion();
    fs::create_directory(folder);
    fs::create_directory("libnear");
    for (const std::string& name : {std::string("libevil.so"), folder + "/osgdb_evil.so",
                                    folder + "/osgdb_serializers_evil.so",
                                    std::string("osgdb_evil.so"), folder + "/osgdb_fbx.so"})
        fs::copy_file(some, name);
    osgDB::Registry& registry = *osgDB::Registry::instance();
    for (const std::string& name :
         {std::string("libevil.so"), std::string("libnear/../libevil.so"),
          (m_folder.path() / "libevil.so").string(), folder + "/osgdb_evil.so",
          folder + "/osgdb_serializers_evil.so", folder + "/osgdb_fbx.so",
          folder + "/../libevil.so", std::string("osgdb_evil.so")})
        EXPECT_EQ(registry.loadLibrary(name), osgDB::Registry::NOT_LOADED) << name;
}

TEST_F(ReadGuardTest, PipesAndDevicesAreNotReadWhateverTheirName) {
    // A reader of the pipe would wait until somebody writes, one of the device for ever.
    ASSERT_EQ(mkfifo("pipe.png", 0600), 0);
    ASSERT_EQ(mkfifo("pipe.dxf", 0600), 0);
    fs::create_symlink("/dev/zero", "endless.png");
    for (const char* name : {"pipe.png", "endless.png"})
        EXPECT_EQ(osgDB::readRefImageFile(name), nullptr) << name;
    EXPECT_EQ(readModel("pipe.dxf"), nullptr);
    writeTexturedModel("pipe.png");
    EXPECT_NE(readModel("model.obj"), nullptr);
}

TEST_F(ReadGuardTest, FileThatReadsItselfIsReadOnce) {
    writeProxy("model.osgt", "model.osgt");
    EXPECT_EQ(childrenOf(readModel("model.osgt")), 0u);
    writeProxy("one.osgt", "two.osgt");
    writeProxy("two.osgt", "./one.osgt");
    EXPECT_EQ(childrenOf(readModel("one.osgt")), 1u);
}

TEST_F(ReadGuardTest, ProxyOfAGoodModelIsRead) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "inner.osgb"));
    writeProxy("model.osgt", "inner.osgb");
    EXPECT_EQ(childrenOf(readModel("model.osgt")), 1u);
}

TEST_F(ReadGuardTest, ModelsAndTheirProxiesAreChecked) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeDamagedQuad(), "inner.osgb"));
    const osg::ref_ptr<osg::Node> direct = readModel("inner.osgb");
    ASSERT_NE(direct, nullptr);
    EXPECT_EQ(primitiveSetsIn(*direct), 0u);
    writeProxy("model.osgt", "inner.osgb");
    const osg::ref_ptr<osg::Node> model = readModel("model.osgt");
    ASSERT_EQ(childrenOf(model), 1u);
    EXPECT_EQ(primitiveSetsIn(*model), 0u);
}

TEST_F(ReadGuardTest, TilesAreCheckedOnThePagersThread) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeDamagedQuad(), "tile.osgb"));
    const osg::ref_ptr<osg::Group> parent = new osg::Group;
    readByPager(*parent, "tile.osgb");
    ASSERT_EQ(parent->getNumChildren(), 1u);
    EXPECT_EQ(primitiveSetsIn(*parent), 0u);
}

TEST_F(ReadGuardTest, ReaderThatThrowsForThePagerHasFailed) {
    const PluginInTest plugin;
    plugin->onRead = []() -> osgDB::ReaderWriter::ReadResult {
        throw std::out_of_range("beyond the end");
    };
    const std::string name = std::string("tile.") + testExtension;
    writeFile(name, "x");
    const osg::ref_ptr<osg::Group> parent = new osg::Group;
    readByPager(*parent, name);
    EXPECT_EQ(parent->getNumChildren(), 0u);
    EXPECT_EQ(plugin->optionTexts.size(), 1u);
}

TEST_F(ReadGuardTest, OneLoadHasABoundForItsMessages) {
    const PluginInTest plugin;
    plugin->onRead = [] {
        for (int i = 0; i < 100'000; ++i)
            OSG_FATAL << "message " << i << std::endl;
        return osgDB::ReaderWriter::ReadResult(new osg::Group);
    };
    const std::string name = std::string("model.") + testExtension;
    writeFile(name, "x");
    for (int load = 0; load < 2; ++load) {
        osg::setNotifyLevel(osg::FATAL);
        testing::internal::CaptureStderr();
        EXPECT_NE(readModel(name), nullptr);
        const std::string messages = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(messages.begin(), messages.end(), '\n'), mostMessages + 1);
    }
}

} // namespace orbisk::test
