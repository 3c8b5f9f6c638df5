// Deterministic noise for the sample models.
#pragma once

#include <osg/Vec2d>

#include <cstdint>

namespace samples {

/// Integer hash of a lattice cell. Every random decision of the sample models goes through it, so
/// that the same files come out on every machine.
std::uint32_t hashCell(int x, int y, std::uint32_t seed);

/// hashCell() mapped to [0, 1).
double hashUnit(int x, int y, std::uint32_t seed);

/// Smooth gradient noise of unit wavelength, about -1 .. 1.
double gradientNoise(double x, double y, std::uint32_t seed);

/// Sum of octaves of gradientNoise(), each of half the wavelength and half the amplitude.
double fractalNoise(double x, double y, int octaves, std::uint32_t seed);

/// Like fractalNoise() but with sharp crests, 0 .. 1: reads as ridges and gullies.
double ridgedNoise(double x, double y, int octaves, std::uint32_t seed);

/// The nearest of one scattered point per unit cell.
struct CellHit {
    double distance = 0.0;  ///< to the nearest point
    osg::Vec2d fromPoint;   ///< from the nearest point to the place asked for
    std::uint32_t hash = 0; ///< identifies the nearest point
};

/// Cellular noise: which scattered point owns the place (@p x, @p y).
CellHit cellNoise(double x, double y, std::uint32_t seed);

/// A short stream of random numbers that depends on nothing but its seed.
class HashStream {
public:
    explicit HashStream(std::uint32_t seed) : m_seed(seed) {}
    double unit();
    double between(double low, double high) { return low + (high - low) * unit(); }
    /// Roughly normal deviate with the standard deviation @p sigma.
    double normal(double sigma);

private:
    std::uint32_t m_seed;
    int m_count = 0;
};

double clampUnit(double value);
double mix(double a, double b, double t);
/// 0 below @p low, 1 above @p high, smooth in between; @p low may be above @p high.
double smoothStep(double low, double high, double value);

} // namespace samples
