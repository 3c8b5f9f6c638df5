#include "view/ReadGuard.h"

#include "platform/MemoryLimit.h"
#include "readers/Ac3dLook.h"
#include "readers/BinaryMeshLooks.h"
#include "readers/ColladaLook.h"
#include "readers/DirectXLook.h"
#include "readers/InventorLook.h"
#include "readers/ModelReaders.h"
#include "readers/OldTextLook.h"
#include "readers/SaferSerializers.h"
#include "readers/XmlSceneLook.h"
#include "view/IveReading.h"
#include "view/LibraryGuard.h"
#include "view/MessageLimit.h"
#include "view/ModelCheck.h"
#include "view/NodeCheck.h"
#include "view/ReadRules.h"
#include "view/RemoteDocuments.h"

#include <osg/Notify>
#include <osgDB/Callbacks>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Registry>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <vector>

namespace orbisk {

namespace {

using Result = osgDB::ReaderWriter::ReadResult;

constexpr std::size_t deepestNesting = 16;
constexpr std::size_t mostNestedReads = 100'000;

class TrustedFolder {
public:
    void setFor(const std::string& modelPath) {
        const std::lock_guard lock(m_mutex);
        m_path = osgDB::getFilePath(modelPath);
    }

    bool contains(const std::string& name) {
        const std::lock_guard lock(m_mutex);
        const auto isSlash = [](char letter) { return letter == '/' || letter == '\\'; };
        return !m_path.empty() && name.size() > m_path.size() &&
               name.compare(0, m_path.size(), m_path) == 0 && isSlash(name[m_path.size()]) &&
               name.find("..") == std::string::npos;
    }

private:
    std::mutex m_mutex;
    std::string m_path;
};

TrustedFolder& trustedFolder() {
    static TrustedFolder folder;
    return folder;
}

/// What a thread is reading at the moment, from the outermost file to the innermost.
struct Reading {
    std::vector<std::string> files;
    std::size_t count = 0; ///< of reads since the outermost one began
};

thread_local Reading reading;

/// Notes one read while it lasts.
class ReadMark {
public:
    explicit ReadMark(const std::string& file) {
        if (isOutermost())
            reading.count = 0;
        ++reading.count;
        reading.files.push_back(file);
    }

    ~ReadMark() { reading.files.pop_back(); }

    ReadMark(const ReadMark&) = delete;
    ReadMark& operator=(const ReadMark&) = delete;

    static bool isOutermost() { return reading.files.empty(); }

    static bool isInside(const std::string& file) {
        return std::find(reading.files.begin(), reading.files.end(), file) != reading.files.end();
    }

    static bool isTooMuch() {
        return reading.files.size() >= deepestNesting || reading.count >= mostNestedReads;
    }
};

/// The file that a name leads to, or the name where there is none.
std::string fileOf(const std::string& name, const osgDB::Options* options) {
    const std::string found = osgDB::findDataFile(name, options);
    return found.empty() ? name : osgDB::getRealPath(found);
}

/// What nobody knows the end of; a reader would wait there, or fill the memory.
bool isPipeOrDevice(const std::string& file) {
    std::error_code error;
    return std::filesystem::exists(file, error) && !std::filesystem::is_regular_file(file, error);
}

/// How much memory reading a file may take: nothing unpacks to more, and no reader needs more.
std::size_t roomFor(const std::string& file, bool isOutermost) {
    constexpr std::size_t first = std::size_t(2) << 30;
    constexpr std::size_t forEachByte = 64;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    return (isOutermost ? first : 0) + (error ? 0 : forEachByte * size);
}

/// Looks at a file before its reader does, where that tells what its reader would break on.
std::optional<std::string> contentRefusal(const std::string& name, const std::string& extension,
                                          const osgDB::Options* options) {
    const std::string path = osgDB::findDataFile(name, options);
    if (path.empty())
        return std::nullopt;
    using Look = std::optional<std::string> (*)(const std::string& path);
    static const std::map<std::string, Look> looks = {
        {"ac", ac3dRefusal},      {"dae", colladaRefusal},   {"iv", inventorRefusal},
        {"lw", lightwaveRefusal}, {"lwo", lightwaveRefusal}, {"md2", md2Refusal},
        {"osg", oldTextRefusal},  {"osgx", xmlSceneRefusal}, {"wrl", inventorRefusal},
        {"x", directXRefusal}};
    const auto look = looks.find(extension);
    return look != looks.end() ? look->second(path) : std::nullopt;
}

/// The program's own reader; the library's is not asked where this one fails.
const osgDB::ReaderWriter* ownReaderFor(const std::string& name) {
    return modelReaderFor(osgDB::getLowerCaseFileExtension(name));
}

class ReadGuard : public osgDB::ReadFileCallback {
public:
    Result openArchive(const std::string&, osgDB::ReaderWriter::ArchiveStatus, unsigned int,
                       const osgDB::Options*) override {
        return Result("archives are not opened");
    }

