#pragma once

#include "online/OnlineAddresses.h"

#include <wx/string.h>
#include <wx/thread.h>

#include <memory>

class wxEvtHandler;
class wxWindow;

namespace orbisk {

class TipsReceiver;

/// The frame's tip: fetches it, keeps it, and shows it in its dialog. Main thread.
class Tips {
public:
    /// @param frame gets the event of the tip (`evtTip`).
    explicit Tips(wxEvtHandler* frame);
    ~Tips();

    Tips(const Tips&) = delete;
    Tips& operator=(const Tips&) = delete;

    /// Starts to ask the server for a tip.
    void fetch(const TipServer& server);

    /// Keeps the tip that has arrived; waits for the mutex.
    void store(const wxString& html);

    /// Shows the tip over `parent` until the user closes it. Where the mutex is held by somebody
    /// the dialog stays empty, as it does without a tip. After `close` nothing is shown.
    void show(wxWindow* parent);

    /// From now on no tip arrives and none is shown: the frame is about to go.
    void close();

    /// Guards the kept tip.
    wxMutex& mutex() { return m_mutex; }

private:
    std::shared_ptr<TipsReceiver> m_receiver;
    wxMutex m_mutex;
    wxString m_message;
    bool m_closed = false;
};

} // namespace orbisk
