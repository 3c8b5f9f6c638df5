#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// What a target defines: takes one input. The bytes are the caller's.
/// @return 0, whatever the input was.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace orbisk::fuzz {

/// Tells what is not as it should be and ends the process, which is what a fuzzer takes for a
/// finding. Does nothing where `holds`.
void require(bool holds, const char* what);

/// Draws values from an input, one after the other; zeros once the input is used up.
class Bytes {
public:
    Bytes(const std::uint8_t* bytes, std::size_t size) : m_next(bytes), m_left(size) {}

    bool isUsedUp() const { return m_left == 0; }

    std::uint8_t byte();

    /// Of 0 to `count` - 1; `count` is from 1 to 65536.
    std::size_t below(std::size_t count);

    /// Any double at all, special ones and small whole ones more often than their share.
    double number();

    /// So many raw bytes, or what is left.
    std::string text(std::size_t size);

    /// All that is left.
    std::string rest() { return text(m_left); }

private:
    const std::uint8_t* m_next;
    std::size_t m_left;
};

/// A fresh folder, made the working directory for the rest of the process and removed at its
/// regular end.
const std::filesystem::path& workingFolder();

} // namespace orbisk::fuzz
