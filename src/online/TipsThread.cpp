#include "online/TipsThread.h"

#include "online/TipText.h"
#include "online/TipsReceiver.h"

#include <wx/log.h>
#include <wx/protocol/http.h>
#include <wx/stream.h>

#include <atomic>
#include <string>
#include <utility>

namespace orbisk {

namespace {

constexpr const char* tipPath = "/viewer/viewer_tips.php";

std::atomic<int>& threadCount() {
    static std::atomic<int> count{0};
    return count;
}

struct Destroying {
    void operator()(wxHTTP* client) const { client->Destroy(); }
};

/// What the stream has, at most as much as was announced. Empty if that is too much, or not known,
/// which the library gives as the largest number there is.
std::string readBody(wxInputStream& stream) {
    const std::size_t announced = stream.GetSize();
    if (announced == 0 || announced > TipsThread::longestBody)
        return {};
    std::string body(announced, '\0');
    stream.ReadAll(body.data(), body.size());
    body.resize(stream.LastRead());
    return body;
}

/// The body of the server's answer; empty on any failure.
std::string fetchBody(const TipServer& server) {
    const std::unique_ptr<wxHTTP, Destroying> client(new wxHTTP);
    if (!client->Connect(wxString::FromUTF8(server.host), server.port))
        return {};
    const std::unique_ptr<wxInputStream> stream(client->GetInputStream(tipPath));
    return stream ? readBody(*stream) : std::string();
}

} // namespace

TipsThread::TipsThread(std::shared_ptr<TipsReceiver> receiver, TipServer server)
    : wxThread(wxTHREAD_DETACHED), m_receiver(std::move(receiver)), m_server(std::move(server)) {
    ++threadCount();
}

TipsThread::~TipsThread() {
    --threadCount();
}

bool TipsThread::isUnderWay() {
    return threadCount() > 0;
}

wxThread::ExitCode TipsThread::Entry() {
    // What the library logs in a thread is shown on the main one later.
    const wxLogNull silence;
    const std::string bytes = decodeTip(fetchBody(m_server));
    const wxString tip = wxString::FromUTF8(bytes.data(), bytes.size());
    if (!tip.empty())
        m_receiver->queue(tip);
    return nullptr;
}

} // namespace orbisk
