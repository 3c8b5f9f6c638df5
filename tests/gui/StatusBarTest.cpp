#include "app/IconStatusBar.h"
#include "app/WebAddress.h"
#include "app/WebBrowser.h"
#include "support/GuiTest.h"
#include "support/LogCapture.h"
#include "support/TestBrowser.h"

#include <wx/bmpbuttn.h>

namespace orbisk::test {

namespace fs = std::filesystem;

class StatusBarTest : public GuiTest {
protected:
    static wxStatusBar& bar() { return *frame()->GetStatusBar(); }

    static wxWindow& logo() { return *bar().FindWindow(IconStatusBar::logoButtonId); }

    static wxWindow& link() { return *bar().FindWindow(IconStatusBar::linkButtonId); }

    static wxRect fieldOnScreen() {
        wxRect field;
        bar().GetFieldRect(1, field);
        return {bar().ClientToScreen(field.GetPosition()), field.GetSize()};
    }

    static void expectInField() {
        const wxRect field = fieldOnScreen();
        EXPECT_EQ(logo().GetParent()->GetScreenRect(), field);
        for (const wxWindow* button : {&logo(), &link()}) {
            const wxRect rect = button->GetScreenRect();
            EXPECT_TRUE(field.Contains(rect))
                << rect.x - field.x << " " << rect.y - field.y << " " << rect.width << " "
                << rect.height << " in " << field.width << " " << field.height;
        }
        EXPECT_LE(logo().GetScreenRect().GetRight(), link().GetScreenRect().GetLeft());
    }

    TestBrowser m_browser;
};

TEST_F(StatusBarTest, HasTwoFieldsTheRightOneFixed) {
    start();
    EXPECT_NE(dynamic_cast<IconStatusBar*>(frame()->GetStatusBar()), nullptr);
    ASSERT_EQ(bar().GetFieldsCount(), 2);
    EXPECT_EQ(bar().GetStatusWidth(0), -1);
    EXPECT_EQ(bar().GetStatusWidth(1), 250);
}

TEST_F(StatusBarTest, HoldsLogoAndLink) {
    start();
    ASSERT_NE(bar().FindWindow(6100), nullptr);
    ASSERT_NE(bar().FindWindow(6101), nullptr);
    EXPECT_NE(dynamic_cast<wxBitmapButton*>(bar().FindWindow(6101)), nullptr);
    EXPECT_EQ(link().GetLabel().utf8_string(), webAddress());
    EXPECT_FALSE(webAddress().empty());
    EXPECT_EQ(link().GetForegroundColour(), wxColour(0, 0, 255));
    EXPECT_TRUE(link().GetFont().GetUnderlined());
    EXPECT_EQ(link().GetFont().GetPointSize(), bar().GetFont().GetPointSize());
}

TEST_F(StatusBarTest, LinkShowsTheWholeAddress) {
    start();
    runFor(0.3);
    EXPECT_GE(link().GetSize().x, link().GetTextExtent(webAddress()).x);
    EXPECT_GE(link().GetSize().x, link().GetBestSize().x);
}

TEST_F(StatusBarTest, LogoAndLinkStayInTheFieldAfterResizes) {
    start();
    runFor(0.3);
    expectInField();
    for (const wxSize size : {wxSize(700, 500), wxSize(1100, 800), wxSize(600, 400)}) {
        frame()->SetSize(size);
        runFor(0.5);
        expectInField();
    }
}

TEST_F(StatusBarTest, LogoAndLinkStayInTheFieldAfterALanguageSwitch) {
    start();
    frame()->switchLanguage(languageChinese);
    runFor(0.5);
    expectInField();
}

TEST_F(StatusBarTest, MessagesDoNotReachTheRightField) {
    start();
    frame()->SetStatusText(wxString('x', 500), 0);
    runFor(0.3);
    wxRect left;
    wxRect right;
    bar().GetFieldRect(0, left);
    bar().GetFieldRect(1, right);
    EXPECT_LE(left.GetRight(), right.GetLeft());
    EXPECT_EQ(bar().GetStatusText(1), "");
    EXPECT_EQ(bar().GetStatusText(0), wxString('x', 500));
    expectInField();
}

TEST_F(StatusBarTest, LinkOpensTheWebAddress) {
    if (!inEnvironment(m_browser.environment()))
        return;
    start();
    click(link());
    ASSERT_TRUE(runUntil([] { return !TestBrowser::opened().empty(); }));
    EXPECT_EQ(TestBrowser::opened(), "1|" + webAddress() + "|");
}

TEST_F(StatusBarTest, LogoOpensTheWebAddress) {
    if (!inEnvironment(m_browser.environment()))
        return;
    start();
    click(logo());
    ASSERT_TRUE(runUntil([] { return !TestBrowser::opened().empty(); }));
    EXPECT_EQ(TestBrowser::opened(), "1|" + webAddress() + "|");
}

TEST_F(StatusBarTest, NothingHappensWithoutABrowser) {
    // The toolkit's dialogs need what else there is in the system's folders.
    const TemporaryFolder privateFolder;
    const fs::path folder = privateFolder.path();
    for (const char* name : {"glib-2.0", "icons", "themes", "fonts"})
        if (fs::exists(fs::path("/usr/share") / name))
            fs::create_symlink(fs::path("/usr/share") / name, folder / name);
    if (!inEnvironment({{"XDG_DATA_HOME", folder.string()},
                        {"XDG_DATA_DIRS", folder.string()},
                        {"HOME", folder.string()}}))
        return;
    start();
    LogCapture log;
    click(link());
    click(logo());
    EXPECT_TRUE(log.messages().empty());
    EXPECT_TRUE(frame()->IsActive());
}

} // namespace orbisk::test
