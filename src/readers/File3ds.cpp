#include "readers/File3ds.h"

#include "readers/Chunks3ds.h"

#include <osg/Matrixd>

#include <algorithm>
#include <utility>

namespace orbisk {

namespace {

constexpr float percent = 100.0f;
constexpr float mostOfByte = 255.0f;

// What the flags of a texture map say.
constexpr unsigned int mapDoesNotRepeat = 0x0010;
constexpr unsigned int mapHasAlpha = 0x0040;

osg::Vec3 readByteColour(ByteReader& reader) {
    osg::Vec3 colour;
    for (int i = 0; i < 3; ++i)
        colour[i] = static_cast<float>(reader.read<std::uint8_t>()) / mostOfByte;
    return colour;
}

/// A colour may be there twice; the linear one counts.
void readColour(ByteReader& reader, std::size_t end, osg::Vec3& colour) {
    bool isLinear = false;
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t) {
        const bool linear = kind == LinearColourBytes || kind == LinearColourFloat;
        if (isLinear && !linear)
            return;
        if (kind == LinearColourBytes || kind == ColourBytes)
            colour = readByteColour(reader);
        else if (kind == LinearColourFloat || kind == ColourFloat)
            colour = readVector3ds(reader);
        isLinear = isLinear || linear;
    });
}

void readPercentage(ByteReader& reader, std::size_t end, float& share) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t) {
        if (kind == IntegerPercentage)
            share = static_cast<float>(reader.read<std::int16_t>()) / percent;
    });
}

void readTextureMap(ByteReader& reader, std::size_t end, TextureMap3ds& map) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t) {
        switch (kind) {
        case IntegerPercentage:
            map.percent = static_cast<float>(reader.read<std::int16_t>()) / percent;
            break;
        case MapName:
            map.name = readName3ds(reader);
            break;
        case MapFlags: {
            const unsigned int flags = reader.read<std::uint16_t>();
            map.repeats = (flags & mapDoesNotRepeat) == 0;
            map.hasAlpha = (flags & mapHasAlpha) != 0;
            break;
        }
        case MapScaleU:
            map.scale.x() = reader.read<float>();
            break;
        case MapScaleV:
            map.scale.y() = reader.read<float>();
            break;
        case MapOffsetU:
            map.offset.x() = reader.read<float>();
            break;
        case MapOffsetV:
            map.offset.y() = reader.read<float>();
            break;
        default:
            break;
        }
    });
}

Material3ds readMaterial(ByteReader& reader, std::size_t end) {
    Material3ds material;
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        switch (kind) {
        case MaterialName:
            material.name = readName3ds(reader);
            break;
        case MaterialAmbient:
            readColour(reader, chunkEnd, material.ambient);
            break;
        case MaterialDiffuse:
            readColour(reader, chunkEnd, material.diffuse);
            break;
        case MaterialSpecular:
            readColour(reader, chunkEnd, material.specular);
            break;
        case MaterialShininess:
            readPercentage(reader, chunkEnd, material.shininess);
            break;
        case MaterialShineStrength:
            readPercentage(reader, chunkEnd, material.shineStrength);
            break;
        case MaterialTransparency:
            readPercentage(reader, chunkEnd, material.transparency);
            break;
        case MaterialTwoSided:
            material.isTwoSided = true;
            break;
        case MaterialTexture:
            readTextureMap(reader, chunkEnd, material.texture);
            break;
        case MaterialOpacity:
            readTextureMap(reader, chunkEnd, material.opacity);
            break;
        case MaterialReflection:
            readTextureMap(reader, chunkEnd, material.reflection);
            break;
        default:
            break;
        }
    });
    return material;
}

void readFaceMaterial(ByteReader& reader, std::size_t end, const File3ds& file, Mesh3ds& mesh) {
    const auto material = file.materialOfName.find(readName3ds(reader));
    const std::size_t count = reader.read<std::uint16_t>();
    if (!hasRoomFor(reader, count, sizeof(std::uint16_t), end))
        return;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t face = reader.read<std::uint16_t>();
        if (face >= mesh.faces.size())
            continue;
        mesh.faces[face].material.reset();
        if (material != file.materialOfName.end())
            mesh.faces[face].material = material->second;
    }
}

void readFaces(ByteReader& reader, std::size_t end, const File3ds& file, Mesh3ds& mesh) {
    constexpr std::size_t faceSize = 4 * sizeof(std::uint16_t);
    const std::size_t count = reader.read<std::uint16_t>();
    if (!hasRoomFor(reader, count, faceSize, end))
        return;
    mesh.faces.assign(count, Face3ds());
    for (Face3ds& face : mesh.faces) {
        for (std::uint16_t& corner : face.corners)
            corner = reader.read<std::uint16_t>();
        // Which edges a modeller shows.
        reader.read<std::uint16_t>();
    }
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        if (kind == FaceMaterial) {
            readFaceMaterial(reader, chunkEnd, file, mesh);
        } else if (kind == SmoothingGroups &&
                   hasRoomFor(reader, mesh.faces.size(), sizeof(std::uint32_t), chunkEnd)) {
            for (Face3ds& face : mesh.faces)
                face.smoothingGroup = reader.read<std::uint32_t>();
        }
    });
}

