#include "online/TipsReceiver.h"

namespace orbisk {

const wxEventTypeTag<wxThreadEvent> evtTip(wxNewEventType());

TipsReceiver::TipsReceiver(wxEvtHandler* frame) : m_frame(frame) {}

void TipsReceiver::queue(const wxString& tip) {
    wxThreadEvent event(evtTip, wxID_ANY);
    event.SetString(tip);
    // Held while queueing, or the frame could go in between.
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_closed)
        wxQueueEvent(m_frame, event.Clone());
}

void TipsReceiver::close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_closed = true;
}

} // namespace orbisk
