#pragma once

#include <osg/GraphicsContext>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <utility>

namespace orbisk::bench {

using Clock = std::chrono::steady_clock;

/// Notes when a window showed its first frame, and tells once it has shown `framesToShow`.
class FrameWatch : public osg::GraphicsContext::SwapCallback {
public:
    /// A frame or two more than the first: what they allocate belongs to the peak.
    static constexpr int framesToShow = 3;

    /// @param finished is called on the thread that draws.
    explicit FrameWatch(std::function<void()> finished) : m_finished(std::move(finished)) {}

    void swapBuffersImplementation(osg::GraphicsContext* context) override {
        context->swapBuffersImplementation();
        ++m_frames;
        if (m_frames == 1)
            m_firstShown = Clock::now();
        if (m_frames == framesToShow)
            m_finished();
    }

    /// To be asked after the end was told.
    Clock::time_point firstShown() const { return m_firstShown; }

private:
    std::function<void()> m_finished;
    int m_frames = 0;
    Clock::time_point m_firstShown;
};

/// The most memory this process has held so far, in KiB.
inline long peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == "VmHWM:") {
            long kibibytes = 0;
            status >> kibibytes;
            return kibibytes;
        }
    return 0;
}

/// Prints what was measured on one line: milliseconds to the first frame, peak memory in KiB,
/// width and height of the view in pixels.
inline void printOpening(Clock::duration toFirstFrame, int width, int height) {
    const std::chrono::duration<double, std::milli> milliseconds = toFirstFrame;
    std::printf("%.3f %ld %d %d\n", milliseconds.count(), peakMemory(), width, height);
    std::fflush(stdout);
}

} // namespace orbisk::bench
