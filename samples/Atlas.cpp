#include "Atlas.h"

#include "Noise.h"

#include <array>
#include <cmath>

namespace samples {

namespace {

struct StripInfo {
    int foot;   ///< first pixel row
    int height; ///< pixel rows
    Color color;
};

/// Rows at either edge of a strip that no texture coordinate touches, against bleeding when the
/// texture is shown small.
constexpr int kMargin = 4;

constexpr std::array<StripInfo, 12> kStrips = {{{0, 128, {240, 236, 226}},
                                                {128, 128, {238, 222, 184}},
                                                {256, 128, {218, 182, 138}},
                                                {384, 64, {112, 82, 58}},
                                                {448, 128, {166, 88, 62}},
                                                {576, 128, {128, 84, 66}},
                                                {704, 128, {104, 106, 112}},
                                                {832, 64, {176, 168, 152}},
                                                {896, 32, {158, 157, 154}},
                                                {928, 32, {64, 96, 54}},
                                                {960, 32, {104, 138, 64}},
                                                {992, 32, {242, 239, 230}}}};

const StripInfo& info(Strip strip) {
    return kStrips[static_cast<std::size_t>(strip)];
}

double grain(int x, int y, double strength, std::uint32_t seed) {
    return 1.0 + strength * (hashUnit(x, y, seed) - 0.5);
}

void paintPlain(Canvas& canvas, Strip strip, double strength) {
    const StripInfo& s = info(strip);
    for (int y = s.foot; y < s.foot + s.height; ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            canvas.set(x, y, scaled(s.color, grain(x, y, strength, 501)));
        }
    }
}

void paintWindow(Canvas& canvas, int x, int y, int width, int height, const Color& shutter,
                 bool shutters) {
    const Color frame{238, 236, 230};
    const Color glass{62, 74, 86};
    if (shutters) {
        canvas.fill(x - width / 2 - 2, y, x, y + height, shutter);
        canvas.fill(x + width, y, x + width + width / 2 + 2, y + height, shutter);
    }
    canvas.fill(x - 2, y - 2, x + width + 2, y + height + 2, frame);
    canvas.fill(x, y, x + width, y + height, glass);
    canvas.fill(x, y + height / 2, x + width, y + height, scaled(glass, 1.25));
    canvas.fill(x + width / 2 - 1, y, x + width / 2 + 1, y + height, frame);
    canvas.fill(x - 4, y - 5, x + width + 4, y - 2, scaled(frame, 0.72));
}

void paintFacade(Canvas& canvas, Strip strip, const Color& shutter) {
    const StripInfo& s = info(strip);
    paintPlain(canvas, strip, 0.05);
    const int inner = s.height - 2 * kMargin;
    const int foot = s.foot + kMargin;
    canvas.fill(0, s.foot, canvas.width(), foot + inner / 10, scaled(s.color, 0.68));
    const int spacing = canvas.width() / kWindowsPerRepeat;
    const int windowWidth = 30;
    const int windowHeight = 28;
    for (int i = 0; i < kWindowsPerRepeat; ++i) {
        const int x = i * spacing + (spacing - windowWidth) / 2;
        for (const double floor : {0.24, 0.68}) {
            const int y = foot + static_cast<int>(floor * inner);
            if (floor < 0.5 && i == 2) {
                canvas.fill(x - 2, foot + 2, x + windowWidth - 2, y + windowHeight,
                            scaled(shutter, 0.8));
                canvas.fill(x + 2, foot + 4, x + windowWidth - 6, y + windowHeight - 4,
                            scaled(shutter, 1.05));
            } else {
                paintWindow(canvas, x, y, windowWidth, windowHeight, shutter, true);
            }
        }
    }
}

void paintTimber(Canvas& canvas) {
    const StripInfo& s = info(Strip::Timber);
    constexpr int kBoard = 8;
    for (int y = s.foot; y < s.foot + s.height; ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const int board = x / kBoard;
            double shade = 0.86 + 0.26 * hashUnit(board, 3, 511);
            shade *= 1.0 + 0.12 * gradientNoise(board * 7.7, y / 18.0, 512);
            if (x % kBoard == 0) {
                shade *= 0.62;
            }
            canvas.set(x, y, scaled(s.color, shade * grain(x, y, 0.08, 513)));
        }
    }
}

