#pragma once

#include <filesystem>

namespace orbisk::bench {

/// A fresh folder in which the program finds its run-time files, as links, and no settings yet.
/// It goes with this object, and with all that was put into it.
class WorkFolder {
public:
    WorkFolder();
    ~WorkFolder();

    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

    /// Puts a settings file there with which the window has this size, in screen pixels, and a sky
    /// or none.
    void writeSettings(int width, int height, bool hasSky = true) const;

private:
    std::filesystem::path m_path;
};

} // namespace orbisk::bench
