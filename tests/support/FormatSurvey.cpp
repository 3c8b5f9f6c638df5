// Tries every file format on models made here, and prints the table of docs/formats.md.

#include "view/ModelReader.h"
#include "view/ModelWriter.h"
#include "writers/ModelContents.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Image>
#include <osg/MatrixTransform>
#include <osg/Notify>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osgDB/Registry>
#include <osgDB/WriteFile>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using orbisk::contentsOf;
using orbisk::ModelContents;

constexpr const char* imageName = "a longer name of a picture.png";

/// A format of the two dialogs, or one that comes up with other programs' files.
struct Format {
    const char* extension;
    bool inDialogs;
    const char* missing; ///< what it takes, where nothing reads it
};

constexpr Format formats[] = {
    {"osg", true, ""},
    {"osgb", true, ""},
    {"osgt", true, ""},
    {"obj", true, ""},
    {"3ds", true, ""},
    {"dxf", true, ""},
    {"wrl", true, ""},
    {"max", true, "nobody outside its maker's program reads it: export it as obj or 3ds there"},
    {"fbx", true, "the maker's SDK, which is not free; else a converter to obj or dae"},
    {"dae", true, ""},
    {"ply", false, ""},
    {"stl", false, ""},
    {"ive", false, ""},
    {"las", false, "a reader with liblas or PDAL; else a converter to ply"},
    {"gltf", false, "a reader of our own on jsoncpp; else a converter to obj"},
    {"ac", false, ""},
    {"lwo", false, ""},
    {"x", false, ""},
    {"md2", false, ""},
};

/// Coordinates of a survey: two decimals at 5e5 and 4e6, which no float keeps.
const osg::Vec3d corners[] = {{493994.87, 4877429.62, 123.93},
                              {494993.68, 4877430.11, 178.73},
                              {494100.02, 4878817.02, 131.07}};

osg::ref_ptr<osg::Geometry> triangle(osg::Array* vertices) {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(vertices);
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    const osg::ref_ptr<osg::Vec2Array> coordinates = new osg::Vec2Array;
    for (const osg::Vec2& corner : {osg::Vec2(0, 0), osg::Vec2(1, 0), osg::Vec2(0, 1)})
        coordinates->push_back(corner);
    geometry->setTexCoordArray(0, coordinates);
    return geometry;
}

osg::ref_ptr<osg::Node> doubleModel() {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(triangle(new osg::Vec3dArray(std::begin(corners), std::end(corners))));
    return geode;
}

osg::ref_ptr<osg::Node> floatModel() {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(triangle(new osg::Vec3Array(std::begin(corners), std::end(corners))));
    return geode;
}

/// Small numbers below a transform that holds the large ones.
osg::ref_ptr<osg::Node> transformedModel() {
    const osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (const osg::Vec3d& corner : corners)
        vertices->push_back(corner - corners[0]);
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(triangle(vertices));
    const osg::ref_ptr<osg::MatrixTransform> transform =
        new osg::MatrixTransform(osg::Matrixd::translate(corners[0]));
    transform->addChild(geode);
    return transform;
}

osg::ref_ptr<osg::Node> texturedModel() {
    const osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(4, 4, 1, GL_RGB, GL_UNSIGNED_BYTE);
    image->setFileName(imageName);
    osgDB::writeImageFile(*image, imageName);
    const osg::ref_ptr<osg::Node> model = floatModel();
    osg::StateSet* state = model->asGroup()->getChild(0)->getOrCreateStateSet();
    state->setTextureAttributeAndModes(0, new osg::Texture2D(image));
    return model;
}

class Finder : public osg::NodeVisitor {
public:
    Finder() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Node& node) override {
        if (const osg::StateSet* state = node.getStateSet()) {
            const auto* texture = dynamic_cast<const osg::Texture*>(
                state->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
            textured = textured || (texture && texture->getImage(0) && texture->getImage(0)->s());
        }
        traverse(node);
    }

    void apply(osg::Transform& transform) override {
        transforms = true;
        apply(static_cast<osg::Node&>(transform));
    }

    bool textured = false;
    bool transforms = false;
};

osg::ref_ptr<osg::Node> savedAndOpened(osg::Node& model, const std::string& extension) {
    const std::string file = "saved/model." + extension;
    fs::remove_all("saved");
    fs::create_directory("saved");
    if (!orbisk::writeModel(model, nullptr, file, fs::current_path().string()))
        return nullptr;
    return orbisk::readModel(fs::absolute(file).string());
}

