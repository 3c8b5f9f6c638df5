#include "view/WaitingThread.h"

#include "view/ModelLoader.h"

#include <wx/utils.h>

namespace orbisk {

namespace {

constexpr unsigned long millisecondsBetweenEvents = 200;
constexpr int counterWrap = 100;

} // namespace

WaitingThread::WaitingThread(ModelLoader& loader) : wxThread(wxTHREAD_DETACHED), m_loader(loader) {}

wxThread::ExitCode WaitingThread::Entry() {
    int counter = 0;
    while (!m_loader.loadFinished() && !TestDestroy()) {
        counter = (counter + 1) % counterWrap;
        m_loader.queueProgress(counter);
        wxMilliSleep(millisecondsBetweenEvents);
    }
    m_loader.queueProgress(loadEnded);
    return nullptr;
}

} // namespace orbisk
