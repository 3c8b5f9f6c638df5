#include "view/ModelLoader.h"

#include "platform/Platform.h"
#include "view/LoadingThread.h"
#include "view/WaitingThread.h"

#include <wx/app.h>
#include <wx/intl.h>

namespace orbisk {

namespace {

constexpr int progressMaximum = 100;

/// Starts a detached thread. @return whether it runs; one that does not is deleted.
bool runDetached(wxThread* thread) {
    if (thread->Create() == wxTHREAD_NO_ERROR && thread->Run() == wxTHREAD_NO_ERROR)
        return true;
    delete thread;
    return false;
}

} // namespace

const wxEventTypeTag<wxThreadEvent> evtLoadProgress(wxNewEventType());

ModelLoader::ModelLoader(wxWindow* frame) : m_frame(frame) {}

ModelLoader::~ModelLoader() = default;

bool ModelLoader::start(const wxString& path) {
    if (isLoading())
        return false;
    m_requestedPath = platform::localPath(path);
    m_progress = new wxProgressDialog(_("Process "), _("File Opening..."), progressMaximum, m_frame,
                                      wxPD_CAN_ABORT | wxPD_AUTO_HIDE);
    m_loadFinished = false;
    if (!runDetached(new WaitingThread(*this))) {
        finish();
        return false;
    }
    if (!runDetached(new LoadingThread(*this, m_requestedPath)))
        setLoadedNode(nullptr);
    return true;
}

void ModelLoader::showProgress(int value) {
    // The dialog's Cancel button changes nothing: the reader runs to its end.
    if (m_progress)
        m_progress->Update(value);
    wxWakeUpIdle();
}

void ModelLoader::finish() {
    m_progress->Destroy();
    m_progress = nullptr;
    wxWakeUpIdle();
}

void ModelLoader::setLoadedNode(osg::Node* node) {
    if (node) {
        if (!m_modelCallback) {
            m_modelCallback = new ModelUpdateCallback;
            m_modelCallback->mode = DisplayMode::AsLoaded;
        }
        if (m_modelNode)
            m_modelCallback->detachFrom(*m_modelNode);
        m_modelNode = node;
        m_modelPath = m_requestedPath;
        m_modelCallback->attachTo(*node);
    }
    const wxMutexLocker lock(m_loadMutex);
    m_loadFinished = true;
}

bool ModelLoader::loadFinished() {
    const wxMutexLocker lock(m_loadMutex);
    return m_loadFinished;
}

void ModelLoader::queueProgress(int value) {
    auto* event = new wxThreadEvent(evtLoadProgress, wxID_ANY);
    event->SetInt(value);
    wxQueueEvent(m_frame, event);
}

} // namespace orbisk
