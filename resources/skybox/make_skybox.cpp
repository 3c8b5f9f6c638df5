// Paints the sky the viewer draws behind a model: six faces of a cube map.
//
//   make_skybox OUTDIR [SIZE]
//
// The colour of a pixel depends on nothing but the direction it is seen in, so neighbouring faces
// agree along their common edge, and the same pictures come out on every machine.

#include <osg/Image>
#include <osg/Vec2d>
#include <osg/Vec3d>
#include <osgDB/WriteFile>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

namespace {

constexpr int kDefaultSize = 1024;
constexpr int kMinSize = 2;
constexpr int kMaxSize = 8192;

// ---- The cube ----

enum class Face { PositiveX, NegativeX, PositiveY, NegativeY, PositiveZ, NegativeZ };

struct FaceFile {
    Face face;
    const char* fileName;
};

// The cube stands in a frame whose y axis points to the ground, hence "up" on its negative side.
constexpr std::array<FaceFile, 6> kFaceFiles = {{{Face::PositiveX, "front.png"},
                                                 {Face::NegativeX, "back.png"},
                                                 {Face::PositiveY, "down.png"},
                                                 {Face::NegativeY, "up.png"},
                                                 {Face::PositiveZ, "right.png"},
                                                 {Face::NegativeZ, "left.png"}}};

/// The direction, in the frame of the cube, that OpenGL's cube map rules look up at (s, t) of
/// `face`, with s and t running from -1 to 1.
osg::Vec3d cubeDirection(Face face, double s, double t) {
    switch (face) {
    case Face::PositiveX:
        return {1.0, -t, -s};
    case Face::NegativeX:
        return {-1.0, -t, s};
    case Face::PositiveY:
        return {s, 1.0, t};
    case Face::NegativeY:
        return {s, -1.0, -t};
    case Face::PositiveZ:
        return {s, -t, 1.0};
    case Face::NegativeZ:
        return {-s, -t, -1.0};
    }
    return {};
}

/// The world direction (z up, unit length) of a direction in the frame of the cube.
osg::Vec3d worldDirection(const osg::Vec3d& cube) {
    osg::Vec3d world(cube.x(), cube.z(), -cube.y());
    world.normalize();
    return world;
}

/// The coordinate, from -1 to 1, of texel `index` of `size`. The outermost texels lie on the very
/// edge of the cube, as the faces are filtered without looking at their neighbours. Written so that
/// mirrored texels get exactly opposite values and shared edges come out bit for bit alike.
double texelCoordinate(int index, int size) {
    return static_cast<double>(2 * index - (size - 1)) / static_cast<double>(size - 1);
}

// ---- Noise ----

double mix(double a, double b, double amount) {
    return a + (b - a) * amount;
}

osg::Vec3d mix(const osg::Vec3d& a, const osg::Vec3d& b, double amount) {
    return a + (b - a) * amount;
}

double smoothStep(double from, double to, double value) {
    const double x = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return x * x * (3.0 - 2.0 * x);
}

/// Scatters the bits of `value` (an integer finaliser with full avalanche).
std::uint32_t scramble(std::uint32_t value) {
    value ^= value >> 16U;
    value *= 0x7feb352dU;
    value ^= value >> 15U;
    value *= 0x846ca68bU;
    value ^= value >> 16U;
    return value;
}

/// What the slope at lattice corner (column, row) adds to the noise at an offset (x, y) from it.
double cornerSlope(int column, int row, double x, double y) {
    constexpr double kTurn = 6.283185307179586;
    constexpr int kDirections = 64;
    static const auto kSlopes = [] {
        std::array<std::array<double, 2>, kDirections> slopes{};
        for (int i = 0; i < kDirections; ++i) {
            const double angle = kTurn * i / kDirections;
            slopes[static_cast<std::size_t>(i)] = {std::cos(angle), std::sin(angle)};
        }
        return slopes;
    }();
    const std::uint32_t bits =
        scramble(static_cast<std::uint32_t>(column) ^ scramble(static_cast<std::uint32_t>(row)));
    const auto& slope = kSlopes[bits % kDirections];
    return slope[0] * x + slope[1] * y;
}

/// Smooth noise of about unit wavelength, within -1 to 1.
double gradientNoise(double x, double y) {
    constexpr double kToUnitRange = 1.4;
    const double left = std::floor(x);
    const double bottom = std::floor(y);
    const int column = static_cast<int>(left);
    const int row = static_cast<int>(bottom);
    const double fx = x - left;
    const double fy = y - bottom;
    // The quintic keeps the second derivative continuous: a cubic shows the lattice in the shading.
    const auto ease = [](double f) { return f * f * f * (f * (f * 6.0 - 15.0) + 10.0); };
    const double ex = ease(fx);
    const double low =
        mix(cornerSlope(column, row, fx, fy), cornerSlope(column + 1, row, fx - 1.0, fy), ex);
    const double high = mix(cornerSlope(column, row + 1, fx, fy - 1.0),
                            cornerSlope(column + 1, row + 1, fx - 1.0, fy - 1.0), ex);
    return kToUnitRange * mix(low, high, ease(fy));
}

/// Noise with detail at many scales. Scales finer than `finest` are left out, for they would only
/// flicker in the foreshortened clouds far away.
double fractalNoise(double x, double y, int octaves, double finest) {
    constexpr double kGain = 0.5;
    constexpr double kFadeWidth = 3.0;
    // Every octave is turned against the one before, so that no lattice direction adds up,
    // and doubled in scale by the same numbers; the shift keeps their lattice corners apart.
    constexpr double kScale = 2.0;
    constexpr double kCos = 0.8 * kScale;
    constexpr double kSin = 0.6 * kScale;
    constexpr double kShiftX = 5.9;
    constexpr double kShiftY = 17.3;
    double sum = 0.0;
    double amplitude = 0.5;
    double wavelength = 1.0;
    for (int octave = 0; octave < octaves; ++octave) {
        const double visible = smoothStep(finest, finest * kFadeWidth, wavelength);
        if (visible <= 0.0) {
            break;
        }
        sum += visible * amplitude * gradientNoise(x, y);
        const double turned = kCos * x - kSin * y;
        y = kSin * x + kCos * y + kShiftY;
        x = turned + kShiftX;
        amplitude *= kGain;
        wavelength /= kScale;
    }
    return sum;
}

// ---- The sky ----

// Colours as shown on the screen, 0 to 1 a channel.
const osg::Vec3d kZenith(0.275, 0.475, 0.720);
const osg::Vec3d kMidSky(0.470, 0.670, 0.870);
const osg::Vec3d kHaze(0.845, 0.895, 0.930);
const osg::Vec3d kGround(0.520, 0.535, 0.505);
const osg::Vec3d kCloudLit(0.985, 0.985, 0.980);
const osg::Vec3d kCloudShade(0.800, 0.835, 0.875);
const osg::Vec3d kSunGlow(1.000, 0.965, 0.880);
const osg::Vec3d kToSun(0.5300, -0.5800, 0.6186);

/// The cloudless sky above the horizon; `height` is the sine of the elevation.
osg::Vec3d clearSky(double height) {
    constexpr double kHazeDepth = 0.13;
    constexpr double kBlueDepth = 0.75;
    const osg::Vec3d blue = mix(kMidSky, kZenith, 1.0 - std::pow(1.0 - height, 1.0 / kBlueDepth));
    return mix(blue, kHaze, std::exp(-height / kHazeDepth));
}

/// The light around the sun laid over `sky`: a soft disc in a wide glow.
osg::Vec3d withSun(const osg::Vec3d& sky, const osg::Vec3d& direction) {
    struct Lobe {
        double strength;
        double sharpness;
    };
    constexpr std::array<Lobe, 3> kLobes = {{{0.16, 6.0}, {0.30, 60.0}, {0.96, 1500.0}}};
    const double cosine = std::max(0.0, direction * kToSun);
    double remaining = 1.0;
    for (const Lobe& lobe : kLobes) {
        remaining *= 1.0 - lobe.strength * std::pow(cosine, lobe.sharpness);
    }
    return mix(sky, kSunGlow, 1.0 - remaining);
}

/// How thick the clouds stand over the point (x, y) of the cloud layer: 0 for none, about 1 at
/// most.
double cloudThickness(double x, double y, double finest) {
    constexpr double kEdge = 0.02;
    constexpr double kCore = 0.56;
    constexpr double kWarp = 0.55;
    constexpr double kWarpScale = 0.7;
    // Places in the noise that have nothing to do with each other.
    const osg::Vec2d kWarpXOrigin(31.4, -12.7);
    const osg::Vec2d kWarpYOrigin(-57.1, 44.2);
    const osg::Vec2d kPatchOrigin(7.7, 2.1);
    constexpr int kOctaves = 7;
    constexpr int kWarpOctaves = 3;
    constexpr double kPatchScale = 0.21;
    constexpr double kPatchWeight = 0.42;
    const double warpX = fractalNoise(x * kWarpScale + kWarpXOrigin.x(),
                                      y * kWarpScale + kWarpXOrigin.y(), kWarpOctaves, finest);
    const double warpY = fractalNoise(x * kWarpScale + kWarpYOrigin.x(),
                                      y * kWarpScale + kWarpYOrigin.y(), kWarpOctaves, finest);
    const double billows = fractalNoise(x + kWarp * warpX, y + kWarp * warpY, kOctaves, finest);
    // Slow variation gathers the clouds into fields with clear sky between.
    const double patches =
        gradientNoise(x * kPatchScale + kPatchOrigin.x(), y * kPatchScale + kPatchOrigin.y());
    return smoothStep(kEdge, kCore, billows + kPatchWeight * patches);
}

/// The clouds drawn over `sky`. They lie in a layer around a round earth, so they crowd together
/// towards the horizon, yet at a finite distance.
osg::Vec3d withClouds(const osg::Vec3d& sky, const osg::Vec3d& direction) {
    // Lengths in kilometres, angles in radians.
    constexpr double kEarthRadius = 6371.0;
    constexpr double kLayerHeight = 1.7;
    constexpr double kCloudSize = 2.1;
    constexpr double kFinestAngle = 0.0024;
    constexpr double kHazeDistance = 17.0;
    constexpr double kShadowStep = 0.22;
    constexpr double kSelfShade = 0.30;
    constexpr double kSunShade = 0.60;
    constexpr double kRimStrength = 0.5;
    constexpr double kRimSharpness = 8.0;
    constexpr double kEdgeSoftness = 1.8;
    constexpr double kOpacity = 0.93;
    const double height = direction.z();
    const double across = kEarthRadius * height;
    const double distance =
        std::sqrt(across * across + kLayerHeight * (2.0 * kEarthRadius + kLayerHeight)) - across;
    const double x = direction.x() * distance / kCloudSize;
    const double y = direction.y() * distance / kCloudSize;
    const double slant = std::max(height, kLayerHeight / distance);
    const double finest = kFinestAngle * distance / (slant * kCloudSize);

    const double thickness = cloudThickness(x, y, finest);
    if (thickness <= 0.0) {
        return sky;
    }
    const double towardsSun =
        cloudThickness(x + kShadowStep * kToSun.x(), y + kShadowStep * kToSun.y(), finest);
    const double shade =
        std::clamp(kSelfShade * thickness + kSunShade * (towardsSun - thickness), 0.0, 1.0);
    const double facingSun = std::pow(std::max(0.0, direction * kToSun), kRimSharpness);
    const osg::Vec3d cloud = mix(mix(kCloudLit, kCloudShade, shade), kSunGlow,
                                 kRimStrength * facingSun * (1.0 - thickness));
    const double clearness = std::exp(-distance / kHazeDistance);
    return mix(sky, cloud, kOpacity * clearness * (1.0 - std::pow(1.0 - thickness, kEdgeSoftness)));
}

/// The colour seen in the world direction `direction`.
osg::Vec3d skyColor(const osg::Vec3d& direction) {
    constexpr double kGroundDepth = 0.17;
    const double height = direction.z();
    if (height <= 0.0) {
        const osg::Vec3d haze = withSun(kHaze, direction);
        // Leaving the haze with a flat start keeps the horizon free of a visible crease.
        const double depth = height * height / (kGroundDepth * (kGroundDepth - height));
        return mix(haze, kGround, 1.0 - std::exp(-depth));
    }
    return withClouds(withSun(clearSky(height), direction), direction);
}

// ---- Writing ----

/// A value from 0 to 1 that looks random from one direction to the next. Rounding by it instead of
/// by a half hides the steps of eight bit colours in the wide, even gradients.
double ditherValue(const osg::Vec3d& direction) {
    constexpr double kGrain = 1048576.0;
    constexpr double kToUnit = 1.0 / 4294967296.0;
    std::uint32_t bits = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const auto grain = static_cast<std::int32_t>(std::lround(direction[axis] * kGrain));
        bits = scramble(bits ^ static_cast<std::uint32_t>(grain));
    }
    return static_cast<double>(bits) * kToUnit;
}

