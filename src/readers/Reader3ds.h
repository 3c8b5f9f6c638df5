#pragma once

#include "readers/WholeFileReader.h"

namespace orbisk {

/// Reads 3DS files: meshes, their materials and pictures, and the hierarchy of nodes at the begin
/// of the animation.
///
/// A node becomes a matrix transform unless it doesn't move; below it, a mesh has another one that
/// takes its vertices from the world into the mesh's own frame.
class Reader3ds : public WholeFileReader {
public:
    Reader3ds();

    const char* className() const override { return "Reader3ds"; }

    ReadResult readBytes(FileBytes bytes, const std::string& fileName,
                         const osgDB::Options* options) const override;

protected:
    ~Reader3ds() override = default;
};

} // namespace orbisk
