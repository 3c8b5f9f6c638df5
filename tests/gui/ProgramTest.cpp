#include "platform/MemoryLimit.h"
#include "support/ChildProcess.h"
#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

namespace orbisk::test {

/// The program itself, as a process of its own.
class ProgramTest : public GuiTest {
protected:
    static std::vector<std::string> program(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> command{std::string(ORBISK_STAGE_DIR) + "/orbisk"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }

    static bool waitForWindow(const Screen& screen, const std::string& title) {
        return runUntil([&] {
            const auto titles = screen.titles();
            return std::find(titles.begin(), titles.end(), title) != titles.end();
        });
    }

    /// Waits until the test model is seen in a frame that `writePlace` has put there.
    static bool waitForModel(const Screen& screen) {
        // Pure red is in the model, but neither on the welcome page nor in the progress dialog.
        const auto isPureRed = [](unsigned long colour) {
            return colour != 0 && (colour & 0xffff) == 0;
        };
        const wxRect middle(300, 250, 400, 300);
        return runUntil([&] {
            const auto colours = screen.colours(middle);
            return std::any_of(colours.begin(), colours.end(), isPureRed);
        });
    }

    static void writePlace() {
        writeSettings(R"({"x":100,"y":80,"w":820,"h":620})", languageEnglish);
    }
};

TEST_F(ProgramTest, NamesTheLibraryThatIsMissing) {
    std::filesystem::copy_file(program().front(), "orbisk");
    ChildProcess child({std::filesystem::absolute("orbisk").string()});
    EXPECT_EQ(child.wait(), 1);
    const std::string errors = child.errorOutput();
    EXPECT_EQ(errors.rfind("orbisk: ", 0), 0u) << errors;
    EXPECT_NE(errors.find("orbisk_program.so"), std::string::npos) << errors;
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
}

TEST_F(ProgramTest, CountsTheMemoryOfAllItsLibraries) {
    if (!MemoryLimit::isSupported())
        GTEST_SKIP() << "this build limits no memory";
    // What the dynamic linker says of each name that it has found.
    ChildProcess child(program({"--version"}), {{"LD_DEBUG", "bindings"}, {"LD_BIND_NOW", "1"}});
    EXPECT_EQ(child.wait(), 0);
    std::istringstream lines(child.errorOutput());
    const std::regex binding(
        R"(binding file \S*/(libosgDB|libstdc\+\+|orbisk_program)\.so\S* \[0\] to (\S+) \[0\]: )"
        R"(normal symbol `_Znwm'.*)");
    std::set<std::string> counted;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (!std::regex_search(line, match, binding))
            continue;
        EXPECT_EQ(std::filesystem::path(match[2].str()).filename(), "orbisk_program.so") << line;
        counted.insert(match[1]);
    }
    EXPECT_EQ(counted, (std::set<std::string>{"libosgDB", "libstdc++", "orbisk_program"}));
}

TEST_F(ProgramTest, TheExecutableIsLinkedToTheCLibraryOnly) {
    if (!MemoryLimit::isSupported())
        GTEST_SKIP() << "a sanitizer brings its libraries along";
    // Has the dynamic linker name the libraries, a line each, instead of starting the program.
    ChildProcess child(program(), {{"LD_TRACE_LOADED_OBJECTS", "1"}});
    EXPECT_EQ(child.wait(), 0);
    std::istringstream lines(child.output());
    const std::regex name(R"(^\s*(?:\S*/)?([^\s/]+)\.so)");
    std::set<std::string> libraries;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        ASSERT_TRUE(std::regex_search(line, match, name)) << line;
        libraries.insert(match[1]);
    }
    // What the kernel and the dynamic linker bring into every process.
    libraries.erase("linux-vdso");
    libraries.erase("ld-linux-x86-64");
    EXPECT_EQ(libraries, std::set<std::string>{"libc"});
}

TEST_F(ProgramTest, EndsOnASettingsFileThatIsNotJson) {
    const std::string text = "{\n  \"project\": {,\n}";
    writeFile("datafile.json", text);
    ChildProcess child(program());
    EXPECT_GT(child.wait(), 0);
    const std::string errors = child.errorOutput();
    EXPECT_EQ(errors.rfind("datafile.json:2:15: ", 0), 0u) << errors;
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    EXPECT_EQ(readFile("datafile.json"), text);
    EXPECT_EQ(child.output(), "");
}

TEST_F(ProgramTest, HelpAndVersionNeedNoDisplay) {
    for (const char* option : {"--help", "--version"}) {
        ChildProcess child(program({option}), {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}});
        EXPECT_EQ(child.wait(), 0) << option << child.errorOutput();
        EXPECT_NE(child.output(), "");
        EXPECT_EQ(child.errorOutput(), "");
    }
}