    Result readScript(const std::string&, const osgDB::Options*) override {
        return Result("scripts are not read");
    }

    Result readObject(const std::string& name, const osgDB::Options* options) override {
        return guarded(name, ReadKind::Other, options, [&] {
            const osgDB::ReaderWriter* own = ownReaderFor(name);
            return own ? own->readObject(name, options) : looked(name, options, [&] {
                return ReadFileCallback::readObject(name, options);
            });
        });
    }

    Result readImage(const std::string& name, const osgDB::Options* options) override {
        return guarded(name, ReadKind::Image, options, [&] {
            const osgDB::ReaderWriter* own = ownReaderFor(name);
            return own ? own->readImage(name, options) : looked(name, options, [&] {
                return ReadFileCallback::readImage(name, options);
            });
        });
    }

    Result readHeightField(const std::string& name, const osgDB::Options* options) override {
        return guarded(name, ReadKind::Image, options, [&] {
            return looked(name, options,
                          [&] { return ReadFileCallback::readHeightField(name, options); });
        });
    }

    Result readNode(const std::string& name, const osgDB::Options* options) override {
        return guarded(name, ReadKind::Model, options, [&] {
            const osgDB::ReaderWriter* own = ownReaderFor(name);
            return own ? own->readNode(name, options) : looked(name, options, [&] {
                return ReadFileCallback::readNode(name, options);
            });
        });
    }

    Result readShader(const std::string& name, const osgDB::Options* options) override {
        return guarded(name, ReadKind::Shader, options,
                       [&] { return ReadFileCallback::readShader(name, options); });
    }

private:
    /// Leaves a file to the library's reader, whatever is wanted of it, once it was looked at.
    template <typename Read>
    static Result looked(const std::string& name, const osgDB::Options* options, const Read& read) {
        const std::string extension = osgDB::getLowerCaseFileExtension(name);
        if (extension == "ive")
            return readIve(name, options);
        if (const auto refusal = contentRefusal(name, extension, options))
            return Result(*refusal);
        // The native format too, but with its words taken by the library.
        if (extension == "osgx")
            installSaferSerializers();
        return read();
    }

    template <typename Read>
    Result guarded(const std::string& name, ReadKind kind, const osgDB::Options* options,
                   const Read& read) {
        if (const auto refusal = readRefusal(name, kind))
            return Result(*refusal);
        if (isShareName(name) && !trustedFolder().contains(name))
            return Result("files of other machines are not read");
        const bool isOutermost = ReadMark::isOutermost();
        if (isOutermost)
            startCountingMessages();
        const std::string file = fileOf(name, options);
        if (isPipeOrDevice(file))
            return Result("pipes, devices and folders are not read");
        if (ReadMark::isTooMuch() || ReadMark::isInside(file))
            return Result("files that read each other without end are not read");
        const ReadMark mark(file);
        const MemoryLimit limit(roomFor(file, isOutermost));
        Result result = withoutThrowing(read);
        return isOutermost ? withoutThrowing([&] { return checked(result); }) : result;
    }

    template <typename Read>
    static Result withoutThrowing(const Read& read) {
        try {
            return read();
        } catch (const std::exception& failure) {
            return Result(failure.what());
        } catch (...) {
            return Result("the reader failed");
        }
    }

    static Result checked(Result& result) {
        if (!result.validNode())
            return result;
        const osg::ref_ptr<osg::Node> shown = shownForm(*result.getNode());
        const auto fault = checkModel(*shown);
        if (fault)
            return Result(*fault);
        return shown == result.getNode() ? result : Result(shown);
    }
};

} // namespace

void installReadGuard() {
    static std::once_flag once;
    std::call_once(once, [] {
        osgDB::Registry& registry = *osgDB::Registry::instance();
        registry.setReadFileCallback(new ReadGuard);
        installLibraryGuard();
        refuseRemoteDocuments();
        limitMessages();
    });
}

void trustFolderOf(const std::string& modelPath) {
    trustedFolder().setFor(modelPath);
}

} // namespace orbisk
