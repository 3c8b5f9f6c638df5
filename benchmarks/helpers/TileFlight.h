#pragma once

#include "helpers/FrameWatch.h"
#include "roam/RoamPath.h"

#include <osg/AnimationPath>
#include <osg/GraphicsContext>
#include <osg/ref_ptr>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <numeric>
#include <vector>

namespace orbisk::bench {

/// A roam over the tile tree of the samples, looking ahead and down: lanes to and fro over the
/// whole of it, so that tiles come and go all the time.
inline osg::ref_ptr<osg::AnimationPath> makeTileFlight() {
    constexpr double side = 1000.0;
    constexpr double lanes = 5.0;
    constexpr double ground = 600.0;
    RoamParameters parameters;
    parameters.height = 60.0;
    parameters.pitch = 35.0;
    parameters.secondsPerMetre = 1.0 / 200.0;
    TravelPath points;
    for (int lane = 0; lane <= static_cast<int>(lanes); ++lane) {
        const double x = side * lane / lanes;
        points.emplace_back(x, lane % 2 == 0 ? 0.0 : side, ground);
        points.emplace_back(x, lane % 2 == 0 ? side : 0.0, ground);
    }
    points.push_back(points.front());
    points.push_back(points.front());
    return buildRoamPath(points, parameters);
}

/// Notes when each frame of a flight is shown.
class FlightLog : public osg::GraphicsContext::SwapCallback {
public:
    void swapBuffersImplementation(osg::GraphicsContext* context) override {
        context->swapBuffersImplementation();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_shown.push_back(Clock::now());
    }

    /// Forgets what was before: the flight begins.
    void begin() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_shown.clear();
    }

    /// Milliseconds from frame to frame.
    std::vector<double> intervals() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<double> intervals;
        for (std::size_t i = 1; i < m_shown.size(); ++i)
            intervals.push_back(
                std::chrono::duration<double, std::milli>(m_shown[i] - m_shown[i - 1]).count());
        return intervals;
    }

private:
    std::mutex m_mutex; ///< frames are shown on the thread that draws
    std::vector<Clock::time_point> m_shown;
};

/// The mean, and the figure that 99 of 100 are below; zeros where there are none.
struct MeanAndSlow {
    explicit MeanAndSlow(std::vector<double> figures) {
        constexpr double part = 0.99;
        if (figures.empty())
            return;
        mean = std::accumulate(figures.begin(), figures.end(), 0.0) /
               static_cast<double>(figures.size());
        const auto place = figures.begin() +
                           static_cast<std::ptrdiff_t>(part * static_cast<double>(figures.size()));
        std::nth_element(figures.begin(), place, figures.end());
        slow = *place;
    }

    double mean = 0.0;
    double slow = 0.0;
};

/// Prints how a flight went, on one line: mean and slow frame time in ms, peak memory of the whole
/// and of its first half in KiB, mean and slow pick time in ms, width and height of the view in
/// pixels.
inline void printFlight(const std::vector<double>& frames, long halfTimePeak,
                        const std::vector<double>& picks, int width, int height) {
    const MeanAndSlow frame(frames);
    const MeanAndSlow pick(picks);
    std::printf("%.3f %.3f %ld %ld %.4f %.4f %d %d\n", frame.mean, frame.slow, peakMemory(),
                halfTimePeak, pick.mean, pick.slow, width, height);
    std::fflush(stdout);
}

} // namespace orbisk::bench
