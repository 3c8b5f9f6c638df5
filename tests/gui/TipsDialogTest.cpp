#include "online/TipsDialog.h"

#include "online/HtmlTipPage.h"
#include "online/Tips.h"
#include "support/Screen.h"
#include "support/TestBrowser.h"
#include "support/TipsTest.h"

#include <wx/button.h>
#include <wx/display.h>

#include <cstdlib>

namespace orbisk::test {

namespace {

constexpr const char* redTip = "<body bgcolor=\"#ff0000\"><font color=\"#00ff00\">Hi</font></body>";

/// A page that tries everything to reach the server at this address.
std::string hostilePage(const std::string& server) {
    std::string page = R"(<html><head>
        <base href="SERVER/base/">
        <meta http-equiv="refresh" content="0;url=SERVER/refresh">
        <link rel="stylesheet" href="SERVER/sheet.css">
        <link rel="prefetch" href="SERVER/prefetch">
        <link rel="preload" as="image" href="SERVER/preload">
        <link rel="preconnect" href="SERVER">
        <link rel="dns-prefetch" href="SERVER">
        <link rel="prerender" href="SERVER/prerender">
        <link rel="icon" href="SERVER/icon.png">
        <link rel="manifest" href="SERVER/manifest.json">
        <style>@import url("SERVER/import.css");
            @font-face { font-family: far; src: url("SERVER/font.woff"); }
            body { background: url("SERVER/background.png"); font-family: far; }</style>
        <script src="SERVER/script.js"></script>
        </head><body onload="new Image().src='SERVER/onload'" background="SERVER/body.png">
        <script>fetch('SERVER/fetch'); location = 'SERVER/location';
            document.write('<img src="SERVER/written">');</script>
        <img src="SERVER/image.png" onerror="this.src='SERVER/onerror'">
        <img srcset="SERVER/set.png 2x"><picture><source srcset="SERVER/source.png"></picture>
        <iframe src="SERVER/frame"></iframe>
        <iframe srcdoc="<script>parent.location='SERVER/doc'</script><img src='SERVER/inner'>"></iframe>
        <object data="SERVER/object"></object><embed src="SERVER/embed">
        <video src="SERVER/video" poster="SERVER/poster" autoplay></video>
        <audio src="SERVER/audio" autoplay></audio>
        <svg><image href="SERVER/svg.png"/><use href="SERVER/use.svg#a"/></svg>
        <form id="f" action="SERVER/form"><input type="image" src="SERVER/input.png" autofocus></form>
        <script>document.getElementById('f').submit();</script>
        <table background="SERVER/table.png"><tr><td>Text</td></tr></table>
        </body></html>)";
    const std::string mark = "SERVER";
    for (std::size_t at = 0; (at = page.find(mark, at)) != std::string::npos; at += server.size())
        page.replace(at, mark.size(), server);
    return page;
}

} // namespace

class TipsDialogTest : public TipsTest {
protected:
    /// Shows the tip by its tool, or what there is without one, while `look` looks at it.
    static void showTip(const std::function<void(TipsDialog&)>& look) {
        bool seen = false;
        withNextDialog([&](wxDialog& dialog) {
            seen = true;
            look(dynamic_cast<TipsDialog&>(dialog));
            if (dialog.IsModal())
                dialog.EndModal(wxID_CANCEL);
        });
        frame()->ProcessWindowEvent(
            *std::make_unique<wxCommandEvent>(wxEVT_MENU, frame()->bars().toolId(Command::Tips)));
        EXPECT_TRUE(seen);
    }

    static bool hasWebView(TipsDialog& dialog) {
        return dynamic_cast<HtmlTipPage*>(&dialog.page()) == nullptr;
    }

    static std::set<unsigned long> coloursOf(TipsDialog& dialog) {
        wxRect rect = dialog.page().window().GetScreenRect();
        // The frame around it is not the page.
        rect.Deflate(rect.GetSize() / 8);
        return Screen().colours(rect);
    }

    /// Whether the page is, but for letters, of this colour before long.
    static bool turns(TipsDialog& dialog, unsigned long colour) {
        return runUntil([&] { return coloursOf(dialog).count(colour) > 0; }, 20.0);
    }

    static wxButton& closeButton(TipsDialog& dialog) {
        return dynamic_cast<wxButton&>(*dialog.FindWindow(wxID_CANCEL));
    }

    static constexpr unsigned long red = 0xff0000;
};

