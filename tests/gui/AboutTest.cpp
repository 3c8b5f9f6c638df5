#include "app/WebAddress.h"
#include "support/GuiTest.h"
#include "support/Screen.h"

#include <wx/stattext.h>
#include <wx/timer.h>
#include <wx/tokenzr.h>
#include <wx/uiaction.h>

namespace orbisk::test {

class AboutTest : public GuiTest {
protected:
    /// Shows the About box and looks at it.
    static void lookAtAbout(const std::function<void(wxDialog&)>& look) {
        bool seen = false;
        withNextDialog([&](wxDialog& dialog) {
            seen = true;
            look(dialog);
            dialog.EndModal(wxID_CANCEL);
        });
        choose(Command::About);
        EXPECT_TRUE(seen);
    }

    static std::vector<wxStaticText*> textsOf(const wxDialog& dialog) {
        std::vector<wxStaticText*> texts;
        for (wxWindow* child : dialog.GetChildren())
            if (auto* text = dynamic_cast<wxStaticText*>(child))
                texts.push_back(text);
        return texts;
    }
};

TEST_F(AboutTest, HasTitleAndHeading) {
    start();
    lookAtAbout([](wxDialog& dialog) {
        EXPECT_EQ(dialog.GetTitle(), "About...");
        EXPECT_EQ(dialog.GetParent(), frame());
        const auto texts = textsOf(dialog);
        ASSERT_EQ(texts.size(), 2u);
        EXPECT_EQ(dialog.GetChildren().size(), 2u);
        EXPECT_EQ(texts[0]->GetLabel(), " Kelvane ");
        EXPECT_EQ(texts[0]->GetFont().GetPointSize(), 20);
        EXPECT_EQ(texts[0]->GetFont().GetWeight(), wxFONTWEIGHT_BOLD);
        EXPECT_LT(texts[0]->GetRect().y, texts[1]->GetRect().y);
    });
}

TEST_F(AboutTest, EscapeClosesIt) {
    start();
    wxTimer escape;
    escape.Bind(wxEVT_TIMER, [](wxTimerEvent&) { wxUIActionSimulator().Char(WXK_ESCAPE); });
    wxTimer patience;
    bool closedByEscape = false;
    withNextDialog([&](wxDialog& dialog) {
        closedByEscape = true;
        escape.StartOnce(300);
        patience.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
            closedByEscape = false;
            dialog.EndModal(wxID_CANCEL);
        });
        patience.StartOnce(5000);
    });
    choose(Command::About);
    EXPECT_TRUE(closedByEscape);
}

TEST_F(AboutTest, HasSevenIndentedLines) {
    start();
    lookAtAbout([](wxDialog& dialog) {
        const wxArrayString lines =
            wxStringTokenize(textsOf(dialog).at(1)->GetLabel(), "\n", wxTOKEN_RET_EMPTY_ALL);
        // The first one is empty, then come the version, five labelled lines and one of blanks.
        ASSERT_EQ(lines.size(), 8u);
        EXPECT_EQ(lines[0], "");
        EXPECT_EQ(lines[1], "       Version: 2019-06-01 V1.1.0     ");
        for (std::size_t i = 2; i < 7; ++i) {
            EXPECT_TRUE(lines[i].StartsWith("       ")) << lines[i].utf8_str();
            EXPECT_FALSE(lines[i].StartsWith("        ")) << lines[i].utf8_str();
            EXPECT_TRUE(lines[i].Contains(":")) << lines[i].utf8_str();
        }
        EXPECT_TRUE(lines[3].Contains(wxString::FromUTF8(webAddress())));
        EXPECT_TRUE(lines[4].Contains("@"));
        EXPECT_TRUE(lines[6].Contains("QQ:"));
        EXPECT_EQ(lines[7].find_first_not_of(" "), wxString::npos);
    });
}

TEST_F(AboutTest, StandsInTheMiddleOfTheScreen) {
    start();
    lookAtAbout([](wxDialog& dialog) {
        const wxRect rect = dialog.GetScreenRect();
        const wxSize display = wxGetDisplaySize();
        EXPECT_NEAR(rect.x + rect.width / 2, display.x / 2, 40);
        EXPECT_NEAR(rect.y + rect.height / 2, display.y / 2, 40);
    });
}

TEST_F(AboutTest, CloseBoxClosesIt) {
    start();
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = true;
        // Ends the dialog by way of the window manager; nothing else would.
        const auto limit = wxGetUTCTimeMillis() + 20000;
        const Screen screen;
        // A manager that does not hold the dialog yet would lose a single request.
        EXPECT_TRUE(dialog.IsModal());
        while (dialog.IsModal() && wxGetUTCTimeMillis() < limit) {
            screen.closeWindow("About...");
            wxYield();
        }
        EXPECT_FALSE(dialog.IsModal());
    });
    choose(Command::About);
    EXPECT_TRUE(seen);
    EXPECT_TRUE(frame()->IsEnabled());
}

} // namespace orbisk::test
