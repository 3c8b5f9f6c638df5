// The measurement table of a hundred thousand vertices: opened, against a dialog whose plain grid
// is filled cell by cell; and a vertex added to it while it is open, against a small table.

#include "measure/PickDialog.h"
#include "support/Report.h"

#include <wx/app.h>
#include <wx/dialog.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/grid.h>
#include <wx/init.h>

#include <chrono>
#include <cmath>
#include <stdexcept>
#include <string>

namespace {

using namespace orbisk;
using namespace orbisk::bench;
using Clock = std::chrono::steady_clock;

constexpr int largeLineCount = 1000;
constexpr int smallLineCount = 10;
constexpr int verticesPerLine = 100;
constexpr int openings = 5;
constexpr int growths = 21;
constexpr int verticesAGrowth = 1000;
constexpr int columns = 6;
constexpr int totalColumn = 5;
const wxSize dialogSize(800, 800);

const Subject opening{"open the table of 100 000 rows", "ms", Choice::Lowest,
                      Wanted{Wanted::Bound::AtMost, 0.2}};
const Subject appending{"append a row to 100 000, to 1 000", "us", Choice::Lowest,
                        Wanted{Wanted::Bound::AtMost, 1.5}};

class NoEdits : public MeasurementEdits {
public:
    void pointsChanged() override {}
    void linesChanged(bool) override {}
    void areasChanged(bool) override {}
    void travelChanged() override {}
    void tableClosed() override {}
};

MeasurementSet makeLines(int count) {
    MeasurementSet set;
    for (int i = 0; i < count; ++i) {
        set.lines.emplace_back();
        for (int k = 0; k < verticesPerLine; ++k)
            set.lines.back().emplace_back(512000.0 + i, 5412000.0 + k * 1.37, 300.0 + std::sin(k));
    }
    return set;
}

/// Lets the windows come up and draw.
void runEvents() {
    wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
}

/// Fills rows with a line's texts, as a plain grid takes them.
void fillLine(wxGrid& grid, int row, const MeasureLine& line) {
    double sum = 0.0;
    for (std::size_t k = 0; k < line.size(); ++k) {
        const double length = k == 0 ? 0.0 : (line[k] - line[k - 1]).length();
        sum += length;
        const int at = row + static_cast<int>(k);
        grid.SetCellValue(at, 0, wxString::Format("%d", static_cast<int>(k + 1)));
        for (int axis = 0; axis < 3; ++axis)
            grid.SetCellValue(at, axis + 1, wxString::Format("%.3f", line[k][axis]));
        grid.SetCellValue(at, totalColumn - 1, wxString::Format("%.3f", length));
    }
    grid.SetCellSize(row, totalColumn, static_cast<int>(line.size()), 1);
    grid.SetCellAlignment(row, totalColumn, wxALIGN_CENTRE, wxALIGN_CENTRE);
    grid.SetCellValue(row, totalColumn, wxString::Format("%.3f", sum));
}

class PlainTable : public wxDialog {
public:
    PlainTable(wxWindow* parent, const MeasurementSet& set)
        : wxDialog(parent, wxID_ANY, "Plain table"), m_grid(new wxGrid(this, wxID_ANY)) {
        m_grid->CreateGrid(0, columns, wxGrid::wxGridSelectRows);
        int row = 0;
        for (const MeasureLine& line : set.lines) {
            m_grid->InsertRows(row, static_cast<int>(line.size()));
            fillLine(*m_grid, row, line);
            row += static_cast<int>(line.size());
        }
    }

private:
    wxGrid* m_grid;
};

/// Milliseconds until a dialog is made and shown; it is gone again afterwards.
template <class Make>
double timeToOpen(const Make& make) {
    const auto begin = Clock::now();
    wxDialog* dialog = make();
    dialog->SetClientSize(dialogSize);
    dialog->Show();
    runEvents();
    dialog->Update();
    const std::chrono::duration<double, std::milli> time = Clock::now() - begin;
    dialog->Destroy();
    wxTheApp->ProcessIdle();
    runEvents();
    return time.count();
}

/// A shown table whose current line grows.
class GrowingTable {
public:
    GrowingTable(wxWindow& frame, int lineCount)
        : m_set(makeLines(lineCount)), m_dialog(new PickDialog(&frame, m_set, m_edits)) {
        m_dialog->Show();
        runEvents();
    }

    ~GrowingTable() {
        m_dialog->Destroy();
        wxTheApp->ProcessIdle();
    }

    GrowingTable(const GrowingTable&) = delete;
    GrowingTable& operator=(const GrowingTable&) = delete;

    /// Microseconds a vertex; the line is as short as before thereafter.
    double grow() {
        const std::size_t former = m_set.lines.back().size();
        const auto begin = Clock::now();
        for (int i = 0; i < verticesAGrowth; ++i) {
            m_set.lines.back().emplace_back(i, i, i);
            m_dialog->appendLineVertexRow();
        }
        const std::chrono::duration<double, std::micro> time = Clock::now() - begin;
        m_set.lines.back().resize(former);
        m_dialog->rebuildLineGrid();
        runEvents();
        return time.count() / verticesAGrowth;
    }

private:
    NoEdits m_edits;
    MeasurementSet m_set;
    PickDialog* m_dialog;
};

void measureOpening(Report& report, wxWindow& frame) {
    MeasurementSet set = makeLines(largeLineCount);
    NoEdits edits;
    report.add(opening,
               interleave(
                   openings,
                   [&] { return timeToOpen([&] { return new PickDialog(&frame, set, edits); }); },
                   [&] { return timeToOpen([&] { return new PlainTable(&frame, set); }); }));
}

void measureAppending(Report& report, wxWindow& frame) {
    GrowingTable large(frame, largeLineCount);
    GrowingTable small(frame, smallLineCount);
    report.add(appending, interleave(
                              growths, [&] { return large.grow(); }, [&] { return small.grow(); }));
}

void measure(Report& report) {
    wxApp::SetInstance(new wxApp);
    const wxInitializer toolkit;
    if (!toolkit.IsOk())
        throw std::runtime_error("the toolkit does not start");
    wxGUIEventLoop loop;
    const wxEventLoopActivator active(&loop);
    auto* frame = new wxFrame(nullptr, wxID_ANY, "Frame");
    frame->Show();
    runEvents();
    if (report.wants(opening.name))
        measureOpening(report, *frame);
    if (report.wants(appending.name))
        measureAppending(report, *frame);
    frame->Destroy();
    wxTheApp->ProcessIdle();
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
