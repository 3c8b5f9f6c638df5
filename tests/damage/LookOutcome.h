#pragma once

#include <sys/resource.h>

#include <string>
#include <vector>

namespace orbisk::test {

/// Exit codes of `orbisk_look_at_model`.
inline constexpr int lookDone = 0;
inline constexpr int lookRefused = 3;

/// What one look may take.
inline constexpr unsigned int mostSeconds = 30;
inline constexpr rlim_t mostOutput = 16u << 20;
inline constexpr rlim_t mostMemory = rlim_t(8) << 30;

/// How one look ended.
struct LookOutcome {
    int exitCode = -1; ///< -1 after a signal
    int signal = 0;    ///< 0 where it ended by itself

    /// Whether the model was refused or looked at, and nothing broke.
    bool isSafe() const { return exitCode == lookDone || exitCode == lookRefused; }

    /// In words: "looked at", "refused", "SIGSEGV" and so on.
    std::string text() const;
};

/// Runs `program` (the path of `orbisk_look_at_model`) on a file, whose messages go to the file
/// `messages`, and waits for its end.
LookOutcome lookAt(const std::string& program, const std::string& file,
                   const std::string& messages);

} // namespace orbisk::test
