#include "support/GuiTest.h"
#include "support/LogCapture.h"
#include "support/TestModels.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace orbisk::test {

namespace {

constexpr const char* usualRect = R"({"x":40,"y":40,"w":900,"h":700})";

std::string half() {
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", 0.5);
    return text;
}

/// Compiles a locale of the system's sources into `folder`. @return whether that worked.
bool compileLocale(const std::filesystem::path& folder, const std::string& source) {
    std::filesystem::create_directories(folder);
    const std::string target = (folder / (source + ".UTF-8")).string();
    ChildProcess compiler({"localedef", "-i", source, "-f", "UTF-8", target});
    compiler.wait();
    return std::filesystem::exists(target);
}

} // namespace

class LanguageTest : public GuiTest {
protected:
    static std::string labelOf(Command command) {
        return menuItem(command).GetItemLabelText().utf8_string();
    }

    static void startIn(int language) {
        writeSettings(usualRect, language);
        ASSERT_TRUE(wxTheApp->CallOnInit());
        ASSERT_TRUE(runUntil([] { return frame() && frame()->IsShownOnScreen(); }));
    }

    static void expectChinese() {
        EXPECT_EQ(labelOf(Command::Open), "打开");
        EXPECT_EQ(labelOf(Command::Quit), "退出");
        EXPECT_EQ(frame()
                      ->bars()
                      .toolBar()
                      ->FindTool(frame()->bars().toolId(Command::Open))
                      ->GetShortHelp()
                      .utf8_string(),
                  "打开文件");
    }

    static void expectEnglish() {
        EXPECT_EQ(labelOf(Command::Open), "Open");
        EXPECT_EQ(labelOf(Command::Quit), "Quit");
    }

    TemporaryFolder m_locales;
};

TEST_F(LanguageTest, ChineseTextsComeFromTheCatalog) {
    LogCapture log;
    startIn(languageChinese);
    expectChinese();
    EXPECT_TRUE(menuItem(Command::Chinese).IsChecked());
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(LanguageTest, ToolkitsOwnTextsFollowTheFirstSightOfTheFrame) {
    startIn(languageChinese);
    ASSERT_TRUE(runUntil([] { return frame()->canvas(); }));
    EXPECT_EQ(wxGetTranslation("Undo").utf8_string(), "撤销");
    // Where both have a text, the program's counts.
    EXPECT_EQ(wxGetTranslation("Gray").utf8_string(), "灰度");
}

TEST_F(LanguageTest, EnglishShowsTheSourceTexts) {
    LogCapture log;
    startIn(languageEnglish);
    expectEnglish();
    EXPECT_TRUE(menuItem(Command::English).IsChecked());
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(LanguageTest, OtherValueShowsTheSourceTextsWithoutAMessage) {
    LogCapture log;
    startIn(7);
    expectEnglish();
    EXPECT_TRUE(menuItem(Command::English).IsChecked());
    EXPECT_EQ(wxGetLocale(), nullptr);
    EXPECT_TRUE(log.messages().empty());
    close();
    EXPECT_EQ(appSettings().language, 7);
}

TEST_F(LanguageTest, SwitchTakesEffectAtOnceAndIsSaved) {
    startIn(languageEnglish);
    choose(Command::Chinese);
    ASSERT_TRUE(runUntil([] { return appSettings().language == languageChinese; }));
    runFor(0.2);
    expectChinese();
    EXPECT_TRUE(menuItem(Command::Chinese).IsChecked());
    EXPECT_FALSE(menuItem(Command::English).IsChecked());
    close();
    ASSERT_TRUE(wxTheApp->CallOnInit());
    runFor(0.3);
    expectChinese();
}

TEST_F(LanguageTest, SwitchToEnglishAndBack) {
    startIn(languageChinese);
    choose(Command::English);
    runFor(0.2);
    expectEnglish();
    choose(Command::Chinese);
    runFor(0.2);
    expectChinese();
}

TEST_F(LanguageTest, SwitchDuringALoadIsNotTaken) {
    startIn(languageEnglish);
    frame()->openFile(writeTestModel());
    frame()->switchLanguage(languageChinese);
    EXPECT_EQ(appSettings().language, languageEnglish);
    ASSERT_TRUE(runUntil([] { return !frame()->loader().isLoading(); }));
    expectEnglish();
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(LanguageTest, WorksWithoutTheLocales) {
    if (!inEnvironment({{"LOCPATH", m_locales.path().string()}}))
        return;
    LogCapture log;
    startIn(languageChinese);
    expectChinese();
    choose(Command::English);
    runFor(0.2);
    expectEnglish();
    choose(Command::Chinese);
    runFor(0.2);
    expectChinese();
    EXPECT_TRUE(log.messages().empty());
    load(writeTestModel("模型.osgb"));
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(LanguageTest, WorksWithTheLocales) {
    if (!std::getenv("LOCPATH")) {
        ASSERT_TRUE(compileLocale(m_locales.path(), "zh_CN"));
        ASSERT_TRUE(compileLocale(m_locales.path(), "en_US"));
    }
    if (!inEnvironment({{"LOCPATH", m_locales.path().string()}, {"LC_ALL", "en_US.UTF-8"}}))
        return;
    LogCapture log;
    startIn(languageChinese);
    expectChinese();
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    choose(Command::English);
    runFor(0.2);
    expectEnglish();
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_TRUE(log.messages().empty());
    load(writeTestModel("模型.osgb"));
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(LanguageTest, NumbersKeepTheDot) {
    startIn(languageChinese);
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    for (const Command language : {Command::English, Command::Chinese}) {
        choose(language);
        runFor(0.2);
        EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
        EXPECT_EQ(half(), "0.5");
    }
}

/// In an environment whose numbers have commas.
class CommaEnvironmentTest : public LanguageTest, public ::testing::WithParamInterface<int> {};

TEST_P(CommaEnvironmentTest, WritesDots) {
    if (!std::getenv("LOCPATH")) {
        ASSERT_TRUE(compileLocale(m_locales.path(), "de_DE"));
    }
    if (!inEnvironment({{"LOCPATH", m_locales.path().string()}, {"LC_ALL", "de_DE.UTF-8"}}))
        return;
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "de_DE.UTF-8");
    startIn(GetParam());
    EXPECT_EQ(half(), "0.5");
    EXPECT_EQ(wxString::Format("%.1f", 0.5), "0.5");
    appSettings().fovy = 30.5;
    load(writeTestModel());
    runFor(0.2);
    EXPECT_EQ(half(), "0.5");
    close();
    EXPECT_NE(readFile("datafile.json").find("30.5"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(All, CommaEnvironmentTest, ::testing::Values(0, 1, 7));

} // namespace orbisk::test
