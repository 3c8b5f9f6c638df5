#include "settings/DataDialog.h"

#include "settings/RoamParameters.h"
#include "support/GuiTest.h"
#include "support/NamedWindow.h"
#include "support/TestModels.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/notebook.h>
#include <wx/panel.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace orbisk::test {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct RowNames {
    const char* label;
    const char* labelName;
    const char* textName;
};

constexpr RowNames rows[] = {{"Angle of view(deg):", "ID_STATICTEXT_FOVY", "ID_FOVY"},
                             {"Height of roam(m):", "ID_STATICTEXTHEIGHT", "ID_HEIGHT"},
                             {"speed of roam(m/s):", "ID_STATICTEXT_SPEED", "ID_TEXTCTRL_SPEED"},
                             {"Roll of roam(deg)", "ID_STATICTEXT1", "ID_TEXTCTRL1"},
                             {"Pitch of roam(deg)", "ID_STATICTEXT2", "ID_TEXTCTRL2"},
                             {"Yaw of roam(deg)", "ID_STATICTEXT3", "ID_TEXTCTRL3"}};

/// As the C library prints it.
std::string sixDecimals(double number) {
    char text[400];
    std::snprintf(text, sizeof text, "%f", number);
    return text;
}

} // namespace

class DataDialogTest : public GuiTest {
protected:
    /// Opens the dialog by its command, acts on it and ends it with `answer`.
    void withOptions(
        int answer, const std::function<void()>& act = [] {}) {
        bool seen = false;
        withNextDialog([&](wxDialog& dialog) {
            seen = true;
            m_dialog = &dialog;
            act();
            if (dialog.IsModal())
                dialog.EndModal(answer);
        });
        choose(Command::Options);
        EXPECT_TRUE(seen);
        m_dialog = nullptr;
    }

    /// Types into one row and ends the dialog with OK.
    void enter(const char* name, const std::string& text) {
        withOptions(wxID_OK, [&] { this->text(name).SetValue(wxString::FromUTF8(text)); });
    }

    /// What a row of the dialog shows when it is opened.
    std::string shown(const char* name) {
        std::string text;
        withOptions(wxID_CANCEL, [&] { text = this->text(name).GetValue().utf8_string(); });
        return text;
    }

    template <class Window>
    Window& named(const char* name) const {
        return namedWindow<Window>(m_dialog, name);
    }

    wxTextCtrl& text(const char* name) const { return named<wxTextCtrl>(name); }

    wxCheckBox& skyboxCheck() const { return named<wxCheckBox>("ID_CHECKBOXSKYBOX"); }

    static bool isSkyShown() {
        return frame()->viewer().scene().root()->getValue(SceneRoot::skyboxChild);
    }

    static bool isToolBarShown() { return frame()->docking().GetPane("Toolbar").IsShown(); }

    static double modelRadius() {
        return static_cast<double>(frame()->loader().modelNode()->getBound().radius());
    }

    /// Vertical field of view of the camera, degrees.
    static double cameraFovy() {
        double fovy = 0.0;
        double aspect = 0.0;
        double near = 0.0;
        double far = 0.0;
        frame()->viewer().osgViewer()->getCamera()->getProjectionMatrixAsPerspective(fovy, aspect,
                                                                                     near, far);
        return fovy;
    }

    wxDialog* m_dialog = nullptr; ///< while it is open
};

TEST_F(DataDialogTest, HasItsPages) {
    start();
    withOptions(wxID_CANCEL, [this] {
        EXPECT_NE(dynamic_cast<DataDialog*>(m_dialog), nullptr);
        EXPECT_EQ(m_dialog->GetTitle(), "Options");
        EXPECT_EQ(m_dialog->GetParent(), frame());
        EXPECT_TRUE(m_dialog->IsModal());
        const auto& notebook = named<wxNotebook>("ID_NOTEBOOK");
        ASSERT_EQ(notebook.GetPageCount(), 2u);
        EXPECT_EQ(notebook.GetPageText(0), "Param");
        EXPECT_EQ(notebook.GetPageText(1), "Options");
        EXPECT_EQ(notebook.GetPage(0), &named<wxPanel>("ID_PANEL_PARAM"));
        EXPECT_EQ(notebook.GetPage(1), &named<wxPanel>("ID_PANEL_OPTIONS"));
        EXPECT_EQ(notebook.GetSelection(), 0);
    });
}

