// OpenInProgram MODEL [measure]
//
// Starts the program in the working directory, opens MODEL as its menu does and prints how that
// went, see printOpening. With "measure" a measuring tool is switched on first, and what it makes
// picking fast with is built.

#include "app/OrbiskApp.h"
#include "app/OrbiskMain.h"
#include "helpers/FrameWatch.h"
#include "platform/Platform.h"
#include "view/OSGCanvas.h"

#include <wx/app.h>
#include <wx/timer.h>

#include <cstdlib>
#include <memory>

namespace {

using orbisk::bench::Clock;
using orbisk::bench::FrameWatch;

constexpr int settleMilliseconds = 700; ///< until the program's start is really over
constexpr int buildMilliseconds = 3000; ///< several times what the trees of a large model take

class Opening {
public:
    Opening(orbisk::OrbiskFrame& frame, wxString path, bool measures)
        : m_frame(frame), m_path(std::move(path)), m_measures(measures) {
        // Runs before the frame's own handler, so that the first frame of all is seen.
        m_frame.Bind(wxEVT_IDLE, &Opening::onIdle, this);
        m_start.Bind(wxEVT_TIMER, &Opening::onStart, this);
        m_built.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { end(); });
        m_start.StartOnce(settleMilliseconds);
    }

private:
    void onStart(wxTimerEvent&) {
        m_begin = Clock::now();
        m_frame.openFile(m_path);
    }

    void onIdle(wxIdleEvent& event) {
        event.Skip();
        if (m_watch || !m_frame.viewer().exists())
            return;
        m_watch = new FrameWatch([this] { m_frame.CallAfter([this] { onFirstFrames(); }); });
        m_frame.canvas()->graphicsWindow()->setSwapCallback(m_watch.get());
    }

    void onFirstFrames() {
        if (!m_measures)
            end();
        m_frame.interaction().setLineMode(true);
        m_built.StartOnce(buildMilliseconds);
    }

    /// What closing costs is no part of what is measured.
    [[noreturn]] void end() const {
        const orbisk::ViewSize size = m_frame.canvas()->pixelSize();
        orbisk::bench::printOpening(m_watch->firstShown() - m_begin, size.w, size.h);
        std::_Exit(EXIT_SUCCESS);
    }

    orbisk::OrbiskFrame& m_frame;
    wxString m_path;
    bool m_measures;
    wxTimer m_start;
    wxTimer m_built;
    Clock::time_point m_begin;
    osg::ref_ptr<FrameWatch> m_watch;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return EXIT_FAILURE;
    orbisk::platform::prepareProcess();
    const wxString path = orbisk::platform::pathText(argv[1]);
    const bool measures = argc > 2;
    argc = 1;
    if (!wxEntryStart(argc, argv) || !wxTheApp->CallOnInit())
        return EXIT_FAILURE;
    const Opening opening(dynamic_cast<orbisk::OrbiskFrame&>(*wxTheApp->GetTopWindow()), path,
                          measures);
    wxTheApp->OnRun();
    return EXIT_FAILURE;
}
