#include "app/InitPanel.h"
#include "support/GuiTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

namespace orbisk::test {

using StartTest = GuiTest;

TEST_F(StartTest, ShowsOnlyTheWelcomePanelBeforeAModel) {
    start();
    EXPECT_TRUE(frame()->welcomePanel()->IsShownOnScreen());
    EXPECT_FALSE(frame()->canvas()->IsShownOnScreen());
    EXPECT_FALSE(frame()->viewer().exists());
}

TEST_F(StartTest, ReplacesTheWelcomePanelByTheCanvas) {
    start();
    load(writeTestModel());
    EXPECT_EQ(frame()->welcomePanel(), nullptr);
    EXPECT_TRUE(frame()->canvas()->IsShownOnScreen());
    EXPECT_TRUE(frame()->viewer().exists());
}

} // namespace orbisk::test
