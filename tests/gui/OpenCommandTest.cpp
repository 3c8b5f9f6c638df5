#include "app/InitPanel.h"
#include "app/OrbiskApp.h"
#include "app/RecentFiles.h"
#include "support/GuiTest.h"
#include "support/TestModels.h"

#include <wx/filedlg.h>

#include <optional>

namespace orbisk::test {

namespace {

constexpr const char* openFilter =
    "all files(*)|*.*|osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|osgt file(*.osgt)|*.osgb|"
    "obj file(*.obj)|*.obj|3ds file(*.3ds)|*.3ds|dxf file(*.dxf)|*.dxf|wrl file(*.wrl)|*.wrl|"
    "max file(*.max)|*.max|fbx file(*.fbx)|*.fbx|dae file(*.dae)|*.dae||";
constexpr const char* saveFilter =
    "osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|osgt file(*.osgt)|*.osgb|"
    "obj file(*.obj)|*.obj|3ds file(*.3ds)|*.3ds|dxf file(*.dxf)|*.dxf|wrl file(*.wrl)|*.wrl|"
    "max file(*.max)|*.max|fbx file(*.fbx)|*.fbx|dae file(*.dae)|*.dae ";

} // namespace

class OpenCommandTest : public GuiTest {
protected:
    /// What the next file dialog shows when it comes up; it is cancelled then.
    struct SeenDialog {
        bool seen = false;
        std::string title;
        std::string wildcard;
        long style = 0;
    };

    static void cancelNextFileDialog(SeenDialog& shown) {
        withNextDialog([&shown](wxDialog& dialog) {
            auto& files = dynamic_cast<wxFileDialog&>(dialog);
            shown = {true, files.GetMessage().utf8_string(), files.GetWildcard().utf8_string(),
                     files.GetWindowStyle()};
            files.EndModal(wxID_CANCEL);
        });
    }

    static bool endOfLoad() {
        return runUntil([] { return !frame()->loader().isLoading(); }, 60.0);
    }
};

TEST_F(OpenCommandTest, MenuOpensTheChosenFile) {
    start();
    const std::string path = writeTestModel();
    chooseInNextFileDialog(path);
    choose(Command::Open);
    ASSERT_TRUE(endOfLoad());
    EXPECT_TRUE(frame()->viewer().exists());
    EXPECT_EQ(frame()->loader().modelPath(), path);
    EXPECT_EQ(appSettings().path_recent, std::vector<std::string>{path});
}

TEST_F(OpenCommandTest, ToolOpensTheChosenFile) {
    start();
    chooseInNextFileDialog(writeTestModel());
    clickTool(Command::Open);
    ASSERT_TRUE(runUntil([] { return !isDialogAwaited() && !frame()->loader().isLoading(); }));
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(OpenCommandTest, CancelChangesNothing) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish, R"(["/a.obj","/b.obj"])");
    start();
    SeenDialog dialog;
    cancelNextFileDialog(dialog);
    choose(Command::Open);
    EXPECT_TRUE(dialog.seen);
    EXPECT_FALSE(frame()->loader().isLoading());
    EXPECT_FALSE(frame()->viewer().exists());
    EXPECT_EQ(appSettings().path_recent, (std::vector<std::string>{"/a.obj", "/b.obj"}));
}

TEST_F(OpenCommandTest, DialogHasItsTitleAndFilters) {
    start();
    SeenDialog dialog;
    cancelNextFileDialog(dialog);
    choose(Command::Open);
    EXPECT_EQ(dialog.title, "Open file...");
    EXPECT_EQ(dialog.wildcard, openFilter);
    EXPECT_EQ(dialog.style & (wxFD_OPEN | wxFD_SAVE | wxFD_FILE_MUST_EXIST),
              wxFD_OPEN | wxFD_FILE_MUST_EXIST);
}

TEST_F(OpenCommandTest, OsgtEntryListsOsgbFiles) {
    start();
    SeenDialog dialog;
    cancelNextFileDialog(dialog);
    choose(Command::Open);
    wxArrayString descriptions;
    wxArrayString patterns;
    wxParseCommonDialogsFilter(dialog.wildcard, descriptions, patterns);
    const int osgt = descriptions.Index("osgt file(*.osgt)");
    ASSERT_NE(osgt, wxNOT_FOUND);
    EXPECT_EQ(patterns[static_cast<std::size_t>(osgt)], "*.osgb");
}

