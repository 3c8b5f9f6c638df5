#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

namespace orbisk::test {

/// On a display of 200 %: two physical pixels to a unit of the toolkit.
class ScaleTest : public GuiTest {
protected:
    void startWithModel() {
        writeSettings(R"({"x":10,"y":10,"w":600,"h":460})", languageEnglish);
        start();
        ASSERT_EQ(frame()->GetContentScaleFactor(), 2.0);
        load(writeTestModel());
    }

    static wxSize clientSize() { return frame()->canvas()->GetClientSize(); }

    static const osg::Viewport& viewport() {
        return *frame()->viewer().osgViewer()->getCamera()->getViewport();
    }

    static osgGA::EventQueue::Events queued() {
        osgGA::EventQueue::Events events;
        frame()->canvas()->graphicsWindow()->getEventQueue()->takeEvents(events);
        return events;
    }
};

TEST_F(ScaleTest, ViewportCountsPhysicalPixels) {
    if (!inEnvironment({{"GDK_SCALE", "2"}}))
        return;
    startWithModel();
    EXPECT_EQ(viewport().width(), 2.0 * clientSize().x);
    EXPECT_EQ(viewport().height(), 2.0 * clientSize().y);
    frame()->SetSize(500, 400);
    runFor(0.5);
    EXPECT_EQ(viewport().width(), 2.0 * clientSize().x);
    EXPECT_EQ(viewport().height(), 2.0 * clientSize().y);
    EXPECT_EQ(frame()->canvas()->graphicsWindow()->getTraits()->width, 2 * clientSize().x);
}

TEST_F(ScaleTest, EventsCountPhysicalPixels) {
    if (!inEnvironment({{"GDK_SCALE", "2"}}))
        return;
    startWithModel();
    queued();
    wxMouseEvent event(wxEVT_LEFT_DOWN);
    event.SetPosition(wxPoint(31, 47));
    frame()->canvas()->ProcessWindowEvent(event);
    const auto events = queued();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events.front()->asGUIEventAdapter()->getX(), 62.0f);
    EXPECT_EQ(events.front()->asGUIEventAdapter()->getY(), 94.0f);
    EXPECT_EQ(frame()->canvas()->pressPosition(), wxPoint(31, 47));
}

TEST_F(ScaleTest, ViewportFollowsALanguageSwitch) {
    if (!inEnvironment({{"GDK_SCALE", "2"}}))
        return;
    startWithModel();
    frame()->switchLanguage(languageChinese);
    runFor(0.3);
    EXPECT_EQ(viewport().width(), 2.0 * clientSize().x);
    EXPECT_EQ(viewport().height(), 2.0 * clientSize().y);
}

TEST_F(ScaleTest, PictureFillsTheCanvas) {
    if (!inEnvironment({{"GDK_SCALE", "2"}}))
        return;
    startWithModel();
    // Sky or model stand in each corner of the view, not the background of a part left undrawn.
    const Screen screen;
    const wxRect rect = frame()->canvas()->GetScreenRect();
    const wxSize corner(rect.width / 2, rect.height / 2);
    for (const wxPoint place : {wxPoint(0, 0), wxPoint(1, 0), wxPoint(0, 1), wxPoint(1, 1)}) {
        const wxRect part(rect.x * 2 + place.x * rect.width + corner.x / 2,
                          rect.y * 2 + place.y * rect.height + corner.y / 2, corner.x, corner.y);
        EXPECT_TRUE(runUntil([&] { return screen.colours(part).size() > 3; }, 10.0))
            << place.x << " " << place.y;
    }
}

} // namespace orbisk::test
