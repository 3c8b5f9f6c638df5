#pragma once

#include <wx/thread.h>

#include <string>

namespace orbisk {

class ModelLoader;

/// Reads one model file and hands what it got to the loader. Detached: deletes itself.
class LoadingThread : public wxThread {
public:
    /// @param path in the local encoding.
    LoadingThread(ModelLoader& loader, std::string path);

protected:
    ExitCode Entry() override;

private:
    ModelLoader& m_loader;
    std::string m_path;
};

} // namespace orbisk
