#include "support/GuiTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <wx/dcclient.h>
#include <wx/uiaction.h>

namespace orbisk::test {

using Event = osgGA::GUIEventAdapter;

class CanvasEventTest : public GuiTest {
protected:
    /// Sends a mouse event to the canvas, past the window system.
    static void send(wxEventType type, const wxPoint& place, int button = wxMOUSE_BTN_NONE) {
        wxMouseEvent event(type);
        event.SetEventObject(frame()->canvas());
        event.SetPosition(place);
        event.m_leftDown = button == wxMOUSE_BTN_LEFT;
        event.m_middleDown = button == wxMOUSE_BTN_MIDDLE;
        event.m_rightDown = button == wxMOUSE_BTN_RIGHT;
        event.m_aux1Down = button == wxMOUSE_BTN_AUX1;
        event.m_aux2Down = button == wxMOUSE_BTN_AUX2;
        frame()->canvas()->ProcessWindowEvent(event);
    }

    static void turnWheel(int rotation, int delta = 120, int lines = 3) {
        wxMouseEvent event(wxEVT_MOUSEWHEEL);
        event.m_wheelRotation = rotation;
        event.m_wheelDelta = delta;
        event.m_linesPerAction = lines;
        event.SetEventObject(frame()->canvas());
        frame()->canvas()->ProcessWindowEvent(event);
    }

    /// What was put into the viewer's queue since the last call.
    static osgGA::EventQueue::Events queued() {
        osgGA::EventQueue::Events events;
        frame()->canvas()->graphicsWindow()->getEventQueue()->takeEvents(events);
        return events;
    }

    /// The one event that was queued; null and a failure if there is another number of them.
    static osg::ref_ptr<Event> onlyQueued() {
        const auto events = queued();
        EXPECT_EQ(events.size(), 1u);
        return events.size() == 1 ? events.front()->asGUIEventAdapter() : nullptr;
    }

    void startWithModel() {
        start();
        load(writeTestModel());
        queued();
    }

    static osg::Matrixd viewMatrix() {
        return frame()->viewer().osgViewer()->getCamera()->getViewMatrix();
    }
};

TEST_F(CanvasEventTest, WheelTurnsTheRequiredWay) {
    startWithModel();
    const struct {
        int rotation;
        Event::ScrollingMotion motion;
    } turns[] = {{120, Event::SCROLL_DOWN}, {360, Event::SCROLL_DOWN}, {-120, Event::SCROLL_UP},
                 {-240, Event::SCROLL_UP},  {30, Event::SCROLL_DOWN},  {-30, Event::SCROLL_DOWN},
                 {-119, Event::SCROLL_DOWN}};
    for (const auto& turn : turns) {
        turnWheel(turn.rotation);
        const auto event = onlyQueued();
        ASSERT_TRUE(event);
        EXPECT_EQ(event->getEventType(), Event::SCROLL);
        EXPECT_EQ(event->getScrollingMotion(), turn.motion) << turn.rotation;
    }
}

TEST_F(CanvasEventTest, WheelWithoutLinesScrollsDown) {
    startWithModel();
    turnWheel(-120, 120, 0);
    const auto event = onlyQueued();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->getScrollingMotion(), Event::SCROLL_DOWN);
}

TEST_F(CanvasEventTest, ButtonsAreRenumberedOnPress) {
    startWithModel();
    const struct {
        wxEventType type;
        int number;
    } buttons[] = {{wxEVT_LEFT_DOWN, Event::LEFT_MOUSE_BUTTON},
                   {wxEVT_RIGHT_DOWN, Event::MIDDLE_MOUSE_BUTTON},
                   {wxEVT_MIDDLE_DOWN, Event::RIGHT_MOUSE_BUTTON}};
    for (const auto& button : buttons) {
        frame()->canvas()->graphicsWindow()->getEventQueue()->getCurrentEventState()->setButtonMask(
            0);
        send(button.type, wxPoint(31, 47));
        const auto event = onlyQueued();
        ASSERT_TRUE(event);
        EXPECT_EQ(event->getEventType(), Event::PUSH);
        EXPECT_EQ(event->getButton(), button.number);
        EXPECT_EQ(event->getX(), 31.0f);
        EXPECT_EQ(event->getY(), 47.0f);
    }
}

