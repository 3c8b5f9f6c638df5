#include "app/CommandLine.h"

#include <charconv>
#include <string_view>

namespace orbisk {

namespace {

constexpr int maxPictureSide = 16384;

struct ModeName {
    std::string_view name;
    DisplayMode mode;
};

constexpr ModeName modeNames[] = {
    {"points", DisplayMode::PointCloud},
    {"tin", DisplayMode::Tin},
    {"gray", DisplayMode::Gray},
};

std::optional<DisplayMode> modeOf(std::string_view name) {
    for (const ModeName& entry : modeNames)
        if (entry.name == name)
            return entry.mode;
    return std::nullopt;
}

/// Reads a side length up to the first other character; null unless it is one a picture can have.
const char* readSide(const char* begin, const char* end, int& side) {
    const auto [next, failure] = std::from_chars(begin, end, side);
    const bool usable = failure == std::errc() && side > 0 && side <= maxPictureSide;
    return usable ? next : nullptr;
}

bool readSize(std::string_view text, ScreenshotRequest& request) {
    const char* end = text.data() + text.size();
    const char* cross = readSide(text.data(), end, request.width);
    if (!cross || cross == end || *cross != 'x')
        return false;
    return readSide(cross + 1, end, request.height) == end;
}

/// Walks over the arguments and fills the result.
class ArgumentReader {
public:
    explicit ArgumentReader(const std::vector<std::string>& arguments) : m_arguments(arguments) {}

    CommandLine read() {
        while (m_next < m_arguments.size() && !m_result.error)
            readOne(m_arguments[m_next++]);
        if (!m_result.error && m_pictureOption && !m_pictureFile)
            fail("--size and --mode belong to --screenshot");
        if (!m_result.error && m_pictureFile) {
            m_picture.file = *m_pictureFile;
            m_result.screenshot = m_picture;
            if (!m_result.model)
                fail("--screenshot needs a model");
        }
        return m_result;
    }

private:
    void readOne(const std::string& argument) {
        if (m_optionsEnded || argument.empty() || argument[0] != '-')
            readModel(argument);
        else if (argument == "--")
            m_optionsEnded = true;
        else if (argument == "--help")
            m_result.help = true;
        else if (argument == "--version")
            m_result.version = true;
        else
            readPictureOption(argument);
    }

    void readModel(const std::string& argument) {
        if (m_result.model)
            fail("more than one model: " + argument);
        else
            m_result.model = argument;
    }

    void readPictureOption(const std::string& option) {
        if (option != "--screenshot" && option != "--size" && option != "--mode")
            return fail("unknown option " + option);
        if (m_next == m_arguments.size())
            return fail(option + " needs a value");
        const std::string& value = m_arguments[m_next++];
        if (option == "--screenshot") {
            m_pictureFile = value;
            return;
        }
        m_pictureOption = true;
        if (option == "--size") {
            if (!readSize(value, m_picture))
                fail("not a size: " + value);
        } else if (const auto mode = modeOf(value)) {
            m_picture.mode = *mode;
        } else {
            fail("not a mode: " + value);
        }
    }

    void fail(const std::string& message) { m_result.error = message; }

    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 0;
    bool m_optionsEnded = false;
    bool m_pictureOption = false;
    std::optional<std::string> m_pictureFile;
    ScreenshotRequest m_picture;
    CommandLine m_result;
};

} // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    return ArgumentReader(arguments).read();
}

std::string commandLineHelp() {
    return "Usage: orbisk [MODEL]\n"
           "       orbisk --screenshot FILE [--size WxH] [--mode points|tin|gray] MODEL\n"
           "\n"
           "Views and measures 3D models: textured meshes, terrain, point clouds.\n"
           "\n"
           "  MODEL              opens this model file after start-up\n"
           "  --screenshot FILE  writes a PNG picture of the view and exits\n"
           "  --size WxH         the picture's size in pixels (1280x800)\n"
           "  --mode MODE        shows the model as points, tin or gray\n"
           "  --help             shows this text\n"
           "  --version          shows the version\n"
           "\n"
           "Settings, skybox, translations and help are looked for in the working directory.\n";
}

std::string versionLine() {
    return "Orbisk " ORBISK_VERSION "\n";
}

} // namespace orbisk
