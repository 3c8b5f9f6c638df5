#pragma once

#include "readers/WholeFileReader.h"

namespace orbisk {

/// Reads STL files, binary and text, whatever their begin claims to be.
///
/// The model is a group with a geode for each solid that has a facet; see `FacetMesh` for which
/// vertices and facets it has.
class StlReader : public WholeFileReader {
public:
    StlReader();

    const char* className() const override { return "StlReader"; }

    ReadResult readBytes(FileBytes file, const std::string& fileName,
                         const osgDB::Options* options) const override;

protected:
    ~StlReader() override = default;
};

} // namespace orbisk
