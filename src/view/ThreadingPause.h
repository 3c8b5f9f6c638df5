#pragma once

#include <osgViewer/ViewerBase>

namespace orbisk {

/// While it lives, the viewer's draw thread stands still, so that the main thread may change what
/// a frame in flight reads. Costs a thread's end and start: for rare changes.
class ThreadingPause {
public:
    /// @param viewer may be null: there is nothing to pause then.
    explicit ThreadingPause(osgViewer::ViewerBase* viewer)
        : m_viewer(viewer && viewer->areThreadsRunning() ? viewer : nullptr) {
        if (m_viewer)
            m_viewer->stopThreading();
    }

    ~ThreadingPause() {
        if (m_viewer)
            m_viewer->startThreading();
    }

    ThreadingPause(const ThreadingPause&) = delete;
    ThreadingPause& operator=(const ThreadingPause&) = delete;

private:
    osgViewer::ViewerBase* m_viewer;
};

} // namespace orbisk
