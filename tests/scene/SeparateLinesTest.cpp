#include "readers/SeparateLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orbisk::test {

namespace {

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    for (SeparateLines reader(text); reader.next();)
        lines.emplace_back(reader.line());
    return lines;
}

} // namespace

TEST(SeparateLinesTest, LinesEndWithALineFeedOrWithTheText) {
    EXPECT_EQ(linesOf("a\nb\r\n\nc"), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(linesOf("a\n"), std::vector<std::string>{"a"});
    EXPECT_EQ(linesOf(""), std::vector<std::string>());
}

TEST(SeparateLinesTest, RestBeginsBehindTheLine) {
    SeparateLines reader("head\nbody\n");
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.rest(), "body\n");
}

} // namespace orbisk::test
