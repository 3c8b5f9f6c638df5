#pragma once

#include "view/ModelUpdateCallback.h"

#include <osg/Node>
#include <osg/ref_ptr>
#include <wx/event.h>
#include <wx/progdlg.h>
#include <wx/string.h>
#include <wx/thread.h>

#include <functional>

namespace orbisk {

/// The event with which a load shows that it is alive: its integer is a progress value, or
/// `loadEnded`. Queued to the frame by the waiting thread.
extern const wxEventTypeTag<wxThreadEvent> evtLoadProgress;
inline constexpr int loadEnded = -1;

/// Loads models, one at a time: a `LoadingThread` reads the file while a `WaitingThread` keeps a
/// progress dialog moving. Holds the loaded model and the one callback that shows all models in
/// the display mode.
///
/// `m_loadMutex` guards `m_loadFinished` only. The loading thread writes the model and its callback
/// before it sets the flag; the main thread reads them after the event that follows it.
class ModelLoader {
public:
    /// @param frame gets the progress events and is the progress dialog's parent.
    explicit ModelLoader(wxWindow* frame);
    ~ModelLoader();

    ModelLoader(const ModelLoader&) = delete;
    ModelLoader& operator=(const ModelLoader&) = delete;

    /// Starts to read the model file `path`; while another load runs nothing happens. The end is
    /// told by the event `loadEnded`. @return whether a load was started.
    bool start(const wxString& path);

    /// Whether a load is running: from its start until its last event was handled.
    bool isLoading() const { return m_progress != nullptr; }

    /// Shows a progress event's value. Main thread.
    void showProgress(int value);

    /// Puts the progress dialog away after the last event. Main thread.
    void finish();

    /// Takes over what was read (null: nothing was) and flags the end. Loading thread.
    void setLoadedNode(osg::Node* node);

    /// Whether the reader has ended. Waiting thread.
    bool loadFinished();

    /// Queues a progress event to the frame. Waiting thread.
    void queueProgress(int value);

    /// The model, or null before the first successful load. Main thread, while no load is running.
    osg::Node* modelNode() const { return m_modelNode.get(); }

    /// Null before the first successful load.
    ModelUpdateCallback* modelCallback() const { return m_modelCallback.get(); }

    /// Path of the model, in the local encoding; empty before the first successful load.
    const std::string& modelPath() const { return m_modelPath; }

private:
    wxWindow* m_frame;
    osg::ref_ptr<osg::Node> m_modelNode;
    osg::ref_ptr<ModelUpdateCallback> m_modelCallback;
    std::string m_modelPath;
    std::string m_requestedPath;
    wxMutex m_loadMutex;
    bool m_loadFinished = false;
    wxProgressDialog* m_progress = nullptr;
};

} // namespace orbisk
