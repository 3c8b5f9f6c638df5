#include "Orthophoto.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kMetresPerPixel = kExtent / kOrthoSize;

/// One value for each pixel.
class Layer {
public:
    Layer() : m_values(static_cast<std::size_t>(kOrthoSize) * kOrthoSize, 0.0F) {}

    double get(int x, int y) const { return static_cast<double>(m_values[index(x, y)]); }
    /// Raises the pixels around @p center, within @p reach, to what @p value says for them.
    template <typename Value>
    void raise(const osg::Vec2d& center, double reach, const Value& value);

private:
    static std::size_t index(int x, int y) {
        return static_cast<std::size_t>(y) * kOrthoSize + static_cast<std::size_t>(x);
    }
    std::vector<float> m_values;
};

int pixelOf(double metres) {
    return std::clamp(static_cast<int>(metres / kMetresPerPixel), 0, kOrthoSize - 1);
}

osg::Vec2d pixelCenter(int x, int y) {
    return {(x + 0.5) * kMetresPerPixel, (y + 0.5) * kMetresPerPixel};
}

template <typename Action>
void forPixelsAround(const osg::Vec2d& center, double reach, const Action& action) {
    for (int y = pixelOf(center.y() - reach); y <= pixelOf(center.y() + reach); ++y) {
        for (int x = pixelOf(center.x() - reach); x <= pixelOf(center.x() + reach); ++x) {
            action(x, y, pixelCenter(x, y));
        }
    }
}

template <typename Value>
void Layer::raise(const osg::Vec2d& center, double reach, const Value& value) {
    forPixelsAround(center, reach, [&](int x, int y, const osg::Vec2d& p) {
        float& pixel = m_values[index(x, y)];
        pixel = std::max(pixel, static_cast<float>(value(p)));
    });
}

/// Where the shadow of a point one metre up falls. Shorter than the relief's sun would cast it:
/// long shadows would hide half of the village.
osg::Vec2d shadowPerMetre() {
    constexpr double kShortening = 0.62;
    const osg::Vec3d sun = sunDirection();
    return osg::Vec2d(-sun.x() / sun.z(), -sun.y() / sun.z()) * kShortening;
}

void castBoxShadow(Layer& layer, const PlanBox& plan, double height) {
    constexpr int kSteps = 24;
    const osg::Vec2d reach = shadowPerMetre() * height;
    const osg::Vec2d middle = plan.center + reach * 0.5;
    layer.raise(middle, plan.halfSize.length() + reach.length(), [&](const osg::Vec2d& p) {
        double nearest = 1e9;
        for (int i = 0; i <= kSteps; ++i) {
            const osg::Vec2d back = p - reach * (static_cast<double>(i) / kSteps);
            nearest = std::min(nearest, plan.distance(back));
        }
        return smoothStep(0.5, -0.3, nearest);
    });
}

void castTreeShadow(Layer& layer, const Tree& tree) {
    const double middleHeight = (tree.conifer ? 0.45 : 0.55) * tree.height;
    const osg::Vec2d foot(tree.foot.x(), tree.foot.y());
    const osg::Vec2d center = foot + shadowPerMetre() * middleHeight;
    const double radius = tree.radius * (tree.conifer ? 0.9 : 1.05);
    layer.raise(center, 2.0 * radius + middleHeight, [&](const osg::Vec2d& p) {
        // The shadow narrows towards the foot of the trunk.
        const osg::Vec2d along = center - foot;
        const double t = clampUnit(((p - foot) * along) / along.length2());
        const double width = radius * (0.35 + 0.65 * t);
        return smoothStep(width + 0.5, width - 0.7, (p - foot - along * t).length());
    });
}

void layAccess(Layer& layer, const House& house) {
    constexpr double kYard = 1.3;
    constexpr double kWayHalfWidth = 1.5;
    layer.raise(house.plan.center, house.plan.halfSize.length() + kYard, [&](const osg::Vec2d& p) {
        return smoothStep(kYard + 0.3, kYard - 0.3, house.plan.distance(p));
    });
    if (!house.hasAccess) {
        return;
    }
    const osg::Vec2d way = house.plan.center - house.access;
    layer.raise((house.plan.center + house.access) * 0.5, way.length(), [&](const osg::Vec2d& p) {
        const double t = clampUnit(((p - house.access) * way) / way.length2());
        const double distance = (p - house.access - way * t).length();
        return smoothStep(kWayHalfWidth + 0.3, kWayHalfWidth - 0.3, distance);
    });
}

