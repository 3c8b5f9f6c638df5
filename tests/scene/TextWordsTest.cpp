#include "readers/TextWords.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace orbisk::test {

namespace {

double numberIn(std::string_view text) {
    double number = -12345.0;
    takeNumber(text, number);
    return number;
}

} // namespace

TEST(TextWordsTest, WordsStandBetweenBlanks) {
    std::string_view line = "  one\ttwo  ";
    EXPECT_EQ(takeWord(line), "one");
    EXPECT_EQ(takeWord(line), "two");
    EXPECT_EQ(takeWord(line), "");
    EXPECT_EQ(takeWord(line), "");
    line = "\fone\vtwo\rthree";
    EXPECT_EQ(takeWord(line), "one");
    EXPECT_EQ(takeWord(line), "two");
    EXPECT_EQ(takeWord(line), "three");
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
    for (const char* word : {"", "x", "-", "+", "nan", "--1", "+-1"})
        EXPECT_TRUE(std::isnan(numberOf(word))) << word;
}

TEST(TextWordsTest, TooLargeAWordIsInfiniteAndTooSmallAWordIsZero) {
    EXPECT_EQ(numberOf("1e400"), HUGE_VAL);
    EXPECT_EQ(numberOf("-1e400"), -HUGE_VAL);
    EXPECT_EQ(numberOf(std::string(400, '9')), HUGE_VAL);
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

TEST(TextWordsTest, NumbersAreReadAsTheyAreWritten) {
    EXPECT_EQ(numberIn("  1.5"), 1.5);
    EXPECT_EQ(numberIn("+2."), 2.0);
    EXPECT_EQ(numberIn("-.5e1"), -5.0);
    EXPECT_EQ(numberIn("3E+2x"), 300.0);
    EXPECT_EQ(numberIn("4877455.580"), 4877455.580);
}

TEST(TextWordsTest, WhatIsNoNumberIsLeft) {
    for (const std::string_view text : {"", " ", "x", "+-1", "++1", "-", "e5", ","}) {
        std::string_view rest = text;
        double number = 7.0;
        EXPECT_FALSE(takeNumber(rest, number)) << text;
        EXPECT_EQ(rest, text);
        EXPECT_EQ(number, 7.0);
    }
}

TEST(TextWordsTest, NumbersBeyondTheRangeAreInfiniteOrZero) {
    EXPECT_EQ(numberIn("1e999"), HUGE_VAL);
    EXPECT_EQ(numberIn("-1e999"), -HUGE_VAL);
    EXPECT_EQ(numberIn("1e-999"), 0.0);
    EXPECT_EQ(numberIn(std::string(400, '9')), HUGE_VAL);
    EXPECT_EQ(numberIn("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_TRUE(std::isnan(numberIn("nan")));
    EXPECT_EQ(numberIn("-inf"), -HUGE_VAL);
}

TEST(TextWordsTest, RoundedToAFloatANumberIsTheFloatNearestToItsText) {
    // Rounded to a double first, this one lies exactly between two floats.
    const char* const halfway = "1.00000005960464477540";
    EXPECT_EQ(static_cast<float>(std::strtod(halfway, nullptr)), 1.0f);
    EXPECT_EQ(static_cast<float>(numberIn(halfway)), std::strtof(halfway, nullptr));
    EXPECT_NE(static_cast<float>(numberIn(halfway)), 1.0f);

    std::mt19937 random(1);
    std::uniform_real_distribution<double> magnitude(-9.0, 9.0);
    for (int i = 0; i < 20'000; ++i) {
        char text[40];
        std::snprintf(text, sizeof text, "%.*f", i % 12, std::pow(10.0, magnitude(random)));
        EXPECT_EQ(static_cast<float>(numberIn(text)), std::strtof(text, nullptr)) << text;
        EXPECT_NEAR(numberIn(text), std::strtod(text, nullptr),
                    std::strtod(text, nullptr) * 2.3e-16)
            << text;
    }
}

TEST(TextWordsTest, WholeNumbersThatNoIntHoldsBecomeZero) {
    std::string_view text = " 12 +3 -4 99999999999999999999 2147483648 x";
    int number = 0;
    for (const int expected : {12, 3, -4, 0, 0}) {
        ASSERT_TRUE(takeInteger(text, number));
        EXPECT_EQ(number, expected);
    }
    EXPECT_FALSE(takeInteger(text, number));
}

TEST(TextWordsTest, WordsAreTakenOneByOne) {
    std::string_view text = " a\tbc  ";
    EXPECT_EQ(takeWord(text), "a");
    EXPECT_EQ(takeWord(text), "bc");
    EXPECT_EQ(takeWord(text), "");
}

TEST(TextWordsTest, CaseOfAKeywordDoesNotMatter) {
    EXPECT_TRUE(isWord("EndSolid", "endsolid"));
    EXPECT_FALSE(isWord("endsolid2", "endsolid"));
    EXPECT_TRUE(beginsWithWord("Map_KD x", "map_kd"));
    EXPECT_FALSE(beginsWithWord("map", "map_kd"));
}

} // namespace orbisk::test