TEST_F(CanvasEventTest, ButtonsAreRenumberedOnRelease) {
    startWithModel();
    const struct {
        wxEventType type;
        int number;
    } buttons[] = {{wxEVT_LEFT_UP, Event::LEFT_MOUSE_BUTTON},
                   {wxEVT_RIGHT_UP, Event::MIDDLE_MOUSE_BUTTON},
                   {wxEVT_MIDDLE_UP, Event::RIGHT_MOUSE_BUTTON}};
    for (const auto& button : buttons) {
        send(button.type, wxPoint(31, 47));
        const auto event = onlyQueued();
        ASSERT_TRUE(event);
        EXPECT_EQ(event->getEventType(), Event::RELEASE);
        EXPECT_EQ(event->getButton(), button.number);
    }
}

TEST_F(CanvasEventTest, MotionIsForwardedOnlyWithAButtonDown) {
    startWithModel();
    send(wxEVT_MOTION, wxPoint(10, 20));
    EXPECT_TRUE(queued().empty());
    for (const int button : {wxMOUSE_BTN_LEFT, wxMOUSE_BTN_MIDDLE, wxMOUSE_BTN_RIGHT,
                             wxMOUSE_BTN_AUX1, wxMOUSE_BTN_AUX2}) {
        send(wxEVT_MOTION, wxPoint(10, 20), button);
        const auto event = onlyQueued();
        ASSERT_TRUE(event) << button;
        EXPECT_EQ(event->getX(), 10.0f);
        EXPECT_EQ(event->getY(), 20.0f);
    }
}

TEST_F(CanvasEventTest, EventsCarryTheQueuesTime) {
    startWithModel();
    osgGA::EventQueue& queue = *frame()->canvas()->graphicsWindow()->getEventQueue();
    const double before = queue.getTime();
    turnWheel(120);
    const auto event = onlyQueued();
    ASSERT_TRUE(event);
    EXPECT_GE(event->getTime(), before);
    EXPECT_LE(event->getTime(), queue.getTime());
    EXPECT_EQ(event->getMouseYOrientation(), Event::Y_INCREASING_DOWNWARDS);
}

TEST_F(CanvasEventTest, BeforeAModelOnlyThePositionsAreRecorded) {
    start();
    EXPECT_EQ(frame()->canvas()->graphicsWindow(), nullptr);
    send(wxEVT_LEFT_DOWN, wxPoint(31, 47));
    EXPECT_EQ(frame()->canvas()->pressPosition(), wxPoint(31, 47));
    EXPECT_EQ(frame()->canvas()->lastPosition(), wxPoint(31, 47));
    send(wxEVT_LEFT_UP, wxPoint(32, 48));
    send(wxEVT_MOTION, wxPoint(33, 49), wxMOUSE_BTN_LEFT);
    turnWheel(120);
    EXPECT_EQ(frame()->canvas()->pressPosition(), wxPoint(31, 47));
    EXPECT_FALSE(frame()->viewer().exists());
}

TEST_F(CanvasEventTest, EveryButtonDownRecordsItsPosition) {
    startWithModel();
    int place = 10;
    for (const auto type : {wxEVT_LEFT_DOWN, wxEVT_MIDDLE_DOWN, wxEVT_RIGHT_DOWN}) {
        send(type, wxPoint(place, place + 1));
        EXPECT_EQ(frame()->canvas()->pressPosition(), wxPoint(place, place + 1));
        EXPECT_EQ(frame()->canvas()->lastPosition(), wxPoint(place, place + 1));
        ++place;
    }
}

TEST_F(CanvasEventTest, ResizeBeforeAModelDoesNothing) {
    start();
    frame()->canvas()->SetSize(333, 222);
    wxSizeEvent event(wxSize(333, 222));
    frame()->canvas()->ProcessWindowEvent(event);
    EXPECT_EQ(frame()->canvas()->graphicsWindow(), nullptr);
    EXPECT_FALSE(frame()->viewer().exists());
}

