#include "settings/SettingsFile.h"

#include "core/SettingsHelpers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

class SettingsFileTest : public ::testing::Test {
protected:
    WorkingFolder m_folder;
};

std::string dataWith(const std::string& members) {
    return fileWith(R"({"data":{)" + members + "}}");
}

void expectAllZero(const AppSettings& settings) {
    EXPECT_EQ(describe(settings), describe(AppSettings()));
}

} // namespace

TEST_F(SettingsFileTest, ProcessStartsWithZeros) {
    expectAllZero(appSettings());
}

TEST_F(SettingsFileTest, WithoutAFileDefaultsHold) {
    AppSettings settings = unusualSettings();
    EXPECT_FALSE(loadSettings(settings, testDisplay, plainEncoding()));
    EXPECT_EQ(settings.rect.x, 0);
    EXPECT_EQ(settings.rect.y, 0);
    EXPECT_EQ(settings.rect.w, 1920);
    EXPECT_EQ(settings.rect.h, 1080);
    EXPECT_EQ(settings.sky_show, 1);
    EXPECT_EQ(settings.tool_show, 1);
    EXPECT_EQ(settings.fovy, 30.0);
    EXPECT_EQ(settings.language, 0);
    EXPECT_TRUE(settings.path_recent.empty());
    EXPECT_EQ(settings.panes[0].w, 0);
    EXPECT_EQ(settings.panes[1].show, 0);
    EXPECT_TRUE(opensMaximised(settings.rect, testDisplay));
    EXPECT_FALSE(fs::exists(settingsFileName));
}

TEST_F(SettingsFileTest, EveryFieldComesBack) {
    const AppSettings settings = unusualSettings();
    save(settings);
    EXPECT_EQ(describe(loaded()), describe(settings));
}

TEST_F(SettingsFileTest, EveryDigitOfTheAngleComesBack) {
    AppSettings settings;
    for (const double fovy : {42.123456789012345, 0.1, 1.0 / 3.0, 30.0, 0.0, -0.0, 5e-324, 1e-300,
                              std::numeric_limits<double>::max(), -179.99999999999997, 1e17}) {
        settings.fovy = fovy;
        save(settings);
        const double back = loaded().fovy;
        EXPECT_EQ(back, fovy);
        EXPECT_EQ(std::signbit(back), std::signbit(fovy)) << fovy;
    }
}

TEST_F(SettingsFileTest, PanesAreNotReadBack) {
    AppSettings settings;
    settings.panes[0].w = 5;
    save(settings);
    EXPECT_EQ(loaded().panes[0].w, 0);
    AppSettings other;
    other.panes[1].show = 9;
    EXPECT_FALSE(loadSettings(other, testDisplay, plainEncoding()));
    EXPECT_EQ(other.panes[1].show, 9);
    EXPECT_EQ(other.panes[0].w, 0);
    fs::remove(settingsFileName);
    EXPECT_FALSE(loadSettings(other, testDisplay, plainEncoding()));
    EXPECT_EQ(other.panes[1].show, 9);
}

TEST_F(SettingsFileTest, MissingMembersReadAsZero) {
    for (const char* text :
         {"{}", R"({"name":"A"})", R"({"project":{}})", R"({"project":{"layout":{},"data":{}}})",
          R"({"project":{"layout":{"rect":{}},"data":{"path_recent":[]}}})"})
        expectAllZero(loadedFrom(text));
}

TEST_F(SettingsFileTest, OneMissingMemberLeavesTheOthers) {
    const AppSettings settings = loadedFrom(
        fileWith(R"({"layout":{"rect":{"x":5,"h":7}},"data":{"tool_show":1,"language":1}})"));
    AppSettings expected;
    expected.rect = {5, 0, 0, 7};
    expected.tool_show = 1;
    expected.language = 1;
    EXPECT_EQ(describe(settings), describe(expected));
}

TEST_F(SettingsFileTest, MembersOfAnotherTypeReadAsZero) {
    for (const char* value : {R"("text")", "[]", "[1,2]", "{}", R"({"x":1})", "null", R"("7")"})
        for (const char* member : {"tool_show", "sky_show", "fovy", "language", "path_recent"}) {
            const std::string text = value;
            if (std::string(member) == "path_recent" && text[0] == '[')
                continue;
            expectAllZero(loadedFrom(dataWith('"' + std::string(member) + "\":" + text)));
        }
}

TEST_F(SettingsFileTest, ObjectsOfAnotherTypeReadAsEmpty) {
    for (const char* value : {"5", "-0.5", "true", "null", R"("text")", "[]", R"([{"data":5}])"}) {
        expectAllZero(loadedFrom(fileWith(value)));
        expectAllZero(loadedFrom(fileWith(R"({"layout":)" + std::string(value) + "}")));
        expectAllZero(loadedFrom(fileWith(R"({"data":)" + std::string(value) + "}")));
        expectAllZero(loadedFrom(fileWith(R"({"layout":{"rect":)" + std::string(value) + "}}")));
    }
}

