#include "app/OrbiskMain.h"

#include "app/About.h"
#include "app/FramePlacement.h"
#include "app/IconStatusBar.h"
#include "app/InitPanel.h"
#include "app/Language.h"
#include "app/ModelDialogs.h"
#include "app/NestedLoop.h"
#include "app/OrbiskApp.h"
#include "app/RecentFiles.h"
#include "app/SettingsText.h"
#include "app/WebAddress.h"
#include "measure/MeasurementSet.h"
#include "measure/PickDialog.h"
#include "online/OnlineAddresses.h"
#include "online/Tips.h"
#include "online/TipsReceiver.h"
#include "online/URLDialog.h"
#include "platform/Platform.h"
#include "roam/RoamPath.h"
#include "settings/AppSettings.h"
#include "settings/DataDialog.h"
#include "view/ModelWriter.h"
#include "view/OSGCanvas.h"
#include "view/ThreadingPause.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>

#include <memory>
#include <utility>
#include <vector>

namespace orbisk {

namespace {

constexpr int canvasAttributes[] = {
    WX_GL_RGBA, WX_GL_DOUBLEBUFFER, WX_GL_DEPTH_SIZE, 16, WX_GL_STENCIL_SIZE, 0, 0};
constexpr const char* canvasPane = translatable("Canvas");
constexpr const char* welcomePane = translatable("PanelInit");
constexpr const char* toolBarPane = "Toolbar";
/// From the table to the right edge and to the top.
constexpr int tableMargin = 50;

/// A pane that fills the centre and stays there.
wxAuiPaneInfo centrePane(const char* name) {
    return wxAuiPaneInfo()
        .Name(name)
        .Caption(wxGetTranslation(name))
        .CaptionVisible(false)
        .CloseButton(false)
        .Center()
        .Floatable(false)
        .Movable(false);
}

DisplayMode modeOf(Command command) {
    switch (command) {
    case Command::PointCloud:
        return DisplayMode::PointCloud;
    case Command::Tin:
        return DisplayMode::Tin;
    default:
        return DisplayMode::Gray;
    }
}

} // namespace

// clang-format off
wxBEGIN_EVENT_TABLE(OrbiskFrame, wxFrame)
    EVT_IDLE(OrbiskFrame::onIdle)
    EVT_CLOSE(OrbiskFrame::onClose)
wxEND_EVENT_TABLE()
// clang-format on

OrbiskFrame::OrbiskFrame(wxWindow* parent, wxWindowID id)
    : m_docking(nullptr), m_drawing(measurementSet()),
      m_interaction(measurementSet(), m_drawing, [this](const TravelPath& points) {
          m_viewer.startRoam(*buildRoamPath(points, roamParameters()));
      }) {
    Create(parent, id, _("Kelvane"), wxDefaultPosition, wxDefaultSize, wxDEFAULT_FRAME_STYLE);
    SetIcons(platform::programIcon());
    m_docking.SetManagedWindow(this);
    restorePlacement(*this, appSettings().rect);
    webAddress() = decodeHexText(makerWebAddressDigits());
    m_loader = std::make_unique<ModelLoader>(this);
    m_bars = std::make_unique<CommandBars>(
        *this,
        CommandHandlers{[this](Command command, bool checked) { runCommand(command, checked); },
                        [this](std::size_t index) { openRecent(index); }});
    buildContents();
    Bind(wxEVT_SIZE, &OrbiskFrame::onSize, this);
    Bind(evtLoadProgress, &OrbiskFrame::onProgress, this);
    m_tips = std::make_unique<Tips>(this);
    Bind(evtTip, &OrbiskFrame::onTip, this);
    m_docking.Update();
    m_tips->fetch(tipServer());
}

OrbiskFrame::~OrbiskFrame() {
    closeMeasurementTable();
    platform::closeHelp();
    saveSettingsWithPlace();
    m_viewer.detachCanvas();
    m_docking.UnInit();
}

void OrbiskFrame::saveSettingsWithPlace() {
    appSettings().rect = placementOf(*this);
    saveSettings(appSettings(), settingsPathEncoding());
}

void OrbiskFrame::buildContents() {
    if (m_viewer.exists())
        ensureCanvas();
    else
        buildWelcomePane();
    SetStatusBar(
        new IconStatusBar(this, wxID_ANY, wxSTB_DEFAULT_STYLE, wxASCII_STR(wxStatusBarNameStr)));
    m_bars->buildMenuBar(appSettings().path_recent);
    buildToolBarPane();
    // Without a locale the texts are the English ones of the source.
    m_bars->setChecked(
        appSettings().language == languageChinese ? Command::Chinese : Command::English, true);
    m_bars->setChecked(Command::Toolbar, appSettings().tool_show != 0);
    m_bars->setChecked(Command::Skybox, appSettings().sky_show != 0);
}

OSGCanvas& OrbiskFrame::ensureCanvas() {
    if (m_canvas)
        return *m_canvas;
    m_canvas = new OSGCanvas(this, wxWindow::NewControlId(), canvasAttributes, wxDefaultPosition,
                             wxDefaultSize, 0, "ID_CANVAS");
    m_canvas->Hide();
    platform::nameForScreenReaders(*m_canvas, _("3D view"));
    m_docking.AddPane(m_canvas, centrePane(canvasPane).Show(m_viewer.exists()));
    return *m_canvas;
}

void OrbiskFrame::buildWelcomePane() {
    m_welcomePanel =
        new InitPanel(this, wxWindow::NewControlId(),
                      InitPanelActions{[this](const wxString& path) { openFile(path); },
                                       [] { platform::openHelp(appSettings().language); },
                                       [this] {
                                           m_bars->showRecentFiles(appSettings().path_recent);
                                           m_docking.Update();
                                       }});
    m_docking.AddPane(m_welcomePanel, centrePane(welcomePane));
    // The canvas brings in all of OpenGL, which nobody needs before the frame can be seen.
    m_welcomePanel->Bind(wxEVT_PAINT, [this, first = true](wxPaintEvent& event) mutable {
        event.Skip();
        if (std::exchange(first, false))
            CallAfter([this] {
                ensureCanvas();
                wasSeen();
            });
    });
}

void OrbiskFrame::buildToolBarPane() {
    wxPanel* panel = m_bars->buildToolBar();
    m_docking.AddPane(panel, wxAuiPaneInfo()
                                 .Name(toolBarPane)
                                 .Caption(_("Toolbar"))
                                 .Top()
                                 .CaptionVisible(false)
                                 .CloseButton(false)
                                 .Floatable(false)
                                 .Movable(false)
                                 .Resizable(false)
                                 .PaneBorder(false)
                                 .BestSize(panel->GetBestSize())
                                 .Show(appSettings().tool_show != 0));
    stretchToolBar();
}

void OrbiskFrame::rebuildContents() {
    std::vector<Command> checked;
    for (const CommandRow& row : commandTable)
        if (row.group != CommandGroup::None && m_bars->isChecked(row.command))
            checked.push_back(row.command);
    const bool tableWasOpen = m_measurementTable;
    closeMeasurementTable();
    m_interaction.setSurface(nullptr);
    m_viewer.detachCanvas();
    const wxAuiPaneInfoArray panes = m_docking.GetAllPanes();
    for (std::size_t i = 0; i < panes.GetCount(); ++i)
        m_docking.DetachPane(panes[i].window);
    m_bars->removeBars();
    SetStatusBar(nullptr);
    m_canvas = nullptr;
    m_welcomePanel = nullptr;
    // The manager's hint window is one of the children, and it must not keep a pointer to it.
    m_docking.SetFlags(wxAUI_MGR_DEFAULT & ~wxAUI_MGR_TRANSPARENT_HINT);
    DestroyChildren();
    m_docking.SetFlags(wxAUI_MGR_DEFAULT);
    SetTitle(_("Kelvane"));
    buildContents();
    for (const Command command : checked)
        m_bars->setChecked(command, true);
    m_docking.Update();
    if (m_viewer.exists()) {
        m_viewer.attachCanvas(*m_canvas);
        connectMeasuring();
    }
    if (tableWasOpen)
        showMeasurementTable();
}

void OrbiskFrame::switchLanguage(int language) {
    if (m_loader->isLoading())
        return;
    appSettings().language = language;
    if (m_isClosing)
        return;
    wxGetApp().setUpLocale();
    addToolkitTexts(language);
    rebuildContents();
}

void OrbiskFrame::replaceWelcomePanel() {
    if (!m_welcomePanel)
        return;
    m_docking.DetachPane(m_welcomePanel);
    m_welcomePanel->Destroy();
    m_welcomePanel = nullptr;
    ensureCanvas();
    m_docking.GetPane(canvasPane).Show();
    m_docking.Update();
    wasSeen();
}

void OrbiskFrame::openFile(const wxString& path) {
    // A reader reports to this frame, which will not be there any more.
    if (m_isClosing)
        return;
    if (addRecentFile(recentPath(path), appSettings().path_recent)) {
        m_bars->showRecentFiles(appSettings().path_recent);
        if (m_welcomePanel)
            m_welcomePanel->refresh();
    }
    m_loader->start(path);
}

void OrbiskFrame::createOSGViewer() {
    osg::Node* model = m_loader->modelNode();
    if (!model) {
        wxLogError(_("File does not exist!"));
        return;
    }
    replaceWelcomePanel();
    closeMeasurementTable();
    m_interaction.endMode();
    m_interaction.clear();
    m_bars->uncheckGroup(CommandGroup::Display);
    m_bars->uncheckGroup(CommandGroup::Measure);
    m_viewer.showModel(*model, ensureCanvas(), appSettings().fovy, appSettings().sky_show != 0);
    connectMeasuring();
}

void OrbiskFrame::onSize(wxSizeEvent& event) {
    event.Skip();
    stretchToolBar();
}

void OrbiskFrame::stretchToolBar() {
    wxPanel* panel = m_bars->toolBarPanel();
    if (!panel || appSettings().tool_show == 0)
        return;
    const wxSize size(GetClientSize().x, panel->GetBestSize().y);
    panel->SetSize(size);
    // The docking manager may have given this very size already, without a layout.
    panel->Layout();
    m_docking.GetPane(toolBarPane).BestSize(size);
    // The manager takes the best size at its next update; a layout before would undo this one.
    if (wxSizer* row = panel->GetContainingSizer())
        row->SetItemMinSize(panel, size);
}

void OrbiskFrame::onIdle(wxIdleEvent& event) {
    event.Skip();
    m_interaction.updatePreview();
    if (!m_loader->isLoading() && m_viewer.renderFrame())
        event.RequestMore();
}

void OrbiskFrame::onProgress(wxThreadEvent& event) {
    if (event.GetInt() != loadEnded) {
        m_loader->showProgress(event.GetInt());
        return;
    }
    m_loader->finish();
    if (m_closeAfterLoad)
        closeForGood();
    else
        createOSGViewer();
}

void OrbiskFrame::onTip(wxThreadEvent& event) {
    m_tips->store(event.GetString());
    m_tipWaits = true;
    if (m_seen)
        showWaitingTip();
}

void OrbiskFrame::openOnceSeen(const wxString& path) {
    m_pathAtStart = path;
}

void OrbiskFrame::wasSeen() {
    // The frame itself needs none of them, and was there the sooner.
    if (!std::exchange(m_seen, true))
        addToolkitTexts(appSettings().language);
    if (const wxString path = std::exchange(m_pathAtStart, wxString()); !path.empty())
        openFile(path);
    showWaitingTip();
}

void OrbiskFrame::showWaitingTip() {
    if (std::exchange(m_tipWaits, false))
        AddPendingEvent(wxCommandEvent(wxEVT_MENU, m_bars->toolId(Command::Tips)));
}

void OrbiskFrame::onClose(wxCloseEvent& event) {
    m_tips->close();
    // The reader cannot be stopped and reports to this frame, which therefore outlives it.
    if (m_loader->isLoading()) {
        m_closeAfterLoad = true;
        if (event.CanVeto())
            event.Veto();
        else
            saveSettingsWithPlace(); // The session ends, and may not wait.
        return;
    }
    closeForGood();
}

void OrbiskFrame::closeForGood() {
    m_isClosing = true;
    closeMeasurementTable();
    NestedLoop::endAllThen([this] { Destroy(); });
}

void OrbiskFrame::runCommand(Command command, bool checked) {
    if (m_isClosing)
        return;
    switch (command) {
    case Command::Open:
        return openWithDialog();
    case Command::OpenUrl:
        return openUrlWithDialog(this);
    case Command::Save:
        return saveWithDialog();
    case Command::Quit:
        Close();
        return;
    case Command::About:
        return showAbout(this);
    case Command::Help:
        return platform::openHelp(appSettings().language);
    case Command::Options:
        return showOptions();
    case Command::Chinese:
        return CallAfter([this] { switchLanguage(languageChinese); });
    case Command::English:
        return CallAfter([this] { switchLanguage(languageEnglish); });
    case Command::ResetModel:
        return resetModel();
    case Command::PointCloud:
    case Command::Tin:
    case Command::Gray:
        return setDisplayMode(command, checked);
    case Command::Toolbar:
        appSettings().tool_show = checked ? 1 : 0;
        return updateToolBar();
    case Command::Skybox:
        appSettings().sky_show = checked ? 1 : 0;
        return updateSkybox();
    case Command::PointPick:
    case Command::LinePick:
    case Command::AreaPick:
    case Command::AutomaticRoam:
        return setMeasureMode(command, checked);
    case Command::MeasureTable:
        return showMeasurementTable();
    case Command::Tips:
        return m_tips->show(this);
    default:
        return;
    }
}

void OrbiskFrame::openWithDialog() {
    const wxString path = askForModelToOpen(this);
    if (!path.empty())
        openFile(path);
}

void OrbiskFrame::saveWithDialog() {
    const wxString path = askWhereToSaveModel(this);
    if (path.empty() || !m_loader->modelNode())
        return;
    const ThreadingPause pause(m_viewer.osgViewer());
    const wxFileName source(platform::pathText(m_loader->modelPath()));
    writeModel(*m_loader->modelNode(), m_loader->modelCallback(), platform::localPath(path),
               platform::localPath(source.GetPath()));
}

void OrbiskFrame::setDisplayMode(Command command, bool checked) {
    if (!m_loader->modelNode()) {
        m_bars->setChecked(command, false);
        return;
    }
    m_bars->setChecked(command, checked);
    if (!checked) {
        m_loader->modelCallback()->mode = DisplayMode::AsLoaded;
        return;
    }
    m_bars->uncheckGroup(CommandGroup::Display, command);
    leaveMeasureModes(m_bars->isChecked(Command::AutomaticRoam));
    m_loader->modelCallback()->mode = modeOf(command);
}

void OrbiskFrame::setMeasureMode(Command command, bool checked) {
    if (!m_loader->modelNode()) {
        m_bars->setChecked(command, false);
        return;
    }
    // The click that brought us here has already turned its own item over.
    const bool roamWasOn =
        command == Command::AutomaticRoam ? !checked : m_bars->isChecked(Command::AutomaticRoam);
    leaveMeasureModes(roamWasOn);
    m_bars->setChecked(command, checked);
    if (command == Command::PointPick)
        m_interaction.setPointMode(checked);
    else if (command == Command::LinePick)
        m_interaction.setLineMode(checked);
    else if (command == Command::AreaPick)
        m_interaction.setAreaMode(checked);
    else
        m_interaction.setTravelMode(checked);
}

void OrbiskFrame::showOptions() {
    DataDialog dialog(this);
    if (dialog.ShowModal() != wxID_OK)
        return;
    dialog.transfer();
    updateToolBar();
    updateSkybox();
}

void OrbiskFrame::updateToolBar() {
    const bool shown = appSettings().tool_show != 0;
    m_bars->setChecked(Command::Toolbar, shown);
    m_docking.GetPane(toolBarPane).Show(shown);
    stretchToolBar();
    m_docking.Update();
}

void OrbiskFrame::updateSkybox() {
    const bool shown = appSettings().sky_show != 0;
    m_bars->setChecked(Command::Skybox, shown);
    m_viewer.setSkyShown(shown);
}

void OrbiskFrame::resetModel() {
    leaveMeasureModes(false);
    m_viewer.resetManipulator();
}

void OrbiskFrame::leaveMeasureModes(bool roamWasOn) {
    m_bars->uncheckGroup(CommandGroup::Measure);
    if (roamWasOn)
        m_viewer.resetManipulator();
    closeMeasurementTable();
    m_interaction.endMode();
}

void OrbiskFrame::connectMeasuring() {
    m_drawing.setModelSwitch(m_viewer.scene().modelSwitch());
    m_interaction.setSurface(m_viewer.pickSurface());
    m_canvas->setInteraction(&m_interaction);
}

void OrbiskFrame::showMeasurementTable() {
    if (m_measurementTable)
        return;
    m_measurementTable = new PickDialog(this, measurementSet(), m_interaction);
    m_measurementTable->Move(GetSize().x - m_measurementTable->GetSize().x - tableMargin,
                             tableMargin);
    m_interaction.setTable(m_measurementTable);
    m_measurementTable->Show();
}

void OrbiskFrame::closeMeasurementTable() {
    if (m_measurementTable)
        m_measurementTable->Destroy();
    m_measurementTable = nullptr;
}

void OrbiskFrame::openRecent(std::size_t index) {
    const auto& recent = appSettings().path_recent;
    if (index < recent.size())
        openFile(recentPathText(recent[index]));
}

} // namespace orbisk
