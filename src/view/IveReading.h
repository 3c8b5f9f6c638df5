#pragma once

#include <osgDB/Options>
#include <osgDB/ReaderWriter>

#include <string>

namespace orbisk {

/// Reads a model in the IVE format by the library's reader, from memory and after a look at all
/// of it (`iveRefusal`). From any thread.
/// @param name looked for as the library does it.
/// @return the model, or why it was not read. It may throw what a stream throws.
osgDB::ReaderWriter::ReadResult readIve(const std::string& name, const osgDB::Options* options);

} // namespace orbisk
