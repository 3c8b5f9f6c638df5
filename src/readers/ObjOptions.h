#pragma once

#include "readers/MtlFile.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orbisk {

/// What the option text of a read asks for, in the words of the library's own OBJ reader.
struct ObjOptions {
    bool turned = true;        ///< from y up to z up; "noRotation"
    bool split = true;         ///< faces of more than 4 corners by their shape, not as if they
                               ///< were convex; "noTesselateLargePolygons"
    bool reordered = true;     ///< triangles, for speed of drawing; "noTriStripPolygons"
    bool flat = false;         ///< a normal for each face without; "generateFacetNormals"
    bool facingNormals = true; ///< faces are turned to the side of their normals; "noReverseFaces"
    std::optional<int> shininess; ///< of materials that say nothing; "NsIfNotPresent=..."

    /// "DIFFUSE=0" and the like; where there is any, only these pictures are used.
    std::vector<std::pair<unsigned int, MtlMap::Use>> units;

    /// Reads an option text; words that are not known are left to others.
    static ObjOptions parse(const std::string& text);
};

} // namespace orbisk