TEST_F(DataDialogTest, ButtonsStandBelowThePages) {
    start();
    withOptions(wxID_CANCEL, [this] {
        const int bottom = named<wxNotebook>("ID_NOTEBOOK").GetRect().GetBottom();
        for (const auto& [id, label] : {std::pair{wxID_OK, "OK"}, {wxID_CANCEL, "Cancel"}}) {
            const auto* button = dynamic_cast<wxButton*>(m_dialog->FindWindow(id));
            ASSERT_NE(button, nullptr);
            EXPECT_EQ(button->GetLabelText(), label);
            EXPECT_GT(button->GetRect().GetTop(), bottom);
            EXPECT_LE(button->GetRect().GetBottom(), m_dialog->GetClientSize().y);
        }
    });
}

TEST_F(DataDialogTest, RowsKeepTheirTextsAndStandAligned) {
    start();
    withOptions(wxID_CANCEL, [this] {
        int bottom = 0;
        for (const RowNames& row : rows) {
            const auto& label = named<wxStaticText>(row.labelName);
            const wxRect field = text(row.textName).GetRect();
            EXPECT_EQ(label.GetLabel(), row.label);
            EXPECT_EQ(label.GetParent(), &named<wxPanel>("ID_PANEL_PARAM"));
            EXPECT_FALSE(text(row.textName).IsMultiLine());
            EXPECT_EQ(label.GetRect().x, named<wxStaticText>(rows[0].labelName).GetRect().x);
            EXPECT_EQ(field.x, text(rows[0].textName).GetRect().x);
            EXPECT_EQ(field.width, text(rows[0].textName).GetRect().width);
            EXPECT_LT(label.GetRect().GetRight(), field.x);
            EXPECT_LE(std::abs(label.GetRect().y + label.GetRect().GetBottom() - field.y -
                               field.GetBottom()),
                      2);
            EXPECT_GT(field.y, bottom);
            bottom = field.GetBottom();
        }
        EXPECT_GT(named<wxStaticText>("ID_STATICTEXTCOMMENT").GetRect().y, bottom);
    });
}

TEST_F(DataDialogTest, NoteIsSmallAndWhole) {
    start();
    withOptions(wxID_CANCEL, [this] {
        runFor(0.3);
        const auto& note = named<wxStaticText>("ID_STATICTEXTCOMMENT");
        EXPECT_EQ(note.GetLabel(),
                  "*The angle of view won't take effect until the next time it opens.");
        const wxFont font = note.GetFont();
        EXPECT_EQ(font.GetPointSize(), 8);
        EXPECT_EQ(font.GetFaceName(), "Arial");
        EXPECT_EQ(font.GetStyle(), wxFONTSTYLE_NORMAL);
        EXPECT_EQ(font.GetWeight(), wxFONTWEIGHT_NORMAL);
        EXPECT_GE(note.GetSize().x, note.GetTextExtent(note.GetLabel()).x);
        EXPECT_LE(note.GetRect().GetRight(), note.GetParent()->GetClientSize().x);
        EXPECT_LE(note.GetRect().GetBottom(), note.GetParent()->GetClientSize().y);
    });
}

TEST_F(DataDialogTest, OptionsPageAsksForTheSky) {
    start();
    withOptions(wxID_CANCEL, [this] {
        const auto& label = named<wxStaticText>("ID_STATICTEXT_SKYBOX");
        EXPECT_EQ(label.GetLabel(), "Does the skybox show?");
        EXPECT_EQ(label.GetParent(), &named<wxPanel>("ID_PANEL_OPTIONS"));
        EXPECT_EQ(skyboxCheck().GetLabel(), "SkyBox");
        EXPECT_EQ(skyboxCheck().GetParent(), label.GetParent());
        EXPECT_TRUE(skyboxCheck().IsChecked());
    });
}

TEST_F(DataDialogTest, SpeaksChinese) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageChinese);
    start();
    withOptions(wxID_CANCEL, [this] {
        EXPECT_EQ(m_dialog->GetTitle().utf8_string(), "选项");
        EXPECT_EQ(named<wxNotebook>("ID_NOTEBOOK").GetPageText(0).utf8_string(), "参数");
        EXPECT_EQ(named<wxStaticText>("ID_STATICTEXT_SPEED").GetLabel().utf8_string(),
                  "漫游速度(米/秒)：");
        EXPECT_EQ(m_dialog->FindWindow(wxID_OK)->GetLabel().utf8_string(), "确定");
        EXPECT_EQ(m_dialog->FindWindow(wxID_CANCEL)->GetLabel().utf8_string(), "取消");
    });
}

