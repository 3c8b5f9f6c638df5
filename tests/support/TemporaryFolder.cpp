#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace orbisk::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "orbisk-test-XXXXXX").string();
    if (mkdtemp(pattern.data()))
        m_path = pattern;
    else
        ADD_FAILURE() << "no temporary folder";
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(m_path, error);
}

WorkingFolder::WorkingFolder() : m_former(fs::current_path()) {
    fs::current_path(m_folder.path());
}

WorkingFolder::~WorkingFolder() {
    std::error_code error;
    fs::current_path(m_former, error);
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::set<std::string> entriesOf(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

void writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    ASSERT_TRUE(file.good()) << path;
}

} // namespace orbisk::test
