#include "readers/ObjReader.h"

#include "readers/MaterialStates.h"
#include "readers/MtlFile.h"
#include "readers/ObjFile.h"
#include "readers/ObjOptions.h"
#include "readers/ObjScene.h"
#include "readers/WholeFile.h"

#include <osg/Notify>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>

#include <istream>
#include <iterator>
#include <optional>
#include <utility>

namespace orbisk {

namespace {

using ReadResult = osgDB::ReaderWriter::ReadResult;

constexpr const char* extension = "obj";

MtlMaterials readMaterials(const std::vector<std::string>& names, const osgDB::Options* options) {
    MtlMaterials materials;
    for (const std::string& name : names) {
        const std::string path = osgDB::findDataFile(name, options);
        if (const std::optional<std::string> text = readWholeFile(path))
            readMtl(*text, materials);
        else
            OSG_WARN << "The material file " << name << " can't be read." << std::endl;
    }
    return materials;
}

/// @param folder of the file; empty when it has none.
ReadResult readText(std::string text, const std::string& folder, const osgDB::Options* options) {
    const std::optional<ObjFile> file = readObj(text);
    if (!file)
        return ReadResult(std::string("The file has more than can be shown."));
    // The file's bytes are the most that is held, and no longer needed.
    std::string().swap(text);
    if (file->unreadLines > 0)
        OSG_NOTICE << file->unreadLines << " lines are not understood." << std::endl;
    const ObjOptions objOptions = ObjOptions::parse(options ? options->getOptionString() : "");
    MaterialStates materials(readMaterials(file->materialFiles, options), objOptions, folder,
                             options);
    const osg::ref_ptr<osg::Group> scene = makeObjScene(*file, objOptions, materials);
    if (!scene)
        return ReadResult::ERROR_IN_READING_FILE;
    return scene.get();
}

} // namespace

ObjReader::ObjReader() {
    supportsExtension(extension, "Alias Wavefront OBJ format");
    supportsOption("noRotation", "Leave the y axis upwards");
    supportsOption("noTesselateLargePolygons", "Split all faces as if they were convex");
    supportsOption("noTriStripPolygons", "Leave triangles in the order of the file");
    supportsOption("generateFacetNormals", "Give faces without normals one each");
    supportsOption("noReverseFaces", "Leave faces that lie against their normals as they are");
    supportsOption("NsIfNotPresent=<value>", "Specular exponent of materials without one");
    for (const char* picture : {"DIFFUSE", "AMBIENT", "SPECULAR", "SPECULAR_EXPONENT", "OPACITY",
                                "BUMP", "DISPLACEMENT", "REFLECTION"})
        supportsOption(std::string(picture) + "=<unit>", "Texture unit of these pictures");
}

const char* ObjReader::className() const {
    return "Orbisk OBJ reader";
}

ReadResult ObjReader::readNode(const std::string& name, const Options* options) const {
    if (osgDB::getLowerCaseFileExtension(name) != extension)
        return ReadResult::FILE_NOT_HANDLED;
    const std::string path = osgDB::findDataFile(name, options);
    if (path.empty())
        return ReadResult::FILE_NOT_FOUND;
    std::optional<std::string> text = readWholeFile(path);
    if (!text)
        return ReadResult::ERROR_IN_READING_FILE;
    const std::string folder = osgDB::getFilePath(path);
    const osg::ref_ptr<Options> inFolder =
        options ? options->cloneOptions(osg::CopyOp::SHALLOW_COPY) : new Options;
    inFolder->getDatabasePathList().push_front(folder);
    return readText(std::move(*text), folder, inFolder);
}

ReadResult ObjReader::readObject(const std::string& name, const Options* options) const {
    return readNode(name, options);
}

ReadResult ObjReader::readNode(std::istream& stream, const Options* options) const {
    if (!stream)
        return ReadResult::ERROR_IN_READING_FILE;
    return readText({std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()}, {},
                    options);
}

ReadResult ObjReader::readObject(std::istream& stream, const Options* options) const {
    return readNode(stream, options);
}

} // namespace orbisk
