// The relief sampled once on a grid, for everything that asks for it millions of times.
#pragma once

#include "Terrain.h"

#include <vector>

namespace samples {

/// Relief at one place.
struct ReliefSample {
    double height = 0.0;
    double rise = 0.0;
    double slope = 0.0;    ///< metres per metre
    double relative = 0.0; ///< height above the mean of the surroundings
    osg::Vec3d normal;
};

/// Heights every metre, interpolated in between.
class ReliefGrid {
public:
    explicit ReliefGrid(const Terrain& terrain);
    ReliefSample at(double x, double y) const;
    double height(double x, double y) const;

private:
    struct Layer {
        int size = 0;
        double spacing = 1.0;
        std::vector<float> values;
        std::size_t index(int column, int row) const {
            return static_cast<std::size_t>(row) * static_cast<std::size_t>(size) +
                   static_cast<std::size_t>(column);
        }
        double at(double x, double y) const;
    };

    Layer m_heights;
    Layer m_rises;
    Layer m_means;
};

} // namespace samples
