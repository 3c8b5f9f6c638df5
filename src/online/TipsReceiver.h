#pragma once

#include <wx/event.h>
#include <wx/string.h>

#include <mutex>

namespace orbisk {

/// The event with which a tip arrives: its string is the tip's HTML.
extern const wxEventTypeTag<wxThreadEvent> evtTip;

/// The far end of the way a tip takes from its thread to the frame. Thread and frame share it, as
/// either may be gone first: a fetch can take longer than the frame lives.
class TipsReceiver {
public:
    /// @param frame gets the tip events until `close`.
    explicit TipsReceiver(wxEvtHandler* frame);

    /// Queues a tip to the frame; once it was closed nothing happens. A null frame is a mistake of
    /// the caller, of which the toolkit's assertion tells. Any thread.
    void queue(const wxString& tip);

    /// From now on the frame is left alone. Main thread.
    void close();

private:
    std::mutex m_mutex;
    wxEvtHandler* m_frame;
    bool m_closed = false;
};

} // namespace orbisk
