#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// How the body of a PLY file stands for numbers.
enum class PlyFormat { Ascii, LittleEndian, BigEndian };

/// The types of numbers that a PLY file can hold.
enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64 };

/// How many bytes a number of this type takes in a binary body.
std::size_t sizeOf(PlyType type);

/// One number of each row of an element, or a list of them.
struct PlyProperty {
    std::string name;
    PlyType type;                     ///< of the number, or of those in the list
    std::optional<PlyType> countType; ///< of the number before a list; without it, there is none
};

/// A table in a PLY file's body, such as the vertices: rows of properties.
struct PlyElement {
    std::string name;
    std::uint64_t rows; ///< as the header claims
    std::vector<PlyProperty> properties;

    /// The place of the first property that has one of these names; none where there is none.
    std::optional<std::size_t> find(std::initializer_list<std::string_view> names) const;

    /// The fewest bytes that a row can take in a body of this format.
    std::size_t leastRowSize(PlyFormat format) const;
};

/// What stands before a PLY file's body.
struct PlyHeader {
    PlyFormat format;
    std::vector<std::string> comments; ///< without the keyword
    std::vector<PlyElement> elements;  ///< in the order of the body
    std::size_t size;                  ///< bytes up to the body
};

/// Reads the header at the begin of a PLY file. Nothing where it isn't one, ends early, or has a
/// line that makes no sense.
std::optional<PlyHeader> parsePlyHeader(std::string_view file);

} // namespace orbisk
