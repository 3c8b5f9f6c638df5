// What becomes of the measurement table, and of what it has open, when it has to go.

#include "measure/MeasurementSet.h"
#include "measure/PickDialog.h"
#include "support/GuiTest.h"
#include "support/Screen.h"
#include "support/TestModels.h"
#include "support/TestReader.h"
#include "view/OSGCanvas.h"

#include <wx/grid.h>
#include <wx/timer.h>
#include <wx/uiaction.h>

#include <functional>

namespace orbisk::test {

class TableLifetimeTest : public GuiTest {
protected:
    void startWithTable() {
        start();
        load(writeTestModel());
        measurementSet().points = {{1, 2, 3}, {4, 5, 6}};
        choose(Command::MeasureTable);
        ASSERT_NE(frame()->measurementTable(), nullptr);
        frame()->measurementTable()->SetSize(wxRect(100, 50, 800, 800));
        runFor(0.3);
    }

    /// Right click at a place of the screen; while the menu is open `act` runs, and later the
    /// escape key is pressed.
    static void actWhileMenuIsOpen(wxWindow& menuOwner, const wxPoint& place,
                                   const std::function<void()>& act) {
        wxTimer timer;
        timer.Bind(wxEVT_TIMER, [&act](wxTimerEvent&) { act(); });
        wxTimer escape;
        escape.Bind(wxEVT_TIMER, [](wxTimerEvent&) { wxUIActionSimulator().Char(WXK_ESCAPE); });
        bool opened = false;
        menuOwner.Bind(wxEVT_MENU_OPEN, [&](wxMenuEvent&) {
            opened = true;
            timer.StartOnce(200);
            escape.StartOnce(1000);
        });
        wxUIActionSimulator mouse;
        mouse.MouseMove(place);
        runFor(0.2);
        mouse.MouseClick(wxMOUSE_BTN_RIGHT);
        runFor(2.0);
        EXPECT_TRUE(opened);
    }

    static wxPoint firstPointRow() {
        const auto& grid = dynamic_cast<const wxGrid&>(
            *wxWindow::FindWindowByName("ID_GRID_POINT", frame()->measurementTable()));
        const wxRect cell = grid.CellToRect(0, 1);
        return onScreen(*grid.GetGridWindow(), cell.GetPosition() + cell.GetSize() / 2);
    }
};

TEST_F(TableLifetimeTest, OtherModelClosesTheTable) {
    startWithTable();
    load(writeTestModel());
    EXPECT_EQ(frame()->measurementTable(), nullptr);
}

TEST_F(TableLifetimeTest, TableMayGoWhileAFolderIsChosen) {
    startWithTable();
    withNextDialog([](wxDialog&) { frame()->measurementTable()->Destroy(); });
    pressSave(*frame()->measurementTable());
    runFor(0.3);
    EXPECT_EQ(frame()->measurementTable(), nullptr);
}

TEST_F(TableLifetimeTest, TableMayGoWhileItsMenuIsOpen) {
    startWithTable();
    actWhileMenuIsOpen(*frame()->measurementTable(), firstPointRow(),
                       [] { frame()->measurementTable()->Destroy(); });
    EXPECT_EQ(frame()->measurementTable(), nullptr);
    EXPECT_EQ(measurementSet().points.size(), 2u);
}

TEST_F(TableLifetimeTest, FrameMayGoWhileTheCanvasMenuIsOpen) {
    start();
    load(writeTestModel());
    choose(Command::AutomaticRoam);
    const wxSize size = frame()->canvas()->GetClientSize();
    actWhileMenuIsOpen(*frame()->canvas(), onScreen(*frame()->canvas(), wxPoint() + size / 2),
                       [] { frame()->Close(true); });
    EXPECT_EQ(frame(), nullptr);
}

TEST_F(TableLifetimeTest, FrameMayGoAfterALoadWhileTheCanvasMenuIsOpen) {
    start();
    load(writeTestModel());
    choose(Command::AutomaticRoam);
    const wxSize size = frame()->canvas()->GetClientSize();
    actWhileMenuIsOpen(*frame()->canvas(), onScreen(*frame()->canvas(), wxPoint() + size / 2), [] {
        frame()->openFile(writeSlowModel("short.slow", "seconds 0.2"));
        frame()->Close();
        EXPECT_TRUE(frame()->loader().isLoading());
    });
    EXPECT_TRUE(runUntil([] { return frame() == nullptr; }));
    EXPECT_EQ(modelsRead(), 1);
}

} // namespace orbisk::test
