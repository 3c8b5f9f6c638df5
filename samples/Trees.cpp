#include "Trees.h"

#include "Atlas.h"
#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kTau = 6.28318530717958648;
constexpr std::uint32_t kTreeSeed = 901;
constexpr int kSides = 6;
constexpr double kPositionSteps = 128.0;

/// Collects trees on ground that is free for them.
class Planter {
public:
    Planter(const Terrain& terrain, const LandCover& cover, const Village& village)
        : m_terrain(terrain), m_cover(cover), m_village(village) {}

    void plantGrid();
    void plantRiverside();
    void plantGardens();
    std::vector<Tree> take() { return std::move(m_trees); }

private:
    bool isFree(const osg::Vec2d& p, double roadGap, double houseGap) const;
    void plant(const osg::Vec2d& p, bool conifer, double size, std::uint32_t seed);
    void considerCell(int i, int j);

    const Terrain& m_terrain;
    const LandCover& m_cover;
    const Village& m_village;
    std::vector<Tree> m_trees;
};

bool Planter::isFree(const osg::Vec2d& p, double roadGap, double houseGap) const {
    constexpr double kBorder = 4.0;
    if (p.x() < kBorder || p.y() < kBorder || p.x() > kExtent - kBorder ||
        p.y() > kExtent - kBorder) {
        return false;
    }
    const PathHit road = m_terrain.roads().nearest(p.x(), p.y());
    if (road.path >= 0 && road.distance < m_terrain.roads().path(road.path).halfWidth + roadGap) {
        return false;
    }
    const PathHit river = m_terrain.river().nearest(p.x(), p.y());
    if (river.path >= 0 && river.distance < 12.0) {
        return false;
    }
    return m_terrain.square().distance(p) > 1.0 &&
           m_village.clearance(p, houseGap + 1.0) > houseGap;
}

void Planter::plant(const osg::Vec2d& p, bool conifer, double size, std::uint32_t seed) {
    HashStream random(seed);
    Tree tree;
    tree.conifer = conifer;
    tree.height = size * (conifer ? random.between(12.0, 20.0) : random.between(7.5, 12.5));
    tree.radius = tree.height * (conifer ? random.between(0.17, 0.22) : random.between(0.30, 0.38));
    // Whole rows of the foliage strip, so that many trees share their texture coordinates.
    constexpr double kTints = 24.0;
    tree.tint = std::floor(random.unit() * kTints) / kTints;
    tree.foot = osg::Vec3d(p.x(), p.y(), m_terrain.height(p.x(), p.y()));
    m_trees.push_back(tree);
}

void Planter::considerCell(int i, int j) {
    constexpr double kSpacing = 9.0;
    constexpr double kSteepest = 0.62;
    const osg::Vec2d p((i + 0.1 + 0.8 * hashUnit(i, j, kTreeSeed)) * kSpacing,
                       (j + 0.1 + 0.8 * hashUnit(i, j, kTreeSeed + 1)) * kSpacing);
    const double rise = m_terrain.rise(p.x(), p.y());
    const double wood = m_cover.forest(p.x(), p.y(), rise);
    const double chance = hashUnit(i, j, kTreeSeed + 2);
    const std::uint32_t seed = hashCell(i, j, kTreeSeed + 3);
    double share = smoothStep(-0.02, 0.10, wood) * 0.94;
    double size = mix(0.75, 1.05, smoothStep(0.0, 0.15, wood));
    bool conifer = hashUnit(i, j, kTreeSeed + 4) < mix(0.45, 0.95, smoothStep(20.0, 90.0, rise));
    if (wood < -0.02) {
        const double farmed = m_cover.farming(p.x(), p.y(), rise, 0.0);
        const Parcel parcel = m_cover.parcel(p.x(), p.y());
        const bool hedge = farmed > 0.5 && parcel.edgeDistance < 2.6 && (parcel.hash & 6U) == 0U;
        // Single trees thin out upwards, and hedges stand between some of the parcels.
        share = hedge ? 0.75 : 0.012 + 0.05 * smoothStep(-0.25, 0.0, wood);
        share *= farmed > 0.5 && !hedge ? 0.15 : 1.0;
        share *= 1.0 - smoothStep(185.0, 235.0, rise);
        size = hedge ? 0.62 : 0.8;
        conifer = conifer && rise > 40.0;
    }
    if (chance < share && m_terrain.normal(p.x(), p.y()).z() > kSteepest && isFree(p, 3.0, 4.0)) {
        plant(p, conifer, size, seed);
    }
}

void Planter::plantGrid() {
    constexpr int kCells = 111;
    for (int j = 0; j < kCells; ++j) {
        for (int i = 0; i < kCells; ++i) {
            considerCell(i, j);
        }
    }
}

void Planter::plantRiverside() {
    const auto& points = m_terrain.river().paths().front().points;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        for (const int side : {-1, 1}) {
            const int index = static_cast<int>(i);
            const double grove = gradientNoise(index / 9.0, side * 3.3, kTreeSeed + 11);
            if (hashUnit(index, side, kTreeSeed + 12) > 0.34 + 0.7 * grove) {
                continue;
            }
            osg::Vec3d left = osg::Vec3d(0.0, 0.0, 1.0) ^ (points[i + 1] - points[i]);
            left.normalize();
            const double offset = 13.5 + 5.0 * hashUnit(index, side, kTreeSeed + 13);
            const osg::Vec3d q = points[i] + left * (side * offset);
            const osg::Vec2d p(q.x(), q.y());
            if (isFree(p, 3.5, 5.0) && (p - m_terrain.bridgeCenter()).length() > 24.0) {
                plant(p, false, 0.85, hashCell(index, side, kTreeSeed + 14));
            }
        }
    }
}

