#include "ObjFile.h"

#include "SceneBuilder.h"

#include <cmath>
#include <fstream>
#include <map>
#include <stdexcept>

namespace samples {

namespace {

/// A number with a decimal point, whatever the user's language prefers.
std::string fixed(double value, int decimals) {
    long long scale = 1;
    for (int i = 0; i < decimals; ++i) {
        scale *= 10;
    }
    const long long scaled = std::llround(value * static_cast<double>(scale));
    const long long magnitude = scaled < 0 ? -scaled : scaled;
    std::string digits = std::to_string(magnitude % scale);
    digits.insert(0, static_cast<std::size_t>(decimals) - digits.size(), '0');
    while (!digits.empty() && digits.back() == '0') {
        digits.pop_back();
    }
    std::string text = scaled < 0 ? "-" : "";
    text += std::to_string(magnitude / scale);
    return digits.empty() ? text : text + "." + digits;
}

/// Numbers the distinct lines of one kind, starting at 1.
class LineTable {
public:
    LineTable(std::string keyword, std::ofstream& out)
        : m_keyword(std::move(keyword)), m_out(out) {}

    int number(const std::string& line) {
        const auto [entry, isNew] = m_numbers.emplace(line, static_cast<int>(m_numbers.size()) + 1);
        if (isNew) {
            m_out << m_keyword << ' ' << line << '\n';
        }
        return entry->second;
    }

private:
    std::string m_keyword;
    std::ofstream& m_out;
    std::map<std::string, int> m_numbers;
};

std::ofstream open(const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    if (!out) {
        throw std::runtime_error("cannot write " + path);
    }
    return out;
}

void close(std::ofstream& out, const std::string& path) {
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + path);
    }
}

std::string baseName(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    return path.substr(start, path.find_last_of('.') - start);
}

void writeMaterials(const std::string& path, const std::string& groundFile,
                    const std::string& atlasFile) {
    std::ofstream out = open(path);
    for (std::size_t i = 0; i < kSurfaceCount; ++i) {
        const SurfaceLook& look = lookOf(static_cast<Surface>(i));
        const std::string ambient = fixed(look.ambient, 3);
        const std::string diffuse = fixed(look.diffuse, 3);
        out << "newmtl " << look.name << '\n';
        out << "Ka " << ambient << ' ' << ambient << ' ' << ambient << '\n';
        out << "Kd " << diffuse << ' ' << diffuse << ' ' << diffuse << '\n';
        const std::string emission = fixed(look.emission, 3);
        out << "Ke " << emission << ' ' << emission << ' ' << emission << '\n';
        out << "Ks 0 0 0\nillum 1\n";
        out << "map_Kd " << (look.usesAtlas ? atlasFile : groundFile) << "\n\n";
    }
    close(out, path);
}

void writeMesh(std::ofstream& out, const Mesh& mesh, LineTable& positions, LineTable& normals,
               LineTable& coordinates) {
    std::vector<std::string> corners;
    for (const Vertex& vertex : mesh.vertices) {
        const osg::Vec3d& p = vertex.position;
        const osg::Vec3d& n = vertex.normal;
        // East stays x, up becomes y, north becomes -z.
        const int v =
            positions.number(fixed(p.x(), 2) + ' ' + fixed(p.z(), 2) + ' ' + fixed(-p.y(), 2));
        const int vt = coordinates.number(fixed(vertex.uv.x(), 4) + ' ' + fixed(vertex.uv.y(), 4));
        const int vn =
            normals.number(fixed(n.x(), 2) + ' ' + fixed(n.z(), 2) + ' ' + fixed(-n.y(), 2));
        corners.push_back(std::to_string(v) + '/' + std::to_string(vt) + '/' + std::to_string(vn));
    }
    out << "usemtl " << lookOf(mesh.surface).name << '\n';
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
        out << "f " << corners[mesh.indices[i]] << ' ' << corners[mesh.indices[i + 1]] << ' '
            << corners[mesh.indices[i + 2]] << '\n';
    }
}

} // namespace

void writeObj(const std::string& path, const std::vector<ObjPart>& parts,
              const std::string& groundFile, const std::string& atlasFile) {
    const std::string base = baseName(path);
    const std::string folder = path.substr(0, path.size() - base.size() - 4);
    writeMaterials(folder + base + ".mtl", groundFile, atlasFile);

    std::ofstream out = open(path);
    out << "mtllib " << base << ".mtl\n";
    LineTable positions("v", out);
    LineTable normals("vn", out);
    LineTable coordinates("vt", out);
    for (const auto& [name, set] : parts) {
        out << "o " << name << '\n';
        for (const Mesh& mesh : set->meshes()) {
            if (!mesh.indices.empty()) {
                writeMesh(out, mesh, positions, normals, coordinates);
            }
        }
    }
    close(out, path);
}

} // namespace samples
