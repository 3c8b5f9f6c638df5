#pragma once

#include "readers/PlyRows.h"

#include <osg/Array>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbisk {

class PlyVertices;

/// The faces of a PLY file: an element of polygons, or one of triangle strips. They name rows of
/// the vertices' element, which may come after them.
class PlyFaces : public PlyRowReceiver {
public:
    enum class Kind { Polygons, Strips };

    /// Whether the element has what makes it faces.
    static bool canTake(const PlyElement& element);

    /// @param inverted whether the corners of a face stand in the file the wrong way round.
    /// @param bytes how many there are for the rows, at most.
    PlyFaces(const PlyElement& element, Kind kind, bool inverted, std::size_t bytes);

    void number(std::size_t, double) override {}
    void list(std::size_t property, const std::vector<double>& values) override;
    void endRow() override;

    /// Faces in indices of vertices.
    struct Indices {
        std::vector<unsigned int> triangles; ///< three each
        std::vector<unsigned int> quads;     ///< four each
        std::size_t dropped = 0;             ///< how many faces name a vertex that isn't there
    };

    /// Takes the faces out. Those of more than four corners are cut into triangles, which stand
    /// after all others; those of fewer than three are no faces.
    Indices take(const PlyVertices& vertices);

private:
    void addStrip();
    void addFace(const unsigned int* corners, std::size_t count);

    std::size_t m_property;
    Kind m_kind;
    bool m_inverted;
    std::vector<unsigned int> m_row;       ///< the corners of the row that is being read
    std::vector<unsigned int> m_triangles; ///< in rows of the vertices, as what follows
    std::vector<unsigned int> m_quads;
    std::vector<unsigned int> m_polygons; ///< corners one after the other
    std::vector<std::size_t> m_polygonSizes;
};

} // namespace orbisk
