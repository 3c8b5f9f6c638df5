#include "support/SourceTree.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(PlatformDifferencesTest, OnlyThePlatformFolderKnowsTheSystem) {
    for (const auto& [file, text] : programSources())
        if (file.rfind("platform/", 0) != 0) {
            EXPECT_EQ(systemDifferences(text), std::vector<std::string>()) << file;
        }
}

TEST(PlatformDifferencesTest, CheckFindsConditions) {
    for (const char* line :
         {"#ifdef _WIN32", "#if defined(__linux__)", "# ifndef __WXMSW__", "#elif __APPLE__",
          "#if defined(__GNUC__) && defined(__WXGTK__)", "#ifdef __WXGTK3__", "#ifdef WIN32",
          "#if defined(__unix__) || defined(X)"})
        EXPECT_EQ(systemDifferences(std::string("int a;\n") + line + "\n").size(), 1u) << line;
}

TEST(PlatformDifferencesTest, CheckFindsHeaders) {
    for (const char* name : {"unistd.h", "windows.h", "sys/stat.h", "X11/Xlib.h", "gtk/gtk.h",
                             "gdk/gdkx.h", "GL/glx.h", "wx/msw/private.h", "dlfcn.h", "glib.h"})
        EXPECT_EQ(systemDifferences(std::string("#include <") + name + ">\n").size(), 1u) << name;
}

TEST(PlatformDifferencesTest, CheckLeavesTheRestAlone) {
    EXPECT_EQ(systemDifferences("#include <system_error>\n#include <wx/string.h>\n"
                                "#include \"platform/Platform.h\"\n#include <osg/io_utils>\n"
                                "#if defined(__GNUC__)\n#pragma once\n#endif\n"
                                "// like _WIN32 and unistd.h\n"),
              std::vector<std::string>());
}

} // namespace orbisk::test
