#pragma once

#include "readers/WholeFileReader.h"

namespace orbisk {

/// Reads PLY files: meshes of triangles, quadrangles, polygons and triangle strips, and clouds of
/// points; text and binary of either byte order.
///
/// The model is what the library's reader would make of the file, and more where that one loses
/// data: coordinates in double precision are kept where single precision would move them, and no
/// property or element that is unknown gets in the way of those that are not.
class PlyReader : public WholeFileReader {
public:
    PlyReader();

    const char* className() const override { return "PlyReader"; }

    ReadResult readBytes(FileBytes bytes, const std::string& fileName,
                         const osgDB::Options* options) const override;

protected:
    ~PlyReader() override = default;
};

} // namespace orbisk
