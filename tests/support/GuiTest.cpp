#include "support/GuiTest.h"

#include "platform/Platform.h"

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/modalhook.h>
#include <wx/uiaction.h>
#include <wx/utils.h>

#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr auto pause = std::chrono::milliseconds(2);

/// Acts on modal dialogs as their event loops start. One that no test waits for, a message box
/// among them, fails the test and is not shown: nobody would close it.
class DialogActor : public wxModalDialogHook {
public:
    void actOnNext(std::function<void(wxDialog&)> act) { m_act = std::move(act); }

protected:
    int Enter(wxDialog* dialog) override {
        if (!m_act) {
            ADD_FAILURE() << "unexpected dialog: " << dialog->GetTitle().utf8_str();
            return wxID_CANCEL;
        }
        dialog->CallAfter([act = std::exchange(m_act, nullptr), dialog] { act(*dialog); });
        return wxID_NONE;
    }

private:
    std::function<void(wxDialog&)> m_act;
};

DialogActor& dialogActor() {
    static DialogActor actor;
    return actor;
}

} // namespace

GuiTest::GuiTest() {
    dialogActor().Register();
    for (const char* folder : {"image", "internation", "help"})
        fs::create_symlink(fs::path(ORBISK_STAGE_DIR) / folder, m_folder.path() / folder);
}

GuiTest::~GuiTest() {
    if (frame())
        close();
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
    ASSERT_TRUE(wxTheApp->CallOnInit());
    ASSERT_TRUE(runUntil([] { return frame() && frame()->IsShownOnScreen(); }));
    runFor(0.3);
}

OrbiskFrame* GuiTest::frame() {
    for (wxWindow* window : wxTopLevelWindows)
        if (auto* frame = dynamic_cast<OrbiskFrame*>(window))
            return frame->IsBeingDeleted() ? nullptr : frame;
    return nullptr;
}

bool GuiTest::runUntil(const std::function<bool()>& done, double seconds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    wxGUIEventLoop loop;
    const wxEventLoopActivator activate(&loop);
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

void GuiTest::choose(Command command) {
    wxCommandEvent event(wxEVT_MENU, frame()->bars().menuId(command));
    const CommandKind kind = rowOf(command).kind;
    if (kind == CommandKind::Check)
        event.SetInt(frame()->bars().isChecked(command) ? 0 : 1);
    event.SetEventObject(frame());
    frame()->ProcessWindowEvent(event);
    runFor(0.1);
}

void GuiTest::clickTool(Command command) {
    wxAuiToolBar* bar = frame()->bars().toolBar();
    const wxRect tool = bar->GetToolRect(frame()->bars().toolId(command));
    wxUIActionSimulator mouse;
    mouse.MouseMove(
        bar->ClientToScreen(wxPoint(tool.x + tool.width / 2, tool.y + tool.height / 2)));
    runFor(0.1);
    mouse.MouseClick();
    runFor(0.3);
}

void GuiTest::close() {
    frame()->Close(true);
    ASSERT_TRUE(runUntil([] { return frame() == nullptr && wxTopLevelWindows.empty(); }));
}

std::string GuiTest::sample(const std::string& name) {
    return (fs::path(ORBISK_STAGE_DIR) / "samples" / name).string();
}

void GuiTest::withNextDialog(std::function<void(wxDialog&)> act) {
    dialogActor().actOnNext(std::move(act));
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
