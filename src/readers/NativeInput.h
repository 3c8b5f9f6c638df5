#pragma once

#include <osgDB/StreamOperator>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace orbisk {

/// A file that cannot be what it says: too short, or with numbers that do not fit together.
class DamagedFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the readers of the library's native formats have in common: they take the words of a file
/// one by one for the library's `InputStream`, which believes all of them. This class watches their
/// order and throws `DamagedFile` where believing would end the program:
///
/// - more elements announced than the rest of the file has bytes,
/// - an object inside an object deeper than any model goes, or a node inside itself,
/// - an image that refers to what was another kind of object,
/// - among the primitive sets of a geometry something else,
/// - an image larger than its data, or packed in a format that is none of pictures,
/// - a channel of an animation without keys, or a file that orders properties in a way of its own.
///
/// Classes that are not shown it replaces by others (`readClassFor`).
///
/// The classes below tell it of every word. A stream belongs to the caller and outlives this.
class NativeInput : public osgDB::InputIterator {
public:
    /// Deeper than this nothing may be nested. Each level takes less than 1 KiB of the stack while
    /// it is read, so that a stack of 1 MiB is enough.
    static constexpr std::size_t deepestObject = 600;

protected:
    explicit NativeInput(std::istream& stream);
    ~NativeInput() override;

    /// Throws `DamagedFile`.
    [[noreturn]] static void fail(const char* what);

    /// How many bytes are left of what is being read now.
    std::uint64_t remainingBytes() const;

    /// Throws where not even a byte is left for each of `count`.
    void expectElements(std::uint64_t count) const;

    /// Whether the file has objects that were left out, whatever is inside them included.
    bool leftOutAny() const { return m_leftOutAny; }

    /// Whether an object of this identity was begun.
    bool hasBegun(std::int64_t id) const { return m_objects.count(id) != 0; }

    /// What stands in place of an object's class where there is none.
    static constexpr const char* noObject = "NULL";

    // One call for every word, in the order of the file.
    void sawNumber(std::int64_t number);
    void sawText(const std::string& text);
    /// @param word where it is the name of a class, it may come back as that of another.
    void sawWord(std::string& word);
    void sawProperty(const std::string& name, int value);
    void sawBegin();
    void sawEnd();
    void sawOther() { m_last = Word::Other; }

private:
    enum class Word { Other, Number, Text, Begin, End };

    /// What kind of object an identity stands for, as far as it matters.
    enum class Kind { Other, Node, Geometry, Array, Primitives };

    /// An image kept within the file: the numbers that describe it, in their order, then its data.
    struct ImageClaim {
        std::vector<std::int64_t> numbers;
        std::uint64_t dataBytes = 0; ///< in text, as far as it was read
        bool isOpen = false;
    };

    struct OpenObject {
        std::size_t depth; ///< at which it began
        std::int64_t id;
        Kind kind;
        bool isElement;               ///< of a list
        bool hasPrimitives = false;   ///< a geometry's, so far
        bool endedPrimitives = false; ///< the last word was the end of one of them
    };

    static Kind kindOf(const std::string& className);
    void sawIdentity(std::int64_t id);
    void checkElement(Kind kind);
    void checkNesting(std::int64_t id) const;
    void checkPackedImage() const;
    void takeImageNumber(std::int64_t number);
    void checkImageText() const;
    std::uint64_t levelBytes(std::size_t level) const;

    Word m_last = Word::Other;
    std::int64_t m_number = 0;
    std::string m_text;
    std::string m_property;
    std::size_t m_headNumbers = 0; ///< read so far of those that a file begins with
    bool m_isIdentityNext = false;
    bool m_isObject = false;   ///< whose identity comes next, else an image
    bool m_isElement = false;  ///< the last text stands where a list has an element
    bool m_beganList = false;  ///< the last bracket stands behind a number
    bool m_isModeNext = false; ///< of a primitive set, whose type was the last property
    bool m_leftOutAny = false;
    std::size_t m_depth = 0;
    std::vector<OpenObject> m_open;
    std::map<std::int64_t, Kind> m_objects;
    ImageClaim m_image;
};

} // namespace orbisk
