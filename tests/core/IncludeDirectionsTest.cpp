#include "support/SourceTree.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

const std::map<std::string, std::string> generatedHeaders = {{"EmbeddedFiles.h", "orbisk_ui"}};

std::vector<SourceTarget> programTargets() {
    return targetsOf(readFile(fs::path(ORBISK_SOURCE_DIR) / "src" / "CMakeLists.txt"));
}

const std::vector<SourceTarget> madeUpTargets = {
    {"core", {"a/Core.h", "a/Core.cpp", "platform/Files.cpp"}},
    {"scene", {"a/Scene.h"}},
    {"ui", {"a/Window.h"}},
    {"program", {"main.cpp"}},
};

Lines problemsOf(const std::string& file, const std::string& text) {
    return includeProblems(madeUpTargets, {{file, text}}, {{"Built.h", "ui"}});
}

} // namespace

TEST(IncludeDirectionsTest, ProgramHasItsTargetsInOrder) {
    Lines names;
    for (const SourceTarget& target : programTargets())
        names.push_back(target.name);
    EXPECT_EQ(names, (Lines{"orbisk_core", "orbisk_scene", "orbisk_ui", "orbisk_webview", "orbisk",
                            "orbisk_program"}));
}

TEST(IncludeDirectionsTest, ProgramKeepsThem) {
    EXPECT_EQ(includeProblems(programTargets(), programSources(), generatedHeaders), Lines());
}

TEST(IncludeDirectionsTest, EverySourceStandsInOneTarget) {
    const Sources sources = programSources();
    EXPECT_GT(sources.size(), 50u);
    EXPECT_EQ(listingProblems(programTargets(), sources), Lines());
}

TEST(IncludeDirectionsTest, CheckReadsTargets) {
    const auto targets = targetsOf("# add_library(none none.cpp)\n"
                                   "add_library(core STATIC a.cpp a.h # b.cpp\n    dir/c.h)\n"
                                   "if(WIN32)\n  set(own win.cpp)\nelse()\n  set(own gtk.cpp)\n"
                                   "endif()\n"
                                   "add_executable(program main.cpp ${own})\n"
                                   "target_link_libraries(program PRIVATE core)\n"
                                   "target_sources(core PRIVATE late.cpp)\n");
    ASSERT_EQ(targets.size(), 2u);
    EXPECT_EQ(targets[0].name, "core");
    EXPECT_EQ(targets[0].files, (Lines{"a.cpp", "a.h", "dir/c.h", "late.cpp"}));
    EXPECT_EQ(targets[1].name, "program");
    EXPECT_EQ(targets[1].files, (Lines{"main.cpp", "win.cpp", "gtk.cpp"}));
}

TEST(IncludeDirectionsTest, CheckReadsIncludes) {
    const auto includes =
        includesOf("#pragma once\n  # include <vector>\n#include \"a/Core.h\"\n// #include <x>\n");
    ASSERT_EQ(includes.size(), 2u);
    EXPECT_EQ(includes[0].name, "vector");
    EXPECT_FALSE(includes[0].quoted);
    EXPECT_EQ(includes[1].name, "a/Core.h");
    EXPECT_TRUE(includes[1].quoted);
}

TEST(IncludeDirectionsTest, CheckAllowsTheCoreItsLibraries) {
    EXPECT_EQ(problemsOf("a/Core.cpp", "#include \"a/Core.h\"\n#include <json/json.h>\n"
                                       "#include <osg/Vec3d>\n#include <osg/Matrixd>\n"
                                       "#include <osg/Quat>\n#include <cstdint>\n"),
              Lines());
    EXPECT_EQ(problemsOf("platform/Files.cpp", "#include <unistd.h>\n#include <vector>\n"),
              Lines());
}

TEST(IncludeDirectionsTest, CheckRefusesTheCoreAllElse) {
    for (const char* header : {"wx/string.h", "wx/wx.h", "osg/Node", "osg/Geometry", "GL/gl.h",
                               "osg/GL", "osgDB/ReadFile", "unistd.h", "OpenThreads/Thread"})
        EXPECT_EQ(problemsOf("a/Core.cpp", std::string("#include <") + header + ">\n"),
                  Lines{std::string("a/Core.cpp (core) includes ") + header});
    EXPECT_EQ(problemsOf("platform/Files.cpp", "#include <wx/string.h>\n").size(), 1u);
}

TEST(IncludeDirectionsTest, CheckRefusesWhatStandsFurtherRight) {
    EXPECT_EQ(problemsOf("a/Core.h", "#include \"a/Scene.h\"\n").size(), 1u);
    EXPECT_EQ(problemsOf("a/Core.h", "#include \"a/Window.h\"\n").size(), 1u);
    EXPECT_EQ(problemsOf("a/Scene.h", "#include \"a/Window.h\"\n").size(), 1u);
    EXPECT_EQ(problemsOf("a/Scene.h", "#include <wx/string.h>\n").size(), 1u);
    EXPECT_EQ(problemsOf("a/Scene.h", "#include \"Built.h\"\n").size(), 1u);
    EXPECT_EQ(problemsOf("a/Window.h", "#include \"a/Unknown.h\"\n").size(), 1u);
}

TEST(IncludeDirectionsTest, CheckAllowsWhatStandsFurtherLeft) {
    EXPECT_EQ(problemsOf("a/Scene.h", "#include \"a/Core.h\"\n#include <osgDB/ReadFile>\n"),
              Lines());
    EXPECT_EQ(problemsOf("a/Window.h",
                         "#include \"a/Scene.h\"\n#include \"Built.h\"\n#include <wx/string.h>\n"),
              Lines());
    EXPECT_EQ(problemsOf("main.cpp", "#include \"a/Window.h\"\n#include \"a/Core.h\"\n"), Lines());
}

TEST(IncludeDirectionsTest, CheckFindsUnlistedAndTwiceListedSources) {
    const std::vector<SourceTarget> targets = {{"core", {"a.cpp", "b.cpp"}}, {"ui", {"b.cpp"}}};
    EXPECT_EQ(listingProblems(targets, {{"a.cpp", ""}, {"b.cpp", ""}, {"c.cpp", ""}}),
              (Lines{"b.cpp is listed 2 times", "c.cpp is listed 0 times"}));
}

} // namespace orbisk::test
