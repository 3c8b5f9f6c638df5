#include "online/OnlineAddresses.h"
#include "online/TipsReceiver.h"
#include "online/TipsThread.h"
#include "support/TipsTest.h"

#include <sys/resource.h>

namespace orbisk::test {

namespace {

constexpr const char* boldHi = "<b>hi</b>";

/// Lines of 76 characters, each followed by a line feed.
std::string wrapped(const std::string& base64) {
    constexpr std::size_t lineLength = 76;
    std::string lines;
    for (std::size_t i = 0; i < base64.size(); i += lineLength)
        lines += base64.substr(i, lineLength) + "\n";
    return lines;
}

std::string longTip() {
    std::string tip;
    for (int i = 0; i < 200; ++i)
        tip += "<p>第 " + std::to_string(i) + " 行</p>";
    return tip;
}

std::string withLength(std::size_t length, const std::string& body) {
    return httpAnswer(200, "Content-Length: " + std::to_string(length) + "\r\n", body);
}

long peakKibibytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

class TipsFetchTest : public TipsTest {};

TEST_F(TipsFetchTest, AsksForTheTipOnce) {
    serveBytes(httpAnswer(base64Of(boldHi)));
    startAndExpectTip(boldHi);
    EXPECT_EQ(request().rfind("GET /viewer/viewer_tips.php HTTP/1.0\r\n", 0), 0u) << request();
    EXPECT_EQ(server().connectionCount(), 1);
}

TEST_F(TipsFetchTest, BoldHiYieldsExactlyThatText) {
    serveBytes(httpAnswer("PGI+aGk8L2I+"));
    startAndExpectTip("<b>hi</b>");
}

TEST_F(TipsFetchTest, TwelveBytesYieldExactlyThatText) {
    serveBytes(httpAnswer(base64Of("<p><b>hi</b>")));
    startAndExpectTip("<p><b>hi</b>");
}

TEST_F(TipsFetchTest, WrappedBodyYieldsTheSameText) {
    serveBytes(httpAnswer(wrapped(base64Of(longTip()))));
    startAndExpectTip(longTip());
}

TEST_F(TipsFetchTest, UnwrappedBodyYieldsTheSameText) {
    serveBytes(httpAnswer(base64Of(longTip())));
    startAndExpectTip(longTip());
}

TEST_F(TipsFetchTest, NoContentLengthShowsNoTip) {
    serveBytes(httpAnswer(200, "", base64Of(boldHi)));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, LengthLongerThanTheBodyTakesWhatCame) {
    serveBytes(withLength(1000, base64Of(boldHi)));
    startAndExpectTip(boldHi);
}

TEST_F(TipsFetchTest, LengthShorterThanTheBodyCutsIt) {
    serveBytes(withLength(4, base64Of(boldHi)));
    startAndExpectTip("<b>");
}

TEST_F(TipsFetchTest, EmptyBodyShowsNoTip) {
    serveBytes(httpAnswer(""));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, BodyThatNeverCameShowsNoTip) {
    serveBytes(withLength(1000, ""));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, BodyThatIsNotBase64ShowsNoTip) {
    serveBytes(httpAnswer("<html><body>Please log in</body></html>"));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, TextThatIsNotUtf8ShowsNoTip) {
    serveBytes(httpAnswer(base64Of("<b>\xff\xfe</b>")));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, MissingPageShowsNoTip) {
    const std::string body = base64Of(boldHi);
    serveBytes(httpAnswer(404, "Content-Length: " + std::to_string(body.size()) + "\r\n", body));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, AnswerThatIsNotHttpShowsNoTip) {
    serveBytes("220 mail.example ESMTP\r\n");
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, AbsentServerShowsNoTip) {
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, UnknownHostShowsNoTip) {
    // A label longer than any name may be is refused without asking anybody.
    tipServer() = {std::string(70, 'x') + ".invalid", 0};
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, RedirectsAreNotFollowed) {
    LoopbackServer elsewhere([](LoopbackServer::Connection& connection) {
        connection.request();
        connection.send(httpAnswer(base64Of(boldHi)));
    });
    const std::string target = "http://127.0.0.1:" + std::to_string(elsewhere.port()) + "/";
    const std::string body = "<a href=\"" + target + "\">moved</a>";
    serveBytes(httpAnswer(
        302, "Location: " + target + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n",
        body));
    startAndExpectNoTip();
    EXPECT_EQ(elsewhere.connectionCount(), 0);
}

TEST_F(TipsFetchTest, AMebibyteIsRead) {
    // Its base64 is as long as is allowed.
    const std::string tip = "<!--" + std::string(TipsThread::longestBody / 4 * 3 - 7, 'x') + "-->";
    const std::string body = base64Of(tip);
    ASSERT_EQ(body.size(), TipsThread::longestBody);
    serveBytes(httpAnswer(body));
    startAndExpectTip(tip);
}

TEST_F(TipsFetchTest, AByteMoreIsNotRead) {
    serveBytes(withLength(TipsThread::longestBody + 1,
                          base64Of(boldHi) + std::string(TipsThread::longestBody, '\n')));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, AGigabyteAnnouncedIsNeitherReadNorMadeRoomFor) {
    const long before = peakKibibytes();
    serve([](LoopbackServer::Connection& connection) {
        connection.send(withLength(std::size_t{1} << 30U, base64Of(boldHi)));
        connection.waitForClose();
    });
    startAndExpectNoTip();
    constexpr long roomForTheFrame = 300L * 1024;
    EXPECT_LT(peakKibibytes() - before, roomForTheFrame);
}

TEST_F(TipsFetchTest, NegativeLengthShowsNoTip) {
    serveBytes(httpAnswer(200, "Content-Length: -5\r\n", base64Of(boldHi)));
    startAndExpectNoTip();
}

TEST_F(TipsFetchTest, WithoutAFrameItIsAnAssertionAndNothingIsQueued) {
    static std::string asserted;
    const auto former =
        wxSetAssertHandler([](const wxString&, int, const wxString&, const wxString& condition,
                              const wxString&) { asserted = condition.utf8_string(); });
    TipsReceiver receiver(nullptr);
    receiver.queue("<b>hi</b>");
    wxSetAssertHandler(former);
    EXPECT_EQ(asserted, "\"dest\"");
}

TEST_F(TipsFetchTest, ATipThatTricklesInIsShownWhenComplete) {
    serve([](LoopbackServer::Connection& connection) {
        for (const char byte : httpAnswer(base64Of(boldHi))) {
            connection.send(std::string(1, byte));
            connection.wait(0.01);
        }
    });
    startAndExpectTip(boldHi);
}

TEST_F(TipsFetchTest, WindowAnswersWhileTheServerDoesNot) {
    serve([](LoopbackServer::Connection& connection) { connection.waitForClose(); });
    start();
    ASSERT_TRUE(runUntil([this] { return server().connectionCount() == 1; }));
    EXPECT_TRUE(TipsThread::isUnderWay());
    choose(Command::Toolbar);
    EXPECT_FALSE(menuItem(Command::Toolbar).IsChecked());
    const auto before = wxGetUTCTimeMillis();
    close();
    EXPECT_LT(wxGetUTCTimeMillis() - before, 2000);
    EXPECT_TRUE(TipsThread::isUnderWay());
}

TEST_F(TipsFetchTest, ATipForAFrameThatIsGoneIsDropped) {
    std::atomic<bool> answer{false};
    serve([&answer](LoopbackServer::Connection& connection) {
        while (!answer && connection.wait(0.01)) {
        }
        connection.send(httpAnswer(base64Of(boldHi)));
    });
    start();
    ASSERT_TRUE(runUntil([this] { return server().connectionCount() == 1; }));
    close();
    ASSERT_TRUE(TipsThread::isUnderWay());
    answer = true;
    EXPECT_TRUE(waitForFetch());
    runFor(0.3);
    EXPECT_TRUE(tips().empty());
}

} // namespace orbisk::test
