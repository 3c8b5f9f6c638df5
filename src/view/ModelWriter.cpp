#include "view/ModelWriter.h"

#include <osg/Image>
#include <osg/NodeVisitor>
#include <osg/Notify>
#include <osg/StateSet>
#include <osg/Texture>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Options>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>
#include <vector>

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

/// Puts a model's images beside the file it is written to, and takes their former names back.
class ImagesBeside {
public:
    /// @param path of the model that is written.
    ImagesBeside(const std::string& path, const std::string& sourceFolder)
        : m_folder(path.substr(0, path.size() - osgDB::getSimpleFileName(path).size())),
          m_lookup(new osgDB::Options) {
        m_lookup->getDatabasePathList().push_front(sourceFolder);
    }

    void place(osg::Node& model) {
        ImageCollector collector;
        model.accept(collector);
        for (osg::Image* image : collector.images) {
            m_formerNames.emplace_back(image, image->getFileName());
            image->setFileName(place(*image));
        }
    }

    ~ImagesBeside() {
        for (const auto& [image, name] : m_formerNames)
            image->setFileName(name);
    }

    ImagesBeside(const ImagesBeside&) = delete;
    ImagesBeside& operator=(const ImagesBeside&) = delete;

private:
    /// Writes the image unless it stands in the folder already; gives its name there.
    std::string place(const osg::Image& image) {
        const std::string source = osgDB::findDataFile(image.getFileName(), m_lookup.get());
        std::string wanted = osgDB::getSimpleFileName(image.getFileName());
        if (wanted.empty())
            wanted = imageFileForUnnamed;
        if (source.empty() && !canWrite(wanted))
            wanted = osgDB::getNameLessExtension(wanted) + "." + fallbackExtension;
        std::string name = wanted;
        for (int copy = 1; !isFree(name, source); ++copy)
            name = osgDB::getNameLessExtension(wanted) + "_" + std::to_string(copy) + "." +
                   osgDB::getFileExtension(wanted);
        m_taken.insert(name);
        const std::string target = m_folder + name;
        std::error_code error;
        if (!source.empty())
            fs::copy_file(source, target, fs::copy_options::skip_existing, error);
        else
            osgDB::writeImageFile(image, target);
        return name;
    }

    static bool canWrite(const std::string& name) {
        return osgDB::Registry::instance()->getReaderWriterForExtension(
                   osgDB::getLowerCaseFileExtension(name)) != nullptr;
    }

    /// A name is free when no other image of this model has it and no other picture stands there.
    bool isFree(const std::string& name, const std::string& source) const {
        if (m_taken.count(name))
            return false;
        const fs::path target = m_folder + name;
        std::error_code error;
        if (!fs::exists(target, error))
            return true;
        return !source.empty() &&
               (fs::equivalent(source, target, error) || bytesOf(source) == bytesOf(target));
    }

    std::string m_folder; ///< with its separator, in the local encoding
    osg::ref_ptr<osgDB::Options> m_lookup;
    std::set<std::string> m_taken;
    std::vector<std::pair<osg::ref_ptr<osg::Image>, std::string>> m_formerNames;
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

} // namespace

bool writeModel(osg::Node& model, ModelUpdateCallback* callback, const std::string& path,
                const std::string& sourceFolder) {
    const osg::ref_ptr<osgDB::Options> options = new osgDB::Options("WriteImageHint=UseExternal");
    const CallbackOff withoutCallback(model, callback);
    try {
        ImagesBeside images(path, sourceFolder);
        images.place(model);
        return osgDB::writeNodeFile(model, path, options.get());
    } catch (const std::exception& failure) {
        OSG_WARN << "Writing " << path << " failed: " << failure.what() << std::endl;
    } catch (...) {
        OSG_WARN << "Writing " << path << " failed." << std::endl;
    }
    return false;
}

} // namespace orbisk
