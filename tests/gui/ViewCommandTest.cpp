#include "support/GuiTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <osgGA/TrackballManipulator>

namespace orbisk::test {

namespace {
constexpr const char* usualRect = R"({"x":40,"y":40,"w":900,"h":700})";
}

class ViewCommandTest : public GuiTest {
protected:
    static osg::Switch& root() { return *frame()->viewer().scene().root(); }

    static bool isToolBarShown() { return frame()->bars().toolBarPanel()->IsShownOnScreen(); }

    static osgGA::CameraManipulator* manipulator() {
        return frame()->viewer().osgViewer()->getCameraManipulator();
    }

    static osg::Vec3d eye() { return manipulator()->getMatrix().getTrans(); }
};

TEST_F(ViewCommandTest, ToolbarHidesAndShowsThePane) {
    start();
    EXPECT_TRUE(isToolBarShown());
    choose(Command::Toolbar);
    EXPECT_FALSE(isToolBarShown());
    EXPECT_EQ(appSettings().tool_show, 0);
    EXPECT_FALSE(menuItem(Command::Toolbar).IsChecked());
    choose(Command::Toolbar);
    EXPECT_TRUE(isToolBarShown());
    EXPECT_EQ(appSettings().tool_show, 1);
}

TEST_F(ViewCommandTest, HiddenToolbarStaysHiddenAfterARestart) {
    start();
    choose(Command::Toolbar);
    close();
    start();
    EXPECT_FALSE(isToolBarShown());
    EXPECT_FALSE(menuItem(Command::Toolbar).IsChecked());
    choose(Command::Toolbar);
    EXPECT_TRUE(isToolBarShown());
}

TEST_F(ViewCommandTest, ToolbarReachesAcrossTheFrame) {
    start();
    const auto width = [] { return frame()->bars().toolBarPanel()->GetSize().x; };
    EXPECT_EQ(width(), frame()->GetClientSize().x);
    frame()->SetSize(700, 600);
    EXPECT_TRUE(runUntil([&] { return width() == frame()->GetClientSize().x && width() < 800; }));
}

TEST_F(ViewCommandTest, ToolbarShownAfterAResizeReachesAcrossTheFrame) {
    start();
    choose(Command::Toolbar);
    frame()->SetSize(700, 600);
    runFor(0.3);
    choose(Command::Toolbar);
    EXPECT_EQ(frame()->bars().toolBarPanel()->GetSize().x, frame()->GetClientSize().x);
}

TEST_F(ViewCommandTest, SkyboxWithoutAModelIsRememberedForTheNext) {
    start();
    EXPECT_TRUE(menuItem(Command::Skybox).IsChecked());
    choose(Command::Skybox);
    EXPECT_EQ(appSettings().sky_show, 0);
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
    load(writeTestModel());
    ASSERT_GT(root().getNumChildren(), 1u);
    EXPECT_FALSE(root().getValue(SceneRoot::skyboxChild));
}

TEST_F(ViewCommandTest, SkyboxSwitchesItsChildAndNeverRebuildsIt) {
    start();
    load(writeTestModel());
    const osg::ref_ptr<osg::Node> sky = root().getChild(SceneRoot::skyboxChild);
    EXPECT_TRUE(root().getValue(SceneRoot::skyboxChild));
    choose(Command::Skybox);
    EXPECT_FALSE(root().getValue(SceneRoot::skyboxChild));
    EXPECT_EQ(appSettings().sky_show, 0);
    choose(Command::Skybox);
    EXPECT_TRUE(root().getValue(SceneRoot::skyboxChild));
    EXPECT_EQ(appSettings().sky_show, 1);
    EXPECT_EQ(root().getChild(SceneRoot::skyboxChild), sky);
    EXPECT_TRUE(root().getValue(SceneRoot::modelSwitchChild));
}

TEST_F(ViewCommandTest, SkyboxOffInTheSettingsCanBeTurnedOn) {
    writeSettings(usualRect, languageEnglish, "[]", 0);
    start();
    load(writeTestModel());
    EXPECT_FALSE(root().getValue(SceneRoot::skyboxChild));
    choose(Command::Skybox);
    EXPECT_TRUE(root().getValue(SceneRoot::skyboxChild));
}

TEST_F(ViewCommandTest, SkyboxSettingOutlivesARestart) {
    start();
    choose(Command::Skybox);
    close();
    start();
    EXPECT_FALSE(menuItem(Command::Skybox).IsChecked());
}

TEST_F(ViewCommandTest, SceneHasItsLayout) {
    start();
    load(writeTestModel());
    ASSERT_EQ(root().getNumChildren(), 5u);
    const auto* modelSwitch = dynamic_cast<const osg::Switch*>(root().getChild(0));
    ASSERT_NE(modelSwitch, nullptr);
    EXPECT_EQ(modelSwitch, frame()->viewer().scene().modelSwitch());
    ASSERT_EQ(modelSwitch->getNumChildren(), 4u);
    EXPECT_EQ(modelSwitch->getChild(1), frame()->loader().modelNode());
    EXPECT_EQ(frame()->viewer().osgViewer()->getSceneData(), &root());
    for (unsigned int i = 2; i < 5; ++i) {
        const osg::Group* group = root().getChild(i)->asGroup();
        ASSERT_NE(group, nullptr);
        EXPECT_EQ(group->getNumChildren(), 0u);
    }
}

TEST_F(ViewCommandTest, FirstViewIsFromAboveAtTenRadii) {
    start();
    load(writeTestModel());
    const osg::BoundingSphere bound = frame()->loader().modelNode()->getBound();
    const auto& home = frame()->viewer().home();
    EXPECT_NEAR((home.center - osg::Vec3d(bound.center())).length(), 0.0, 1e-3);
    EXPECT_NEAR(home.eye.z() - home.center.z(), 10.0 * static_cast<double>(bound.radius()), 1e-2);
    EXPECT_EQ(home.up, osg::Vec3d(0, 1, 0));
    EXPECT_NEAR((eye() - home.eye).length(), 0.0, 1e-2);
}

TEST_F(ViewCommandTest, ResetModelPutsANewTrackballAtHome) {
    start();
    load(writeTestModel());
    const osg::ref_ptr<osgGA::CameraManipulator> former = manipulator();
    former->setByMatrix(
        osg::Matrixd::lookAt(osg::Vec3d(500, 400, 300), osg::Vec3d(), osg::Vec3d(0, 0, 1)));
    choose(Command::ResetModel);
    EXPECT_NE(manipulator(), former);
    EXPECT_NE(dynamic_cast<osgGA::TrackballManipulator*>(manipulator()), nullptr);
    EXPECT_NEAR((eye() - frame()->viewer().home().eye).length(), 0.0, 1e-2);
}

TEST_F(ViewCommandTest, ResetModelWithoutAModelDoesNothing) {
    start();
    choose(Command::ResetModel);
    clickTool(Command::ResetModel);
    EXPECT_FALSE(frame()->viewer().exists());
}

TEST_F(ViewCommandTest, LaterModelMovesTheSameTrackballHome) {
    start();
    load(writeTestModel());
    const osg::ref_ptr<osgGA::CameraManipulator> former = manipulator();
    former->setByMatrix(
        osg::Matrixd::lookAt(osg::Vec3d(500, 400, 300), osg::Vec3d(), osg::Vec3d(0, 0, 1)));
    load(writeTestModel("second.osgb"));
    EXPECT_EQ(manipulator(), former);
    EXPECT_NEAR((eye() - frame()->viewer().home().eye).length(), 0.0, 1e-2);
}

TEST_F(ViewCommandTest, LaterModelLeavesTheLayoutUnchanged) {
    start();
    load(writeTestModel());
    const OSGCanvas* canvas = frame()->canvas();
    const wxString layout = frame()->docking().SavePerspective();
    load(writeTestModel("second.osgb"));
    EXPECT_EQ(frame()->canvas(), canvas);
    EXPECT_EQ(frame()->docking().SavePerspective(), layout);
}

TEST_F(ViewCommandTest, PanesHaveTheirNames) {
    start();
    wxAuiManager& docking = frame()->docking();
    for (const char* name : {"Canvas", "PanelInit"}) {
        const wxAuiPaneInfo& pane = docking.GetPane(name);
        ASSERT_TRUE(pane.IsOk()) << name;
        EXPECT_EQ(pane.dock_direction, wxAUI_DOCK_CENTER);
        EXPECT_FALSE(pane.HasCaption());
        EXPECT_FALSE(pane.HasCloseButton());
        EXPECT_FALSE(pane.IsFloatable());
        EXPECT_FALSE(pane.IsMovable());
    }
    EXPECT_TRUE(docking.GetPane("Toolbar").IsOk());
    EXPECT_FALSE(docking.GetPane("Canvas").IsShown());
    load(writeTestModel());
    EXPECT_FALSE(docking.GetPane("PanelInit").IsOk());
    EXPECT_TRUE(docking.GetPane("Canvas").IsShown());
    EXPECT_EQ(frame()->canvas()->GetName(), "ID_CANVAS");
}

} // namespace orbisk::test
