#include "ReliefGrid.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kHeightSpacing = 1.0;
constexpr double kRiseSpacing = 4.0;

} // namespace

double ReliefGrid::Layer::at(double x, double y) const {
    const double limit = size - 1.001;
    const double gx = std::clamp(x / spacing, 0.0, limit);
    const double gy = std::clamp(y / spacing, 0.0, limit);
    const int i = static_cast<int>(gx);
    const int j = static_cast<int>(gy);
    const auto value = [&](int column, int row) {
        return static_cast<double>(values[index(column, row)]);
    };
    return mix(mix(value(i, j), value(i + 1, j), gx - i),
               mix(value(i, j + 1), value(i + 1, j + 1), gx - i), gy - j);
}

ReliefGrid::ReliefGrid(const Terrain& terrain) {
    m_heights.spacing = kHeightSpacing;
    m_rises.spacing = kRiseSpacing;
    m_means.spacing = kRiseSpacing;
    for (Layer* layer : {&m_heights, &m_rises, &m_means}) {
        layer->size = static_cast<int>(kExtent / layer->spacing) + 1;
        layer->values.resize(layer->index(0, layer->size));
    }
    const auto fill = [](Layer& layer, const auto& value) {
        for (int j = 0; j < layer.size; ++j) {
            for (int i = 0; i < layer.size; ++i) {
                layer.values[layer.index(i, j)] =
                    static_cast<float>(value(i * layer.spacing, j * layer.spacing));
            }
        }
    };
    fill(m_heights, [&](double x, double y) { return terrain.height(x, y); });
    fill(m_rises, [&](double x, double y) { return terrain.rise(x, y); });
    fill(m_means, [&](double x, double y) {
        // A sparse ring is enough to tell crests from hollows.
        constexpr double kNear = 14.0;
        constexpr double kFar = 28.0;
        double sum = 0.0;
        for (const double r : {kNear, kFar}) {
            sum += height(x + r, y) + height(x - r, y) + height(x, y + r) + height(x, y - r);
        }
        return sum / 8.0;
    });
}

double ReliefGrid::height(double x, double y) const {
    return m_heights.at(x, y);
}

ReliefSample ReliefGrid::at(double x, double y) const {
    constexpr double kStep = 1.0;
    ReliefSample sample;
    sample.height = m_heights.at(x, y);
    sample.rise = m_rises.at(x, y);
    sample.relative = sample.height - m_means.at(x, y);
    const double dx = (m_heights.at(x + kStep, y) - m_heights.at(x - kStep, y)) / (2.0 * kStep);
    const double dy = (m_heights.at(x, y + kStep) - m_heights.at(x, y - kStep)) / (2.0 * kStep);
    sample.slope = std::hypot(dx, dy);
    sample.normal = osg::Vec3d(-dx, -dy, 1.0);
    sample.normal.normalize();
    return sample;
}

} // namespace samples
