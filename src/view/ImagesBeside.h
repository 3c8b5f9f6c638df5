#pragma once

#include <osg/Image>
#include <osg/Node>
#include <osg/ref_ptr>
#include <osgDB/Options>

#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orbisk {

/// Puts a model's images beside the file it is written to and names them relative to it, for the
/// life of this object: then the images have their former names again, and files that were made
/// for a model that was not kept are gone. Files that stood there are never changed.
class ImagesBeside {
public:
    /// @param path of the model that is written, in the local encoding.
    /// @param sourceFolder where the model was read from: its image files are copied as they are.
    ImagesBeside(const std::string& path, const std::string& sourceFolder);
    ~ImagesBeside();

    ImagesBeside(const ImagesBeside&) = delete;
    ImagesBeside& operator=(const ImagesBeside&) = delete;

    /// Places every image of the model. One that no writer can put into a file keeps its name only.
    /// @return whether no file was cut short or refused.
    bool place(osg::Node& model);

    /// The model was written: the files stay.
    void keep() { m_made.clear(); }

private:
    std::string nameFor(const osg::Image& image, const std::string& source);
    bool isFree(const std::string& name, const std::string& source) const;
    bool makeFile(const osg::Image& image, const std::string& source, const std::string& name);

    std::string m_folder; ///< with its separator, in the local encoding
    osg::ref_ptr<osgDB::Options> m_lookup;
    std::set<std::string> m_taken;
    std::vector<std::filesystem::path> m_made;
    std::vector<std::pair<osg::ref_ptr<osg::Image>, std::string>> m_formerNames;
};

} // namespace orbisk
