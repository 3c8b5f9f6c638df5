#pragma once

#include "support/GuiTest.h"
#include "support/LoopbackServer.h"

#include <wx/eventfilter.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orbisk::test {

/// Runs the program against a tip server of the test's own.
class TipsTest : public GuiTest, private wxEventFilter {
protected:
    TipsTest();
    ~TipsTest() override;

    /// Answers the program's request, and from then on all of them, this way.
    void serve(LoopbackServer::Answer answer);

    /// Answers it with these bytes and closes.
    void serveBytes(const std::string& bytes);

    /// Ends the server, and with it whatever it keeps waiting.
    void stopServing() { m_server.reset(); }

    LoopbackServer& server() { return *m_server; }

    /// What the program asked for last.
    std::string request();

    /// The tips that reached the frame.
    const std::vector<std::string>& tips() const { return m_tips; }

    /// Starts the program, closes the dialog of its tip, and expects this one tip.
    void startAndExpectTip(const std::string& tip);

    /// Starts the program and expects that its fetch ends in silence: no tip and no dialog.
    void startAndExpectNoTip();

    /// Waits for the end of the fetch. @return whether it came.
    static bool waitForFetch(double seconds = 30.0);

private:
    int FilterEvent(wxEvent& event) override;

    std::unique_ptr<LoopbackServer> m_server;
    std::mutex m_requestMutex;
    std::string m_request;
    std::vector<std::string> m_tips;
};

/// Base64 of these bytes in one line.
std::string base64Of(const std::string& bytes);

} // namespace orbisk::test