TEST_F(SettingsFileTest, SampleDataOfAnyTypeIsDiscarded) {
    expectAllZero(loadedFrom(R"({"name":[1],"age":"old","sex_is_male":{"a":2},"more":null})"));
}

TEST_F(SettingsFileTest, NumbersBeyondTheFieldReadAsZero) {
    for (const char* number : {"2147483648", "-2147483649", "4294967296", "9223372036854775807",
                               "18446744073709551615", "99999999999999999999999", "1e300"})
        expectAllZero(loadedFrom(dataWith(R"("language":)" + std::string(number))));
    EXPECT_EQ(loadedFrom(dataWith(R"("language":2147483647)")).language, 2147483647);
    EXPECT_EQ(loadedFrom(dataWith(R"("language":-2147483648)")).language, -2147483647 - 1);
}

TEST_F(SettingsFileTest, FractionsLoseTheirPart) {
    EXPECT_EQ(loadedFrom(dataWith(R"("language":3.9)")).language, 3);
    EXPECT_EQ(loadedFrom(dataWith(R"("language":-3.9)")).language, -3);
    EXPECT_EQ(loadedFrom(dataWith(R"("fovy":45)")).fovy, 45.0);
}

TEST_F(SettingsFileTest, EveryRecentPathIsRead) {
    std::string list;
    std::vector<std::string> paths;
    for (int i = 0; i < 12; ++i) {
        paths.push_back("/" + std::to_string(i % 6));
        list += (i ? ",\"" : "\"") + paths.back() + '"';
    }
    EXPECT_EQ(loadedFrom(dataWith(R"("path_recent":[)" + list + "]")).path_recent, paths);
}

TEST_F(SettingsFileTest, RecentPathOfAnotherTypeReadsAsEmpty) {
    const auto paths = loadedFrom(dataWith(R"("path_recent":["/a",null,[],{"b":1},"/c"])"));
    EXPECT_EQ(paths.path_recent, (std::vector<std::string>{"/a", "", "", "", "/c"}));
}

TEST_F(SettingsFileTest, RecentPathsOfBeforeGo) {
    AppSettings settings = unusualSettings();
    writeFile(settingsFileName, dataWith(R"("path_recent":["/new"])"));
    EXPECT_FALSE(loadSettings(settings, testDisplay, plainEncoding()));
    EXPECT_EQ(settings.path_recent, std::vector<std::string>{"/new"});
}

TEST_F(SettingsFileTest, CommentsAreAllowed) {
    EXPECT_EQ(loadedFrom("// by hand\n{/* a */\"project\":{\"data\":{\"language\": // one\n 1}}}\n"
                         "// end\n")
                  .language,
              1);
}

TEST_F(SettingsFileTest, PathsAreConvertedBothWays) {
    PathEncoding encoding;
    encoding.toFile = [](const std::string& path) { return "file:" + path; };
    encoding.fromFile = [](const std::string& path) { return "read:" + path; };
    AppSettings settings;
    settings.path_recent = {"/a", "/b"};
    saveSettings(settings, encoding);
    const Json::Value data = fileContents()["project"]["data"];
    EXPECT_EQ(data["path_recent"][0], "file:/a");
    EXPECT_EQ(data["path_recent"][1], "file:/b");
    EXPECT_FALSE(loadSettings(settings, testDisplay, encoding));
    EXPECT_EQ(settings.path_recent, (std::vector<std::string>{"read:file:/a", "read:file:/b"}));
}

TEST_F(SettingsFileTest, PathsInALocalEncodingComeBack) {
    AppSettings settings;
    // The same two Chinese letters in GBK, one letter whose second byte is a backslash in it, and
    // a Western name in Latin 1: none of them is UTF-8.
    settings.path_recent = {"/\xc4\xa3\xd0\xcd.obj", "/\x95\x5c.obj", "/caf\xe9.obj"};
    save(settings);
    EXPECT_EQ(loaded().path_recent, settings.path_recent);
}

TEST_F(SettingsFileTest, EachWorkingFolderHasItsOwnFile) {
    AppSettings settings = unusualSettings();
    save(settings);
    const std::string first = readFile(settingsFileName);
    {
        const WorkingFolder other;
        EXPECT_EQ(loaded().fovy, 30.0);
        settings.fovy = 60.0;
        save(settings);
        EXPECT_EQ(loaded().fovy, 60.0);
    }
    EXPECT_EQ(readFile(settingsFileName), first);
}

} // namespace orbisk::test