TEST_F(CanvasEventTest, ViewportAndAspectFollowTheCanvas) {
    startWithModel();
    for (const wxSize size : {wxSize(700, 650), wxSize(1000, 500)}) {
        frame()->SetSize(size);
        runFor(0.5);
        const osg::Camera& camera = *frame()->viewer().osgViewer()->getCamera();
        const wxSize client = frame()->canvas()->GetClientSize();
        EXPECT_EQ(camera.getViewport()->x(), 0.0);
        EXPECT_EQ(camera.getViewport()->y(), 0.0);
        EXPECT_EQ(camera.getViewport()->width(), client.x);
        EXPECT_EQ(camera.getViewport()->height(), client.y);
        double fovy = 0;
        double aspect = 0;
        double nearPlane = 0;
        double farPlane = 0;
        camera.getProjectionMatrixAsPerspective(fovy, aspect, nearPlane, farPlane);
        EXPECT_NEAR(fovy, 30.0, 0.01);
        EXPECT_NEAR(aspect, static_cast<double>(client.x) / client.y, 1e-3);
        EXPECT_EQ(frame()->canvas()->graphicsWindow()->getTraits()->width, client.x);
    }
}

TEST_F(CanvasEventTest, ResizeQueuesOneEvent) {
    startWithModel();
    wxSizeEvent event(frame()->canvas()->GetSize());
    frame()->canvas()->ProcessWindowEvent(event);
    const auto resize = onlyQueued();
    ASSERT_TRUE(resize);
    EXPECT_EQ(resize->getEventType(), Event::RESIZE);
    EXPECT_EQ(resize->getWindowWidth(), frame()->canvas()->GetClientSize().x);
    EXPECT_EQ(resize->getWindowHeight(), frame()->canvas()->GetClientSize().y);
}

TEST_F(CanvasEventTest, KeysDoNothing) {
    startWithModel();
    frame()->canvas()->SetFocus();
    runFor(0.3);
    const osg::Matrixd before = viewMatrix();
    const int modeBefore = static_cast<int>(frame()->loader().modelCallback()->mode);
    int pressed = 0;
    frame()->Bind(wxEVT_CHAR_HOOK, [&pressed](wxKeyEvent& event) {
        event.Skip();
        ++pressed;
    });
    wxUIActionSimulator keys;
    for (const int key : {int(WXK_SPACE), int('S'), int('W'), int(WXK_HOME), int(WXK_LEFT),
                          int(WXK_ESCAPE), int('2')}) {
        keys.Char(key);
        runFor(0.1);
    }
    EXPECT_EQ(pressed, 7);
    EXPECT_EQ(viewMatrix(), before);
    EXPECT_FALSE(frame()->viewer().osgViewer()->done());
    EXPECT_EQ(static_cast<int>(frame()->loader().modelCallback()->mode), modeBefore);
    for (const int key : {int(WXK_ESCAPE), int('S')}) {
        wxKeyEvent event(wxEVT_KEY_DOWN);
        event.m_keyCode = key;
        queued();
        frame()->canvas()->ProcessWindowEvent(event);
        EXPECT_TRUE(queued().empty());
    }
}

TEST_F(CanvasEventTest, PointerThatEntersGivesFocus) {
    startWithModel();
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(*frame(), wxPoint(30, 5)));
    runFor(0.2);
    frame()->bars().toolBar()->SetFocus();
    runFor(0.2);
    ASSERT_NE(wxWindow::FindFocus(), frame()->canvas());
    mouse.MouseMove(onScreen(*frame()->canvas(), wxPoint(200, 200)));
    EXPECT_TRUE(runUntil([] { return wxWindow::FindFocus() == frame()->canvas(); }, 10.0));
}

TEST_F(CanvasEventTest, BackgroundIsNeverErased) {
    startWithModel();
    wxClientDC dc(frame()->canvas());
    wxEraseEvent event(frame()->canvas()->GetId(), &dc);
    event.SetEventObject(frame()->canvas());
    EXPECT_TRUE(frame()->canvas()->GetEventHandler()->ProcessEventLocally(event));
    EXPECT_FALSE(event.GetSkipped());
}

} // namespace orbisk::test
