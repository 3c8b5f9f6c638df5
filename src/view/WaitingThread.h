#pragma once

#include <wx/thread.h>

namespace orbisk {

class ModelLoader;

/// Queues a progress event every 200 ms until the reader has ended, then the last one. Detached:
/// deletes itself.
class WaitingThread : public wxThread {
public:
    explicit WaitingThread(ModelLoader& loader);

protected:
    ExitCode Entry() override;

private:
    ModelLoader& m_loader;
};

} // namespace orbisk
