#include "online/URLDialog.h"

#include "online/OnlineAddresses.h"
#include "support/GuiTest.h"
#include "support/LogCapture.h"
#include "support/Screen.h"
#include "support/TestBrowser.h"

#include <wx/button.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

namespace orbisk::test {

class URLDialogTest : public GuiTest {
protected:
    /// Chooses the menu item and looks at the dialog, which `act` ends.
    static void openWith(const std::function<void(URLDialog&)>& act) {
        bool seen = false;
        withNextDialog([&](wxDialog& dialog) {
            seen = true;
            act(dynamic_cast<URLDialog&>(dialog));
        });
        choose(Command::OpenUrl);
        EXPECT_TRUE(seen);
    }

    static wxTextCtrl& textOf(URLDialog& dialog) {
        return dynamic_cast<wxTextCtrl&>(*dialog.FindWindow("ID_TEXTCTRL"));
    }

    static wxButton& labelButton(URLDialog& dialog) {
        return dynamic_cast<wxButton&>(*dialog.FindWindow("ID_BUTTON1"));
    }

    /// What the browser got, once it got something.
    static std::string opened() {
        EXPECT_TRUE(runUntil([] { return !TestBrowser::opened().empty(); }));
        const std::string result = TestBrowser::opened();
        TestBrowser::forget();
        return result;
    }

    /// Opens this address by the dialog and its OK button. @return what the browser got.
    static std::string openAddress(const std::string& address) {
        openWith([&address](URLDialog& dialog) {
            textOf(dialog).SetValue(wxString::FromUTF8(address));
            dialog.EndModal(wxID_OK);
        });
        return opened();
    }

    /// Whether the test goes on, in a process of its own with a browser.
    bool hasBrowser() const { return inEnvironment(m_browser.environment()); }

    static std::string proposed() { return "1|" + storedUrl() + "|"; }

private:
    TestBrowser m_browser;
};

TEST_F(URLDialogTest, HasItsWindows) {
    start();
    openWith([](URLDialog& dialog) {
        EXPECT_EQ(dialog.GetTitle(), "URL Open...");
        EXPECT_EQ(dialog.GetParent(), frame());
        EXPECT_EQ(dialog.GetClientSize(), wxSize(422, 103));
        EXPECT_FALSE(dialog.HasFlag(wxRESIZE_BORDER));
        EXPECT_EQ(dynamic_cast<wxStaticText&>(*dialog.FindWindow("ID_STATICTEXT")).GetLabel(),
                  "URL:");
        EXPECT_EQ(labelButton(dialog).GetLabel(), "Label");
        EXPECT_EQ(textOf(dialog).GetValue(), wxString::FromUTF8(storedUrl()));
        EXPECT_EQ(textOf(dialog).GetSize(), wxSize(269, 22));
        EXPECT_NE(dialog.FindWindow(wxID_OK), nullptr);
        EXPECT_NE(dialog.FindWindow(wxID_CANCEL), nullptr);
        const wxRect inside(dialog.GetClientSize());
        std::vector<wxRect> rects;
        for (const wxWindow* child : dialog.GetChildren()) {
            EXPECT_TRUE(inside.Contains(child->GetRect())) << child->GetName().utf8_str();
            for (const wxRect& other : rects)
                EXPECT_FALSE(other.Intersects(child->GetRect())) << child->GetName().utf8_str();
            rects.push_back(child->GetRect());
        }
        dialog.EndModal(wxID_CANCEL);
    });
}

TEST_F(URLDialogTest, OkOpensTheAddress) {
    if (!hasBrowser())
        return;
    start();
    openWith([](URLDialog& dialog) { click(*dialog.FindWindow(wxID_OK)); });
    EXPECT_EQ(opened(), proposed());
}

TEST_F(URLDialogTest, CancelOpensTheAddressAllTheSame) {
    if (!hasBrowser())
        return;
    start();
    openWith([](URLDialog& dialog) { click(*dialog.FindWindow(wxID_CANCEL)); });
    EXPECT_EQ(opened(), proposed());
}

TEST_F(URLDialogTest, CloseBoxOpensTheAddressAllTheSame) {
    if (!hasBrowser())
        return;
    start();
    openWith([](URLDialog& dialog) {
        const Screen screen;
        EXPECT_TRUE(runUntil([&] {
            screen.closeWindow("URL Open...");
            return !dialog.IsModal();
        }));
    });
    EXPECT_EQ(opened(), proposed());
}

TEST_F(URLDialogTest, CancelOpensTheAddressAsItWasEdited) {
    if (!hasBrowser())
        return;
    start();
    openWith([](URLDialog& dialog) {
        textOf(dialog).SetValue("http://edited.example");
        dialog.EndModal(wxID_CANCEL);
    });
    EXPECT_EQ(opened(), "1|http://edited.example|");
}

TEST_F(URLDialogTest, EditedAddressIsUsedOnceAndTheNextDialogShowsTheStoredOne) {
    if (!hasBrowser())
        return;
    start();
    EXPECT_EQ(openAddress("http://edited.example"), "1|http://edited.example|");
    openWith([](URLDialog& dialog) {
        EXPECT_EQ(textOf(dialog).GetValue(), wxString::FromUTF8(storedUrl()));
        dialog.EndModal(wxID_OK);
    });
    EXPECT_EQ(opened(), proposed());
}

TEST_F(URLDialogTest, LabelButtonPutsTheStoredAddressBack) {
    start();
    openWith([](URLDialog& dialog) {
        textOf(dialog).SetValue("http://edited.example");
        click(labelButton(dialog));
        EXPECT_EQ(textOf(dialog).GetValue(), wxString::FromUTF8(storedUrl()));
        EXPECT_TRUE(dialog.IsModal());
        dialog.EndModal(wxID_CANCEL);
    });
}

TEST_F(URLDialogTest, AddressArrivesAsOneArgumentWhateverStandsInIt) {
    if (!hasBrowser())
        return;
    start();
    for (const std::string address :
         {"http://a.example/with blanks and\ttabs", "http://a.example/\"quoted\" words",
          "http://a.example/it's \"both\" 'kinds'", "'", "\"", "a\\ b\\", "-new-window",
          "--help me", "$(touch run) `touch run` ; touch run & touch run | touch run > run", "*",
          "~", "%s %u %%", "100%", "http://a.example/?x=1&y=2#z", "http://例子.example/路径 一",
          "orbisk-address", "#comment", "", " "})
        EXPECT_EQ(openAddress(address), "1|" + address + "|");
    EXPECT_FALSE(std::filesystem::exists("run"));
}

TEST_F(URLDialogTest, NothingHappensWithoutABrowser) {
    const TemporaryFolder privateFolder;
    const std::filesystem::path folder = privateFolder.path();
    for (const char* name : {"glib-2.0", "icons", "themes", "fonts"})
        if (std::filesystem::exists(std::filesystem::path("/usr/share") / name))
            std::filesystem::create_symlink(std::filesystem::path("/usr/share") / name,
                                            folder / name);
    if (!inEnvironment({{"XDG_DATA_HOME", folder.string()},
                        {"XDG_DATA_DIRS", folder.string()},
                        {"HOME", folder.string()}}))
        return;
    start();
    const LogCapture log;
    openWith([](URLDialog& dialog) { dialog.EndModal(wxID_OK); });
    runFor(0.3);
    EXPECT_EQ(log.messages(), std::vector<std::string>());
}

} // namespace orbisk::test