TEST_F(TipsDialogTest, HasTitleAndPageAndCloseButton) {
    start();
    showTip([](TipsDialog& dialog) {
        EXPECT_EQ(dialog.GetTitle(), "Tips");
        EXPECT_EQ(dialog.GetParent(), frame());
        EXPECT_FALSE(dialog.HasFlag(wxRESIZE_BORDER));
        EXPECT_TRUE(dialog.HasFlag(wxCAPTION));
        EXPECT_TRUE(dialog.HasFlag(wxCLOSE_BOX));
        EXPECT_EQ(dialog.GetChildren().size(), 2u);
        EXPECT_EQ(closeButton(dialog).GetLabel(), "Close");
        EXPECT_EQ(closeButton(dialog).GetName(), "wxID_CANCEL");
        const wxRect page = dialog.page().window().GetRect();
        EXPECT_GE(page.x, 5);
        EXPECT_GE(page.y, 5);
        EXPECT_GE(closeButton(dialog).GetRect().y, page.GetBottom() + 5);
        EXPECT_GE(page.width, 400);
        EXPECT_GE(page.height, 250);
    });
}

TEST_F(TipsDialogTest, ComesWithAWebView) {
    start();
    showTip([](TipsDialog& dialog) { EXPECT_TRUE(hasWebView(dialog)); });
}

TEST_F(TipsDialogTest, WithoutATipItIsEmptyAndCloses) {
    start();
    showTip([](TipsDialog& dialog) {
        runFor(1.0);
        EXPECT_EQ(coloursOf(dialog).size(), 1u);
        click(closeButton(dialog));
        EXPECT_TRUE(runUntil([&dialog] { return !dialog.IsModal(); }));
    });
}

TEST_F(TipsDialogTest, ShowsTheTipThatArrived) {
    serveBytes(httpAnswer(base64Of(redTip)));
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = turns(dynamic_cast<TipsDialog&>(dialog), red);
        dialog.EndModal(wxID_CANCEL);
    });
    start();
    EXPECT_TRUE(runUntil([] { return !isDialogAwaited(); }));
    EXPECT_TRUE(seen);
}

TEST_F(TipsDialogTest, StandsInTheMiddleOfTheFrameHoweverSoonTheTipArrives) {
    serveBytes(httpAnswer(base64Of(redTip)));
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = true;
        runFor(0.5);
        const wxRect over = frame()->GetScreenRect();
        const wxRect rect = dialog.GetScreenRect();
        constexpr int decorations = 40;
        EXPECT_NEAR(rect.x + rect.width / 2, over.x + over.width / 2, decorations);
        EXPECT_NEAR(rect.y + rect.height / 2, over.y + over.height / 2, decorations);
        dialog.EndModal(wxID_CANCEL);
    });
    start();
    EXPECT_TRUE(runUntil([&seen] { return seen; }));
}

TEST_F(TipsDialogTest, ShowsItAgainByTheTool) {
    serveBytes(httpAnswer(base64Of(redTip)));
    startAndExpectTip(redTip);
    showTip([](TipsDialog& dialog) { EXPECT_TRUE(turns(dialog, red)); });
    showTip([](TipsDialog& dialog) { EXPECT_TRUE(turns(dialog, red)); });
}

TEST_F(TipsDialogTest, ToolOpensIt) {
    start();
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = true;
        EXPECT_EQ(dialog.GetTitle(), "Tips");
        dialog.EndModal(wxID_CANCEL);
    });
    clickTool(Command::Tips);
    EXPECT_TRUE(runUntil([&seen] { return seen; }));
}

TEST_F(TipsDialogTest, TipThatArrivesWhileItsTextIsLockedLeavesTheDialogEmptyButShown) {
    serve([](LoopbackServer::Connection& connection) {
        connection.wait(1.0);
        connection.send(httpAnswer(base64Of(redTip)));
    });
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = true;
        runFor(1.5);
        EXPECT_EQ(coloursOf(dynamic_cast<TipsDialog&>(dialog)).size(), 1u);
        dialog.EndModal(wxID_CANCEL);
    });
    start();
    // Runs ahead of the frame's own handler, when the tip is stored already.
    frame()->Bind(
        wxEVT_MENU,
        [](wxCommandEvent& event) {
            frame()->tips().mutex().Lock();
            event.Skip();
        },
        frame()->bars().toolId(Command::Tips));
    EXPECT_TRUE(runUntil([&seen] { return seen; }));
    frame()->tips().mutex().Unlock();
    EXPECT_EQ(tips(), std::vector<std::string>{redTip});
}

TEST_F(TipsDialogTest, IsNotShownByAFrameThatIsAboutToGo) {
    start();
    frame()->tips().close();
    frame()->tips().show(frame());
}

TEST_F(TipsDialogTest, HostileTipReachesNothing) {
    LoopbackServer target([](LoopbackServer::Connection& connection) { connection.request(); });
    const std::string address = "http://127.0.0.1:" + std::to_string(target.port());
    serveBytes(httpAnswer(base64Of(hostilePage(address))));
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = true;
        EXPECT_TRUE(hasWebView(dynamic_cast<TipsDialog&>(dialog)));
        runFor(5.0);
        dialog.EndModal(wxID_CANCEL);
    });
    start();
    EXPECT_TRUE(runUntil([] { return !isDialogAwaited(); }));
    EXPECT_TRUE(runUntil([&seen] { return seen; }));
    EXPECT_EQ(target.connectionCount(), 0);
}