TEST_F(ProgramTest, UnknownOptionIsNamed) {
    ChildProcess child(program({"--nonsense"}), {{"DISPLAY", ""}});
    EXPECT_GT(child.wait(), 0);
    EXPECT_NE(child.errorOutput().find("--nonsense"), std::string::npos) << child.errorOutput();
}

TEST_F(ProgramTest, SaysInOneLineThatThereIsNoDisplay) {
    for (const char* display : {"", ":4242"}) {
        ChildProcess child(program(), {{"DISPLAY", display}, {"WAYLAND_DISPLAY", ""}});
        EXPECT_GT(child.wait(), 0) << display;
        const std::string errors = child.errorOutput();
        EXPECT_NE(errors.find("DISPLAY"), std::string::npos) << errors;
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
        EXPECT_EQ(child.output(), "");
        EXPECT_FALSE(std::filesystem::exists("datafile.json"));
    }
}

TEST_F(ProgramTest, WindowManagersCloseEndsItAndSavesTheSettings) {
    writePlace();
    ChildProcess child(program());
    const Screen screen;
    ASSERT_TRUE(waitForWindow(screen, "Kelvane"));
    ASSERT_TRUE(runUntil([&] {
        screen.closeWindow("Kelvane");
        return !child.isRunning();
    }));
    EXPECT_EQ(child.wait(), 0) << child.errorOutput();
    EXPECT_NE(readFile("datafile.json").find("\"sex_is_male\" : true"), std::string::npos);
    // The toolkit was started by the executable and by the program.
    EXPECT_EQ(child.errorOutput().find("WARNING"), std::string::npos) << child.errorOutput();
}

TEST_F(ProgramTest, StartsInItsSizeAtOnce) {
    writePlace();
    ChildProcess child(program());
    const Screen screen;
    std::set<int> widths;
    const auto paintedAt = [&] {
        if (const wxSize size = screen.sizeOf("Kelvane"); size.x > 0)
            widths.insert(size.x);
        return screen.colours(wxRect(300, 250, 400, 300)).size() > 20;
    };
    ASSERT_TRUE(runUntil(paintedAt));
    ASSERT_FALSE(widths.empty());
    EXPECT_GE(*widths.begin(), 800);
    EXPECT_LE(*widths.rbegin(), 820);
}

TEST_F(ProgramTest, KeepsTheNamesOfModelsWhereTheSystemKnowsOnlyAscii) {
    writePlace();
    for (const char* name : {"模型.osgb", "second.osgb"}) {
        ChildProcess child(program({"--", writeTestModel(name)}), {{"LC_ALL", "C"}});
        const Screen screen;
        ASSERT_TRUE(waitForWindow(screen, "Kelvane"));
        EXPECT_TRUE(waitForModel(screen));
        ASSERT_TRUE(runUntil([&] {
            screen.closeWindow("Kelvane");
            return !child.isRunning();
        }));
        EXPECT_EQ(child.wait(), 0) << child.errorOutput();
        EXPECT_NE(readFile("datafile.json").find("模型.osgb"), std::string::npos) << name;
    }
}

TEST_F(ProgramTest, OpensTheModelOfItsCommandLine) {
    writePlace();
    const std::string model = writeTestModel("模型.osgb");
    ChildProcess child(program({model}));
    const Screen screen;
    ASSERT_TRUE(waitForWindow(screen, "Kelvane"));
    EXPECT_TRUE(waitForModel(screen));
    ASSERT_TRUE(runUntil([&] {
        screen.closeWindow("Kelvane");
        return !child.isRunning();
    }));
    EXPECT_EQ(child.wait(), 0) << child.errorOutput();
    EXPECT_NE(readFile("datafile.json").find("模型.osgb"), std::string::npos);
}

TEST_F(ProgramTest, KeepsItsPlaceOverAMessageBox) {
    writePlace();
    ChildProcess child(program({"missing.osgb"}));
    const Screen screen;
    ASSERT_TRUE(waitForWindow(screen, "Orbisk Error"));
    ASSERT_TRUE(runUntil([&] {
        screen.closeWindow("Orbisk Error");
        return screen.titles() == std::vector<std::string>{"Kelvane"};
    }));
    ASSERT_TRUE(runUntil([&] {
        screen.closeWindow("Kelvane");
        return !child.isRunning();
    }));
    EXPECT_EQ(child.wait(), 0) << child.errorOutput();
    const std::string saved = readFile("datafile.json");
    EXPECT_NE(saved.find("\"x\" : 100"), std::string::npos) << saved;
    EXPECT_NE(saved.find("\"y\" : 80"), std::string::npos) << saved;
}

} // namespace orbisk::test
