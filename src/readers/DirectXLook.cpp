#include "readers/DirectXLook.h"

#include "readers/FileBytes.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string_view>
#include <vector>

namespace orbisk {

namespace {

constexpr std::size_t longestLine = 255; ///< with a longer one the reader ends
constexpr int deepestSection = 200;
constexpr std::uint64_t mostComparisons = 4'000'000'000;

using Words = std::vector<std::string_view>;
using Face = std::vector<std::uint32_t>;
using Faces = std::vector<Face>;

/// What a mesh has, as far as its parts refer to each other.
struct Mesh {
    std::size_t vertices = 0;
    Faces faces;
    bool hasNormals = false;
    std::size_t normals = 0;
    Faces normalFaces;
    bool hasPlaces = false;
    std::size_t places = 0; ///< in a texture
    bool hasMaterials = false;
    std::size_t materials = 0;
    Face materialOfFace;
};

/// Goes through a file line by line in the same way as the reader, which takes what stands where
/// for what it should be.
class DirectXLook {
public:
    explicit DirectXLook(std::string_view text) : m_text(text) {}

    std::optional<std::string> run() {
        Words words;
        if (nextLine(words) && m_line.find("xof") != std::string_view::npos)
            takeSection(0);
        return m_fault;
    }

private:
    /// The next line and its words; false at the end.
    bool nextLine(Words& words) {
        if (m_fault || m_text.empty())
            return false;
        const std::size_t end = std::min(m_text.find('\n'), m_text.size());
        m_line = m_text.substr(0, end);
        m_text.remove_prefix(std::min(end + 1, m_text.size()));
        if (m_line.size() > longestLine) {
            m_text = {};
            return false;
        }
        m_line = m_line.substr(0, m_line.find('\0'));
        words.clear();
        constexpr std::string_view between = " \t\r\n;,";
        for (std::size_t begin = m_line.find_first_not_of(between);
             begin != std::string_view::npos;) {
            const std::size_t last = m_line.find_first_of(between, begin);
            words.push_back(m_line.substr(begin, last - begin));
            begin = m_line.find_first_not_of(between, last);
        }
        return true;
    }

    /// The next line that has words.
    bool nextWords(Words& words) {
        while (nextLine(words))
            if (!words.empty())
                return true;
        return false;
    }

    bool has(char bracket) const { return m_line.find(bracket) != std::string_view::npos; }

    static std::uint32_t number(std::string_view word) {
        return static_cast<std::uint32_t>(std::strtol(std::string(word).c_str(), nullptr, 10));
    }

    void expect(bool isFine, const char* fault) {
        if (!isFine && !m_fault)
            m_fault = fault;
    }

    void takeSection(int depth) {
        expect(depth <= deepestSection, "sections are nested too deeply");
        for (Words words; nextLine(words) && !has('}');) {
            if (!has('{') || words.empty())
                continue;
            if (words[0] == "Mesh") {
                takeMesh(depth);
            } else if (words[0] == "Material") {
                m_materials.emplace(words.size() > 1 ? words[1] : std::string_view());
                takeMaterial();
            } else {
                takeSection(depth + 1);
            }
        }
    }

    void takeMesh(int depth) {
        Mesh mesh;
        bool hasFaces = false;
        for (Words words; nextWords(words) && !has('}');) {
            if (has('{') && words[0] == "MeshMaterialList")
                takeMaterialList(mesh, depth);
            else if (has('{') && words[0] == "MeshNormals")
                takeNormals(mesh);
            else if (has('{') && words[0] == "MeshTextureCoords")
                takePlaces(mesh);
            else if (has('{'))
                takeSection(depth + 1);
            else if (mesh.vertices == 0)
                mesh.vertices = takeRows(number(words[0]), 3);
            else if (!hasFaces)
                hasFaces = takeFaces(number(words[0]), mesh.faces);
        }
        check(mesh);
    }

    /// Lines of so many numbers each. @return how many lines there are.
    std::size_t takeRows(std::uint32_t count, std::size_t numbers) {
        Words words;
        std::size_t rows = 0;
        for (; rows < count && nextWords(words); ++rows)
            expect(words.size() >= numbers, "a line has too few numbers");
        return rows;
    }

    /// @return whether there were to be any.
    bool takeFaces(std::uint32_t count, Faces& faces) {
        Words words;
        for (std::uint32_t i = 0; i < count && nextWords(words); ++i) {
            const std::uint32_t corners = number(words[0]);
            expect(words.size() > corners, "a line has too few numbers");
            faces.emplace_back();
            for (std::size_t corner = 1; !m_fault && corner <= corners; ++corner)
                faces.back().push_back(number(words[corner]));
        }
        return count != 0;
    }