TEST_F(OpenCommandTest, SaveDialogHasItsTitleAndFilters) {
    start();
    load(writeTestModel());
    SeenDialog dialog;
    cancelNextFileDialog(dialog);
    choose(Command::Save);
    EXPECT_EQ(dialog.title, "Save file...");
    EXPECT_EQ(dialog.wildcard, saveFilter);
    EXPECT_EQ(dialog.style & (wxFD_OPEN | wxFD_SAVE | wxFD_OVERWRITE_PROMPT),
              wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
}

TEST_F(OpenCommandTest, SaveWritesTheModelAndKeepsShowingIt) {
    start();
    load(writeTestModel());
    const osg::ref_ptr<osg::Node> model = frame()->loader().modelNode();
    chooseInNextFileDialog((std::filesystem::current_path() / "copy.osgb").string());
    choose(Command::Save);
    EXPECT_TRUE(std::filesystem::exists("copy.osgb"));
    EXPECT_EQ(frame()->loader().modelNode(), model);
    EXPECT_EQ(model->getUpdateCallback(), frame()->loader().modelCallback());
    load((std::filesystem::current_path() / "copy.osgb").string());
    EXPECT_NE(frame()->loader().modelNode(), model);
}

TEST_F(OpenCommandTest, NameWithoutExtensionGetsThatOfTheFilter) {
    start();
    load(writeTestModel());
    chooseInNextFileDialog((std::filesystem::current_path() / "copy").string());
    choose(Command::Save);
    EXPECT_TRUE(std::filesystem::exists("copy.osg"));
    EXPECT_FALSE(std::filesystem::exists("copy"));
}

TEST_F(OpenCommandTest, FileIsNotReplacedForANameThatWasNotAskedAbout) {
    start();
    load(writeTestModel());
    writeFile("copy.osg", "of the user's");
    chooseInNextFileDialog((std::filesystem::current_path() / "copy").string());
    SeenDialog again;
    cancelNextFileDialog(again);
    choose(Command::Save);
    EXPECT_TRUE(again.seen);
    EXPECT_EQ(readFile("copy.osg"), "of the user's");
}

TEST_F(OpenCommandTest, CancelledSaveWritesNothing) {
    start();
    load(writeTestModel());
    const auto files = [] {
        return std::distance(std::filesystem::directory_iterator("."),
                             std::filesystem::directory_iterator());
    };
    const auto before = files();
    SeenDialog dialog;
    cancelNextFileDialog(dialog);
    choose(Command::Save);
    EXPECT_TRUE(dialog.seen);
    EXPECT_EQ(files(), before);
}

TEST_F(OpenCommandTest, SaveWithoutAModelDoesNotFail) {
    start();
    chooseInNextFileDialog((std::filesystem::current_path() / "copy.osgb").string());
    choose(Command::Save);
    EXPECT_FALSE(std::filesystem::exists("copy.osgb"));
    EXPECT_FALSE(frame()->viewer().exists());
}

TEST_F(OpenCommandTest, CommandLineModelOpensAtTheStart) {
    const std::string path = writeTestModel();
    OrbiskApp::openAtStart(path);
    start();
    ASSERT_TRUE(runUntil([] { return frame()->viewer().exists(); }, 60.0));
    EXPECT_EQ(appSettings().path_recent, std::vector<std::string>{path});
    EXPECT_EQ(frame()->welcomePanel(), nullptr);
}

TEST_F(OpenCommandTest, CommandLineModelIsNotReadBeforeTheFrameWasPainted) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish);
    OrbiskApp::openAtStart(writeTestModel());
    ASSERT_TRUE(wxTheApp->CallOnInit());
    std::optional<bool> loadingAtFirstPaint;
    frame()->welcomePanel()->Bind(wxEVT_PAINT, [&](wxPaintEvent& event) {
        event.Skip();
        if (!loadingAtFirstPaint)
            loadingAtFirstPaint = frame()->loader().isLoading();
    });
    ASSERT_TRUE(runUntil([&] { return loadingAtFirstPaint || frame()->loader().isLoading(); }));
    EXPECT_EQ(loadingAtFirstPaint, false);
    ASSERT_TRUE(runUntil([] { return frame()->viewer().exists(); }, 60.0));
}

} // namespace orbisk::test
