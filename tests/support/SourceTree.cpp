#include "support/SourceTree.h"

#include "support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

struct CMakeCommand {
    std::string name;
    Words arguments;
};

bool isSource(const std::string& name) {
    const std::string extension = fs::path(name).extension().string();
    return extension == ".cpp" || extension == ".h";
}

std::vector<CMakeCommand> commandsOf(const std::string& cmakeList) {
    const std::string text = std::regex_replace(cmakeList, std::regex("#[^\n]*"), "");
    const std::regex pattern(R"(([A-Za-z_]+)\s*\(([^()]*)\))");
    std::vector<CMakeCommand> commands;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end;
         ++match) {
        CMakeCommand command{(*match)[1], {}};
        std::istringstream words((*match)[2]);
        for (std::string word; words >> word;)
            command.arguments.push_back(word);
        commands.push_back(command);
    }
    return commands;
}

Words filesAmong(const Words& arguments, const std::map<std::string, Words>& variables) {
    Words files;
    for (const std::string& argument : arguments) {
        const auto variable = variables.find(argument);
        if (variable != variables.end())
            files.insert(files.end(), variable->second.begin(), variable->second.end());
        else if (isSource(argument))
            files.push_back(argument);
    }
    return files;
}

SourceTarget& targetNamed(const std::string& name, std::vector<SourceTarget>& targets) {
    for (SourceTarget& target : targets)
        if (target.name == name)
            return target;
    targets.push_back({name, {}});
    return targets.back();
}

std::map<std::string, std::size_t> ranksOf(const std::vector<SourceTarget>& targets) {
    std::map<std::string, std::size_t> ranks;
    for (std::size_t rank = 0; rank < targets.size(); ++rank)
        for (const std::string& file : targets[rank].files)
            ranks[file] = rank;
    return ranks;
}

bool isStandardHeader(const std::string& name) {
    return std::regex_match(name, std::regex("[a-z0-9_]+"));
}

bool isCoreLibrary(const std::string& name) {
    static const std::regex values("json/[a-z_]+\\.h|osg/(Vec[234][bdfsiu]*|Matrix[df]?|Quat|Plane|"
                                   "BoundingBox|BoundingSphere|Math)");
    return isStandardHeader(name) || std::regex_match(name, values);
}

bool isWindowToolkit(const std::string& name) {
    return name.rfind("wx/", 0) == 0;
}

/// Whether a file of the target at `rank` may use this header of a library.
bool mayUseLibrary(std::size_t rank, const std::string& file, const std::string& header) {
    // The core's part of the platform folder may ask its system.
    if (rank == 0 && file.rfind("platform/", 0) == 0)
        return !isWindowToolkit(header) && header.find("GL/") == std::string::npos;
    if (rank == 0)
        return isCoreLibrary(header);
    return rank > 1 || !isWindowToolkit(header);
}

} // namespace

Sources programSources() {
    const fs::path root = fs::path(ORBISK_SOURCE_DIR) / "src";
    Sources sources;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        if (entry.is_regular_file() && isSource(entry.path().filename().string()))
            sources[entry.path().lexically_relative(root).generic_string()] =
                readFile(entry.path());
    return sources;
}

std::vector<SourceTarget> targetsOf(const std::string& cmakeList) {
    std::map<std::string, Words> variables;
    std::vector<SourceTarget> targets;
    for (const CMakeCommand& command : commandsOf(cmakeList)) {
        if (command.arguments.empty())
            continue;
        const std::string& first = command.arguments.front();
        const Words files = filesAmong(command.arguments, variables);
        if (command.name == "set") {
            Words& values = variables["${" + first + "}"];
            values.insert(values.end(), files.begin(), files.end());
        } else if (command.name == "add_library" || command.name == "add_executable" ||
                   command.name == "target_sources") {
            Words& listed = targetNamed(first, targets).files;
            listed.insert(listed.end(), files.begin(), files.end());
        }
    }
    return targets;
}

std::vector<Include> includesOf(const std::string& source) {
    static const std::regex pattern(R"(^\s*#\s*include\s*(<[^>]*>|"[^"]*"))");
    std::vector<Include> includes;
    std::istringstream lines(source);
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_search(line, match, pattern)) {
            const std::string name = match[1];
            includes.push_back({name.substr(1, name.size() - 2), name.front() == '"'});
        }
    return includes;
}

std::vector<std::string> listingProblems(const std::vector<SourceTarget>& targets,
                                         const Sources& sources) {
    std::map<std::string, std::size_t> listings;
    for (const SourceTarget& target : targets)
        for (const std::string& file : target.files)
            ++listings[file];
    std::vector<std::string> problems;
    for (const auto& [file, text] : sources)
        if (listings[file] != 1)
            problems.push_back(file + " is listed " + std::to_string(listings[file]) + " times");
    return problems;
}

std::vector<std::string> includeProblems(const std::vector<SourceTarget>& targets,
                                         const Sources& sources,
                                         const std::map<std::string, std::string>& generated) {
    auto ranks = ranksOf(targets);
    for (const auto& [header, owner] : generated)
        for (std::size_t rank = 0; rank < targets.size(); ++rank)
            if (targets[rank].name == owner)
                ranks[header] = rank;
    std::vector<std::string> problems;
    for (const auto& [file, text] : sources) {
        const auto own = ranks.find(file);
        if (own == ranks.end())
            continue;
        for (const Include& include : includesOf(text)) {
            const auto other = ranks.find(include.name);
            const bool allowed = include.quoted
                                     ? other != ranks.end() && other->second <= own->second
                                     : mayUseLibrary(own->second, file, include.name);
            if (!allowed)
                problems.push_back(file + " (" + targets[own->second].name + ") includes " +
                                   include.name);
        }
    }
    return problems;
}

std::vector<std::string> systemDifferences(const std::string& source) {
    static const std::regex condition(
        R"(^\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(_?WIN32|_WIN64|__WINDOWS__|__CYGWIN__|__MINGW\w*|)"
        R"(_?_?linux(__)?|_?_?unix(__)?|__APPLE__|__MACH__|__FreeBSD__|__WX[A-Z0-9]+\w*__|)"
        R"(__GLIBC__|_POSIX_\w+)\b)");
    static const std::regex header(
        R"(^\s*#\s*include\s*[<"]((sys|arpa|netinet|linux|X11|gtk|gdk|wayland)/.*|)"
        R"((GL/glx|GL/wgl|glib|glib-object|unistd|windows|windowsx|winsock2?|shlobj|shellapi|direct|io|dlfcn|)"
        R"(fcntl|pwd|poll|dirent|termios|pthread|langinfo|libgen|glob)\.h|)"
        R"(wx/(gtk|msw|osx|x11|qt|unix)/.*|osgViewer/api/.*)[>"])");
    std::vector<std::string> found;
    std::istringstream lines(source);
    for (std::string line; std::getline(lines, line);)
        if (std::regex_search(line, condition) || std::regex_search(line, header))
            found.push_back(line);
    return found;
}

} // namespace orbisk::test