    void takeNormals(Mesh& mesh) {
        bool hasCount = false;
        bool hasFaces = false;
        for (Words words; nextWords(words) && !has('}');) {
            mesh.hasNormals = true;
            const std::uint32_t count = number(words[0]);
            if (!hasCount) {
                hasCount = count != 0;
                mesh.normals += takeRows(count, 3);
            } else if (!hasFaces) {
                hasFaces = takeFaces(count, mesh.normalFaces);
            }
        }
    }

    void takePlaces(Mesh& mesh) {
        for (Words words; nextWords(words) && !has('}');) {
            const std::uint32_t count = number(words[0]);
            mesh.places += takeRows(count, 2);
            // The reader gives them up where their number is another.
            mesh.hasPlaces = mesh.places == count;
            if (!mesh.hasPlaces)
                mesh.places = 0;
        }
    }

    void takeMaterial() {
        std::size_t row = 0;
        for (Words words; nextWords(words) && words[0] != "}";) {
            if (words[0] == "TextureFilename") {
                for (Words name; nextWords(name) && name[0] != "}";) {
                }
                continue;
            }
            constexpr std::size_t numbers[] = {4, 1, 3, 3};
            if (row < std::size(numbers))
                expect(words.size() >= numbers[row], "a line has too few numbers");
            ++row;
        }
    }

    /// Whether a line is the name of a material that was declared before.
    bool isNameOfMaterial(const Words& words) const {
        std::string_view name = words[0];
        if (name == "{" && words.size() > 1)
            name = words[1];
        else if (name.size() > 2 && name.front() == '{' && name.back() == '}')
            name = name.substr(1, name.size() - 2);
        return m_materials.count(std::string(name)) != 0;
    }

    void takeMaterialList(Mesh& mesh, int depth) {
        bool hasCount = false;
        bool hasFaces = false;
        for (Words words; nextWords(words);) {
            const bool isName = isNameOfMaterial(words);
            if (isName || (has('{') && !has('}') && words[0] == "Material"))
                expect(mesh.hasMaterials, "a list of materials has no number");
            if (isName) {
                ++mesh.materials;
            } else if (has('}')) {
                break;
            } else if (has('{') && words[0] == "Material") {
                ++mesh.materials;
                takeMaterial();
            } else if (has('{')) {
                takeSection(depth + 1);
            } else if (!hasCount) {
                mesh.hasMaterials = true;
                hasCount = number(words[0]) != 0;
            } else if (!hasFaces) {
                const std::uint32_t count = number(words[0]);
                hasFaces = count != 0;
                for (std::uint32_t i = 0; i < count && nextWords(words); ++i)
                    mesh.materialOfFace.push_back(number(words[0]));
            }
        }
        expect(mesh.hasMaterials, "a list of materials has no number");
    }

    void check(const Mesh& mesh) {
        std::uint64_t corners = 0;
        for (const Face& face : mesh.faces) {
            corners += face.size();
            expect(areBelow(face, mesh.vertices), "an index goes beyond what it counts");
            if (mesh.hasPlaces)
                expect(areBelow(face, mesh.places), "an index goes beyond what it counts");
        }
        expect(!mesh.hasMaterials || mesh.materialOfFace.size() != mesh.faces.size() ||
                   areBelow(mesh.materialOfFace, mesh.materials),
               "an index goes beyond what it counts");
        if (mesh.hasNormals)
            checkNormals(mesh);
        else
            expect(corners * mesh.vertices <= mostComparisons,
                   "a mesh of this size needs its normals");
    }

    void checkNormals(const Mesh& mesh) {
        expect(mesh.normalFaces.size() >= mesh.faces.size(), "faces have no normals");
        for (std::size_t i = 0; !m_fault && i < mesh.faces.size(); ++i)
            expect(mesh.normalFaces[i].size() >= mesh.faces[i].size() &&
                       areBelow(mesh.normalFaces[i], mesh.normals),
                   "a face has normals that are not there");
    }

    static bool areBelow(const Face& indices, std::size_t count) {
        return std::all_of(indices.begin(), indices.end(),
                           [count](std::uint32_t index) { return index < count; });
    }

    std::string_view m_text;
    std::string_view m_line;
    std::set<std::string> m_materials;
    std::optional<std::string> m_fault;
};

} // namespace

std::optional<std::string> directXRefusal(const std::string& path) {
    const std::optional<FileBytes> bytes = FileBytes::read(path);
    return bytes ? DirectXLook(bytes->view()).run() : std::nullopt;
}

} // namespace orbisk
