#pragma once

#include "readers/ByteReader.h"
#include "readers/PlyHeader.h"
#include "readers/SeparateLines.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace orbisk {

/// Takes the numbers of an element's rows as they come.
class PlyRowReceiver {
public:
    virtual ~PlyRowReceiver() = default;

    /// A number; `property` is its place among those of the element.
    virtual void number(std::size_t property, double value) = 0;

    /// A list; it is gone after the call.
    virtual void list(std::size_t property, const std::vector<double>& values) = 0;

    /// The row has come to its end.
    virtual void endRow() = 0;
};

/// The body of a PLY file, element after element. No count in the file makes it read, or allocate,
/// more than there are bytes.
class PlyRows {
public:
    virtual ~PlyRows() = default;

    /// Goes on over the rows of the next element.
    /// @param receiver may be null.
    /// @return false where the body ends before the element does. The rows before that one were
    /// whole; of the last one, some properties may have been handed over, but not its end.
    virtual bool read(const PlyElement& element, PlyRowReceiver* receiver) = 0;

    /// How many bytes there still are.
    virtual std::size_t remaining() const = 0;
};

/// A body of lines. One line is one row: what stands behind a row's last number is passed over, and
/// lines without a word are no rows. A list whose length is missing is empty.
class PlyTextRows : public PlyRows {
public:
    explicit PlyTextRows(std::string_view body) : m_lines(body) {}

    bool read(const PlyElement& element, PlyRowReceiver* receiver) override;
    std::size_t remaining() const override { return m_lines.rest().size(); }

private:
    bool readRow(const PlyElement& element, PlyRowReceiver* receiver, std::string_view line);
    bool readList(std::string_view& line);

    SeparateLines m_lines;
    std::vector<double> m_list;
};

/// A body of bytes, in either order.
class PlyBinaryRows : public PlyRows {
public:
    PlyBinaryRows(std::string_view body, ByteOrder order)
        : m_at(body.data()), m_end(body.data() + body.size()), m_foreign(isForeign(order)) {}

    bool read(const PlyElement& element, PlyRowReceiver* receiver) override;
    std::size_t remaining() const override { return static_cast<std::size_t>(m_end - m_at); }

private:
    bool readRow(const PlyElement& element, PlyRowReceiver* receiver);
    bool readList(const PlyProperty& property, bool wanted);
    double take(PlyType type);

    const char* m_at;
    const char* m_end;
    bool m_foreign;
    std::vector<double> m_list;
};

} // namespace orbisk
