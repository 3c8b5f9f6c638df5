// Most memory held while a large model is opened and drawn, in the program and in the library's
// own viewer; and with what each needs to pick on it fast.

#include "support/FirstFrame.h"
#include "support/Report.h"

namespace {

using namespace orbisk::bench;

constexpr int repetitions = 3;
const Subject look{"open and draw 100 MB model, peak", "MiB", Choice::Median,
                   Wanted{Wanted::Bound::AtMost, 1.3}};
const Subject measuring{"open, draw and measure 100 MB model, peak", "MiB", Choice::Median,
                        std::nullopt};

void compare(Report& report, const FirstFrame& firstFrame, const Subject& subject,
             Purpose purpose) {
    if (report.wants(subject.name))
        report.add(subject,
                   interleave(
                       repetitions, [&] { return firstFrame.inProgram(purpose).peakMebibytes; },
                       [&] { return firstFrame.inLibrary(purpose).peakMebibytes; }));
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, [](Report& report) {
        if (!report.wants(look.name) && !report.wants(measuring.name))
            return;
        const FirstFrame firstFrame;
        compare(report, firstFrame, look, Purpose::Look);
        compare(report, firstFrame, measuring, Purpose::Measure);
    });
}
