#pragma once

#include <osgDB/ReaderWriter>

#include <string>

namespace orbisk {

/// The program's own reader for model files of this extension (lower case, without the dot); it
/// lives to the end of the program and may be used by several threads at once. Null where the
/// library's reader is the one to use.
osgDB::ReaderWriter* modelReaderFor(const std::string& extension);

} // namespace orbisk
