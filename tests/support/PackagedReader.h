#pragma once

#include <osgDB/FileNameUtils>
#include <osgDB/ReaderWriter>
#include <osgDB/Registry>

#include <string>

namespace orbisk::test {

/// The library's own reader and writer for an extension, whatever the program has registered; null
/// where it isn't installed.
inline osgDB::ReaderWriter* packagedReader(const std::string& extension,
                                           const std::string& className) {
    osgDB::Registry* registry = osgDB::Registry::instance();
    registry->loadLibrary(registry->createLibraryNameForExtension(extension));
    for (const auto& reader : registry->getReaderWriterList())
        if (reader->className() == className)
            return reader.get();
    return nullptr;
}

} // namespace orbisk::test
