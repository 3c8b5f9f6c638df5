// Time from opening a large model to its first frame, in the program and in the library's own
// viewer.

#include "support/FirstFrame.h"
#include "support/Report.h"

namespace {

constexpr int repetitions = 7;
const orbisk::bench::Subject subject{
    "open 100 MB model, to first frame", "ms", orbisk::bench::Choice::Median,
    orbisk::bench::Wanted{orbisk::bench::Wanted::Bound::AtMost, 1.10}};

} // namespace

int main(int argc, char** argv) {
    using namespace orbisk::bench;
    return Report::run(argc, argv, [](Report& report) {
        if (!report.wants(subject.name))
            return;
        const FirstFrame firstFrame;
        report.add(subject, interleave(
                                repetitions, [&] { return firstFrame.inProgram().milliseconds; },
                                [&] { return firstFrame.inLibrary().milliseconds; }));
    });
}
