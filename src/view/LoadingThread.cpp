#include "view/LoadingThread.h"

#include "view/ModelLoader.h"
#include "view/ModelReader.h"

#include <utility>

namespace orbisk {

LoadingThread::LoadingThread(ModelLoader& loader, std::string path)
    : wxThread(wxTHREAD_DETACHED), m_loader(loader), m_path(std::move(path)) {}

wxThread::ExitCode LoadingThread::Entry() {
    m_loader.setLoadedNode(readModel(m_path).get());
    return nullptr;
}

} // namespace orbisk
