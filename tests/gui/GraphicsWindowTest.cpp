#include "support/GuiTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <wx/uiaction.h>

namespace orbisk::test {

class GraphicsWindowTest : public GuiTest {
protected:
    void startWithModel() {
        start();
        load(writeTestModel());
    }

    static GraphicsWindowWX& window() { return *frame()->canvas()->graphicsWindow(); }
};

TEST_F(GraphicsWindowTest, AnswersAsTheViewerExpects) {
    startWithModel();
    EXPECT_TRUE(window().valid());
    EXPECT_TRUE(window().realizeImplementation());
    EXPECT_TRUE(window().isRealizedImplementation());
    EXPECT_TRUE(window().releaseContextImplementation());
    window().closeImplementation();
    EXPECT_TRUE(frame()->canvas()->IsShownOnScreen());
}

TEST_F(GraphicsWindowTest, IsRealizedWhileTheCanvasIsOnTheScreen) {
    startWithModel();
    frame()->docking().GetPane("Canvas").Hide();
    frame()->docking().Update();
    EXPECT_FALSE(window().isRealizedImplementation());
    frame()->docking().GetPane("Canvas").Show();
    frame()->docking().Update();
    EXPECT_TRUE(window().isRealizedImplementation());
}

TEST_F(GraphicsWindowTest, TakesItsPlaceFromTheCanvas) {
    startWithModel();
    const osg::GraphicsContext::Traits& traits = *window().getTraits();
    EXPECT_EQ(traits.width, frame()->canvas()->GetClientSize().x);
    EXPECT_EQ(traits.height, frame()->canvas()->GetClientSize().y);
    EXPECT_EQ(frame()->viewer().osgViewer()->getCamera()->getGraphicsContext(), &window());
}

TEST_F(GraphicsWindowTest, StateBelongsToItAndCountsItsContext) {
    startWithModel();
    ASSERT_NE(window().getState(), nullptr);
    EXPECT_EQ(window().getState()->getGraphicsContext(), &window());
    EXPECT_GT(osg::GraphicsContext::getMaxContextID() + 1, window().getState()->getContextID());
}

TEST_F(GraphicsWindowTest, NewAdapterTakesANewContextNumber) {
    startWithModel();
    const osg::ref_ptr<GraphicsWindowWX> other = new GraphicsWindowWX(frame()->canvas());
    EXPECT_NE(other->getState()->getContextID(), window().getState()->getContextID());
    EXPECT_EQ(other->getEventQueue()->getCurrentEventState()->getMouseYOrientation(),
              osgGA::GUIEventAdapter::Y_INCREASING_DOWNWARDS);
}

TEST_F(GraphicsWindowTest, OtherOperationsAreNotImplemented) {
    startWithModel();
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    EXPECT_FALSE(window().setWindowDecorationImplementation(false));
    EXPECT_FALSE(window().setWindowRectangleImplementation(1, 2, 3, 4));
    window().getWindowRectangle(x, y, width, height);
    EXPECT_EQ(width, window().getTraits()->width);
}

TEST_F(GraphicsWindowTest, GrabsTheFocus) {
    startWithModel();
    frame()->bars().toolBar()->SetFocus();
    runFor(0.2);
    window().grabFocus();
    EXPECT_TRUE(runUntil([] { return wxWindow::FindFocus() == frame()->canvas(); }, 10.0));
}

TEST_F(GraphicsWindowTest, GrabsTheFocusOnlyWithThePointerInIt) {
    startWithModel();
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(*frame()->bars().toolBar(), wxPoint(5, 5)));
    runFor(0.2);
    frame()->bars().toolBar()->SetFocus();
    runFor(0.2);
    window().grabFocusIfPointerInWindow();
    runFor(0.2);
    EXPECT_NE(wxWindow::FindFocus(), frame()->canvas());
    mouse.MouseMove(onScreen(*frame()->canvas(), wxPoint(200, 200)));
    runFor(0.2);
    frame()->bars().toolBar()->SetFocus();
    runFor(0.2);
    window().grabFocusIfPointerInWindow();
    EXPECT_TRUE(runUntil([] { return wxWindow::FindFocus() == frame()->canvas(); }, 10.0));
}

} // namespace orbisk::test
