#pragma once

#include <cstddef>

namespace orbisk {

/// While one lives, its thread holds no more than a certain number of bytes in large blocks
/// (`limitedBlock` or more) that it took by `new` since the outermost one began; a `new` beyond
/// fails with `std::bad_alloc`, in the libraries as well. What a file says of its size is believed
/// by those who read it, and memory that the system promised but does not have ends the program.
///
/// One inside another adds to what is allowed. Threads have nothing to do with each other; what one
/// takes and another gives back counts as held. Blocks that libraries take without `new` are not
/// counted. Where `new` belongs to each library of its own (Windows), or to a sanitizer, nothing is
/// limited (`isSupported`).
class MemoryLimit {
public:
    static constexpr std::size_t limitedBlock = std::size_t(1) << 20;

    explicit MemoryLimit(std::size_t bytes);
    ~MemoryLimit();

    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

    /// Whether this build of the program limits memory.
    static bool isSupported();

    /// Whether a `new` in this program fails beyond a limit.
    static bool isActive();
};

} // namespace orbisk
