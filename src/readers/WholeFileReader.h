#pragma once

#include "readers/FileBytes.h"

#include <osgDB/Options>
#include <osgDB/ReaderWriter>

#include <string>

namespace orbisk {

/// A reader of models that takes a file's bytes into memory first and understands them there, so
/// that no count or offset in the file leads anywhere else.
///
/// Has no state: several threads may read at once.
class WholeFileReader : public osgDB::ReaderWriter {
public:
    /// Reads the model file of this name, looked for as the library does it.
    /// @return the model; a status without one where the file is missing, of another kind or
    /// damaged beyond use.
    ReadResult readNode(const std::string& file, const osgDB::Options* options) const override;

    ReadResult readObject(const std::string& file, const osgDB::Options* options) const override;

    /// Makes a model of a file's bytes, which are the most that is held and go as soon as they can.
    /// Any bytes may come.
    /// @param fileName where they come from; what the model refers to is looked for beside it.
    /// @return like `readNode`. Triangles of the model refer to vertices that are there, and its
    /// vertices are finite.
    virtual ReadResult readBytes(FileBytes bytes, const std::string& fileName,
                                 const osgDB::Options* options) const = 0;

protected:
    ~WholeFileReader() override = default;
};

} // namespace orbisk