TEST_F(DataDialogTest, ShowsTheStartValues) {
    start();
    withOptions(wxID_CANCEL, [this] {
        const char* const texts[] = {"30.000000", "0.000000", "inf", "0.000", "0.000", "0.000"};
        for (std::size_t row = 0; row < std::size(rows); ++row)
            EXPECT_EQ(text(rows[row].textName).GetValue(), texts[row]) << rows[row].label;
    });
}

TEST_F(DataDialogTest, ShowsThePersistedAngleOfView) {
    writeFile("datafile.json",
              R"({"project":{"layout":{"rect":{"x":40,"y":40,"w":900,"h":700}},)"
              R"("data":{"tool_show":1,"sky_show":0,"fovy":47.25,"language":1}}})");
    start();
    withOptions(wxID_CANCEL, [this] {
        EXPECT_EQ(text("ID_FOVY").GetValue(), "47.250000");
        EXPECT_FALSE(skyboxCheck().IsChecked());
    });
}

TEST_F(DataDialogTest, ShowsTheModelsHeightAndSpeed) {
    start();
    load(writeTestModel());
    EXPECT_EQ(shown("ID_HEIGHT"), sixDecimals(modelRadius()));
    EXPECT_EQ(shown("ID_TEXTCTRL_SPEED"), sixDecimals(1.0 / roamParameters().secondsPerMetre));
    EXPECT_EQ(shown("ID_TEXTCTRL_SPEED"), sixDecimals(modelRadius() / 10.0));
}

TEST_F(DataDialogTest, ShowsNumbersOfAnySize) {
    start();
    roamParameters().height = -1e30;
    roamParameters().yaw = infinity;
    EXPECT_EQ(shown("ID_HEIGHT"), sixDecimals(-1e30));
    EXPECT_EQ(shown("ID_TEXTCTRL3"), "inf");
}

TEST_F(DataDialogTest, OkStoresWhatWasTyped) {
    start();
    load(writeTestModel());
    withOptions(wxID_OK, [this] {
        const char* const texts[] = {"45.5", "12.25", "4", "1.5", "-2.5", "3.5"};
        for (std::size_t row = 0; row < std::size(rows); ++row)
            text(rows[row].textName).SetValue(texts[row]);
        skyboxCheck().SetValue(false);
    });
    EXPECT_EQ(appSettings().fovy, 45.5);
    EXPECT_EQ(appSettings().sky_show, 0);
    EXPECT_EQ(roamParameters().height, 12.25);
    EXPECT_EQ(roamParameters().secondsPerMetre, 0.25);
    EXPECT_EQ(roamParameters().roll, 1.5);
    EXPECT_EQ(roamParameters().pitch, -2.5);
    EXPECT_EQ(roamParameters().yaw, 3.5);
    EXPECT_EQ(roamParameters().modelRadius, modelRadius());
}

TEST_F(DataDialogTest, KeyboardAndMouseChangeAValue) {
    start();
    withOptions(wxID_CANCEL, [this] {
        wxUIActionSimulator keyboard;
        runFor(0.3);
        text("ID_HEIGHT").SetFocus();
        text("ID_HEIGHT").SelectAll();
        runFor(0.2);
        keyboard.Text("77.5");
        runFor(0.3);
        EXPECT_EQ(text("ID_HEIGHT").GetValue(), "77.5");
        click(*m_dialog->FindWindow(wxID_OK));
        EXPECT_FALSE(m_dialog->IsModal());
    });
    EXPECT_EQ(roamParameters().height, 77.5);
}

TEST_F(DataDialogTest, SpeedThatIsNoneStoresTheModelsPace) {
    start();
    load(writeTestModel());
    for (const char* speed : {"0", "-3", "fast", "", "0.0000009", "nan"}) {
        roamParameters().secondsPerMetre = 5.0;
        enter("ID_TEXTCTRL_SPEED", speed);
        EXPECT_EQ(roamParameters().secondsPerMetre, 10.0 / modelRadius()) << speed;
    }
    EXPECT_EQ(shown("ID_TEXTCTRL_SPEED"), sixDecimals(modelRadius() / 10.0));
}

