#include "readers/TextScanner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace orbisk::test {

namespace {

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    for (TextLines scanner(text); scanner.next();)
        lines.emplace_back(scanner.line());
    return lines;
}

double numberIn(std::string_view text) {
    double number = -12345.0;
    takeNumber(text, number);
    return number;
}

using Lines = std::vector<std::string>;

} // namespace

TEST(TextScannerTest, LinesEndInThreeWays) {
    EXPECT_EQ(linesOf("a\nb\r\nc\rd"), (Lines{"a", "b", "c", "d"}));
    EXPECT_EQ(linesOf("a\n\nb\r\r\n"), (Lines{"a", "", "b", ""}));
    EXPECT_EQ(linesOf(""), Lines{});
    EXPECT_EQ(linesOf("\n"), Lines{""});
    EXPECT_EQ(linesOf("\r"), Lines{""});
}

TEST(TextScannerTest, LinesAreWithoutBlanksAround) {
    EXPECT_EQ(linesOf(" \ta b\t \n  \nc"), (Lines{"a b", "", "c"}));
}

TEST(TextScannerTest, BackslashJoinsLines) {
    EXPECT_EQ(linesOf("a \\\nb\\\r\nc\nd"), (Lines{"a  b c", "d"}));
    EXPECT_EQ(linesOf("a\\"), Lines{"a\\"});
    EXPECT_EQ(linesOf("a\\\n"), Lines{"a"});
    EXPECT_EQ(linesOf("a\\b\n"), Lines{"a\\b"});
}

TEST(TextScannerTest, LineMayBeOfAnyLength) {
    const std::string large(1'000'000, 'x');
    EXPECT_EQ(linesOf(large + "\n" + large), (Lines{large, large}));
}

TEST(TextScannerTest, NumbersAreReadAsTheyAreWritten) {
    EXPECT_EQ(numberIn("  1.5"), 1.5);
    EXPECT_EQ(numberIn("+2."), 2.0);
    EXPECT_EQ(numberIn("-.5e1"), -5.0);
    EXPECT_EQ(numberIn("3E+2x"), 300.0);
    EXPECT_EQ(numberIn("4877455.580"), 4877455.580);
}

TEST(TextScannerTest, WhatIsNoNumberIsLeft) {
    for (const std::string_view text : {"", " ", "x", "+-1", "++1", "-", "e5", ","}) {
        std::string_view rest = text;
        double number = 7.0;
        EXPECT_FALSE(takeNumber(rest, number)) << text;
        EXPECT_EQ(rest, text);
        EXPECT_EQ(number, 7.0);
    }
}

TEST(TextScannerTest, NumbersBeyondTheRangeAreInfiniteOrZero) {
    EXPECT_EQ(numberIn("1e999"), HUGE_VAL);
    EXPECT_EQ(numberIn("-1e999"), -HUGE_VAL);
    EXPECT_EQ(numberIn("1e-999"), 0.0);
    EXPECT_EQ(numberIn(std::string(400, '9')), HUGE_VAL);
    EXPECT_EQ(numberIn("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_TRUE(std::isnan(numberIn("nan")));
    EXPECT_EQ(numberIn("-inf"), -HUGE_VAL);
}

TEST(TextScannerTest, RoundedToAFloatANumberIsTheFloatNearestToItsText) {
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

TEST(TextScannerTest, WholeNumbersThatNoIntHoldsBecomeZero) {
    std::string_view text = " 12 +3 -4 99999999999999999999 2147483648 x";
    int number = 0;
    for (const int expected : {12, 3, -4, 0, 0}) {
        ASSERT_TRUE(takeInteger(text, number));
        EXPECT_EQ(number, expected);
    }
    EXPECT_FALSE(takeInteger(text, number));
}

TEST(TextScannerTest, WordsAreTakenOneByOne) {
    std::string_view text = " a\tbc  ";
    EXPECT_EQ(takeWord(text), "a");
    EXPECT_EQ(takeWord(text), "bc");
    EXPECT_EQ(takeWord(text), "");
    EXPECT_TRUE(beginsWithWord("Map_KD x", "map_kd"));
    EXPECT_FALSE(beginsWithWord("map", "map_kd"));
}

} // namespace orbisk::test