TEST_F(TipsDialogTest, LinkOpensInTheBrowser) {
    const TestBrowser browser;
    if (!inEnvironment(browser.environment()))
        return;
    start();
    frame()->tips().store("<body bgcolor=\"#ff0000\" style=\"margin:0\"><a style=\"display:block;"
                          "height:500px\" href=\"http://brenholt.example/a?b=1&c=d\">.</a></body>");
    showTip([](TipsDialog& dialog) {
        ASSERT_TRUE(hasWebView(dialog));
        ASSERT_TRUE(turns(dialog, red));
        click(dialog.page().window());
        EXPECT_TRUE(runUntil([] { return !TestBrowser::opened().empty(); }));
        EXPECT_EQ(TestBrowser::opened(), "1|http://brenholt.example/a?b=1&c=d|");
        // The page itself stays.
        EXPECT_TRUE(turns(dialog, red));
    });
}

TEST_F(TipsDialogTest, LinkToANewWindowOpensInTheBrowser) {
    const TestBrowser browser;
    if (!inEnvironment(browser.environment()))
        return;
    start();
    frame()->tips().store(
        "<body bgcolor=\"#ff0000\" style=\"margin:0\"><a target=\"_blank\" style="
        "\"display:block;height:500px\" href=\"http://brenholt.example/new\">.</a>");
    showTip([](TipsDialog& dialog) {
        ASSERT_TRUE(turns(dialog, red));
        click(dialog.page().window());
        EXPECT_TRUE(runUntil([] { return !TestBrowser::opened().empty(); }));
        EXPECT_EQ(TestBrowser::opened(), "1|http://brenholt.example/new|");
    });
}

TEST_F(TipsDialogTest, LinkToALocalFileIsNotFollowed) {
    const TestBrowser browser;
    if (!inEnvironment(browser.environment()))
        return;
    start();
    frame()->tips().store("<body bgcolor=\"#ff0000\" style=\"margin:0\"><a style=\"display:block;"
                          "height:500px\" href=\"file:///etc/hosts\">.</a></body>");
    showTip([](TipsDialog& dialog) {
        ASSERT_TRUE(turns(dialog, red));
        click(dialog.page().window());
        runFor(1.5);
        EXPECT_EQ(TestBrowser::opened(), "");
        EXPECT_TRUE(turns(dialog, red));
    });
}

/// The dialog where no web view can be had.
class PlainTipsDialogTest : public TipsDialogTest {
protected:
    static void showPlain(const std::string& tip, const std::function<void(TipsDialog&)>& look) {
        TipsDialog dialog(frame(), wxID_ANY, "/nowhere/orbisk_webview.so");
        dialog.setPage(wxString::FromUTF8(tip));
        withNextDialog([&look](wxDialog& shown) {
            look(dynamic_cast<TipsDialog&>(shown));
            shown.EndModal(wxID_CANCEL);
        });
        dialog.ShowModal();
    }
};

TEST_F(PlainTipsDialogTest, ShowsTheTipAsWell) {
    start();
    showPlain(redTip, [](TipsDialog& dialog) {
        EXPECT_FALSE(hasWebView(dialog));
        EXPECT_TRUE(turns(dialog, red));
    });
}

TEST_F(PlainTipsDialogTest, HostileTipReachesNothing) {
    LoopbackServer target([](LoopbackServer::Connection& connection) { connection.request(); });
    start();
    showPlain(hostilePage("http://127.0.0.1:" + std::to_string(target.port())),
              [](TipsDialog&) { runFor(2.0); });
    EXPECT_EQ(target.connectionCount(), 0);
}

TEST_F(PlainTipsDialogTest, LinkOpensInTheBrowser) {
    const TestBrowser browser;
    if (!inEnvironment(browser.environment()))
        return;
    start();
    std::string lines;
    for (int i = 0; i < 30; ++i)
        lines += std::string(80, 'x') + "<br>";
    showPlain("<body bgcolor=\"#ff0000\"><a href=\"http://brenholt.example/plain\">" + lines +
                  "</a></body>",
              [](TipsDialog& dialog) {
                  ASSERT_TRUE(turns(dialog, red));
                  click(dialog.page().window());
                  EXPECT_TRUE(runUntil([] { return !TestBrowser::opened().empty(); }));
                  EXPECT_EQ(TestBrowser::opened(), "1|http://brenholt.example/plain|");
              });
}

} // namespace orbisk::test