TEST_F(DataDialogTest, SpeedThatIsNoneStoresAnInfinitePaceBeforeAnyModel) {
    start();
    enter("ID_TEXTCTRL_SPEED", "0");
    EXPECT_EQ(roamParameters().secondsPerMetre, infinity);
    EXPECT_EQ(shown("ID_TEXTCTRL_SPEED"), "0.000000");
    load(writeTestModel());
    EXPECT_EQ(roamParameters().secondsPerMetre, 10.0 / modelRadius());
}

TEST_F(DataDialogTest, OkRightAfterTheStartChangesNothing) {
    start();
    withOptions(wxID_OK);
    EXPECT_EQ(appSettings().fovy, 30.0);
    EXPECT_EQ(appSettings().sky_show, 1);
    EXPECT_EQ(roamParameters().height, 0.0);
    EXPECT_EQ(roamParameters().secondsPerMetre, 0.0);
}

TEST_F(DataDialogTest, OnlyTheLeadingNumberCounts) {
    start();
    enter("ID_HEIGHT", "12abc");
    EXPECT_EQ(roamParameters().height, 12.0);
    EXPECT_EQ(shown("ID_HEIGHT"), "12.000000");
    enter("ID_HEIGHT", "  -7.5 m");
    EXPECT_EQ(roamParameters().height, -7.5);
    enter("ID_HEIGHT", "12,5");
    EXPECT_EQ(roamParameters().height, 12.0);
    enter("ID_HEIGHT", "12米");
    EXPECT_EQ(roamParameters().height, 12.0);
    enter("ID_HEIGHT", "high");
    EXPECT_EQ(roamParameters().height, 0.0);
}

TEST_F(DataDialogTest, AnglesAreStoredAsTypedAndShownWithThreeDecimals) {
    start();
    withOptions(wxID_OK, [this] {
        text("ID_TEXTCTRL1").SetValue("1.23456789");
        text("ID_TEXTCTRL2").SetValue("-89.99951");
        text("ID_TEXTCTRL3").SetValue("720");
    });
    EXPECT_EQ(roamParameters().roll, 1.23456789);
    EXPECT_EQ(roamParameters().pitch, -89.99951);
    EXPECT_EQ(roamParameters().yaw, 720.0);
    EXPECT_EQ(shown("ID_TEXTCTRL1"), "1.235");
    EXPECT_EQ(shown("ID_TEXTCTRL2"), "-90.000");
    EXPECT_EQ(shown("ID_TEXTCTRL3"), "720.000");
}

TEST_F(DataDialogTest, NegativeAngleOfViewIsStoredAsTyped) {
    start();
    enter("ID_FOVY", "-12.5");
    EXPECT_EQ(appSettings().fovy, -12.5);
}

TEST_F(DataDialogTest, CancelChangesNothing) {
    start();
    load(writeTestModel());
    const RoamParameters before = roamParameters();
    withOptions(wxID_OK, [this] {
        for (const RowNames& row : rows)
            text(row.textName).SetValue("7");
        skyboxCheck().SetValue(false);
        runFor(0.2);
        click(*m_dialog->FindWindow(wxID_CANCEL));
        EXPECT_FALSE(m_dialog->IsModal());
    });
    EXPECT_EQ(appSettings().fovy, 30.0);
    EXPECT_EQ(appSettings().sky_show, 1);
    EXPECT_TRUE(isSkyShown());
    EXPECT_TRUE(menuItem(Command::Skybox).IsChecked());
    EXPECT_EQ(roamParameters().height, before.height);
    EXPECT_EQ(roamParameters().secondsPerMetre, before.secondsPerMetre);
    EXPECT_EQ(roamParameters().roll, 0.0);
    EXPECT_EQ(roamParameters().pitch, 0.0);
    EXPECT_EQ(roamParameters().yaw, 0.0);
}

TEST_F(DataDialogTest, UncheckingTheSkyHidesItAtOnce) {
    start();
    load(writeTestModel());
    ASSERT_TRUE(isSkyShown());
    withOptions(wxID_OK, [this] {
        EXPECT_TRUE(skyboxCheck().IsChecked());
        skyboxCheck().SetValue(false);
    });
    EXPECT_FALSE(isSkyShown());
    EXPECT_EQ(appSettings().sky_show, 0);
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
    withOptions(wxID_OK, [this] {
        EXPECT_FALSE(skyboxCheck().IsChecked());
        skyboxCheck().SetValue(true);
    });
    EXPECT_TRUE(isSkyShown());
    EXPECT_EQ(appSettings().sky_show, 1);
    EXPECT_TRUE(menuItem(Command::Skybox).IsChecked());
}

