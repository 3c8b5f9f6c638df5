#include "online/Tips.h"

#include "online/TipsDialog.h"
#include "online/TipsReceiver.h"
#include "online/TipsThread.h"

namespace orbisk {

Tips::Tips(wxEvtHandler* frame) : m_receiver(std::make_shared<TipsReceiver>(frame)) {}

Tips::~Tips() {
    close();
}

void Tips::fetch(const TipServer& server) {
    auto* thread = new TipsThread(m_receiver, server);
    thread->Create();
    thread->Run();
}

void Tips::store(const wxString& html) {
    const wxMutexLocker lock(m_mutex);
    m_message = html;
}

void Tips::show(wxWindow* parent) {
    if (m_closed)
        return;
    auto* dialog = new TipsDialog(parent, wxID_ANY);
    if (m_mutex.TryLock() == wxMUTEX_NO_ERROR) {
        if (!m_message.empty())
            dialog->setPage(m_message);
        m_mutex.Unlock();
    }
    dialog->ShowModal();
    dialog->Destroy();
}

void Tips::close() {
    m_closed = true;
    m_receiver->close();
}

} // namespace orbisk
