#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace orbisk {

/// What records of IVE files can stand for each other; the reader tells them by their tags.
enum class IveFamily {
    None, ///< stands where it is asked for by its name only
    Node,
    Drawable,
    StateSet,
    Attribute,
    Uniform,
    Shader,
    Shape,
    Layer,
    Locator,
    Primitives,
    Sector,
    ValidData
};

/// What a step through a record finds in the file.
enum class IveStep {
    Bytes,        ///< `size` bytes of plain data
    Below,        ///< a byte that is below `size`
    Text,         ///< a count, and as many bytes
    List,         ///< a count, and as often what is inside
    Times,        ///< as often what is inside as the list before had elements
    Flag,         ///< a byte, and what is inside if it is not 0
    LongFlag,     ///< the same of four bytes
    Else,         ///< what is inside if the flag or the count before was 0
    From,         ///< what is inside, in files of version `size` and later
    Until,        ///< what is inside, in files before version `size`
    Record,       ///< the record `record`
    OneOf,        ///< a record of `family`
    Shared,       ///< a number, and a record of `family` where the number is new
    SharedOrNone, ///< the same, or a number below 0
    Special       ///< what `special` says
};

/// What is read in a way of its own.
enum class IveSpecial {
    Unknown,  ///< what no record tells how to read
    Count,    ///< how often what comes after it is there
    UserData, ///< a kind, and what it stands for
    Array,
    Indices,      ///< an array of whole numbers
    Letters,      ///< a list of numbers of four bytes that is not empty
    SmallLetters, ///< the same of single bytes
    Stipple,      ///< a list of the bytes of a polygon stipple
    Positions,    ///< those of a billboard, no more than drawables
    SwitchSets,   ///< values of all children, several times
    Links,        ///< names of files, and children in place of some of them
    FontSize,
    HeightArea,       ///< columns, rows, plain data, and their heights
    PackedHeightArea, ///< the same with heights of fewer bytes
    Image,
    ImageByMode, ///< an image behind the byte that tells in which way it is there
    CubeImages,
    OldUniform,
    UniformArray
};

/// A step through a record.
struct IveField {
    IveStep step = IveStep::Bytes;
    std::uint32_t size = 0;
    IveFamily family = IveFamily::None;
    IveSpecial special = IveSpecial::Unknown;
    const struct IveRecord* record = nullptr;
    std::vector<IveField> inside = {};
};

/// What a record consists of: its tag, and its fields one after the other.
struct IveRecord {
    std::string_view name;
    IveFamily family = IveFamily::None;
    std::int32_t tag = 0;
    std::vector<IveField> fields;
};

/// The record of this tag in a family; null where the program does not know one.
const IveRecord* iveRecord(IveFamily family, std::int32_t tag);

/// The record of this name, which has to be there.
const IveRecord& iveRecord(std::string_view name);

} // namespace orbisk
