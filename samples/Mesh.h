// Triangle meshes of the sample models, independent of the file format they end up in.
#pragma once

#include <osg/Vec2d>
#include <osg/Vec3d>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace samples {

/// The surfaces of the valley models. Walls come in three shades because the viewer's light falls
/// almost straight down and would leave all of them alike.
enum class Surface { Ground, WallLit, WallSide, WallShade, Roof, Crown };
constexpr std::size_t kSurfaceCount = 6;

struct Vertex {
    osg::Vec3d position;
    osg::Vec3d normal;
    osg::Vec2d uv;
};

struct Mesh {
    Surface surface = Surface::Ground;
    std::vector<Vertex> vertices;
    std::vector<std::uint32_t> indices;

    std::size_t triangleCount() const { return indices.size() / 3; }
};

/// One mesh for each surface.
class MeshSet {
public:
    MeshSet();

    Mesh& mesh(Surface surface) { return m_meshes[static_cast<std::size_t>(surface)]; }
    const Mesh& mesh(Surface surface) const { return m_meshes[static_cast<std::size_t>(surface)]; }
    const std::array<Mesh, kSurfaceCount>& meshes() const { return m_meshes; }
    std::size_t triangleCount() const;

private:
    std::array<Mesh, kSurfaceCount> m_meshes;
};

using Corner = std::pair<osg::Vec3d, osg::Vec2d>; ///< position and texture coordinate

/// Appends a flat convex polygon, corners counter-clockwise seen from outside.
void addPolygon(Mesh& mesh, const std::vector<Corner>& corners);
/// addPolygon() into the wall mesh whose shade suits the direction the polygon faces.
void addWall(MeshSet& set, const std::vector<Corner>& corners);
/// Rounds to a step that keeps the files small without being visible.
osg::Vec3d quantized(const osg::Vec3d& value, double stepsPerUnit);

} // namespace samples
