#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kUnitFromHash = 1.0 / 4294967296.0;
constexpr std::uint32_t kOctaveSeedStep = 101;

double cornerDot(int cellX, int cellY, double dx, double dy, std::uint32_t seed) {
    // Eight fixed directions suffice and need no trigonometry, which differs between C libraries.
    static constexpr double kDiagonal = 0.70710678118654752;
    static constexpr double kDirections[8][2] = {
        {1.0, 0.0},  {kDiagonal, kDiagonal},   {0.0, 1.0},  {-kDiagonal, kDiagonal},
        {-1.0, 0.0}, {-kDiagonal, -kDiagonal}, {0.0, -1.0}, {kDiagonal, -kDiagonal}};
    const auto& direction = kDirections[hashCell(cellX, cellY, seed) >> 29];
    return direction[0] * dx + direction[1] * dy;
}

double fade(double t) {
    return t * t * t * (t * (t * 6.0 - 15.0) + 10.0);
}

} // namespace

std::uint32_t hashCell(int x, int y, std::uint32_t seed) {
    std::uint32_t h = seed * 0x9E3779B9U + 0x7F4A7C15U;
    h ^= static_cast<std::uint32_t>(x) * 0x85EBCA6BU;
    h = (h ^ (h >> 15)) * 0x2C1B3C6DU;
    h ^= static_cast<std::uint32_t>(y) * 0xC2B2AE35U;
    h = (h ^ (h >> 12)) * 0x297A2D39U;
    h ^= h >> 15;
    h *= 0x85EBCA77U;
    return h ^ (h >> 16);
}

double hashUnit(int x, int y, std::uint32_t seed) {
    return hashCell(x, y, seed) * kUnitFromHash;
}

double gradientNoise(double x, double y, std::uint32_t seed) {
    const double floorX = std::floor(x);
    const double floorY = std::floor(y);
    const int cellX = static_cast<int>(floorX);
    const int cellY = static_cast<int>(floorY);
    const double dx = x - floorX;
    const double dy = y - floorY;
    const double u = fade(dx);
    const double v = fade(dy);
    const double low = mix(cornerDot(cellX, cellY, dx, dy, seed),
                           cornerDot(cellX + 1, cellY, dx - 1.0, dy, seed), u);
    const double high = mix(cornerDot(cellX, cellY + 1, dx, dy - 1.0, seed),
                            cornerDot(cellX + 1, cellY + 1, dx - 1.0, dy - 1.0, seed), u);
    constexpr double kRangeScale = 1.45;
    return kRangeScale * mix(low, high, v);
}

double fractalNoise(double x, double y, int octaves, std::uint32_t seed) {
    double sum = 0.0;
    double amplitude = 0.5;
    for (int i = 0; i < octaves; ++i) {
        sum += amplitude * gradientNoise(x, y, seed + kOctaveSeedStep * static_cast<unsigned>(i));
        x *= 2.0;
        y *= 2.0;
        amplitude *= 0.5;
    }
    return sum;
}

double ridgedNoise(double x, double y, int octaves, std::uint32_t seed) {
    double sum = 0.0;
    double amplitude = 0.5;
    for (int i = 0; i < octaves; ++i) {
        const double n = gradientNoise(x, y, seed + kOctaveSeedStep * static_cast<unsigned>(i));
        const double crest = 1.0 - std::min(1.0, std::fabs(n));
        sum += amplitude * crest * crest;
        x *= 2.0;
        y *= 2.0;
        amplitude *= 0.5;
    }
    return sum;
}

CellHit cellNoise(double x, double y, std::uint32_t seed) {
    const int cellX = static_cast<int>(std::floor(x));
    const int cellY = static_cast<int>(std::floor(y));
    CellHit best;
    best.distance = 1e9;
    for (int j = cellY - 1; j <= cellY + 1; ++j) {
        for (int i = cellX - 1; i <= cellX + 1; ++i) {
            const std::uint32_t hash = hashCell(i, j, seed);
            const double px = i + (hash & 0xFFFFU) / 65536.0;
            const double py = j + (hash >> 16) / 65536.0;
            const osg::Vec2d offset(x - px, y - py);
            const double distance = offset.length();
            if (distance < best.distance) {
                best.distance = distance;
                best.fromPoint = offset;
                best.hash = hash;
            }
        }
    }
    return best;
}

double HashStream::unit() {
    return hashUnit(m_count++, 77, m_seed);
}

double HashStream::normal(double sigma) {
    // The sum of four uniform numbers is close enough to a bell curve here.
    constexpr double kSumDeviation = 0.57735026918962576;
    const double sum = unit() + unit() + unit() + unit();
    return (sum - 2.0) * sigma / kSumDeviation;
}

double clampUnit(double value) {
    return std::min(1.0, std::max(0.0, value));
}

double mix(double a, double b, double t) {
    return a + (b - a) * t;
}

double smoothStep(double low, double high, double value) {
    const double t = clampUnit((value - low) / (high - low));
    return t * t * (3.0 - 2.0 * t);
}

} // namespace samples