void Planter::plantGardens() {
    int index = 0;
    for (const House& house : m_village.houses()) {
        for (int k = 0; k < 4; ++k, ++index) {
            const double a = kTau * hashUnit(index, 1, kTreeSeed + 21);
            const double r =
                house.plan.halfSize.length() + 2.5 + 7.0 * hashUnit(index, 2, kTreeSeed + 22);
            const osg::Vec2d p = house.plan.center + osg::Vec2d(std::cos(a), std::sin(a)) * r;
            if (isFree(p, 2.2, 2.8)) {
                plant(p, false, 0.55, hashCell(index, 3, kTreeSeed + 23));
            }
        }
    }
    // Lime trees in front of the church.
    for (int k = 0; k < 4; ++k) {
        const PlanBox& square = m_terrain.square();
        const osg::Vec2d p = square.toWorld(
            osg::Vec2d(-square.halfSize.x() + 5.0 + 8.0 * k, square.halfSize.y() - 3.0));
        plant(p, false, 0.7, hashCell(k, 4, kTreeSeed + 24));
    }
}

osg::Vec2d foliage(const Tree& tree, const osg::Vec3d& normal) {
    const double light = 0.5 + 0.5 * (normal * sunDirection());
    const double u = std::round(0.5 * clampUnit(light) * 256.0) / 256.0;
    return atlasPoint(tree.conifer ? Strip::Conifer : Strip::Broadleaf, u, tree.tint);
}

void addVertex(Mesh& mesh, const Tree& tree, const osg::Vec3d& position, osg::Vec3d normal) {
    normal.normalize();
    mesh.vertices.push_back(
        {quantized(position, kPositionSteps), quantized(normal, 64.0), foliage(tree, normal)});
}

void addCone(Mesh& mesh, const Tree& tree, double radius, double low, double high, double turn) {
    const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
    addVertex(mesh, tree, tree.foot + osg::Vec3d(0.0, 0.0, high), osg::Vec3d(0.0, 0.0, 1.0));
    for (int i = 0; i < kSides; ++i) {
        const double a = kTau * (i + turn) / kSides;
        const osg::Vec3d out(std::cos(a), std::sin(a), 0.0);
        addVertex(mesh, tree, tree.foot + out * radius + osg::Vec3d(0.0, 0.0, low),
                  out + osg::Vec3d(0.0, 0.0, 0.55));
    }
    for (std::uint32_t i = 0; i < kSides; ++i) {
        mesh.indices.insert(mesh.indices.end(),
                            {first, first + 1 + i, first + 1 + (i + 1) % kSides});
    }
}

/// A squashed ball of two rings and two poles.
void addBall(Mesh& mesh, const Tree& tree) {
    const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
    const double halfHeight = 0.40 * tree.height;
    const osg::Vec3d center = tree.foot + osg::Vec3d(0.0, 0.0, tree.height - halfHeight);
    const auto add = [&](const osg::Vec3d& unit) {
        addVertex(mesh, tree,
                  center + osg::Vec3d(unit.x() * tree.radius, unit.y() * tree.radius,
                                      unit.z() * halfHeight),
                  unit);
    };
    constexpr double kRingRadius = 0.88;
    constexpr double kRingHeight = 0.42;
    add(osg::Vec3d(0.0, 0.0, 1.0));
    for (int ring = 0; ring < 2; ++ring) {
        for (int i = 0; i < kSides; ++i) {
            const double a = kTau * (i + 0.5 * ring + tree.tint) / kSides;
            add(osg::Vec3d(kRingRadius * std::cos(a), kRingRadius * std::sin(a),
                           ring == 0 ? kRingHeight : -kRingHeight));
        }
    }
    add(osg::Vec3d(0.0, 0.0, -1.0));
    const std::uint32_t top = first + 1;
    const std::uint32_t low = top + kSides;
    for (std::uint32_t i = 0; i < kSides; ++i) {
        const std::uint32_t k = (i + 1) % kSides;
        mesh.indices.insert(mesh.indices.end(),
                            {first, top + i, top + k, top + i, low + i, top + k, top + k, low + i,
                             low + k, low + i, low + kSides, low + k});
    }
}

void addTrunk(Mesh& mesh, const Tree& tree) {
    const double radius = 0.035 * tree.height;
    const osg::Vec2d bark = atlasPoint(Strip::Timber, 0.4, 0.5);
    const auto corner = [&](int i, double z) {
        const double a = kTau * (i + tree.tint) / 3.0;
        return quantized(tree.foot + osg::Vec3d(radius * std::cos(a), radius * std::sin(a), z),
                         kPositionSteps);
    };
    for (int i = 0; i < 3; ++i) {
        const double top = 0.35 * tree.height;
        addPolygon(mesh, {{corner(i, -0.5), bark},
                          {corner(i + 1, -0.5), bark},
                          {corner(i + 1, top), bark},
                          {corner(i, top), bark}});
    }
}

} // namespace

std::vector<Tree> plantTrees(const Terrain& terrain, const LandCover& cover,
                             const Village& village) {
    Planter planter(terrain, cover, village);
    planter.plantGrid();
    planter.plantRiverside();
    planter.plantGardens();
    return planter.take();
}

void addTree(MeshSet& set, const Tree& tree) {
    Mesh& mesh = set.mesh(Surface::Crown);
    if (tree.conifer) {
        addCone(mesh, tree, tree.radius, 0.06 * tree.height, 0.74 * tree.height, 0.0);
        addCone(mesh, tree, 0.68 * tree.radius, 0.42 * tree.height, tree.height, 0.5);
    } else {
        addBall(mesh, tree);
        addTrunk(mesh, tree);
    }
}

} // namespace samples
