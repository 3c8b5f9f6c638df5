#pragma once

#include "app/CommandBars.h"
#include "measure/MeasurementDrawing.h"
#include "measure/PickInteraction.h"
#include "view/ModelLoader.h"
#include "view/Viewer.h"

#include <wx/aui/framemanager.h>
#include <wx/frame.h>
#include <wx/weakref.h>

#include <memory>

namespace orbisk {

class InitPanel;
class OSGCanvas;
class PickDialog;
class Tips;

/// The main window. It owns the parts of the program (docking panes, bars, loader, viewer) and
/// connects them. Main thread.
class OrbiskFrame : public wxFrame {
public:
    OrbiskFrame(wxWindow* parent, wxWindowID id);
    ~OrbiskFrame() override;

    /// Records `path` among the recent files and starts to load it. While another load runs, no
    /// second one is started.
    void openFile(const wxString& path);

    /// Opens `path`, if it names anything, as soon as the frame has been painted: the progress
    /// dialog would not know where to stand before, and the frame behind it would be blank.
    void openOnceSeen(const wxString& path);

    /// Builds or refreshes the view after a load has ended.
    void createOSGViewer();

    /// Switches the interface to a language (`Language`): at once, with the model and the view of
    /// it kept.
    void switchLanguage(int language);

    ModelLoader& loader() { return *m_loader; }

    Viewer& viewer() { return m_viewer; }

    CommandBars& bars() { return *m_bars; }

    wxAuiManager& docking() { return m_docking; }

    PickInteraction& interaction() { return m_interaction; }

    Tips& tips() { return *m_tips; }

    /// Null while it is closed.
    PickDialog* measurementTable() const { return m_measurementTable; }

    /// Null once the first model has been shown.
    InitPanel* welcomePanel() const { return m_welcomePanel; }

    /// Null until the frame was seen for the first time, or a model was opened.
    OSGCanvas* canvas() const { return m_canvas; }

private:
    void saveSettingsWithPlace();
    void buildContents();
    /// The canvas, built where there is none yet.
    OSGCanvas& ensureCanvas();
    void buildWelcomePane();
    void buildToolBarPane();
    void stretchToolBar();
    void rebuildContents();
    void replaceWelcomePanel();
    void wasSeen();
    /// Ends what is under way, and deletes the frame.
    void closeForGood();
    void showWaitingTip();

    void onSize(wxSizeEvent& event);
    void onIdle(wxIdleEvent& event);
    void onProgress(wxThreadEvent& event);
    void onTip(wxThreadEvent& event);
    void onClose(wxCloseEvent& event);

    void runCommand(Command command, bool checked);
    void openWithDialog();
    void saveWithDialog();
    void setDisplayMode(Command command, bool checked);
    void setMeasureMode(Command command, bool checked);
    void showOptions();
    /// Each brings the command and what it shows in line with the settings.
    void updateToolBar();
    void updateSkybox();
    void resetModel();
    void leaveMeasureModes(bool roamWasOn);
    void connectMeasuring();
    void showMeasurementTable();
    void closeMeasurementTable();
    void openRecent(std::size_t index);

    wxAuiManager m_docking;
    InitPanel* m_welcomePanel = nullptr;
    OSGCanvas* m_canvas = nullptr;
    std::unique_ptr<ModelLoader> m_loader;
    std::unique_ptr<CommandBars> m_bars;
    Viewer m_viewer;
    MeasurementDrawing m_drawing;
    PickInteraction m_interaction;
    wxWeakRef<PickDialog> m_measurementTable;
    std::unique_ptr<Tips> m_tips;
    /// Before the frame was seen for the first time, a dialog could not tell where to stand.
    bool m_seen = false;
    wxString m_pathAtStart;
    bool m_tipWaits = false;
    bool m_closeAfterLoad = false;
    /// The frame is to be deleted as soon as nothing is under way: no load or dialog may begin.
    bool m_isClosing = false;

    wxDECLARE_EVENT_TABLE();
};

} // namespace orbisk