void paintRoof(Canvas& canvas, Strip strip, int tileWidth, int tileHeight) {
    const StripInfo& s = info(strip);
    const auto seed = static_cast<std::uint32_t>(520 + s.foot);
    for (int y = 0; y < s.height; ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const int row = y / tileHeight;
            const int shifted = x + (row % 2) * tileWidth / 2;
            const int column = (shifted / tileWidth) % (kAtlasWidth / tileWidth);
            double shade = 0.88 + 0.24 * hashUnit(column, row, seed);
            shade *= 1.0 + 0.10 * gradientNoise(x / 64.0, y / 30.0, seed + 1);
            shade *= y % tileHeight == 0 ? 0.74 : 1.0;
            shade *= shifted % tileWidth == 0 ? 0.86 : 1.0;
            canvas.set(x, s.foot + y, scaled(s.color, shade * grain(x, y, 0.05, seed + 2)));
        }
    }
}

void paintStone(Canvas& canvas) {
    const StripInfo& s = info(Strip::Stone);
    constexpr int kCourse = 8;
    constexpr int kBlock = 32;
    for (int y = 0; y < s.height; ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const int row = y / kCourse;
            const int shifted = x + (row % 2) * kBlock / 2;
            const int column = (shifted / kBlock) % (kAtlasWidth / kBlock);
            double shade = 0.86 + 0.24 * hashUnit(column, row, 541);
            if (y % kCourse == 0 || shifted % kBlock == 0) {
                shade *= 0.80;
            }
            canvas.set(x, s.foot + y, scaled(s.color, shade * grain(x, y, 0.07, 542)));
        }
    }
}

/// Crowns look up their shade by how far they face the sun: dark on the left, light in the
/// middle and back again, so that the strip repeats without a seam.
void paintFoliage(Canvas& canvas, Strip strip) {
    const StripInfo& s = info(strip);
    for (int y = 0; y < s.height; ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const double u = (x + 0.5) / canvas.width();
            const double light = 1.0 - std::fabs(2.0 * u - 1.0);
            const double hue = static_cast<double>(y) / s.height - 0.5;
            Color color = s.color;
            color.r *= 1.0 + 0.35 * hue;
            color.b *= 1.0 - 0.20 * hue;
            color = scaled(color, 0.62 + 0.85 * light);
            canvas.set(x, s.foot + y, scaled(color, grain(x, y, 0.06, 551)));
        }
    }
}

} // namespace

osg::Vec2d atlasPoint(Strip strip, double u, double v) {
    const StripInfo& s = info(strip);
    const double row = s.foot + kMargin + clampUnit(v) * (s.height - 2 * kMargin);
    return {u, row / kAtlasHeight};
}

Color stripColor(Strip strip) {
    return info(strip).color;
}

Canvas paintAtlas() {
    Canvas canvas(kAtlasWidth, kAtlasHeight);
    paintFacade(canvas, Strip::FacadeWhite, {84, 108, 88});
    paintFacade(canvas, Strip::FacadeCream, {118, 74, 52});
    paintFacade(canvas, Strip::FacadeOchre, {92, 96, 104});
    paintTimber(canvas);
    paintRoof(canvas, Strip::RoofRed, 16, 8);
    paintRoof(canvas, Strip::RoofBrown, 16, 8);
    paintRoof(canvas, Strip::RoofSlate, 16, 6);
    paintStone(canvas);
    paintPlain(canvas, Strip::Asphalt, 0.10);
    paintFoliage(canvas, Strip::Conifer);
    paintFoliage(canvas, Strip::Broadleaf);
    paintPlain(canvas, Strip::Trim, 0.03);
    return canvas;
}

} // namespace samples
