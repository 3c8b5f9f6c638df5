#include "app/InitPanel.h"
#include "support/GuiTest.h"
#include "support/LogCapture.h"
#include "support/TestModels.h"
#include "support/TestReader.h"
#include "view/OSGCanvas.h"

#include <wx/button.h>
#include <wx/progdlg.h>

#include <algorithm>
#include <numeric>

namespace orbisk::test {

class LoadingTest : public GuiTest {
protected:
    /// Records the progress events of all loads from now on.
    void recordProgress() {
        frame()->Bind(evtLoadProgress, [this](wxThreadEvent& event) {
            event.Skip();
            m_progress.push_back(event.GetInt());
        });
    }

    static wxProgressDialog* progressDialog() {
        for (wxWindow* window : wxTopLevelWindows)
            if (auto* dialog = dynamic_cast<wxProgressDialog*>(window))
                return dialog->IsBeingDeleted() ? nullptr : dialog;
        return nullptr;
    }

    static unsigned int framesDrawn() {
        return frame()->viewer().osgViewer()->getFrameStamp()->getFrameNumber();
    }

    static void startLoad(const std::string& path) {
        frame()->openFile(wxString::FromUTF8(path));
        ASSERT_TRUE(runUntil([] { return isReading(); }));
    }

    static void endLoad() {
        openGate();
        ASSERT_TRUE(runUntil([] { return !frame()->loader().isLoading(); }));
        runFor(0.1);
    }

