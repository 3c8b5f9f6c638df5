#include "support/TipsTest.h"

#include "online/OnlineAddresses.h"
#include "online/TipsReceiver.h"
#include "online/TipsThread.h"
#include "support/LogCapture.h"

#include <wx/base64.h>

#include <utility>

namespace orbisk::test {

TipsTest::TipsTest() {
    wxEvtHandler::AddFilter(this);
}

TipsTest::~TipsTest() {
    wxEvtHandler::RemoveFilter(this);
    // The toolkit goes when the test ends, and the thread uses it.
    m_server.reset();
    EXPECT_TRUE(waitForFetch());
    // It still has to leave the toolkit's own lock behind.
    runFor(0.1);
}

void TipsTest::serve(LoopbackServer::Answer answer) {
    m_server = std::make_unique<LoopbackServer>(
        [this, answer = std::move(answer)](LoopbackServer::Connection& connection) {
            const std::string request = connection.request();
            {
                const std::lock_guard<std::mutex> lock(m_requestMutex);
                m_request = request;
            }
            answer(connection);
        });
    tipServer() = {"127.0.0.1", m_server->port()};
}

void TipsTest::serveBytes(const std::string& bytes) {
    serve([bytes](LoopbackServer::Connection& connection) { connection.send(bytes); });
}

std::string TipsTest::request() {
    const std::lock_guard<std::mutex> lock(m_requestMutex);
    return m_request;
}

void TipsTest::startAndExpectTip(const std::string& tip) {
    bool shown = false;
    withNextDialog([&shown](wxDialog& dialog) {
        shown = true;
        EXPECT_EQ(dialog.GetTitle(), "Tips");
        EXPECT_EQ(dialog.GetParent(), frame());
        dialog.EndModal(wxID_CANCEL);
    });
    start();
    EXPECT_TRUE(runUntil([&shown] { return shown; }));
    EXPECT_TRUE(waitForFetch());
    runFor(0.3);
    EXPECT_EQ(m_tips, std::vector<std::string>{tip});
}

void TipsTest::startAndExpectNoTip() {
    const LogCapture log;
    start();
    EXPECT_TRUE(waitForFetch());
    runFor(0.3);
    EXPECT_TRUE(m_tips.empty()) << m_tips.front();
    EXPECT_EQ(log.messages(), std::vector<std::string>());
}

bool TipsTest::waitForFetch(double seconds) {
    return runUntil([] { return !TipsThread::isUnderWay(); }, seconds);
}

int TipsTest::FilterEvent(wxEvent& event) {
    if (event.GetEventType() == evtTip)
        m_tips.push_back(dynamic_cast<wxThreadEvent&>(event).GetString().utf8_string());
    return Event_Skip;
}

std::string base64Of(const std::string& bytes) {
    return wxBase64Encode(bytes.data(), bytes.size()).utf8_string();
}

} // namespace orbisk::test
