#include "app/InitPanel.h"
#include "support/GuiTest.h"
#include "support/LogCapture.h"

#include <wx/bmpbuttn.h>
#include <wx/html/helpfrm.h>

namespace orbisk::test {

namespace fs = std::filesystem;

class HelpTest : public GuiTest {
protected:
    /// A help of one page for each language in the working directory.
    static void writeHelp() {
        fs::remove("help");
        for (const std::string language : {"en", "zh"}) {
            const fs::path folder = fs::path("help") / language;
            fs::create_directories(folder);
            writeFile(folder / "orbisk.hhp", "[OPTIONS]\nTitle=Test help " + language +
                                                 "\nContents file=orbisk.hhc\n"
                                                 "Default topic=start.html\nCharset=UTF-8\n");
            writeFile(folder / "orbisk.hhc",
                      "<ul><li><object type=\"text/sitemap\"><param name=\"Name\" value=\"Start\">"
                      "<param name=\"Local\" value=\"start.html\"></object></ul>");
            writeFile(folder / "start.html", "<html><head><title>Test help " + language +
                                                 "</title></head><body>Help</body></html>");
        }
    }

    static wxHtmlHelpFrame* helpFrame() {
        for (wxWindow* window : wxTopLevelWindows)
            if (auto* help = dynamic_cast<wxHtmlHelpFrame*>(window))
                return help->IsBeingDeleted() ? nullptr : help;
        return nullptr;
    }

    static int helpFrameCount() {
        int count = 0;
        for (wxWindow* window : wxTopLevelWindows)
            if (dynamic_cast<wxHtmlHelpFrame*>(window) && !window->IsBeingDeleted())
                ++count;
        return count;
    }
};

TEST_F(HelpTest, OpensTheHelpOfTheLanguage) {
    writeHelp();
    start();
    choose(Command::Help);
    ASSERT_TRUE(runUntil([] { return helpFrame() && helpFrame()->IsShownOnScreen(); }));
    EXPECT_NE(helpFrame()->GetTitle().Find("Test help en"), wxNOT_FOUND)
        << helpFrame()->GetTitle().utf8_str();
}

TEST_F(HelpTest, OpensTheChineseHelp) {
    writeHelp();
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageChinese);
    start();
    choose(Command::Help);
    ASSERT_TRUE(runUntil([] { return helpFrame() && helpFrame()->IsShownOnScreen(); }));
    EXPECT_NE(helpFrame()->GetTitle().Find("Test help zh"), wxNOT_FOUND)
        << helpFrame()->GetTitle().utf8_str();
}

TEST_F(HelpTest, FurtherCallsLeaveOneWindow) {
    writeHelp();
    start();
    for (int i = 0; i < 6; ++i) {
        choose(Command::Help);
        EXPECT_TRUE(runUntil([] { return helpFrameCount() == 1; }));
    }
    close();
}

TEST_F(HelpTest, WelcomePanelsButtonOpensIt) {
    writeHelp();
    start();
    std::vector<wxWindow*> left{frame()->welcomePanel()};
    std::vector<wxWindow*> buttons;
    while (!left.empty()) {
        wxWindow* window = left.back();
        left.pop_back();
        if (dynamic_cast<wxBitmapButton*>(window))
            buttons.push_back(window);
        for (wxWindow* child : window->GetChildren())
            left.push_back(child);
    }
    ASSERT_EQ(buttons.size(), 2u);
    // They stand side by side, the one for the help to the right.
    click(*(buttons[0]->GetScreenPosition().x > buttons[1]->GetScreenPosition().x ? buttons[0]
                                                                                  : buttons[1]));
    EXPECT_TRUE(runUntil([] { return helpFrame() != nullptr; }));
}

TEST_F(HelpTest, AbsentHelpIsNoError) {
    fs::remove("help");
    start();
    LogCapture log;
    choose(Command::Help);
    EXPECT_EQ(helpFrame(), nullptr);
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(HelpTest, ClosingTheFrameEndsTheProgramWithTheHelpOpen) {
    writeHelp();
    start();
    choose(Command::Help);
    ASSERT_TRUE(runUntil([] { return helpFrame() != nullptr; }));
    frame()->CallAfter([] { frame()->Close(); });
    EXPECT_TRUE(runToEnd());
    EXPECT_EQ(frame(), nullptr);
    EXPECT_EQ(helpFrame(), nullptr);
}

TEST_F(HelpTest, ClosedHelpLeavesTheProgramRunning) {
    writeHelp();
    start();
    choose(Command::Help);
    ASSERT_TRUE(runUntil([] { return helpFrame() != nullptr; }));
    helpFrame()->Close();
    ASSERT_TRUE(runUntil([] { return helpFrame() == nullptr; }));
    EXPECT_TRUE(frame()->IsShownOnScreen());
    choose(Command::Help);
    EXPECT_TRUE(runUntil([] { return helpFrame() != nullptr; }));
}

} // namespace orbisk::test
