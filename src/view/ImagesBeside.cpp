#include "view/ImagesBeside.h"

#include "platform/CheckedFile.h"
#include "platform/FileReplacement.h"

#include <osg/NodeVisitor>
#include <osg/Notify>
#include <osg/StateSet>
#include <osg/Texture>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>

namespace orbisk {

namespace fs = std::filesystem;

namespace {

constexpr const char* imageFileForUnnamed = "image.png";
constexpr const char* fallbackExtension = "png";

/// Gathers the images of all textures of a subtree, each once, in the order of their first use.
class ImageCollector : public osg::NodeVisitor {
public:
    ImageCollector() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Node& node) override {
        if (const osg::StateSet* state = node.getStateSet())
            collectFrom(*state);
        traverse(node);
    }

    std::vector<osg::Image*> images;

private:
    void collectFrom(const osg::StateSet& state) {
        for (const auto& unit : state.getTextureAttributeList())
            for (const auto& attribute : unit)
                if (osg::Texture* texture = attribute.second.first->asTexture())
                    for (unsigned int i = 0; i < texture->getNumImages(); ++i)
                        collect(texture->getImage(i));
    }

    void collect(osg::Image* image) {
        if (image && m_known.insert(image).second)
            images.push_back(image);
    }

    std::set<osg::Image*> m_known;
};

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool copyFile(const fs::path& source, const fs::path& target) {
    FileReplacement replacement(target);
    std::error_code error;
    fs::copy_file(source, replacement.temporary(), error);
    return !error && replacement.commit();
}

osgDB::ReaderWriter* writerFor(const std::string& name) {
    return osgDB::Registry::instance()->getReaderWriterForExtension(
        osgDB::getLowerCaseFileExtension(name));
}

enum class Encoding { Done, CutShort, Unknown };

/// Writes an image with the library's writer for the extension.
Encoding encode(const osg::Image& image, const fs::path& file) {
    using Result = osgDB::ReaderWriter::WriteResult;
    osgDB::ReaderWriter* writer = writerFor(file.string());
    if (!writer)
        return Encoding::Unknown;
    CheckedFile checked(file);
    const Result result = writer->writeImage(image, checked.stream());
    if (result.success())
        return checked.finish() ? Encoding::Done : Encoding::CutShort;
    if (result.status() == Result::ERROR_IN_WRITING_FILE && !checked.finish())
        return Encoding::CutShort;
    return osgDB::writeImageFile(image, file.string()) ? Encoding::Done : Encoding::Unknown;
}

/// Whether a file is what the image was read from. Its name alone says nothing: it came with the
/// model, and may be that of any file of the user's.
bool holdsImage(const std::string& file, const osg::Image& image) {
    const osg::ref_ptr<const osg::Image> other = osgDB::readRefImageFile(file);
    if (!other || !other->data() || !image.data())
        return false;
    return other->s() == image.s() && other->t() == image.t() && other->r() == image.r() &&
           other->getPixelFormat() == image.getPixelFormat() &&
           other->getDataType() == image.getDataType() &&
           other->getTotalSizeInBytes() == image.getTotalSizeInBytes() &&
           std::memcmp(other->data(), image.data(), image.getTotalSizeInBytes()) == 0;
}

} // namespace

ImagesBeside::ImagesBeside(const std::string& path, const std::string& sourceFolder)
    : m_folder(path.substr(0, path.size() - osgDB::getSimpleFileName(path).size())),
      m_lookup(new osgDB::Options) {
    m_lookup->getDatabasePathList().push_front(sourceFolder);
}

ImagesBeside::~ImagesBeside() {
    for (const auto& [image, name] : m_formerNames)
        image->setFileName(name);
    std::error_code error;
    for (const fs::path& file : m_made)
        fs::remove(file, error);
}

bool ImagesBeside::place(osg::Node& model) {
    ImageCollector collector;
    model.accept(collector);
    for (osg::Image* image : collector.images) {
        const std::string named = osgDB::findDataFile(image->getFileName(), m_lookup.get());
        const std::string source = holdsImage(named, *image) ? named : std::string();
        const std::string name = nameFor(*image, source);
        if (!makeFile(*image, source, name))
            return false;
        m_formerNames.emplace_back(image, image->getFileName());
        image->setFileName(name);
    }
    return true;
}

std::string ImagesBeside::nameFor(const osg::Image& image, const std::string& source) {
    std::string wanted = osgDB::getSimpleFileName(image.getFileName());
    if (wanted.empty())
        wanted = imageFileForUnnamed;
    if (source.empty() && !writerFor(wanted))
        wanted = osgDB::getNameLessExtension(wanted) + "." + fallbackExtension;
    std::string name = wanted;
    for (int copy = 1; !isFree(name, source); ++copy)
        name = osgDB::getNameLessExtension(wanted) + "_" + std::to_string(copy) + "." +
               osgDB::getFileExtension(wanted);
    m_taken.insert(name);
    return name;
}

/// A name is free when no other image of this model has it and no other picture stands there.
bool ImagesBeside::isFree(const std::string& name, const std::string& source) const {
    if (m_taken.count(name))
        return false;
    const fs::path target = m_folder + name;
    std::error_code error;
    if (!fs::exists(target, error))
        return true;
    return !source.empty() &&
           (fs::equivalent(source, target, error) || bytesOf(source) == bytesOf(target));
}

/// Writes the image unless it stands there already.
bool ImagesBeside::makeFile(const osg::Image& image, const std::string& source,
                            const std::string& name) {
    const fs::path target = m_folder + name;
    std::error_code error;
    if (fs::exists(target, error) || !image.data())
        return true;
    if (!source.empty()) {
        if (!copyFile(source, target))
            return false;
    } else {
        FileReplacement replacement(target);
        switch (encode(image, replacement.temporary())) {
        case Encoding::CutShort:
            return false;
        case Encoding::Unknown:
            OSG_WARN << "The image " << name << " cannot be written." << std::endl;
            return true;
        case Encoding::Done:
            if (!replacement.commit())
                return false;
        }
    }
    m_made.push_back(target);
    return true;
}

} // namespace orbisk
