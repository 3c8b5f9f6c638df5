#include "core/SettingsHelpers.h"
#include "settings/SettingsFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

namespace orbisk::test {

namespace {

using Names = std::set<std::string>;

class SettingsFormatTest : public ::testing::Test {
protected:
    WorkingFolder m_folder;
};

Names membersOf(const Json::Value& object) {
    const auto names = object.getMemberNames();
    return Names(names.begin(), names.end());
}

const Names paneMembers = {"w",  "h",  "layer", "row",      "pos",    "direction", "fx",
                           "fy", "fw", "fh",    "floating", "maxing", "show"};

PaneLayout numberedPane(int first) {
    PaneLayout pane;
    int value = first;
    for (int* field :
         {&pane.w, &pane.h, &pane.layer, &pane.row, &pane.pos, &pane.direction, &pane.fx, &pane.fy,
          &pane.fw, &pane.fh, &pane.floating, &pane.maxing, &pane.show})
        *field = value++;
    return pane;
}

/// The form in full for one set of values; `name` is a text that means nothing.
std::string expectedFile(const std::string& name) {
    return R"({
   "age" : 23,
   "name" : ")" +
           name + R"(",
   "project" : {
      "data" : {
         "fovy" : 30.5,
         "language" : 1,
         "path_recent" : [ "/a b.obj" ],
         "sky_show" : 0,
         "tool_show" : 1
      },
      "layout" : {
         "aui" : [
            {
               "direction" : 6,
               "fh" : 10,
               "floating" : 11,
               "fw" : 9,
               "fx" : 7,
               "fy" : 8,
               "h" : 2,
               "layer" : 3,
               "maxing" : 12,
               "pos" : 5,
               "row" : 4,
               "show" : 13,
               "w" : 1
            },
            {
               "direction" : -15,
               "fh" : -11,
               "floating" : -10,
               "fw" : -12,
               "fx" : -14,
               "fy" : -13,
               "h" : -19,
               "layer" : -18,
               "maxing" : -9,
               "pos" : -16,
               "row" : -17,
               "show" : -8,
               "w" : -20
            }
         ],
         "rect" : {
            "h" : 700,
            "w" : 900,
            "x" : -40,
            "y" : 40
         }
      }
   },
   "sex_is_male" : true
}
)";
}

} // namespace

TEST_F(SettingsFormatTest, HoldsExactlyItsMembers) {
    AppSettings settings;
    settings.path_recent = {"/a"};
    save(settings);
    const Json::Value root = fileContents();
    EXPECT_EQ(membersOf(root), (Names{"name", "age", "sex_is_male", "project"}));
    const Json::Value& project = root["project"];
    EXPECT_EQ(membersOf(project), (Names{"layout", "data"}));
    EXPECT_EQ(membersOf(project["layout"]), (Names{"rect", "aui"}));
    EXPECT_EQ(membersOf(project["layout"]["rect"]), (Names{"x", "y", "w", "h"}));
    EXPECT_EQ(membersOf(project["data"]),
              (Names{"tool_show", "sky_show", "fovy", "language", "path_recent"}));
    ASSERT_EQ(project["layout"]["aui"].size(), 2u);
    for (const Json::Value& pane : project["layout"]["aui"])
        EXPECT_EQ(membersOf(pane), paneMembers);
}

TEST_F(SettingsFormatTest, MembersHaveTheirTypes) {
    AppSettings settings;
    settings.fovy = 30.0;
    settings.path_recent = {"/a"};
    save(settings);
    const Json::Value root = fileContents();
    EXPECT_TRUE(root["name"].isString());
    EXPECT_NE(root["name"].asString(), "");
    EXPECT_EQ(root["age"], 23);
    EXPECT_EQ(root["sex_is_male"], true);
    for (const char* name : {"x", "y", "w", "h"})
        EXPECT_EQ(root["project"]["layout"]["rect"][name].type(), Json::intValue) << name;
    for (const Json::Value& pane : root["project"]["layout"]["aui"])
        for (const std::string& name : paneMembers)
            EXPECT_EQ(pane[name].type(), Json::intValue) << name;
    const Json::Value& data = root["project"]["data"];
    for (const char* name : {"tool_show", "sky_show", "language"})
        EXPECT_EQ(data[name].type(), Json::intValue) << name;
    EXPECT_EQ(data["fovy"].type(), Json::realValue);
    EXPECT_TRUE(data["path_recent"].isArray());
}

TEST_F(SettingsFormatTest, SampleDataDoesNotDependOnSettings) {
    save(AppSettings());
    const Json::Value first = fileContents();
    save(unusualSettings());
    const Json::Value second = fileContents();
    for (const char* name : {"name", "age", "sex_is_male"})
        EXPECT_EQ(first[name], second[name]);
}

TEST_F(SettingsFormatTest, StandsInTheStyledForm) {
    AppSettings settings;
    settings.panes = {numberedPane(1), numberedPane(-20)};
    settings.rect = {-40, 40, 900, 700};
    settings.path_recent = {"/a b.obj"};
    settings.sky_show = 0;
    settings.tool_show = 1;
    settings.fovy = 30.5;
    settings.language = 1;
    save(settings);
    EXPECT_EQ(readFile(settingsFileName), expectedFile(fileContents()["name"].asString()));
}

TEST_F(SettingsFormatTest, EmptyListHasNoMember) {
    save(AppSettings());
    EXPECT_EQ(membersOf(fileContents()["project"]["data"]),
              (Names{"tool_show", "sky_show", "fovy", "language"}));
    AppSettings settings;
    settings.path_recent = {"/a"};
    save(settings);
    EXPECT_TRUE(fileContents()["project"]["data"].isMember("path_recent"));
    save(AppSettings());
    EXPECT_FALSE(fileContents()["project"]["data"].isMember("path_recent"));
}

TEST_F(SettingsFormatTest, FirstRunLeavesTwoEmptyPanes) {
    save(loaded());
    const Json::Value root = fileContents();
    for (const Json::Value& pane : root["project"]["layout"]["aui"])
        for (const std::string& name : paneMembers)
            EXPECT_EQ(pane[name], 0) << name;
    EXPECT_EQ(root["project"]["data"]["fovy"], 30.0);
    EXPECT_EQ(root["project"]["layout"]["rect"]["w"], 1920);
}

TEST_F(SettingsFormatTest, RecentPathsStandInTheirOrder) {
    AppSettings settings;
    settings.path_recent = {"/c", "/a", "/b", "/a"};
    save(settings);
    const Json::Value list = fileContents()["project"]["data"]["path_recent"];
    ASSERT_EQ(list.size(), 4u);
    for (Json::ArrayIndex i = 0; i < list.size(); ++i)
        EXPECT_EQ(list[i], settings.path_recent[i]);
}

TEST_F(SettingsFormatTest, AngleThatIsNoNumberIsNotWritten) {
    AppSettings settings = unusualSettings();
    for (const double fovy :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        settings.fovy = fovy;
        save(settings);
        EXPECT_EQ(fileContents()["project"]["data"]["fovy"].type(), Json::realValue);
        const AppSettings back = loaded();
        EXPECT_TRUE(std::isfinite(back.fovy));
        EXPECT_EQ(back.path_recent, settings.path_recent);
    }
}

} // namespace orbisk::test
