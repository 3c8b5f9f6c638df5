#include "view/ModelWriter.h"

#include "platform/CheckedFile.h"
#include "platform/FileReplacement.h"
#include "view/ImagesBeside.h"
#include "view/ModelReader.h"
#include "view/OutsideFiles.h"
#include "view/PreciseDrawing.h"
#include "writers/ExactNumbers.h"
#include "writers/ModelContents.h"
#include "writers/ObjWriter.h"
#include "writers/SinglePrecision.h"

#include <osg/Notify>
#include <osgDB/FileNameUtils>
#include <osgDB/Options>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <array>
#include <exception>
#include <filesystem>
#include <locale>
#include <system_error>

namespace orbisk {

namespace fs = std::filesystem;

namespace {

using WriteResult = osgDB::ReaderWriter::WriteResult;

constexpr const char* optionText = "WriteImageHint=UseExternal";

/// How the library is made to keep a format's whole contents.
struct FormatRules {
    const char* extension;
    const char* furtherOptions; ///< to its writer
    const char* fileType;       ///< what its writer is told where it cannot see the extension
    bool native; ///< keeps whatever a model can have, so what was written need not be looked at
};

/// The formats whose writers write into a stream, which can be given all digits and be watched.
constexpr std::array streamedFormats = {
    FormatRules{"osgb", "", "Binary", true},
    FormatRules{"osgt", "", "Ascii", true},
    FormatRules{"osg", " precision 17", "", true},
    FormatRules{"ive", "", "", true},
    FormatRules{"dxf", "", "", false},
    // Without it the names of the images are cut to eight characters.
    FormatRules{"3ds", " extended3dsFilePaths", "", false},
};

/// Of the area that a model had, as much has to be there again in a file of a foreign format.
constexpr double leastAreaShare = 0.99;

/// Keeps writers from writing images: they stand beside the model already, and theirs would take
/// the place of the original files.
class NoImages : public osgDB::WriteFileCallback {
public:
    WriteResult writeImage(const osg::Image&, const std::string&, const osgDB::Options*) override {
        return WriteResult::FILE_SAVED;
    }
};

/// Takes the program's callback off the model while it is written.
class CallbackOff {
public:
    CallbackOff(osg::Node& model, ModelUpdateCallback* callback)
        : m_model(model), m_callback(model.getUpdateCallback() == callback ? callback : nullptr) {
        if (m_callback)
            m_callback->detachFrom(m_model);
    }

    ~CallbackOff() {
        if (m_callback)
            m_callback->attachTo(m_model);
    }

    CallbackOff(const CallbackOff&) = delete;
    CallbackOff& operator=(const CallbackOff&) = delete;

private:
    osg::Node& m_model;
    osg::ref_ptr<ModelUpdateCallback> m_callback;
};

osg::ref_ptr<osgDB::Options> makeOptions() {
    osg::ref_ptr<osgDB::Options> options = new osgDB::Options(optionText);
    options->setWriteFileCallback(new NoImages);
    return options;
}

const FormatRules* streamedFormat(const std::string& extension) {
    for (const FormatRules& rules : streamedFormats)
        if (extension == rules.extension)
            return &rules;
    return nullptr;
}

bool writeStreamed(const osg::Node& model, const fs::path& file, const FormatRules& rules) {
    osgDB::ReaderWriter* writer =
        osgDB::Registry::instance()->getReaderWriterForExtension(rules.extension);
    if (!writer)
        return false;
    const osg::ref_ptr<osgDB::Options> options = makeOptions();
    options->setOptionString(options->getOptionString() + rules.furtherOptions);
    options->setPluginStringData("fileType", rules.fileType);
    CheckedFile checked(file);
    checked.stream().imbue(std::locale(std::locale::classic(), new ExactNumbers));
    return writer->writeNode(model, checked.stream(), options).success() && checked.finish();
}

bool writeByName(const osg::Node& model, const fs::path& file) {
    return osgDB::writeNodeFile(model, file.string(), makeOptions());
}

/// Whether a file that some writer called done holds the model.
bool holdsModel(const fs::path& file, osg::Node& model) {
    std::error_code error;
    if (!fs::is_regular_file(file, error) || fs::file_size(file, error) == 0)
        return false;
    const osg::ref_ptr<osg::Node> written = readModel(file.string());
    if (!written)
        return false;
    const ModelContents wanted = contentsOf(model);
    const ModelContents found = contentsOf(*written);
    return !found.empty() && found.area >= leastAreaShare * wanted.area;
}

/// The materials' file takes the model's name: a model and its materials belong together.
bool writeObjFiles(osg::Node& model, const fs::path& path) {
    fs::path materialPath = path;
    materialPath.replace_extension(".mtl");
    FileReplacement obj(path);
    FileReplacement materials(materialPath);
    CheckedFile objFile(obj.temporary());
    CheckedFile materialFile(materials.temporary());
    for (CheckedFile* file : {&objFile, &materialFile})
        file->stream().imbue(std::locale::classic());
    if (!writeObj(model, objFile.stream(), materialFile.stream(), materialPath.filename().string()))
        return false;
    const bool noMaterials = materialFile.stream().tellp() == std::streampos(0);
    if (!objFile.finish() || (!materialFile.finish() && !noMaterials))
        return false;
    return (noMaterials || materials.commit()) && obj.commit();
}

bool writeOther(osg::Node& model, const fs::path& path, const std::string& extension) {
    FileReplacement replacement(path);
    const FormatRules* rules = streamedFormat(extension);
    if (rules && rules->native)
        return writeStreamed(model, replacement.temporary(), *rules) && replacement.commit();
    const osg::ref_ptr<osg::Node> singles = inSinglePrecision(model);
    const bool written = rules ? writeStreamed(*singles, replacement.temporary(), *rules)
                               : writeByName(*singles, replacement.temporary());
    return written && holdsModel(replacement.temporary(), *singles) && replacement.commit();
}

bool writeFiles(osg::Node& model, const std::string& path, const std::string& sourceFolder) {
    ImagesBeside images(path, sourceFolder);
    if (!images.place(model))
        return false;
    const OutsideFiles references(model, path, sourceFolder);
    const std::string extension = osgDB::getLowerCaseFileExtension(path);
    const bool written =
        extension == "obj" ? writeObjFiles(model, path) : writeOther(model, path, extension);
    if (written)
        images.keep();
    return written;
}

} // namespace

bool writeModel(osg::Node& model, ModelUpdateCallback* callback, const std::string& path,
                const std::string& sourceFolder) {
    const CallbackOff withoutCallback(model, callback);
    const PreciseDrawingOff withoutDrawing(model);
    try {
        if (writeFiles(model, path, sourceFolder))
            return true;
        OSG_WARN << "Writing " << path << " failed." << std::endl;
    } catch (const std::exception& failure) {
        OSG_WARN << "Writing " << path << " failed: " << failure.what() << std::endl;
    } catch (...) {
        OSG_WARN << "Writing " << path << " failed." << std::endl;
    }
    return false;
}

} // namespace orbisk
