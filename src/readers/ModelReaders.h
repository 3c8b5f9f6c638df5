#pragma once

#include <osgDB/ReaderWriter>

#include <string>

namespace orbisk {

/// The program's own reader for model files of this extension (lower case, without the dot); it
/// lives to the end of the program and may be used by several threads at once. Null where the
/// library's reader is the one to use.
osgDB::ReaderWriter* modelReaderFor(const std::string& extension);

/// Makes the library itself use the program's readers, wherever it goes by a file's extension. The
/// library tries its own reader after one of these has failed, unless a read-file callback keeps it
/// from doing so. From any thread; the second call changes nothing.
void registerModelReaders();

} // namespace orbisk
