#include "support/WorkFolder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace orbisk::bench {

namespace fs = std::filesystem;

WorkFolder::WorkFolder() {
    std::string pattern = (fs::temp_directory_path() / "orbisk-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary folder");
    m_path = pattern;
    for (const char* folder : {"image", "internation", "help", "samples"})
        fs::create_symlink(fs::path(ORBISK_STAGE_DIR) / folder, m_path / folder);
}

WorkFolder::~WorkFolder() {
    std::error_code error;
    fs::remove_all(m_path, error);
}

void WorkFolder::writeSettings(int width, int height, bool hasSky) const {
    std::ofstream(m_path / "datafile.json")
        << R"({"project":{"layout":{"rect":{"x":20,"y":20,"w":)" << width << R"(,"h":)" << height
        << R"(}},"data":{"tool_show":1,"sky_show":)" << (hasSky ? 1 : 0)
        << R"(,"fovy":30.0,"language":0,"path_recent":[]}}})";
}

} // namespace orbisk::bench
