#include "readers/TextLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orbisk::test {

namespace {

using Lines = std::vector<std::string>;

Lines linesOf(std::string_view text) {
    Lines lines;
    for (TextLines reader(text); reader.next();)
        lines.emplace_back(reader.line());
    return lines;
}

} // namespace

TEST(TextLinesTest, LinesEndInThreeWays) {
    EXPECT_EQ(linesOf("a\nb\r\nc\rd"), (Lines{"a", "b", "c", "d"}));
    EXPECT_EQ(linesOf("a\n\nb\r\r\n"), (Lines{"a", "", "b", ""}));
    EXPECT_EQ(linesOf(""), Lines{});
    EXPECT_EQ(linesOf("\n"), Lines{""});
    EXPECT_EQ(linesOf("\r"), Lines{""});
}

TEST(TextLinesTest, LinesAreWithoutBlanksAround) {
    EXPECT_EQ(linesOf(" \ta b\t \n  \nc"), (Lines{"a b", "", "c"}));
}

TEST(TextLinesTest, BackslashJoinsLines) {
    EXPECT_EQ(linesOf("a \\\nb\\\r\nc\nd"), (Lines{"a  b c", "d"}));
    EXPECT_EQ(linesOf("a\\"), Lines{"a\\"});
    EXPECT_EQ(linesOf("a\\\n"), Lines{"a"});
    EXPECT_EQ(linesOf("a\\b\n"), Lines{"a\\b"});
}

TEST(TextLinesTest, LineMayBeOfAnyLength) {
    const std::string large(1'000'000, 'x');
    EXPECT_EQ(linesOf(large + "\n" + large), (Lines{large, large}));
}

} // namespace orbisk::test
