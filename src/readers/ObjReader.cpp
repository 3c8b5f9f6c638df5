#include "readers/ObjReader.h"

#include "readers/FileBytes.h"
#include "readers/MaterialStates.h"
#include "readers/MtlFile.h"
#include "readers/ObjFile.h"
#include "readers/ObjOptions.h"
#include "readers/ObjScene.h"

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

MtlMaterials readMaterials(const std::vector<std::string>& names, const osgDB::Options* options) {
    MtlMaterials materials;
    for (const std::string& name : names) {
        const std::string path = osgDB::findDataFile(name, options);
        if (const std::optional<FileBytes> file = FileBytes::read(path))
            readMtl(file->view(), materials);
        else
            OSG_WARN << "The material file " << name << " can't be read." << std::endl;
    }
    return materials;
}

/// @param folder of the file; empty when it has none.
ReadResult readText(std::optional<FileBytes> text, const std::string& folder,
                    const osgDB::Options* options) {
    const std::optional<ObjFile> file = readObj(text->view());
    if (!file)
        return ReadResult(std::string("The file has more than can be shown."));
    // The file's bytes are the most that is held, and no longer needed.
    text.reset();
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
    supportsExtension("obj", "Alias Wavefront OBJ format");
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

ReadResult ObjReader::readBytes(FileBytes bytes, const std::string& fileName,
                                const Options* options) const {
    const std::string folder = osgDB::getFilePath(fileName);
    const osg::ref_ptr<Options> inFolder =
        options ? options->cloneOptions(osg::CopyOp::SHALLOW_COPY) : new Options;
    inFolder->getDatabasePathList().push_front(folder);
    return readText(std::move(bytes), folder, inFolder);
}

ReadResult ObjReader::readNode(std::istream& stream, const Options* options) const {
    if (!stream)
        return ReadResult::ERROR_IN_READING_FILE;
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    return readText(FileBytes(text), {}, options);
}

ReadResult ObjReader::readObject(std::istream& stream, const Options* options) const {
    return readNode(stream, options);
}

} // namespace orbisk
