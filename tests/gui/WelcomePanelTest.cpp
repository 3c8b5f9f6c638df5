#include "app/InitPanel.h"
#include "support/GuiTest.h"
#include "support/TestModels.h"

#include <wx/bmpbuttn.h>
#include <wx/filedlg.h>
#include <wx/stattext.h>

namespace orbisk::test {

namespace {

constexpr const char* panelFilter =
    "all files(*.*) |*.*|osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|obj file(*.obj)|*.obj|"
    "3ds file(*.3ds)|*.3ds|dxf file(*.dxf)|*.dxf|wrl file(*.wrl)|*.wrl|max file(*.max)|*.max|"
    "fbx file(*.fbx)|*.fbx|dae file(*.dae)|*.dae||";
constexpr const char* usualRect = R"({"x":40,"y":40,"w":900,"h":700})";

} // namespace

class WelcomePanelTest : public GuiTest {
protected:
    static wxControl* entry(int index) {
        return dynamic_cast<wxControl*>(
            frame()->welcomePanel()->FindWindow(InitPanel::entryBase() + index));
    }

    static wxWindow* trash(int index) {
        return frame()->welcomePanel()->FindWindow(InitPanel::deleteBase() + index);
    }

    template <typename Type>
    static std::vector<Type*> all(const wxWindow* parent = frame()->welcomePanel()) {
        std::vector<Type*> found;
        for (wxWindow* child : parent->GetChildren()) {
            if (auto* one = dynamic_cast<Type*>(child))
                found.push_back(one);
            const auto below = all<Type>(child);
            found.insert(found.end(), below.begin(), below.end());
        }
        return found;
    }

    static std::vector<std::string> texts() {
        std::vector<std::string> texts;
        for (const wxStaticText* text : all<wxStaticText>())
            texts.push_back(text->GetLabel().utf8_string());
        return texts;
    }

    static wxBitmapButton& captionedButton(std::size_t index) {
        return *all<wxBitmapButton>().at(index);
    }

    static std::vector<std::string> menuPaths() {
        std::vector<std::string> labels;
        for (const wxMenuItem* item : menuItem(Command::RecentFiles).GetSubMenu()->GetMenuItems())
            labels.push_back(item->GetItemLabelText().utf8_string());
        return labels;
    }

    /// What an entry's button shows. A label with markup is kept without escapes.
    static std::string shownPath(int index) {
        wxString label = entry(index)->GetLabel();
        label.Replace("&&", "&");
        return label.utf8_string();
    }

    static std::vector<std::string> panelPaths() {
        std::vector<std::string> labels;
        for (int i = 0; entry(i); ++i)
            labels.push_back(shownPath(i));
        return labels;
    }

