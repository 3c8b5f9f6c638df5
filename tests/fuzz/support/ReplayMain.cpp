// Goes through inputs that are kept, where there is no fuzzer: each argument is a file, or a folder
// of files.

#include "support/Fuzzing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
    if (!fs::is_directory(path))
        return {path};
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(path))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
    // Said first: of what ends the process this is the last word.
    std::printf("%s, %zu bytes\n", path.c_str(), bytes.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i)
        for (const fs::path& file : filesOf(fs::absolute(argv[i])))
            if (fs::exists(file))
                files.push_back(file);
    if (files.empty()) {
        std::fprintf(stderr, "%s: no inputs\n", argv[0]);
        return EXIT_FAILURE;
    }
    for (const fs::path& file : files)
        replay(file);
    return EXIT_SUCCESS;
}
