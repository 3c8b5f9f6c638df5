#include "Mesh.h"

#include "Terrain.h"

#include <cmath>

namespace samples {

MeshSet::MeshSet() {
    for (std::size_t i = 0; i < kSurfaceCount; ++i) {
        m_meshes[i].surface = static_cast<Surface>(i);
    }
}

std::size_t MeshSet::triangleCount() const {
    std::size_t count = 0;
    for (const Mesh& mesh : m_meshes) {
        count += mesh.triangleCount();
    }
    return count;
}

void addPolygon(Mesh& mesh, const std::vector<Corner>& corners) {
    osg::Vec3d normal;
    for (std::size_t i = 1; i + 1 < corners.size(); ++i) {
        normal += (corners[i].first - corners[0].first) ^ (corners[i + 1].first - corners[0].first);
    }
    normal.normalize();
    const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
    for (const Corner& corner : corners) {
        mesh.vertices.push_back({corner.first, normal, corner.second});
    }
    for (std::uint32_t i = 1; i + 1 < corners.size(); ++i) {
        mesh.indices.insert(mesh.indices.end(), {first, first + i, first + i + 1});
    }
}

void addWall(MeshSet& set, const std::vector<Corner>& corners) {
    const osg::Vec3d normal =
        (corners[1].first - corners[0].first) ^ (corners[2].first - corners[0].first);
    const double towardsSun = (normal * sunDirection()) / normal.length();
    constexpr double kLit = 0.25;
    Surface surface = Surface::WallSide;
    if (towardsSun > kLit) {
        surface = Surface::WallLit;
    } else if (towardsSun < -kLit) {
        surface = Surface::WallShade;
    }
    addPolygon(set.mesh(surface), corners);
}

osg::Vec3d quantized(const osg::Vec3d& value, double stepsPerUnit) {
    return {std::round(value.x() * stepsPerUnit) / stepsPerUnit,
            std::round(value.y() * stepsPerUnit) / stepsPerUnit,
            std::round(value.z() * stepsPerUnit) / stepsPerUnit};
}

} // namespace samples
