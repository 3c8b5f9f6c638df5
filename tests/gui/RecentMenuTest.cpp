#include "app/InitPanel.h"
#include "support/GuiTest.h"
#include "support/LogCapture.h"
#include "support/TestModels.h"

namespace orbisk::test {

namespace {
constexpr const char* usualRect = R"({"x":40,"y":40,"w":900,"h":700})";
}

class RecentMenuTest : public GuiTest {
protected:
    static wxMenu& recentMenu() { return *menuItem(Command::RecentFiles).GetSubMenu(); }

    static std::vector<std::string> menuPaths() {
        std::vector<std::string> labels;
        for (const wxMenuItem* item : recentMenu().GetMenuItems())
            labels.push_back(item->GetItemLabelText().utf8_string());
        return labels;
    }

    static void chooseRecent(std::size_t index) {
        recentMenu().SendEvent(frame()->bars().recentId(index));
        ASSERT_TRUE(runUntil([] { return !frame()->loader().isLoading(); }));
        runFor(0.1);
    }
};

TEST_F(RecentMenuTest, EleventhFileDropsTheOldest) {
    std::string paths;
    for (int i = 0; i < 10; ++i)
        paths += (i == 0 ? "\"/" : ",\"/") + std::to_string(i) + ".obj\"";
    writeSettings(usualRect, languageEnglish, "[" + paths + "]");
    start();
    EXPECT_EQ(menuPaths().size(), 10u);
    const std::string eleventh = writeTestModel();
    load(eleventh);
    ASSERT_EQ(appSettings().path_recent.size(), 10u);
    EXPECT_EQ(appSettings().path_recent.front(), eleventh);
    EXPECT_EQ(appSettings().path_recent.back(), "/8.obj");
    EXPECT_EQ(menuPaths(), appSettings().path_recent);
}

TEST_F(RecentMenuTest, ReopenedFileMovesToTheTop) {
    const std::string path = writeTestModel();
    writeSettings(usualRect, languageEnglish, R"(["/a.obj",")" + path + R"("])");
    start();
    load(path);
    EXPECT_EQ(menuPaths(), (std::vector<std::string>{path, "/a.obj"}));
    EXPECT_EQ(appSettings().path_recent, menuPaths());
}

TEST_F(RecentMenuTest, EntryOpensItsFile) {
    const std::string path = writeTestModel();
    writeSettings(usualRect, languageEnglish, R"(["/a.obj",")" + path + R"("])");
    start();
    chooseRecent(1);
    EXPECT_TRUE(frame()->viewer().exists());
    EXPECT_EQ(frame()->loader().modelPath(), path);
    EXPECT_EQ(menuPaths(), (std::vector<std::string>{path, "/a.obj"}));
}

TEST_F(RecentMenuTest, EntryWhoseFileIsGoneMovesToTheTopAndFails) {
    writeSettings(usualRect, languageEnglish, R"(["/a.obj","/gone/b.obj"])");
    start();
    LogCapture log;
    chooseRecent(1);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"File does not exist!"});
    EXPECT_EQ(menuPaths(), (std::vector<std::string>{"/gone/b.obj", "/a.obj"}));
    EXPECT_EQ(appSettings().path_recent, menuPaths());
    EXPECT_TRUE(frame()->welcomePanel()->IsShownOnScreen());
}

TEST_F(RecentMenuTest, WelcomePanelOpensWhatItSaysAfterAFailedLoad) {
    writeSettings(usualRect, languageEnglish, R"(["/a.obj","/gone/b.obj"])");
    start();
    const LogCapture log;
    chooseRecent(1);
    // Rows stand for places in the list, which has another order now.
    for (int i = 0; i < 2; ++i) {
        const auto* row = dynamic_cast<wxControl*>(
            frame()->welcomePanel()->FindWindow(InitPanel::entryBase() + i));
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->GetLabelText().utf8_string(),
                  appSettings().path_recent[static_cast<std::size_t>(i)]);
    }
}

TEST_F(RecentMenuTest, LabelsShowSignsThatMeanSomethingToAMenu) {
    writeSettings(usualRect, languageEnglish, R"(["/a & b/x_y.obj","/c\td.obj"])");
    start();
    EXPECT_EQ(menuPaths(), (std::vector<std::string>{"/a & b/x_y.obj", "/c d.obj"}));
    EXPECT_EQ(recentMenu().FindItemByPosition(1)->GetAccel(), nullptr);
}

TEST_F(RecentMenuTest, EntryOfAnUnusualNameOpensIt) {
    const std::string path = writeTestModel("a & b_c\td.osgb");
    writeSettings(usualRect, languageEnglish);
    start();
    load(path);
    load(writeTestModel("other.osgb"));
    chooseRecent(1);
    EXPECT_EQ(frame()->loader().modelPath(), path);
}

TEST_F(RecentMenuTest, EmptyPathIsNotRecorded) {
    start();
    LogCapture log;
    load("");
    EXPECT_TRUE(appSettings().path_recent.empty());
    EXPECT_TRUE(menuPaths().empty());
    EXPECT_EQ(log.messages(), std::vector<std::string>{"File does not exist!"});
}

TEST_F(RecentMenuTest, ListComesBackAfterARestart) {
    start();
    const std::string path = writeTestModel("模型 & é.osgb");
    load(path);
    close();
    start();
    EXPECT_EQ(menuPaths(), std::vector<std::string>{path});
    chooseRecent(0);
    EXPECT_TRUE(frame()->viewer().exists());
}

} // namespace orbisk::test