void readPoints(ByteReader& reader, std::size_t end, Mesh3ds& mesh) {
    const std::size_t count = reader.read<std::uint16_t>();
    if (!hasRoomFor(reader, count, 3 * sizeof(float), end))
        return;
    mesh.vertices.resize(count);
    for (osg::Vec3& vertex : mesh.vertices)
        vertex = readVector3ds(reader);
    if (!mesh.textureCoordinates.empty())
        mesh.textureCoordinates.resize(count);
}

void readTextureVertices(ByteReader& reader, std::size_t end, Mesh3ds& mesh) {
    const std::size_t count = reader.read<std::uint16_t>();
    if (!hasRoomFor(reader, count, 2 * sizeof(float), end))
        return;
    const std::size_t vertices = std::max(count, mesh.vertices.size());
    mesh.vertices.resize(vertices);
    mesh.textureCoordinates.resize(vertices);
    for (std::size_t i = 0; i < count; ++i) {
        mesh.textureCoordinates[i].x() = reader.read<float>();
        mesh.textureCoordinates[i].y() = reader.read<float>();
    }
}

void readMatrix(ByteReader& reader, osg::Matrixf& matrix) {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            matrix(row, column) = reader.read<float>();
}

/// The sign tells whether the matrix mirrors.
double determinant(const osg::Matrixf& matrix) {
    const osg::Vec3d x(matrix(0, 0), matrix(0, 1), matrix(0, 2));
    const osg::Vec3d y(matrix(1, 0), matrix(1, 1), matrix(1, 2));
    const osg::Vec3d z(matrix(2, 0), matrix(2, 1), matrix(2, 2));
    return x * (y ^ z);
}

/// A mesh that was mirrored stands in the file as if it hadn't been along its own x-axis.
void mirror(Mesh3ds& mesh) {
    osg::Matrixd flipped(mesh.matrix);
    for (int column = 0; column < 4; ++column)
        flipped(0, column) = -flipped(0, column);
    const osg::Matrixd mirrored = osg::Matrixd::inverse(osg::Matrixd(mesh.matrix)) * flipped;
    for (osg::Vec3& vertex : mesh.vertices)
        vertex = osg::Vec3(osg::Vec3d(vertex) * mirrored);
}

Mesh3ds readMesh(ByteReader& reader, std::size_t end, const File3ds& file) {
    Mesh3ds mesh;
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        switch (kind) {
        case MeshMatrix:
            readMatrix(reader, mesh.matrix);
            break;
        case PointArray:
            readPoints(reader, chunkEnd, mesh);
            break;
        case FaceArray:
            readFaces(reader, chunkEnd, file, mesh);
            break;
        case TextureVertices:
            readTextureVertices(reader, chunkEnd, mesh);
            break;
        default:
            break;
        }
    });
    if (determinant(mesh.matrix) < 0.0)
        mirror(mesh);
    return mesh;
}

void readModelData(ByteReader& reader, std::size_t end, File3ds& file) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        if (kind == MaterialEntry) {
            file.materials.push_back(readMaterial(reader, chunkEnd));
            file.materialOfName.emplace(file.materials.back().name, file.materials.size() - 1);
        } else if (kind == NamedObject) {
            const std::string name = readName3ds(reader);
            forEachChunk(reader, chunkEnd, [&](std::uint16_t part, std::size_t partEnd) {
                if (part != TriangleObject)
                    return;
                file.meshes.push_back(readMesh(reader, partEnd, file));
                file.meshes.back().name = name;
                file.meshOfName.emplace(name, file.meshes.size() - 1);
            });
        }
    });
}

} // namespace

std::optional<File3ds> parse3ds(std::string_view bytes) {
    File3ds file;
    std::vector<UnlinkedNode3ds> nodes;
    ByteReader reader(bytes);
    const ChunkHeader3ds whole = readChunkHeader3ds(reader, bytes.size());
    if (whole.kind == ModelData)
        readModelData(reader, whole.end, file);
    else if (whole.kind == ModelFile || whole.kind == LibraryFile || whole.kind == ProjectFile)
        forEachChunk(reader, whole.end, [&](std::uint16_t kind, std::size_t end) {
            if (kind == ModelData)
                readModelData(reader, end, file);
            else if (kind == KeyFrameData)
                readKeyFrames3ds(reader, end, nodes);
        });
    else
        return std::nullopt;
    if (reader.failed())
        return std::nullopt;
    std::optional<Hierarchy3ds> hierarchy = linkNodes3ds(std::move(nodes));
    if (!hierarchy)
        return std::nullopt;
    file.hierarchy = std::move(*hierarchy);
    return file;
}

} // namespace orbisk
