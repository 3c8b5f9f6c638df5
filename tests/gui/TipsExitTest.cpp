#include "support/ChildProcess.h"
#include "support/GuiTest.h"
#include "support/LoopbackServer.h"
#include "support/Screen.h"

#include <algorithm>
#include <chrono>

namespace orbisk::test {

/// The program as a process of its own that still waits for its tip when it is closed.
class TipsExitTest : public GuiTest {
protected:
    static constexpr double secondsToEnd = 3.0;

    /// Starts the program with a tip server at this port, lets it run until `ready`, closes it, and
    /// expects it to end soon, in order, with its settings saved.
    static void expectPromptEnd(unsigned short port, const std::function<bool()>& ready) {
        writeSettings(R"({"x":100,"y":80,"w":820,"h":620})", languageEnglish);
        ChildProcess child({ORBISK_WITH_TIPS, std::to_string(port)});
        const Screen screen;
        ASSERT_TRUE(runUntil([&] {
            const auto titles = screen.titles();
            return std::find(titles.begin(), titles.end(), "Kelvane") != titles.end();
        }));
        ASSERT_TRUE(runUntil(ready));
        runFor(0.3);
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_TRUE(runUntil([&] {
            screen.closeWindow("Kelvane");
            return !child.isRunning();
        }));
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        EXPECT_LT(time.count(), secondsToEnd);
        EXPECT_EQ(child.wait(), 0) << child.errorOutput();
        EXPECT_NE(readFile("datafile.json").find("\"sex_is_male\" : true"), std::string::npos);
    }
};

TEST_F(TipsExitTest, EndsWhileConnectingHangs) {
    const FullPort port;
    ASSERT_FALSE(port.answers());
    expectPromptEnd(port.port(), [] { return true; });
}

TEST_F(TipsExitTest, EndsWhileTheAnswerHangs) {
    LoopbackServer server([](LoopbackServer::Connection& connection) {
        connection.request();
        connection.waitForClose();
    });
    expectPromptEnd(server.port(), [&server] { return server.connectionCount() == 1; });
}

TEST_F(TipsExitTest, EndsWhileTheBodyComesAByteASecond) {
    LoopbackServer server([](LoopbackServer::Connection& connection) {
        connection.request();
        connection.send(httpAnswer(200, "Content-Length: 1000\r\n", "P"));
        while (connection.wait(1.0))
            connection.send("P");
    });
    expectPromptEnd(server.port(), [&server] { return server.connectionCount() == 1; });
}

TEST_F(TipsExitTest, EndsInOrderAfterAFailedFetch) {
    LoopbackServer server([](LoopbackServer::Connection&) {});
    expectPromptEnd(server.port(), [&server] { return server.connectionCount() == 1; });
}

} // namespace orbisk::test
