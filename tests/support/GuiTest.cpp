#include "support/GuiTest.h"

#include "online/OnlineAddresses.h"
#include "platform/Platform.h"

#include <wx/app.h>
#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/modalhook.h>
#include <wx/timer.h>
#include <wx/uiaction.h>
#include <wx/utils.h>

#include <chrono>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr auto pause = std::chrono::milliseconds(2);
/// As many as take half a minute: a busy machine lists the folder slowly.
constexpr int fileDialogTries = 15000;
/// No server listens at the first port of this machine, which is told at once.
const TipServer noTipServer{"127.0.0.1", 1};
constexpr const char* childVariable = "ORBISK_TEST_CHILD";

void failOnAssertion(const wxString& file, int line, const wxString& function,
                     const wxString& condition, const wxString& message) {
    ADD_FAILURE() << file.utf8_str() << ":" << line << ": " << function.utf8_str()
                  << ": assertion failed: " << condition.utf8_str() << ": " << message.utf8_str();
}

std::size_t entryCount(const char* folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

/// Acts on modal dialogs as their event loops start. One that no test waits for, a message box
/// among them, fails the test and is not shown: nobody would close it.
class DialogActor : public wxModalDialogHook {
public:
    void actOnNext(std::function<void(wxDialog&)> act) { m_acts.push_back(std::move(act)); }

    void answerNext(int answer) { m_answer = answer; }

    bool isAwaiting() const { return !m_acts.empty() || m_answer; }

protected:
    int Enter(wxDialog* dialog) override {
        // Some dialogs tell of their start twice, as what they are and as any dialog.
        if (dialog == m_shown)
            return wxID_NONE;
        if (m_answer)
            return *std::exchange(m_answer, std::nullopt);
        if (m_acts.empty()) {
            ADD_FAILURE() << "unexpected dialog: " << dialog->GetTitle().utf8_str();
            return wxID_CANCEL;
        }
        m_shown = dialog;
        dialog->CallAfter([act = std::move(m_acts.front()), dialog] { act(*dialog); });
        m_acts.pop_front();
        return wxID_NONE;
    }

    void Exit(wxDialog*) override { m_shown = nullptr; }

private:
    wxDialog* m_shown = nullptr;
    std::deque<std::function<void(wxDialog&)>> m_acts;
    std::optional<int> m_answer;
};

/// Ends a file dialog with OK when it has taken up `path`: it reads the folder meanwhile.
void endOnceChosen(wxFileDialog& files, const wxString& path, int tries) {
    if (files.GetPath() == path || tries == 0) {
        files.EndModal(wxID_OK);
        return;
    }
    std::this_thread::sleep_for(pause);
    files.CallAfter([&files, path, tries] { endOnceChosen(files, path, tries - 1); });
}

DialogActor& dialogActor() {
    static DialogActor actor;
    return actor;
}

} // namespace

GuiTest::GuiTest() {
    dialogActor().Register();
    wxSetAssertHandler(failOnAssertion);
    wxEventLoopBase::SetActive(&m_loop);
    tipServer() = noTipServer;
    for (const char* folder : {"image", "internation", "help"})
        fs::create_symlink(fs::path(ORBISK_STAGE_DIR) / folder, m_folder.path() / folder);
}

GuiTest::~GuiTest() {
    if (frame())
        close();
    wxEventLoopBase::SetActive(nullptr);
    dialogActor().Unregister();
}

void GuiTest::writeSettings(const std::string& rect, int language, const std::string& recentJson,
                            int sky, int tool) {
    writeFile("datafile.json", R"({"project":{"layout":{"rect":)" + rect +
                                   R"(},"data":{"tool_show":)" + std::to_string(tool) +
                                   R"(,"sky_show":)" + std::to_string(sky) +
                                   R"(,"fovy":30.0,"language":)" + std::to_string(language) +
                                   R"(,"path_recent":)" + recentJson + "}}}");
}

void GuiTest::start() {
    if (!fs::exists("datafile.json"))
        writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish);
    startWithoutRoom();
    // The canvas comes once the frame was painted: only then is it really on the screen.
    ASSERT_TRUE(runUntil([] { return frame() && frame()->canvas(); }));
    runFor(0.3);
}

void GuiTest::startWithoutRoom() {
    ASSERT_TRUE(wxTheApp->CallOnInit());
    ASSERT_TRUE(runUntil([] { return frame() && frame()->IsShownOnScreen(); }));
}

OrbiskFrame* GuiTest::frame() {
    for (wxWindow* window : wxTopLevelWindows)
        if (auto* frame = dynamic_cast<OrbiskFrame*>(window))
            return frame->IsBeingDeleted() ? nullptr : frame;
    return nullptr;
}

bool GuiTest::runUntil(const std::function<bool()>& done, double seconds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    wxEventLoopBase& loop = *wxEventLoopBase::GetActive();
    while (!done()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        while (loop.Pending())
            loop.Dispatch();
        wxTheApp->ProcessPendingEvents();
        if (!loop.ProcessIdle())
            std::this_thread::sleep_for(pause);
    }
    return true;
}

void GuiTest::runFor(double seconds) {
    runUntil([] { return false; }, seconds);
}

void GuiTest::load(const std::string& path) {
    frame()->openFile(wxString::FromUTF8(path));
    ASSERT_TRUE(runUntil([] { return !frame()->loader().isLoading(); }, 120.0));
    runFor(0.3);
}

