#include "support/GuiTest.h"
#include "support/TestModels.h"

namespace orbisk::test {

class DisplayModeTest : public GuiTest {
protected:
    static osg::Geometry* shownGeometry() { return firstGeometry(frame()->loader().modelNode()); }

    static DisplayMode mode() { return frame()->loader().modelCallback()->mode; }

    /// How the model is drawn once the next frames have taken up the mode.
    static int shownPolygonMode() {
        runFor(0.3);
        return polygonModeOf(shownGeometry());
    }
};

TEST_F(DisplayModeTest, ModelsAreShownAsLoaded) {
    start();
    load(writeTestModel());
    EXPECT_EQ(mode(), DisplayMode::AsLoaded);
    EXPECT_EQ(shownPolygonMode(), GL_FILL);
    EXPECT_TRUE(isTextured(shownGeometry()));
}

TEST_F(DisplayModeTest, PointCloudShowsPoints) {
    start();
    load(writeTestModel());
    choose(Command::PointCloud);
    EXPECT_EQ(mode(), DisplayMode::PointCloud);
    EXPECT_EQ(shownPolygonMode(), GL_POINT);
    EXPECT_TRUE(isTextured(shownGeometry()));
}

TEST_F(DisplayModeTest, TinTakesThePlaceOfPointCloud) {
    start();
    load(writeTestModel());
    choose(Command::PointCloud);
    clickTool(Command::Tin);
    EXPECT_EQ(mode(), DisplayMode::Tin);
    EXPECT_EQ(shownPolygonMode(), GL_LINE);
    EXPECT_FALSE(menuItem(Command::PointCloud).IsChecked());
    EXPECT_TRUE(menuItem(Command::Tin).IsChecked());
}

TEST_F(DisplayModeTest, GrayShowsNoTextures) {
    start();
    load(writeTestModel());
    choose(Command::Gray);
    EXPECT_EQ(mode(), DisplayMode::Gray);
    EXPECT_EQ(shownPolygonMode(), GL_FILL);
    for (unsigned int unit = 0; unit < 4; ++unit)
        EXPECT_FALSE(isTextured(shownGeometry(), unit));
}

TEST_F(DisplayModeTest, UncheckingShowsTheModelAsLoaded) {
    start();
    load(writeTestModel());
    for (const Command command : {Command::PointCloud, Command::Tin, Command::Gray}) {
        choose(command);
        EXPECT_NE(mode(), DisplayMode::AsLoaded);
        choose(command);
        EXPECT_EQ(mode(), DisplayMode::AsLoaded);
        EXPECT_EQ(shownPolygonMode(), GL_FILL);
        EXPECT_TRUE(isTextured(shownGeometry()));
    }
}

TEST_F(DisplayModeTest, CheckingEndsMeasuring) {
    start();
    load(writeTestModel());
    for (const Command measuring :
         {Command::PointPick, Command::LinePick, Command::AreaPick, Command::AutomaticRoam}) {
        choose(measuring);
        ASSERT_TRUE(menuItem(measuring).IsChecked());
        choose(Command::Tin);
        EXPECT_FALSE(menuItem(measuring).IsChecked());
        EXPECT_FALSE(isToolChecked(measuring));
        EXPECT_TRUE(menuItem(Command::Tin).IsChecked());
        choose(Command::Tin);
    }
}

TEST_F(DisplayModeTest, UncheckingDoesNotEndMeasuring) {
    start();
    load(writeTestModel());
    choose(Command::Tin);
    choose(Command::LinePick);
    choose(Command::Tin);
    EXPECT_TRUE(menuItem(Command::LinePick).IsChecked());
    EXPECT_TRUE(isToolChecked(Command::LinePick));
}

TEST_F(DisplayModeTest, MeasuringKeepsTheMode) {
    start();
    load(writeTestModel());
    choose(Command::Tin);
    choose(Command::AreaPick);
    EXPECT_TRUE(menuItem(Command::Tin).IsChecked());
    EXPECT_TRUE(isToolChecked(Command::Tin));
    EXPECT_EQ(mode(), DisplayMode::Tin);
}

TEST_F(DisplayModeTest, SecondModelIsGrayWithoutACheck) {
    start();
    load(writeTestModel());
    choose(Command::Gray);
    load(writeTestModel("second.osgb"));
    EXPECT_FALSE(menuItem(Command::Gray).IsChecked());
    EXPECT_FALSE(isToolChecked(Command::Gray));
    EXPECT_EQ(mode(), DisplayMode::Gray);
    EXPECT_EQ(shownPolygonMode(), GL_FILL);
    EXPECT_FALSE(isTextured(shownGeometry()));
}

TEST_F(DisplayModeTest, GrayOnAndOffAfterASecondModelShowsItAsLoaded) {
    start();
    load(writeTestModel());
    choose(Command::Gray);
    load(writeTestModel("second.osgb"));
    choose(Command::Gray);
    EXPECT_TRUE(menuItem(Command::Gray).IsChecked());
    choose(Command::Gray);
    runFor(0.3);
    EXPECT_EQ(mode(), DisplayMode::AsLoaded);
    EXPECT_TRUE(isTextured(shownGeometry()));
}

TEST_F(DisplayModeTest, OneCallbackServesAllModels) {
    start();
    load(writeTestModel());
    const osg::ref_ptr<osg::Node> former = frame()->loader().modelNode();
    const osg::ref_ptr<osg::Callback> callback = former->getUpdateCallback();
    ASSERT_EQ(callback, frame()->loader().modelCallback());
    load(writeTestModel("second.osgb"));
    EXPECT_NE(frame()->loader().modelNode(), former);
    EXPECT_EQ(frame()->loader().modelNode()->getUpdateCallback(), callback);
}

} // namespace orbisk::test
