#include "readers/TextWords.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <string>
#include <vector>

namespace orbisk::test {

namespace {

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    SeparateLines reader(text);
    while (reader.next())
        lines.emplace_back(reader.line());
    return lines;
}

} // namespace

TEST(TextWordsTest, LinesEndWithALineFeedOrWithTheText) {
    EXPECT_EQ(linesOf("a\nb\r\n\nc"), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(linesOf("a\n"), std::vector<std::string>{"a"});
    EXPECT_EQ(linesOf(""), std::vector<std::string>());
}

TEST(TextWordsTest, RestBeginsBehindTheLine) {
    SeparateLines reader("head\nbody\n");
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.rest(), "body\n");
}

TEST(TextWordsTest, WordsStandBetweenBlanks) {
    std::string_view line = "  one\ttwo  ";
    EXPECT_EQ(nextWord(line), "one");
    EXPECT_EQ(nextWord(line), "two");
    EXPECT_EQ(nextWord(line), "");
    EXPECT_EQ(nextWord(line), "");
}

TEST(TextWordsTest, NumbersAreReadToTheLastDigit) {
    EXPECT_EQ(numberOf("494000.130"), 494000.130);
    EXPECT_EQ(numberOf("-1.5e-3"), -1.5e-3);
    EXPECT_EQ(numberOf("+7"), 7.0);
    EXPECT_EQ(numberOf(".5"), 0.5);
    EXPECT_EQ(numberOf("1E5"), 1e5);
}

TEST(TextWordsTest, WhatFollowsANumberIsPassedOver) {
    EXPECT_EQ(numberOf("12abc"), 12.0);
    EXPECT_EQ(numberOf("1,5"), 1.0);
}

TEST(TextWordsTest, WhatIsNoNumberIsNaN) {
    for (const char* word : {"", "x", "-", "+", "nan", "--1"})
        EXPECT_TRUE(std::isnan(numberOf(word))) << word;
}

TEST(TextWordsTest, TooLargeIsNaNAndTooSmallIsZero) {
    EXPECT_TRUE(std::isnan(numberOf("1e400")));
    EXPECT_TRUE(std::isnan(numberOf("-1e400")));
    EXPECT_TRUE(std::isnan(numberOf(std::string(400, '9'))));
    EXPECT_EQ(numberOf("1e-400"), 0.0);
    EXPECT_EQ(numberOf("-0." + std::string(400, '0') + "1"), 0.0);
}

TEST(TextWordsTest, LocaleOfTheUserChangesNothing) {
    const std::string former = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "the locale isn't installed";
    EXPECT_EQ(numberOf("2.5"), 2.5);
    std::setlocale(LC_NUMERIC, former.c_str());
}

} // namespace orbisk::test
