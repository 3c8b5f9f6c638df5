// FlyInProgram MODEL SECONDS PICK_EVERY_MS
//
// Starts the program in the working directory, opens MODEL, a tile tree, as its menu does, roams
// over it for so many seconds and prints how that went, see printFlight. Where PICK_EVERY_MS is
// not 0, the middle of the view is picked so often.

#include "app/OrbiskApp.h"
#include "app/OrbiskMain.h"
#include "helpers/TileFlight.h"
#include "platform/Platform.h"
#include "view/OSGCanvas.h"

#include <wx/app.h>
#include <wx/timer.h>

#include <cstdlib>
#include <utility>

namespace {

using orbisk::bench::Clock;
using orbisk::bench::FlightLog;

constexpr int settleMilliseconds = 700; ///< until the program's start, or a model's, is over
constexpr int millisecondsPerSecond = 1000;

struct Plan {
    wxString model;
    int seconds = 0;
    int pickEveryMilliseconds = 0;
};

class Flight {
public:
    Flight(orbisk::OrbiskFrame& frame, Plan plan)
        : m_frame(frame), m_plan(std::move(plan)), m_log(new FlightLog) {
        m_frame.Bind(wxEVT_IDLE, &Flight::onIdle, this);
        m_start.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { m_frame.openFile(m_plan.model); });
        m_takeOff.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { takeOff(); });
        m_halfTime.Bind(wxEVT_TIMER,
                        [this](wxTimerEvent&) { m_halfTimePeak = orbisk::bench::peakMemory(); });
        m_landing.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { land(); });
        m_picks.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { pick(); });
        m_start.StartOnce(settleMilliseconds);
    }

private:
    void onIdle(wxIdleEvent& event) {
        event.Skip();
        if (m_isShown || !m_frame.viewer().exists())
            return;
        m_isShown = true;
        m_frame.canvas()->graphicsWindow()->setSwapCallback(m_log.get());
        m_takeOff.StartOnce(settleMilliseconds);
    }

    void takeOff() {
        m_frame.viewer().startRoam(*orbisk::bench::makeTileFlight());
        m_log->begin();
        const int duration = m_plan.seconds * millisecondsPerSecond;
        m_halfTime.StartOnce(duration / 2);
        m_landing.StartOnce(duration);
        if (m_plan.pickEveryMilliseconds > 0)
            m_picks.Start(m_plan.pickEveryMilliseconds);
    }

    void pick() {
        const orbisk::ViewSize size = m_frame.canvas()->pixelSize();
        osg::Vec3d point;
        const auto begin = Clock::now();
        m_frame.viewer().pickSurface()->pickPoint(size.w / 2.0, size.h / 2.0, point);
        m_pickTimes.push_back(
            std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }

    /// What closing costs is no part of what is measured.
    void land() {
        const orbisk::ViewSize size = m_frame.canvas()->pixelSize();
        orbisk::bench::printFlight(m_log->intervals(), m_halfTimePeak, m_pickTimes, size.w, size.h);
        std::_Exit(EXIT_SUCCESS);
    }

    orbisk::OrbiskFrame& m_frame;
    Plan m_plan;
    osg::ref_ptr<FlightLog> m_log;
    wxTimer m_start;
    wxTimer m_takeOff;
    wxTimer m_halfTime;
    wxTimer m_landing;
    wxTimer m_picks;
    bool m_isShown = false;
    long m_halfTimePeak = 0;
    std::vector<double> m_pickTimes;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 4)
        return EXIT_FAILURE;
    orbisk::platform::prepareProcess();
    const Plan plan{orbisk::platform::pathText(argv[1]), std::atoi(argv[2]), std::atoi(argv[3])};
    argc = 1;
    if (!wxEntryStart(argc, argv) || !wxTheApp->CallOnInit())
        return EXIT_FAILURE;
    const Flight flight(dynamic_cast<orbisk::OrbiskFrame&>(*wxTheApp->GetTopWindow()), plan);
    wxTheApp->OnRun();
    return EXIT_FAILURE;
}
