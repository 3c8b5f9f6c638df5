#include "Solids.h"

#include "Mesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace samples {

namespace {

constexpr double kTau = 6.28318530717958648;

/// Collects triangles with their normals.
class SolidBuilder {
public:
    std::uint32_t add(const osg::Vec3d& position, osg::Vec3d normal) {
        // Decimal steps keep the text short.
        constexpr double kStepsPerMetre = 10000.0;
        constexpr double kNormalSteps = 100.0;
        normal.normalize();
        m_positions->push_back(quantized(position, kStepsPerMetre));
        m_normals->push_back(quantized(normal, kNormalSteps));
        return static_cast<std::uint32_t>(m_positions->size()) - 1;
    }
    void triangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        for (const std::uint32_t index : {a, b, c}) {
            m_indices->push_back(static_cast<GLushort>(index));
        }
    }
    void face(const std::vector<osg::Vec3d>& corners, const osg::Vec3d& normal) {
        const std::uint32_t first = add(corners[0], normal);
        for (std::size_t i = 1; i < corners.size(); ++i) {
            add(corners[i], normal);
        }
        for (std::uint32_t i = 1; i + 1 < corners.size(); ++i) {
            triangle(first, first + i, first + i + 1);
        }
    }
    osg::ref_ptr<osg::Geometry> geometry() const {
        osg::ref_ptr<osg::Geometry> result = new osg::Geometry;
        result->setVertexArray(m_positions);
        result->setNormalArray(m_normals, osg::Array::BIND_PER_VERTEX);
        result->addPrimitiveSet(m_indices);
        result->setUseVertexBufferObjects(true);
        return result;
    }

private:
    osg::ref_ptr<osg::Vec3Array> m_positions = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec3Array> m_normals = new osg::Vec3Array;
    osg::ref_ptr<osg::DrawElementsUShort> m_indices = new osg::DrawElementsUShort(GL_TRIANGLES);
};

/// One of the box's faces, edges or corners: the directions it faces.
void addBoxPart(SolidBuilder& builder, const osg::Vec3d& center, const osg::Vec3d& half,
                double chamfer, const std::array<int, 3>& facing) {
    // Every part is spanned by the points that touch all of its directions.
    std::vector<osg::Vec3d> corners;
    const osg::Vec3d normal(facing[0], facing[1], facing[2]);
    for (int bits = 0; bits < 8; ++bits) {
        osg::Vec3d sign;
        bool touches = true;
        for (unsigned axis = 0; axis < 3; ++axis) {
            sign[axis] = ((bits >> axis) & 1) != 0 ? 1.0 : -1.0;
            touches = touches && (facing[axis] == 0 || sign[axis] * facing[axis] > 0.0);
        }
        if (!touches) {
            continue;
        }
        for (unsigned out = 0; out < 3; ++out) {
            if (facing[out] != 0) {
                osg::Vec3d p;
                for (unsigned axis = 0; axis < 3; ++axis) {
                    p[axis] = sign[axis] * (half[axis] - (axis == out ? 0.0 : chamfer));
                }
                corners.push_back(center + p);
            }
        }
    }
    osg::Vec3d middle;
    for (const osg::Vec3d& corner : corners) {
        middle += corner / static_cast<double>(corners.size());
    }
    osg::Vec3d side = corners[0] - middle;
    const osg::Vec3d up = normal ^ side;
    std::vector<std::pair<double, osg::Vec3d>> sorted;
    sorted.reserve(corners.size());
    for (const osg::Vec3d& corner : corners) {
        sorted.emplace_back(std::atan2((corner - middle) * up, (corner - middle) * side), corner);
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    corners.clear();
    for (const auto& entry : sorted) {
        corners.push_back(entry.second);
    }
    builder.face(corners, normal);
}

} // namespace

osg::ref_ptr<osg::Geometry> makeLathe(const Profile& profile, int sides) {
    SolidBuilder builder;
    for (std::size_t k = 0; k + 1 < profile.size(); ++k) {
        const osg::Vec2d& low = profile[k];
        const osg::Vec2d& high = profile[k + 1];
        const osg::Vec2d normal(high.y() - low.y(), low.x() - high.x());
        std::vector<std::uint32_t> lows;
        std::vector<std::uint32_t> highs;
        for (int i = 0; i <= sides; ++i) {
            const double a = kTau * (i % sides) / sides;
            const osg::Vec3d out(std::cos(a), std::sin(a), 0.0);
            const osg::Vec3d n = out * normal.x() + osg::Vec3d(0.0, 0.0, normal.y());
            lows.push_back(builder.add(out * low.x() + osg::Vec3d(0.0, 0.0, low.y()), n));
            highs.push_back(builder.add(out * high.x() + osg::Vec3d(0.0, 0.0, high.y()), n));
        }
        for (std::size_t i = 0; i + 1 < lows.size(); ++i) {
            if (low.x() > 0.0) {
                builder.triangle(lows[i], lows[i + 1], highs[i + 1]);
            }
            if (high.x() > 0.0) {
                builder.triangle(lows[i], highs[i + 1], highs[i]);
            }
        }
    }
    return builder.geometry();
}

osg::ref_ptr<osg::Geometry> makeBox(const osg::Vec3d& center, const osg::Vec3d& size,
                                    double chamfer) {
    SolidBuilder builder;
    for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y) {
            for (int z = -1; z <= 1; ++z) {
                const int directions = std::abs(x) + std::abs(y) + std::abs(z);
                if (directions == 1 || (directions > 1 && chamfer > 0.0)) {
                    addBoxPart(builder, center, size * 0.5, chamfer, {x, y, z});
                }
            }
        }
    }
    return builder.geometry();
}

} // namespace samples