    std::vector<int> m_progress;
};

TEST_F(LoadingTest, ThreeSecondsGiveAboutFifteenProgressEvents) {
    start();
    recordProgress();
    load(writeSlowModel("three.slow", "seconds 3"));
    ASSERT_GE(m_progress.size(), 13u);
    ASSERT_LE(m_progress.size(), 18u);
    EXPECT_EQ(m_progress.back(), loadEnded);
    m_progress.pop_back();
    std::vector<int> counted(m_progress.size());
    std::iota(counted.begin(), counted.end(), 1);
    EXPECT_EQ(m_progress, counted);
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(LoadingTest, ProgressWrapsFromNinetyNineToZero) {
    start();
    recordProgress();
    startLoad(writeSlowModel("long.slow", "gate"));
    ASSERT_TRUE(runUntil([this] { return m_progress.size() >= 102; }, 60.0));
    endLoad();
    EXPECT_EQ(m_progress[98], 99);
    EXPECT_EQ(m_progress[99], 0);
    EXPECT_EQ(m_progress[100], 1);
    EXPECT_EQ(*std::max_element(m_progress.begin(), m_progress.end()), 99);
    EXPECT_EQ(m_progress.back(), loadEnded);
}

TEST_F(LoadingTest, EveryLoadCountsFromOne) {
    start();
    load(writeSlowModel("first.slow", "seconds 1"));
    recordProgress();
    load(writeSlowModel("second.slow", "seconds 1"));
    ASSERT_GE(m_progress.size(), 3u);
    EXPECT_EQ(m_progress[0], 1);
    EXPECT_EQ(m_progress[1], 2);
    EXPECT_EQ(std::count(m_progress.begin(), m_progress.end(), loadEnded), 1);
}

TEST_F(LoadingTest, ProgressDialogSaysWhatItDoes) {
    start();
    startLoad(writeSlowModel("gate.slow", "gate"));
    ASSERT_NE(progressDialog(), nullptr);
    EXPECT_EQ(progressDialog()->GetTitle(), "Process ");
    EXPECT_EQ(progressDialog()->GetMessage(), "File Opening...");
    EXPECT_EQ(progressDialog()->GetRange(), 100);
    EXPECT_EQ(progressDialog()->GetParent(), frame());
    EXPECT_TRUE(progressDialog()->IsShownOnScreen());
    EXPECT_NE(progressDialog()->FindWindow(wxID_CANCEL), nullptr);
    EXPECT_FALSE(frame()->IsEnabled());
    endLoad();
    EXPECT_EQ(progressDialog(), nullptr);
    EXPECT_TRUE(frame()->IsEnabled());
}

TEST_F(LoadingTest, ProgressDialogDisablesOnlyTheFrame) {
    start();
    auto* other = new wxFrame(nullptr, wxID_ANY, "other");
    other->Show();
    startLoad(writeSlowModel("gate.slow", "gate"));
    EXPECT_FALSE(frame()->IsEnabled());
    EXPECT_TRUE(other->IsEnabled());
    other->Destroy();
    endLoad();
}

TEST_F(LoadingTest, CancelButtonDoesNotStopTheReader) {
    start();
    startLoad(writeSlowModel("gate.slow", "gate"));
    runFor(0.3);
    wxWindow* cancel = progressDialog()->FindWindow(wxID_CANCEL);
    ASSERT_NE(cancel, nullptr);
    click(*cancel);
    runFor(0.5);
    EXPECT_TRUE(isReading());
    EXPECT_TRUE(frame()->loader().isLoading());
    endLoad();
    EXPECT_EQ(modelsRead(), 1);
    EXPECT_TRUE(frame()->viewer().exists());
}

TEST_F(LoadingTest, NothingIsDrawnWhileLoading) {
    start();
    load(writeTestModel());
    startLoad(writeSlowModel("gate.slow", "gate"));
    const unsigned int before = framesDrawn();
    runFor(0.5);
    EXPECT_EQ(framesDrawn(), before);
    endLoad();
    EXPECT_TRUE(runUntil([before] { return framesDrawn() > before + 5; }));
}

TEST_F(LoadingTest, WorkersAreGoneAfterwards) {
    start();
    load(writeTestModel());
    const std::size_t before = threadCount();
    startLoad(writeSlowModel("gate.slow", "gate"));
    EXPECT_GE(threadCount(), before + 2);
    endLoad();
    EXPECT_TRUE(runUntil([before] { return threadCount() <= before; }));
}

TEST_F(LoadingTest, SecondOpenDuringALoadIsSurvived) {
    start();
    startLoad(writeSlowModel("gate.slow", "gate"));
    const std::string other = writeTestModel();
    frame()->openFile(other);
    runFor(0.5);
    EXPECT_TRUE(frame()->loader().isLoading());
    endLoad();
    EXPECT_EQ(modelsRead(), 1);
    EXPECT_EQ(appSettings().path_recent.front(), other);
    load(other);
    EXPECT_EQ(frame()->loader().modelPath(), other);
}

TEST_F(LoadingTest, FirstLoadOfAMissingFileIsReportedOnce) {
    start();
    LogCapture log;
    load("/gone/missing.osgb");
    EXPECT_EQ(log.messages(), std::vector<std::string>{"File does not exist!"});
    EXPECT_TRUE(frame()->welcomePanel()->IsShownOnScreen());
    EXPECT_FALSE(frame()->canvas()->IsShownOnScreen());
    EXPECT_FALSE(frame()->viewer().exists());
}

TEST_F(LoadingTest, FirstLoadOfAnUnknownFormatIsReported) {
    start();
    LogCapture log;
    writeFile("model.unknown", "text");
    load("model.unknown");
    EXPECT_EQ(log.messages(), std::vector<std::string>{"File does not exist!"});
}

TEST_F(LoadingTest, ReportIsShownInABox) {
    start();
    answerNextDialog(wxID_OK);
    load("/gone/missing.osgb");
    EXPECT_TRUE(runUntil([] { return !isDialogAwaited(); }));
}

TEST_F(LoadingTest, FailedLaterLoadIsSilentAndKeepsTheModel) {
    start();
    load(writeTestModel());
    const osg::ref_ptr<osg::Node> model = frame()->loader().modelNode();
    LogCapture log;
    load("/gone/missing.osgb");
    EXPECT_TRUE(log.messages().empty());
    EXPECT_EQ(frame()->loader().modelNode(), model);
    EXPECT_EQ(frame()->viewer().scene().modelSwitch()->getChild(SceneRoot::modelChild), model);
    EXPECT_TRUE(frame()->canvas()->IsShownOnScreen());
    const unsigned int before = framesDrawn();
    EXPECT_TRUE(runUntil([before] { return framesDrawn() > before; }));
}

TEST_F(LoadingTest, ModelsCanFollowAFailedFirstLoad) {
    start();
    {
        const LogCapture log;
        load("/gone/missing.osgb");
    }
    load(writeTestModel());
    EXPECT_TRUE(frame()->viewer().exists());
    EXPECT_EQ(frame()->welcomePanel(), nullptr);
}

/// A reader that throws is a reader that fails.
class ThrowingReaderTest : public LoadingTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ThrowingReaderTest, FailsLikeAMissingFile) {
    start();
    LogCapture log;
    load(writeSlowModel("bad.slow", GetParam()));
    EXPECT_EQ(log.messages(), std::vector<std::string>{"File does not exist!"});
    EXPECT_TRUE(frame()->welcomePanel()->IsShownOnScreen());
    load(writeTestModel());
    EXPECT_TRUE(frame()->viewer().exists());
}

INSTANTIATE_TEST_SUITE_P(All, ThrowingReaderTest,
                         ::testing::Values("throw memory", "throw range", "throw number",
                                           "nothing"));

} // namespace orbisk::test