/// The greatest distance that a corner of the model's box moved.
double moved(osg::Node& before, osg::Node& after) {
    const ModelContents one = contentsOf(before);
    const ModelContents two = contentsOf(after);
    return std::max((osg::Vec3d(one.box._min) - osg::Vec3d(two.box._min)).length(),
                    (osg::Vec3d(one.box._max) - osg::Vec3d(two.box._max)).length());
}

std::string distance(double metres) {
    if (metres == 0.0)
        return "exact";
    char text[32];
    std::snprintf(text, sizeof text, "off by %.1g", metres);
    return text;
}

std::string keptPrecision(osg::Node& model, const std::string& extension) {
    const osg::ref_ptr<osg::Node> saved = savedAndOpened(model, extension);
    return saved ? distance(moved(model, *saved)) : "-";
}

/// What is lost of a model with everything, saved and opened again.
std::string losses(const std::string& extension) {
    const osg::ref_ptr<osg::Node> placed = transformedModel();
    const osg::ref_ptr<osg::Node> textured = texturedModel();
    const osg::ref_ptr<osg::Node> wide = doubleModel();
    std::string text;
    const auto lose = [&text](const char* what) {
        text += (text.empty() ? "" : ", ") + std::string(what);
    };
    Finder finder;
    if (const osg::ref_ptr<osg::Node> saved = savedAndOpened(*placed, extension))
        saved->accept(finder);
    if (!finder.transforms)
        lose("transforms (worked into the vertices)");
    if (const osg::ref_ptr<osg::Node> saved = savedAndOpened(*wide, extension))
        if (!contentsOf(*saved).doubles)
            lose("double precision");
    if (const osg::ref_ptr<osg::Node> saved = savedAndOpened(*textured, extension))
        saved->accept(finder);
    if (!finder.textured)
        lose("textures");
    return text.empty() ? "nothing" : text;
}

/// Whether a reader is registered for the extension; some exist that only write.
bool hasReader(const std::string& extension) {
    const osgDB::ReaderWriter* reader =
        osgDB::Registry::instance()->getReaderWriterForExtension(extension);
    return reader && (reader->supportedFeatures() & osgDB::ReaderWriter::FEATURE_READ_NODE);
}

/// Whether a file can be read; in a process of its own, since some end the packaged readers.
bool canBeRead(const std::string& file) {
    constexpr unsigned int mostSeconds = 60;
    const pid_t child = fork();
    if (child == 0) {
        alarm(mostSeconds);
        _exit(orbisk::readModel(file) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == EXIT_SUCCESS;
}

/// How many of the files below the folder that a person named with that extension can be read.
std::string readOf(const std::string& extension) {
    const char* folder = std::getenv("ORBISK_MODELS");
    if (!folder)
        return "";
    int files = 0;
    int read = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::string own = entry.path().extension().string();
        for (char& c : own)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const std::string path = entry.path().string();
        const bool hostile =
            path.find("hostile") != std::string::npos || path.find("broken") != std::string::npos;
        if (hostile || own != "." + extension)
            continue;
        ++files;
        read += canBeRead(entry.path().string()) ? 1 : 0;
    }
    return files ? std::to_string(read) + " of " + std::to_string(files) : "none here";
}

void printRow(const Format& format) {
    const std::string extension = format.extension;
    const osg::ref_ptr<osg::Node> singles = floatModel();
    const bool writes = savedAndOpened(*singles, extension).valid();
    const std::string files = readOf(extension);
    std::printf("| %s%s | %s%s | %s |", extension.c_str(), format.inDialogs ? "" : " *",
                hasReader(extension) ? "yes" : "no", files.empty() ? "" : (", " + files).c_str(),
                writes ? "yes" : "no");
    if (writes) {
        std::printf(" %s | %s | %s | %s |", keptPrecision(*singles, extension).c_str(),
                    keptPrecision(*doubleModel(), extension).c_str(),
                    keptPrecision(*transformedModel(), extension).c_str(),
                    losses(extension).c_str());
    } else {
        std::printf(" - | - | - | - |");
    }
    std::printf(" %s |\n", format.missing);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s FOLDER\nPrints the table; FOLDER is for the files.\n",
                     argv[0]);
        return 2;
    }
    osg::setNotifyLevel(osg::ALWAYS);
    fs::create_directories(argv[1]);
    fs::current_path(argv[1]);
    std::printf("| format | reads | writes | floats | doubles | below a transform | lost when "
                "saved | what it takes |\n|---|---|---|---|---|---|---|---|\n");
    for (const Format& format : formats)
        printRow(format);
    return 0;
}