    /// Sends the event of a delete button, whether or not there is such a button.
    static void sendDelete(int index) {
        wxCommandEvent event(wxEVT_BUTTON, InitPanel::deleteBase() + index);
        frame()->welcomePanel()->ProcessWindowEvent(event);
        runFor(0.1);
    }
};

TEST_F(WelcomePanelTest, GreetsInItsFonts) {
    start();
    EXPECT_EQ(texts(),
              (std::vector<std::string>{"Orbisk", "Welcome to Brenholt , welcome to Orbisk !",
                                        "Open file", "Help file", "Recent files"}));
    const auto labels = all<wxStaticText>();
    EXPECT_EQ(labels[0]->GetFont().GetPointSize(), 36);
    EXPECT_EQ(labels[0]->GetFont().GetWeight(), wxFONTWEIGHT_BOLD);
    EXPECT_EQ(labels[1]->GetFont().GetPointSize(), 13);
    EXPECT_EQ(labels[1]->GetFont().GetWeight(), wxFONTWEIGHT_BOLD);
    for (std::size_t i = 2; i < labels.size(); ++i)
        EXPECT_EQ(labels[i]->GetFont().GetPointSize(), 9);
    EXPECT_EQ(frame()->welcomePanel()->GetName(), "ID_PANEL_INIT");
    EXPECT_EQ(frame()->welcomePanel()->GetBackgroundColour(), wxColour(255, 255, 255, 255));
}

TEST_F(WelcomePanelTest, EmptyListShowsTheCaptionAndNoRows) {
    start();
    EXPECT_EQ(texts().back(), "Recent files");
    EXPECT_EQ(entry(0), nullptr);
    EXPECT_EQ(trash(0), nullptr);
    EXPECT_EQ(all<wxBitmapButton>().size(), 2u);
}

TEST_F(WelcomePanelTest, ListsTheRecentFilesInOrder) {
    writeSettings(usualRect, languageEnglish, R"(["/models/b.obj","/models/a.obj"])");
    start();
    EXPECT_EQ(panelPaths(), (std::vector<std::string>{"/models/b.obj", "/models/a.obj"}));
    EXPECT_EQ(entry(0)->GetFont().GetPointSize(), 10);
    EXPECT_TRUE(entry(0)->GetFont().GetUnderlined());
    EXPECT_LT(entry(0)->GetScreenRect().y, entry(1)->GetScreenRect().y);
    ASSERT_NE(trash(1), nullptr);
    auto* button = dynamic_cast<wxBitmapButton*>(trash(1));
    ASSERT_NE(button, nullptr);
    EXPECT_TRUE(button->GetBitmapCurrent().IsOk());
}

TEST_F(WelcomePanelTest, LabelsShowSignsThatMeanSomethingToAButton) {
    const std::vector<std::string> names{"/________________.obj", "/&&&&&&&&&&&&&&&&.obj",
                                         "/<<<<<<<<<<<<<<<<.obj", "/>>>>>>>>>>>>>>>>.obj"};
    writeSettings(usualRect, languageEnglish,
                  "[\"" + names[0] + "\",\"" + names[1] + "\",\"" + names[2] + "\",\"" + names[3] +
                      "\"]");
    start();
    for (int i = 0; i < 4; ++i) {
        ASSERT_NE(entry(i), nullptr);
        // What stands on a button cannot be asked for, but signs that got lost make it narrow.
        const std::string& name = names[static_cast<std::size_t>(i)];
        EXPECT_GE(entry(i)->GetBestSize().x, entry(i)->GetTextExtent(name).x - 4) << name;
    }
}

TEST_F(WelcomePanelTest, OpenButtonOpensTheChosenFile) {
    start();
    chooseInNextFileDialog(writeTestModel());
    click(captionedButton(0));
    ASSERT_TRUE(runUntil([] { return frame()->viewer().exists(); }));
    EXPECT_EQ(frame()->welcomePanel(), nullptr);
}

TEST_F(WelcomePanelTest, OpenDialogHasItsTitleAndFilters) {
    start();
    std::string title;
    std::string wildcard;
    withNextDialog([&](wxDialog& dialog) {
        auto& files = dynamic_cast<wxFileDialog&>(dialog);
        title = files.GetMessage().utf8_string();
        wildcard = files.GetWildcard().utf8_string();
        files.EndModal(wxID_CANCEL);
    });
    click(captionedButton(0));
    EXPECT_EQ(title, "Open file...");
    EXPECT_EQ(wildcard, panelFilter);
}

TEST_F(WelcomePanelTest, CancelledOpenChangesNothing) {
    writeSettings(usualRect, languageEnglish, R"(["/models/b.obj"])");
    start();
    bool seen = false;
    withNextDialog([&seen](wxDialog& dialog) {
        seen = true;
        dialog.EndModal(wxID_CANCEL);
    });
    click(captionedButton(0));
    EXPECT_TRUE(seen);
    EXPECT_FALSE(frame()->loader().isLoading());
    EXPECT_TRUE(frame()->welcomePanel()->IsShownOnScreen());
    EXPECT_EQ(appSettings().path_recent, std::vector<std::string>{"/models/b.obj"});
}

TEST_F(WelcomePanelTest, EntryOpensItsFile) {
    const std::string path = writeTestModel();
    writeSettings(usualRect, languageEnglish, R"(["/models/gone.obj",")" + path + R"("])");
    start();
    click(*entry(1));
    ASSERT_TRUE(runUntil([] { return frame()->viewer().exists(); }));
    EXPECT_EQ(frame()->loader().modelPath(), path);
    EXPECT_EQ(appSettings().path_recent, (std::vector<std::string>{path, "/models/gone.obj"}));
}

TEST_F(WelcomePanelTest, TrashRemovesTheEntryFromPanelMenuAndFile) {
    writeSettings(usualRect, languageEnglish, R"(["/a.obj","/b.obj","/c.obj"])");
    start();
    click(*trash(1));
    const std::vector<std::string> left{"/a.obj", "/c.obj"};
    EXPECT_EQ(appSettings().path_recent, left);
    EXPECT_EQ(panelPaths(), left);
    EXPECT_EQ(menuPaths(), left);
    EXPECT_EQ(texts().front(), "Orbisk");
    close();
    const std::string settings = readFile("datafile.json");
    EXPECT_EQ(settings.find("/b.obj"), std::string::npos);
    EXPECT_NE(settings.find("/c.obj"), std::string::npos);
}

TEST_F(WelcomePanelTest, TrashOfTheLastEntryLeavesTheCaption) {
    writeSettings(usualRect, languageEnglish, R"(["/a.obj"])");
    start();
    click(*trash(0));
    EXPECT_TRUE(appSettings().path_recent.empty());
    EXPECT_TRUE(panelPaths().empty());
    EXPECT_TRUE(menuPaths().empty());
    EXPECT_EQ(texts().back(), "Recent files");
}

TEST_F(WelcomePanelTest, DeletionOutsideTheTenIsIgnored) {
    writeSettings(usualRect, languageEnglish, R"(["/a.obj","/b.obj"])");
    start();
    // The ids next to the run may be those of the entries, which open what they name.
    const int entries = InitPanel::entryBase() - InitPanel::deleteBase();
    sendDelete(entries == -10 ? -11 : -1);
    sendDelete(entries == 10 ? 20 : 10);
    EXPECT_EQ(panelPaths(), (std::vector<std::string>{"/a.obj", "/b.obj"}));
    EXPECT_EQ(appSettings().path_recent.size(), 2u);
}

TEST_F(WelcomePanelTest, DeletionPastTheEndOfTheListIsIgnored) {
    writeSettings(usualRect, languageEnglish, R"(["/a.obj","/b.obj"])");
    start();
    sendDelete(2);
    EXPECT_EQ(panelPaths(), (std::vector<std::string>{"/a.obj", "/b.obj"}));
    EXPECT_EQ(appSettings().path_recent.size(), 2u);
}

TEST_F(WelcomePanelTest, ElevenEntriesOfAnEditedFileDoNotShareIdentifiers) {
    std::string paths;
    for (int i = 0; i < 11; ++i)
        paths += (i == 0 ? "\"/" : ",\"/") + std::to_string(i) + ".obj\"";
    writeSettings(usualRect, languageEnglish, "[" + paths + "]");
    start();
    std::map<wxWindowID, int> uses;
    for (const auto* button : all<wxButton>())
        ++uses[button->GetId()];
    for (const auto& [id, count] : uses)
        EXPECT_EQ(count, 1) << "identifier " << id;
}

TEST_F(WelcomePanelTest, EmptyEntryOfAnEditedFileIsNoError) {
    writeSettings(usualRect, languageEnglish, R"(["","/b.obj"])");
    start();
    EXPECT_TRUE(frame()->welcomePanel()->IsShownOnScreen());
}

} // namespace orbisk::test