bool GuiTest::runToEnd(double seconds) {
    bool timeUp = false;
    wxTimer limit;
    limit.Bind(wxEVT_TIMER, [&timeUp](wxTimerEvent&) {
        timeUp = true;
        wxTheApp->ExitMainLoop();
    });
    limit.StartOnce(static_cast<int>(seconds * 1000));
    wxTheApp->OnRun();
    return !timeUp;
}

void GuiTest::choose(Command command) {
    wxMenuItem& item = menuItem(command);
    if (item.IsCheck())
        item.Check(!item.IsChecked());
    else if (item.IsRadio())
        item.Check();
    item.GetMenu()->SendEvent(item.GetId(), item.IsCheckable() ? item.IsChecked() : -1);
    runFor(0.1);
}

wxMenuItem& GuiTest::menuItem(Command command) {
    wxMenuItem* item = frame()->GetMenuBar()->FindItem(frame()->bars().menuId(command));
    if (!item)
        throw std::runtime_error("no menu item for this command");
    return *item;
}

bool GuiTest::isToolChecked(Command command) {
    return frame()->bars().toolBar()->GetToolToggled(frame()->bars().toolId(command));
}

void GuiTest::clickTool(Command command) {
    const wxAuiToolBar& bar = *frame()->bars().toolBar();
    const wxRect tool = bar.GetToolRect(frame()->bars().toolId(command));
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(bar, tool.GetPosition() + tool.GetSize() / 2));
    runFor(0.1);
    mouse.MouseClick();
    runFor(0.3);
}

void GuiTest::click(const wxWindow& window) {
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(window, wxPoint() + window.GetSize() / 2));
    runFor(0.1);
    mouse.MouseClick();
    runFor(0.3);
}

wxPoint GuiTest::onScreen(const wxWindow& window, const wxPoint& place) {
    return window.ClientToScreen(place);
}

void GuiTest::close() {
    frame()->Close(true);
    const bool gone = runUntil([] { return frame() == nullptr && wxTopLevelWindows.empty(); });
    std::string left;
    for (const wxWindow* window : wxTopLevelWindows)
        left += " '" + window->GetLabel().utf8_string() + "'";
    ASSERT_TRUE(gone) << "windows left:" << left;
}

std::string GuiTest::sample(const std::string& name) {
    return (fs::path(ORBISK_STAGE_DIR) / "samples" / name).string();
}

void GuiTest::withNextDialog(std::function<void(wxDialog&)> act) {
    dialogActor().actOnNext(std::move(act));
}

void GuiTest::answerNextDialog(int answer) {
    dialogActor().answerNext(answer);
}

void GuiTest::chooseInNextFileDialog(const std::string& path) {
    withNextDialog([path](wxDialog& dialog) {
        auto& files = dynamic_cast<wxFileDialog&>(dialog);
        files.SetPath(wxString::FromUTF8(path));
        endOnceChosen(files, wxString::FromUTF8(path), fileDialogTries);
    });
}

std::filesystem::path GuiTest::saveTableInto(wxWindow& table, const std::filesystem::path& folder) {
    const std::filesystem::path former = std::filesystem::current_path();
    wxTimer accept;
    withNextDialog([&](wxDialog& dialog) {
        auto& folders = dynamic_cast<wxDirDialog&>(dialog);
        EXPECT_EQ(folders.GetMessage(), "Save File...");
        EXPECT_EQ(folders.GetParent(), &table);
        EXPECT_EQ(folders.GetPath(), "");
        EXPECT_EQ(folders.GetWindowStyle() & (wxDD_DEFAULT_STYLE | wxDD_CHANGE_DIR),
                  wxDD_DEFAULT_STYLE | wxDD_CHANGE_DIR);
        folders.SetPath(wxString::FromUTF8(folder.string()));
        // It takes up the folder meanwhile.
        accept.Bind(wxEVT_TIMER, [&folders](wxTimerEvent&) { folders.GTKOnAccept(); });
        accept.StartOnce(500);
    });
    pressSave(table);
    EXPECT_FALSE(isDialogAwaited());
    std::filesystem::path working = std::filesystem::current_path();
    std::filesystem::current_path(former);
    return working;
}

void GuiTest::pressSave(wxWindow& table) {
    wxWindow* button = wxWindow::FindWindowByName("ID_BUTTON_LOAD", &table);
    ASSERT_NE(button, nullptr);
    wxCommandEvent press(wxEVT_BUTTON, button->GetId());
    press.SetEventObject(button);
    button->HandleWindowEvent(press);
}

bool GuiTest::isDialogAwaited() {
    return dialogActor().isAwaiting();
}

std::size_t GuiTest::threadCount() {
    return entryCount("/proc/self/task");
}

std::size_t GuiTest::openFileCount() {
    return entryCount("/proc/self/fd");
}

bool GuiTest::inEnvironment(const Environment& environment) {
    if (std::getenv(childVariable))
        return true;
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    Environment all = environment;
    all[childVariable] = "1";
    ChildProcess child(
        {fs::read_symlink("/proc/self/exe").string(),
         std::string("--gtest_filter=") + test->test_suite_name() + "." + test->name()},
        all);
    EXPECT_EQ(child.wait(), 0) << child.output() << child.errorOutput();
    return false;
}

} // namespace orbisk::test

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    orbisk::platform::prepareProcess();
    if (!wxEntryStart(argc, argv))
        return 98;
    const int result = RUN_ALL_TESTS();
    wxEntryCleanup();
    return result;
}
