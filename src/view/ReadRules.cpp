#include "view/ReadRules.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace orbisk {

namespace {

using Names = std::set<std::string>;

/// What holds a model, and the companions of such files.
const Names modelExtensions = {"3dc",  "3ds", "ac",  "asc", "attr", "bsp", "bvh",  "dae",  "dxf",
                               "fbx",  "flt", "geo", "iv",  "ive",  "las", "laz",  "lw",   "lwo",
                               "lws",  "max", "md2", "mdl", "obj",  "osg", "osg2", "osgb", "osgt",
                               "osgx", "ply", "shp", "sta", "stl",  "txp", "vtf",  "wrl",  "x"};

const Names imageExtensions = {"bmp",  "bw",  "dds",  "gif", "hdr", "int", "inta", "jp2", "jpe",
                               "jpeg", "jpg", "ktx",  "pbm", "pgm", "pic", "png",  "pnm", "ppm",
                               "pvr",  "rgb", "rgba", "sgi", "tga", "tif", "tiff"};

const Names shaderExtensions = {"compute", "cs", "frag",  "fs",    "geom", "gl",
                                "glsl",    "gs", "tctrl", "teval", "vert", "vs"};

const Names fontExtensions = {"cff", "cid", "fon", "otf", "pfa", "pfb", "ttc", "ttf", "woff"};

/// Readers, writers and classes that read a file, or write one, and do nothing else.
const Names allowedPlugins = {
    "3dc", "3ds", "ac", "bmp", "bsp", "bvh", "dae", "dds", "dot", "dxf", "fbx", "freetype", "gif",
    "gles", "glsl", "gta", "hdr", "imageio", "iv", "ive", "jp2", "jpeg", "ktx", "las", "lwo", "lws",
    "md2", "mdl", "obj", "opencascade", "openflight", "osg", "osgjs", "pic", "ply", "png", "pnm",
    "pov", "pvr", "rgb", "shp", "stl", "tga", "tiff", "txp", "vrml", "vtf", "x",
    // classes of the text format of old
    "deprecated_osg", "deprecated_osganimation", "deprecated_osgfx", "deprecated_osgparticle",
    "deprecated_osgshadow", "deprecated_osgsim", "deprecated_osgterrain", "deprecated_osgtext",
    "deprecated_osgvolume",
    // classes of the native formats
    "serializers_osg", "serializers_osganimation", "serializers_osgfx", "serializers_osgparticle",
    "serializers_osgshadow", "serializers_osgsim", "serializers_osgterrain", "serializers_osgtext",
    "serializers_osgutil", "serializers_osgvolume"};

/// What executes, connects, unpacks, or hides another name in a name; and what has no place in a
/// model.
const Names refusedPlugins = {
    // scripts
    "lua", "python", "v8",
    // other machines and devices
    "curl", "osc", "resthttp", "sdl", "vnc", "zeroconf",
    // archives; two of them by a command line that has the name in it
    "gz", "osga", "osgtgz", "tgz", "zip",
    // another name, or the very file, within the name
    "logo", "normals", "revisions", "rot", "scale", "trans", "osgshadow", "osgterrain", "tf",
    // presentations and documents, which run programs and follow addresses
    "p3d", "pdf", "svg",
    // drivers of a library that itself follows addresses and commands in a file
    "gdal", "ogr",
    // films, most of which can be streams
    "avfoundation", "directshow", "ffmpeg", "gstreamer", "qtkit", "quicktime",
    // set-ups of a viewer: windows, cameras, devices
    "cfg", "osgviewer", "deprecated_osgviewer", "serializers_osgviewer", "serializers_osgga",
    "serializers_osgmanipulator",
    // user interfaces within a scene, which may hold scripts
    "deprecated_osgwidget", "serializers_osgui",
    // flight tracks and fonts of a format of their own, whose readers trust what they read
    "trk", "txf", "dicom"};

Names& ownExtensions() {
    static Names names;
    return names;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isSlash(char c) {
    return c == '/' || c == '\\';
}

std::string extensionOf(const std::string& name) {
    const std::size_t dot = name.find_last_of("./\\");
    if (dot == std::string::npos || isSlash(name[dot]))
        return {};
    return lowerCase(name.substr(dot + 1));
}

/// "a.osga/b.obj" opens an archive, whatever kind of file "a.osga" is.
bool goesThroughArchive(const std::string& name) {
    const std::string lower = lowerCase(name);
    for (const char* archive : {".osga", ".zip", ".zae", ".tgz", ".osgtgz", ".gz"})
        for (const char slash : {'/', '\\'})
            if (lower.find(archive + std::string(1, slash)) != std::string::npos)
                return true;
    return false;
}

bool isExtensionAllowed(const std::string& extension, ReadKind kind) {
    const bool isFile = modelExtensions.count(extension) != 0 ||
                        imageExtensions.count(extension) != 0 ||
                        ownExtensions().count(extension) != 0;
    switch (kind) {
    case ReadKind::Model:
    case ReadKind::Image:
        return isFile;
    case ReadKind::Shader:
        return shaderExtensions.count(extension) != 0;
    case ReadKind::Other:
        return isFile || fontExtensions.count(extension) != 0;
    }
    return false;
}

} // namespace

std::optional<std::string> readRefusal(const std::string& name, ReadKind kind) {
    if (name.find('\0') != std::string::npos)
        return "a name has no zero byte";
    if (name.find("://") != std::string::npos)
        return "files of other machines are not read";
    if (goesThroughArchive(name))
        return "archives are not opened";
    if (!isExtensionAllowed(extensionOf(name), kind))
        return "files of this kind are not read";
    return std::nullopt;
}

bool isImageName(const std::string& name) {
    return imageExtensions.count(extensionOf(name)) != 0;
}

bool isShareName(const std::string& name) {
    return name.size() > 1 && isSlash(name[0]) && isSlash(name[1]);
}

void allowReading(const std::string& extension) {
    ownExtensions().insert(extension);
}

std::optional<bool> isPluginAllowed(const std::string& name) {
    const std::string lower = lowerCase(name);
    if (allowedPlugins.count(lower) != 0)
        return true;
    if (refusedPlugins.count(lower) != 0)
        return false;
    return std::nullopt;
}

} // namespace orbisk
