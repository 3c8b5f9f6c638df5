#include "settings/LeadingNumber.h"

#include "support/CommaLocale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace orbisk::test {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Reading {
    const char* text;
    double number;
};

using Readings = std::vector<Reading>;

const Readings numbers = {{"30.5", 30.5}, {"-3", -3.0},      {"+.25", 0.25}, {"2.", 2.0},
                          {"007", 7.0},   {"1.25e2", 125.0}, {"1E-3", 1e-3}, {"0x1.8", 1.5}};
const Readings followed = {{"12abc", 12.0}, {"12.5.7", 12.5}, {"7 8", 7.0},
                           {"12e", 12.0},   {"3m.5", 3.0},    {"30\xc2\xb0", 30.0}};
const Readings preceded = {{" \t\n\v\f\r 4.5", 4.5}, {" x4", 0.0}};
const Readings without = {{"", 0.0},  {" ", 0.0},   {"abc", 0.0}, {"-", 0.0},
                          {".", 0.0}, {"+-1", 0.0}, {"e5", 0.0},  {"--2", 0.0}};
const Readings commas = {{"3,5", 3.0}, {"1.5,25", 1.5}, {",5", 0.0}, {"1,000.5", 1.0}};
const Readings extremes = {
    {"inf", infinity}, {"-Infinity!", -infinity}, {"1e999", infinity}, {"1e-999", 0.0}};

void expect(const Readings& readings) {
    for (const Reading& reading : readings)
        EXPECT_EQ(leadingNumber(reading.text), reading.number) << reading.text;
}

/// Numbers of all sizes, as the C library prints them but for the decimal point.
void expectRoundTrips() {
    std::mt19937_64 random(8);
    std::uniform_real_distribution<double> significand(-10.0, 10.0);
    std::uniform_int_distribution<int> exponent(-300, 300);
    for (int i = 0; i < 5000; ++i) {
        const double number = significand(random) * std::pow(10.0, exponent(random));
        char characters[64];
        std::snprintf(characters, sizeof characters, "%.17g", number);
        std::string text = characters;
        std::replace(text.begin(), text.end(), ',', '.');
        EXPECT_EQ(leadingNumber(text), number) << text;
    }
}

} // namespace

TEST(LeadingNumberTest, ReadsNumbers) {
    expect(numbers);
}

TEST(LeadingNumberTest, IgnoresWhatFollows) {
    expect(followed);
}

TEST(LeadingNumberTest, SkipsBlanksBefore) {
    expect(preceded);
}

TEST(LeadingNumberTest, IsZeroWithoutDigits) {
    expect(without);
}

TEST(LeadingNumberTest, CommaEndsTheNumber) {
    expect(commas);
}

TEST(LeadingNumberTest, KnowsTheInfinite) {
    expect(extremes);
    EXPECT_TRUE(std::isnan(leadingNumber("nan")));
}

TEST(LeadingNumberTest, GivesBackWhatWasPrinted) {
    expectRoundTrips();
}

TEST(LeadingNumberTest, ReadsTheSameWhereNumbersHaveCommas) {
    const CommaLocale locale;
    ASSERT_EQ(locale.problem(), "");
    ASSERT_EQ(std::strtod("1,5", nullptr), 1.5);
    for (const Readings* readings : {&numbers, &followed, &preceded, &without, &commas, &extremes})
        expect(*readings);
    expectRoundTrips();
}

} // namespace orbisk::test
