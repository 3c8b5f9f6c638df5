#include "GroundPainter.h"

#include "Noise.h"

#include <array>
#include <cmath>

namespace samples {

namespace {

enum Seed : std::uint32_t {
    SeedMeadow = 301,
    SeedGrain = 307,
    SeedField = 311,
    SeedCrown = 313,
    SeedRock = 317,
    SeedRoad = 331,
    SeedWater = 337,
    SeedPaving = 347
};

constexpr Color kMeadow{138, 164, 88};
constexpr Color kLushMeadow{112, 150, 74};
constexpr Color kAlpMeadow{166, 168, 106};
constexpr Color kForestFloor{64, 84, 50};
constexpr Color kRockLight{196, 190, 177};
constexpr Color kRockDark{132, 128, 118};
constexpr Color kAsphalt{138, 137, 134};
constexpr Color kGravelRoad{188, 176, 148};
constexpr Color kVerge{128, 140, 84};
constexpr Color kGravelBank{184, 177, 160};
constexpr Color kWaterDeep{44, 88, 98};
constexpr Color kWaterShallow{92, 132, 130};
constexpr Color kPaving{172, 163, 147};
constexpr Color kHedge{66, 88, 46};

double grain(double x, double y, double size, double strength) {
    return 1.0 + strength * fractalNoise(x / size, y / size, 3, SeedGrain);
}

} // namespace

Color GroundPainter::meadow(double x, double y, const ReliefSample& relief) const {
    const double patches = fractalNoise(x / 70.0, y / 70.0, 4, SeedMeadow);
    Color color = mix(kMeadow, kLushMeadow, smoothStep(-0.3, 0.3, patches));
    color = mix(color, kAlpMeadow, smoothStep(95.0, 190.0, relief.rise + 50.0 * patches));
    // Hollows stay moist and dark, crests dry out.
    color = mix(color, kLushMeadow, 0.5 * smoothStep(0.5, -3.5, relief.relative));
    color = mix(color, kAlpMeadow, 0.4 * smoothStep(1.0, 5.0, relief.relative));
    return scaled(color, grain(x, y, 5.0, 0.22));
}

Color GroundPainter::field(double x, double y, const Color& meadowColor) const {
    static constexpr std::array<Color, 8> kCrops = {{{126, 160, 78},
                                                     {150, 176, 94},
                                                     {112, 150, 74},
                                                     {212, 194, 130},
                                                     {108, 136, 66},
                                                     {160, 132, 100},
                                                     {214, 202, 96},
                                                     {176, 184, 116}}};
    const Parcel parcel = m_cover.parcel(x, y);
    // Every third parcel is grass whatever comes up.
    const std::size_t crop =
        (parcel.hash >> 8) % ((parcel.hash >> 16) % 3 == 0 ? 3 : kCrops.size());
    const bool grass = crop < 3;
    Color color = kCrops[crop];
    const double rowSpacing = grass ? 9.0 : 4.6;
    const double rows = std::sin(parcel.acrossRows * 2.0 * 3.14159265 / rowSpacing);
    color = scaled(color, 1.0 + (grass ? 0.020 : 0.055) * rows);
    const double tone = (parcel.hash >> 20) % 16 / 15.0 - 0.5;
    color = scaled(color, 1.0 + 0.10 * tone);
    color = scaled(color, 1.0 + 0.16 * fractalNoise(x / 26.0, y / 26.0, 3, SeedField));
    color = mix(color, meadowColor, grass ? 0.30 : 0.12);
    const bool hedge = (parcel.hash & 6U) == 0U;
    const Color border = hedge ? kHedge : mix(kVerge, meadowColor, 0.5);
    const double width = hedge ? 1.8 : 0.9;
    return mix(border, color, smoothStep(width * 0.6, width + 0.5, parcel.edgeDistance));
}

Color GroundPainter::wood(double x, double y) const {
    constexpr double kCrownSpacing = 6.5;
    const CellHit crown = cellNoise(x / kCrownSpacing, y / kCrownSpacing, SeedCrown);
    const osg::Vec3d sun = sunDirection();
    const double facing = crown.fromPoint.x() * sun.x() + crown.fromPoint.y() * sun.y();
    const double tone = (crown.hash & 255U) / 255.0;
    double light = 0.86 + 0.75 * facing + 0.28 * (tone - 0.5);
    light *= 1.0 - 0.45 * smoothStep(0.45, 0.75, crown.distance);
    Color color = mix(Color{60, 92, 52}, Color{88, 118, 62}, tone);
    return scaled(color, light * grain(x, y, 3.0, 0.25));
}

Color GroundPainter::rock(double x, double y, const ReliefSample& relief) const {
    // Faces are nearly upright: without the height the pattern would smear down the slope.
    const double up = relief.height * 0.8;
    const double bend = 4.0 * fractalNoise(x / 60.0, y / 60.0, 3, SeedRock);
    const double strata = 0.5 + 0.5 * std::sin(relief.height * 0.42 + bend);
    const double blocks = fractalNoise((x + 0.3 * up) / 13.0, (y - up) / 13.0, 4, SeedRock + 2);
    const double cracks = ridgedNoise((x - 0.4 * up) / 17.0, (y + up) / 17.0, 3, SeedRock + 3);
    const Color color = mix(kRockDark, kRockLight, clampUnit(0.50 + 0.22 * strata + 0.9 * blocks));
    return scaled(color, 1.04 - 0.18 * smoothStep(0.55, 0.85, cracks));
}

Color GroundPainter::garden(double x, double y, const Color& meadowColor) const {
    constexpr double kPlotSize = 13.0;
    const CellHit plot = cellNoise(x / kPlotSize, y / kPlotSize, SeedField + 1);
    const double tone = (plot.hash & 255U) / 255.0;
    Color color = mix(Color{104, 138, 66}, Color{136, 158, 86}, tone);
    if ((plot.hash >> 9) % 6 == 0) {
        const double rows = std::sin((x + 0.4 * y) * 2.0 * 3.14159265 / 2.4);
        color = mix(Color{122, 104, 72}, Color{92, 122, 58}, 0.5 + 0.4 * rows);
    }
    return scaled(mix(color, meadowColor, 0.35), grain(x, y, 4.0, 0.16));
}

Color GroundPainter::withRoads(double x, double y, const Color& ground) const {
    const PathHit road = m_terrain.roads().nearest(x, y);
    if (road.path < 0) {
        return ground;
    }
    const Path& path = m_terrain.roads().path(road.path);
    const double edge = path.halfWidth;
    const bool track = path.kind == PathKind::Track;
    Color surface = scaled(track ? kGravelRoad : kAsphalt,
                           1.0 + 0.12 * fractalNoise(x / 7.0, y / 7.0, 3, SeedRoad));
    if (track) {
        // Grass grows between the wheel marks.
        surface = mix(surface, kVerge, 0.45 * smoothStep(0.55, 0.2, road.distance));
    } else if (path.kind == PathKind::MainRoad) {
        const double rim = std::fabs(road.distance - (edge - 0.35));
        surface = mix(surface, Color{214, 212, 204}, 0.55 * smoothStep(0.4, 0.1, rim));
        const bool dash = std::fmod(road.along, 9.0) < 5.0;
        surface = mix(surface, Color{222, 220, 212},
                      dash ? 0.6 * smoothStep(0.42, 0.12, road.distance) : 0.0);
    }
    const Color beside =
        mix(mix(kVerge, kGravelRoad, 0.35), ground, smoothStep(edge, edge + 1.8, road.distance));
    return mix(surface, beside, smoothStep(edge - 0.25, edge + 0.25, road.distance));
}

Color GroundPainter::withRiver(double x, double y, const Color& ground) const {
    const PathHit river = m_terrain.river().nearest(x, y);
    if (river.path < 0) {
        return ground;
    }
    const double edge = m_terrain.river().path(river.path).halfWidth;
    const double streaks = fractalNoise(river.along / 16.0, river.side / 2.6, 3, SeedWater);
    const double depth = smoothStep(0.0, edge * 0.95, edge - river.distance + 1.6 * streaks);
    Color water = mix(kWaterShallow, kWaterDeep, depth);
    water = mix(water, Color{206, 218, 214}, 0.6 * smoothStep(0.26, 0.5, streaks));

    const double gravel = m_cover.gravelWidth(river.along, river.side);
    const Color stones = scaled(kGravelBank, grain(x, y, 1.8, 0.35));
    Color bank = mix(ground, scaled(kVerge, 0.86), 0.55);
    bank = mix(stones, bank, smoothStep(edge + gravel, edge + gravel + 1.2, river.distance));
    bank = mix(bank, ground, smoothStep(edge + 4.0, edge + Terrain::kBankWidth, river.distance));
    return mix(water, bank, smoothStep(edge - 0.7, edge + 0.5, river.distance + 0.8 * streaks));
}

Color GroundPainter::color(double x, double y, const ReliefSample& relief, double paved) const {
    const Color grass = meadow(x, y, relief);
    Color ground = grass;
    const double farmed = m_cover.farming(x, y, relief.rise, relief.slope);
    if (farmed > 0.0) {
        ground = mix(ground, field(x, y, grass), farmed);
    }
    const double built = smoothStep(0.40, 0.55, m_cover.village(x, y));
    if (built > 0.0) {
        ground = mix(ground, garden(x, y, grass), 0.8 * built);
    }
    const double woods = m_cover.forest(x, y, relief.rise);
    if (woods > -0.12) {
        ground = mix(ground, kForestFloor, 0.5 * smoothStep(-0.10, 0.02, woods));
        ground = mix(ground, wood(x, y), smoothStep(0.0, 0.03, woods));
    }
    const double broken = 0.22 * fractalNoise(x / 16.0, y / 16.0, 4, SeedRock + 1);
    const double bare = smoothStep(
        0.86, 1.12, relief.slope + broken + 0.10 * smoothStep(150.0, 230.0, relief.rise));
    ground = mix(ground, rock(x, y, relief), bare);

    const double square = m_terrain.square().distance(osg::Vec2d(x, y));
    const double surfaced = std::max(paved, smoothStep(0.6, -0.4, square));
    if (surfaced > 0.0) {
        const double slabs =
            hashUnit(static_cast<int>(x / 1.4), static_cast<int>(y / 1.4), SeedPaving);
        ground = mix(ground, scaled(kPaving, 0.94 + 0.12 * slabs), surfaced);
    }
    return withRiver(x, y, withRoads(x, y, ground));
}

} // namespace samples
