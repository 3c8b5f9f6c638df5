#pragma once

#include <osgDB/ReaderWriter>
#include <osgDB/Registry>

#include <string>

namespace orbisk::test {

/// The library's own reader for an extension, whichever the program has registered; null where it
/// is not installed.
inline osgDB::ReaderWriter* libraryReader(const std::string& extension,
                                          const std::string& className) {
    osgDB::Registry& registry = *osgDB::Registry::instance();
    registry.loadLibrary(registry.createLibraryNameForExtension(extension));
    for (const auto& reader : registry.getReaderWriterList())
        if (reader->className() == className)
            return reader.get();
    return nullptr;
}

} // namespace orbisk::test
