#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace orbisk::test {

/// A fresh folder that goes with this object, and with all that was put into it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Makes a fresh folder the working directory while it lives.
class WorkingFolder {
public:
    WorkingFolder();
    ~WorkingFolder();

    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    const std::filesystem::path& path() const { return m_folder.path(); }

private:
    TemporaryFolder m_folder;
    std::filesystem::path m_former;
};

/// The bytes of a file; empty when it cannot be read.
std::string readFile(const std::filesystem::path& path);

/// The names of what is in a folder.
std::set<std::string> entriesOf(const std::filesystem::path& folder);

void writeFile(const std::filesystem::path& path, const std::string& bytes);

} // namespace orbisk::test
