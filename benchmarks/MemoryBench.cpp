// Most memory held while a large model is opened and drawn, in the program and in the library's
// own viewer.

#include "support/FirstFrame.h"
#include "support/Report.h"

namespace {

constexpr int repetitions = 3;
const orbisk::bench::Subject subject{
    "open and draw 100 MB model, peak", "MiB", orbisk::bench::Choice::Median,
    orbisk::bench::Wanted{orbisk::bench::Wanted::Bound::AtMost, 1.3}};

} // namespace

int main(int argc, char** argv) {
    using namespace orbisk::bench;
    return Report::run(argc, argv, [](Report& report) {
        if (!report.wants(subject.name))
            return;
        const FirstFrame firstFrame;
        report.add(subject, interleave(
                                repetitions, [&] { return firstFrame.inProgram().peakMebibytes; },
                                [&] { return firstFrame.inLibrary().peakMebibytes; }));
    });
}