TEST_F(DataDialogTest, UncheckingTheSkyWithoutAModelIsForTheNextOne) {
    start();
    withOptions(wxID_OK, [this] { skyboxCheck().SetValue(false); });
    EXPECT_EQ(appSettings().sky_show, 0);
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
    EXPECT_FALSE(frame()->viewer().exists());
    load(writeTestModel());
    EXPECT_FALSE(isSkyShown());
}

TEST_F(DataDialogTest, OkBringsTheToolBarInLineWithItsFlag) {
    start();
    withOptions(wxID_CANCEL, [] { appSettings().tool_show = 0; });
    EXPECT_TRUE(isToolBarShown());
    EXPECT_TRUE(menuItem(Command::Toolbar).IsChecked());
    withOptions(wxID_OK);
    EXPECT_FALSE(isToolBarShown());
    EXPECT_FALSE(menuItem(Command::Toolbar).IsChecked());
    EXPECT_FALSE(frame()->bars().toolBarPanel()->IsShownOnScreen());
    withOptions(wxID_OK, [] { appSettings().tool_show = 2; });
    EXPECT_TRUE(isToolBarShown());
    EXPECT_TRUE(menuItem(Command::Toolbar).IsChecked());
    EXPECT_EQ(appSettings().tool_show, 2);
}

TEST_F(DataDialogTest, AngleOfViewCountsForTheFirstModel) {
    start();
    enter("ID_FOVY", "50");
    load(writeTestModel());
    EXPECT_NEAR(cameraFovy(), 50.0, 1e-9);
}

TEST_F(DataDialogTest, AngleOfViewLeavesAShownModelAlone) {
    start();
    load(writeTestModel());
    const double before = cameraFovy();
    EXPECT_NEAR(before, 30.0, 1e-9);
    enter("ID_FOVY", "50");
    runFor(0.2);
    EXPECT_EQ(cameraFovy(), before);
}

TEST_F(DataDialogTest, AngleOfViewAndSkyOutliveARestartButNotTheRoam) {
    start();
    withOptions(wxID_OK, [this] {
        text("ID_FOVY").SetValue("47.25");
        text("ID_HEIGHT").SetValue("9");
        skyboxCheck().SetValue(false);
    });
    close();
    const std::string saved = readFile("datafile.json");
    EXPECT_NE(saved.find("47.25"), std::string::npos) << saved;
    EXPECT_EQ(saved.find("height"), std::string::npos) << saved;
    start();
    EXPECT_EQ(shown("ID_FOVY"), "47.250000");
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
}

/// In an environment whose numbers have commas and whose encoding lacks most letters.
TEST_F(DataDialogTest, ReadsAndShowsDotsWhereNumbersHaveCommas) {
    const TemporaryFolder locales;
    const std::string name = "de_DE.ISO-8859-1";
    if (!std::getenv("LOCPATH")) {
        ChildProcess compiler(
            {"localedef", "-i", "de_DE", "-f", "ISO-8859-1", (locales.path() / name).string()});
        ASSERT_EQ(compiler.wait(), 0) << compiler.errorOutput();
    }
    if (!inEnvironment({{"LOCPATH", locales.path().string()}, {"LC_ALL", name}}))
        return;
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), name.c_str());
    start();
    load(writeTestModel());
    EXPECT_EQ(shown("ID_FOVY"), "30.000000");
    enter("ID_HEIGHT", "12.75");
    EXPECT_EQ(roamParameters().height, 12.75);
    EXPECT_EQ(shown("ID_HEIGHT"), "12.750000");
    enter("ID_HEIGHT", "3,5");
    EXPECT_EQ(roamParameters().height, 3.0);
    enter("ID_HEIGHT", "12°");
    EXPECT_EQ(roamParameters().height, 12.0);
    enter("ID_HEIGHT", "12米");
    EXPECT_EQ(roamParameters().height, 0.0) << "what cannot be converted reads as nothing";
}

} // namespace orbisk::test