/// One face of the cube, bottom row first as OpenSceneGraph keeps its pictures.
osg::ref_ptr<osg::Image> paintFace(Face face, int size) {
    constexpr double kFullScale = 255.0;
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(size, size, 1, GL_RGB, GL_UNSIGNED_BYTE);
    for (int row = 0; row < size; ++row) {
        const double t = texelCoordinate(row, size);
        unsigned char* pixel = image->data(0, static_cast<unsigned int>(row));
        for (int column = 0; column < size; ++column) {
            const double s = texelCoordinate(column, size);
            const osg::Vec3d direction = worldDirection(cubeDirection(face, s, t));
            const osg::Vec3d color = skyColor(direction);
            const double dither = ditherValue(direction);
            for (int channel = 0; channel < 3; ++channel) {
                const double level = std::floor(color[channel] * kFullScale + dither);
                *pixel++ = static_cast<unsigned char>(std::clamp(level, 0.0, kFullScale));
            }
        }
    }
    return image;
}

bool parseSize(const char* text, int& size) {
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, size);
    return error == std::errc() && stop == end && size >= kMinSize && size <= kMaxSize;
}

int makeSkybox(int argc, char** argv) {
    int size = kDefaultSize;
    if (argc < 2 || argc > 3 || (argc == 3 && !parseSize(argv[2], size))) {
        std::cerr << "usage: make_skybox OUTDIR [SIZE]   (SIZE from " << kMinSize << " to "
                  << kMaxSize << ", " << kDefaultSize << " if left out)\n";
        return 2;
    }
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder);
    for (const FaceFile& entry : kFaceFiles) {
        const std::string path = (folder / entry.fileName).string();
        if (!osgDB::writeImageFile(*paintFace(entry.face, size), path)) {
            std::cerr << "make_skybox: cannot write " << path << '\n';
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return makeSkybox(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "make_skybox: " << error.what() << '\n';
        return 1;
    }
}
