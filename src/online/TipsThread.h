#pragma once

#include "online/OnlineAddresses.h"

#include <wx/thread.h>

#include <memory>

namespace orbisk {

class TipsReceiver;

/// Asks a server once for the tip of the day and hands it to the receiver. Nothing is retried, and
/// a failure of any kind is silent. A server that takes its time keeps this thread only. Detached:
/// deletes itself.
class TipsThread : public wxThread {
public:
    TipsThread(std::shared_ptr<TipsReceiver> receiver, TipServer server);
    ~TipsThread() override;

    /// Whether one of these threads still exists. It cannot be stopped while it waits for a server,
    /// so the process has to end around it. Any thread.
    static bool isUnderWay();

    /// Longest answer that is read, in bytes; one that announces more is a failure.
    static constexpr std::size_t longestBody = std::size_t{1} << 20U;

protected:
    ExitCode Entry() override;

private:
    std::shared_ptr<TipsReceiver> m_receiver;
    TipServer m_server;
};

} // namespace orbisk
