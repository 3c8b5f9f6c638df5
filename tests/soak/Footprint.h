#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct _XDisplay;

namespace orbisk::test {

/// What a process holds at one moment.
struct Footprint {
    double heapKibibytes = 0.0;     ///< taken from the heap and not given back
    double residentKibibytes = 0.0; ///< in memory, after free pages were given back
    double threads = 0.0;
    double files = 0.0;
    double serverResources = 0.0; ///< windows, pixmaps, cursors... that the X server keeps
};

/// One figure of a footprint, by name.
struct FootprintFigure {
    const char* name;
    double Footprint::*field;
};

/// All figures of a footprint.
const std::vector<FootprintFigure>& footprintFigures();

/// Takes footprints of this process.
class FootprintMeter {
public:
    /// Throws where there is no display, or one that does not count resources.
    FootprintMeter();
    ~FootprintMeter();

    FootprintMeter(const FootprintMeter&) = delete;
    FootprintMeter& operator=(const FootprintMeter&) = delete;

    /// What this process holds now; what the meter itself holds is the same each time.
    Footprint take() const;

private:
    double serverResources() const;

    _XDisplay* m_display;
    int m_process;
};

/// The lowest of a figure over the footprints from `begin` on, without `end`: what leaks is in each
/// of them, what is kept in store for a while is not.
double lowestOf(const std::vector<Footprint>& footprints, std::size_t begin, std::size_t end,
                double Footprint::*field);

} // namespace orbisk::test
