#pragma once

#include "support/WorkFolder.h"

#include <filesystem>

namespace orbisk::bench {

/// What opening a model took.
struct Opening {
    double milliseconds = 0.0; ///< to the first frame
    double peakMebibytes = 0.0;
    int width = 0;  ///< of the view, pixels
    int height = 0; ///< of the view, pixels
};

/// What a model is opened for.
enum class Purpose {
    Look,
    Measure ///< with the trees ready that make picking fast
};

/// Opens the large model in the program and in the library's own viewer, each time in a new
/// process, from a file that the machine has in its memory.
class FirstFrame {
public:
    /// Writes the model, and opens it once to have the size of the view.
    FirstFrame();

    Opening inProgram(Purpose purpose = Purpose::Look) const;
    Opening inLibrary(Purpose purpose = Purpose::Look) const;

private:
    WorkFolder m_folder;
    std::filesystem::path m_model;
    Opening m_first;
};

} // namespace orbisk::bench