/// A roof as seen from above, its two sides lit differently.
void paintRoof(Canvas& canvas, const PlanBox& plan, double overhang, const Color& color) {
    const osg::Vec3d sun = sunDirection();
    const osg::Vec2d left(-std::sin(plan.angle), std::cos(plan.angle));
    const double facing = left.x() * sun.x() + left.y() * sun.y();
    forPixelsAround(plan.center, plan.halfSize.length() + overhang,
                    [&](int x, int y, const osg::Vec2d& p) {
                        if (plan.distance(p) < overhang) {
                            const double side = plan.toLocal(p).y() > 0.0 ? 1.0 : -1.0;
                            canvas.set(x, y, scaled(color, 0.98 + 0.30 * side * facing));
                        }
                    });
}

void paintCrown(Canvas& canvas, const Tree& tree) {
    const osg::Vec3d sun = sunDirection();
    const osg::Vec2d center(tree.foot.x(), tree.foot.y());
    const Color leaf = stripColor(tree.conifer ? Strip::Conifer : Strip::Broadleaf);
    forPixelsAround(center, tree.radius, [&](int x, int y, const osg::Vec2d& p) {
        const osg::Vec2d d = (p - center) / tree.radius;
        const double cover = smoothStep(1.0, 0.8, d.length());
        const double light = 0.95 + 0.45 * (d.x() * sun.x() + d.y() * sun.y());
        canvas.set(x, y, mix(canvas.get(x, y), scaled(leaf, light), cover));
    });
}

double reliefLight(const ReliefSample& sample) {
    constexpr double kStrength = 0.72;
    const osg::Vec3d sun = sunDirection();
    const double light = sample.normal * sun - sun.z();
    const double hollow = 0.012 * std::clamp(sample.relative, -8.0, 6.0);
    return std::clamp(1.0 + kStrength * light + hollow, 0.60, 1.30);
}

/// Lifts the middle tones, as the development of a photograph would.
Color developed(const Color& color) {
    constexpr double kExponent = 1.32;
    const auto lift = [](double value) {
        return 255.0 * (1.0 - std::pow(1.0 - clampUnit(value / 255.0), kExponent));
    };
    return {lift(color.r), lift(color.g), lift(color.b)};
}

} // namespace

Canvas paintOrthophoto(const Terrain& terrain, const ReliefGrid& relief, const LandCover& cover,
                       const Village& village, const std::vector<Tree>& trees) {
    constexpr double kShadowDepth = 0.48;
    constexpr double kRoofOverhang = -0.2; // or its rim would show below the eaves
    Layer shadow;
    Layer paved;
    for (const House& house : village.houses()) {
        layAccess(paved, house);
        castBoxShadow(shadow, house.plan, 0.75 * (house.ridgeHeight() - house.floor));
    }
    castBoxShadow(shadow, terrain.church(), Village::kNaveEaves + 3.0);
    castBoxShadow(shadow, village.tower(), Village::kTowerHeight + 5.0);
    for (const Tree& tree : trees) {
        castTreeShadow(shadow, tree);
    }

    const GroundPainter painter(terrain, cover);
    Canvas canvas(kOrthoSize, kOrthoSize);
    for (int y = 0; y < kOrthoSize; ++y) {
        for (int x = 0; x < kOrthoSize; ++x) {
            const osg::Vec2d p = pixelCenter(x, y);
            const ReliefSample sample = relief.at(p.x(), p.y());
            const Color ground = painter.color(p.x(), p.y(), sample, paved.get(x, y));
            const double light = reliefLight(sample) * (1.0 - kShadowDepth * shadow.get(x, y));
            Color lit = scaled(ground, light);
            lit.b *= 1.0 + 0.10 * shadow.get(x, y); // shade takes the colour of the sky
            canvas.set(x, y, developed(lit));
        }
    }
    for (const House& house : village.houses()) {
        paintRoof(canvas, house.plan, kRoofOverhang, stripColor(house.roof));
    }
    paintRoof(canvas, terrain.church(), kRoofOverhang, stripColor(Strip::RoofSlate));
    paintRoof(canvas, village.tower(), kRoofOverhang, stripColor(Strip::RoofSlate));
    for (const Tree& tree : trees) {
        paintCrown(canvas, tree);
    }
    return canvas;
}

} // namespace samples
