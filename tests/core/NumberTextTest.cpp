#include "measure/NumberText.h"

#include "support/CommaLocale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

namespace orbisk::test {

namespace {

std::string decimal(double value) {
    std::string text;
    appendDecimal(text, value);
    return text;
}

/// What the C library prints; the tests run in a locale with dots.
std::string printed(double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(NumberTextTest, DecimalsAreThree) {
    EXPECT_EQ(decimal(0.0), "0.000");
    EXPECT_EQ(decimal(12.0), "12.000");
    EXPECT_EQ(decimal(-1234567.8914), "-1234567.891");
    EXPECT_EQ(decimal(0.9996), "1.000");
}

TEST(NumberTextTest, NegativeZeroKeepsItsSign) {
    EXPECT_EQ(decimal(-0.0), "-0.000");
    EXPECT_EQ(decimal(-0.0001), "-0.000");
}

TEST(NumberTextTest, HalvesAreRoundedAsPrinted) {
    EXPECT_EQ(decimal(0.0625), printed(0.0625));
    EXPECT_EQ(decimal(0.1875), printed(0.1875));
    EXPECT_EQ(decimal(0.0005), printed(0.0005));
    EXPECT_EQ(decimal(1.0005), printed(1.0005));
    EXPECT_EQ(decimal(0.0625), "0.062");
    EXPECT_EQ(decimal(0.1875), "0.188");
}

TEST(NumberTextTest, LargestNumbersAreWrittenWhole) {
    for (const double value :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(), 1e22, 1e100}) {
        EXPECT_EQ(decimal(value), printed(value));
    }
    EXPECT_EQ(decimal(std::numeric_limits<double>::lowest()).size(), 314u);
}

TEST(NumberTextTest, WhatIsNoNumberIsWrittenAsPrinted) {
    for (const double value : {infinity, -infinity, nan, -nan})
        EXPECT_EQ(decimal(value), printed(value));
    EXPECT_EQ(decimal(infinity), "inf");
}

TEST(NumberTextTest, AnyBitsAreWrittenAsPrinted) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        ASSERT_EQ(decimal(value), printed(value)) << bits;
    }
}

TEST(NumberTextTest, OrdinaryCoordinatesAreWrittenAsPrinted) {
    std::mt19937_64 random(8);
    std::uniform_real_distribution<double> anywhere(-1e7, 1e7);
    for (int i = 0; i < 100000; ++i) {
        const double value = anywhere(random);
        ASSERT_EQ(decimal(value), printed(value));
        // Such that the fourth decimal is a 5, as far as a double can hold it.
        const double half = std::trunc(value) / 1000.0 + 0.0005;
        ASSERT_EQ(decimal(half), printed(half));
    }
}

TEST(NumberTextTest, DotStaysInACommaLocale) {
    const CommaLocale comma;
    ASSERT_EQ(comma.problem(), "");
    EXPECT_EQ(printed(1234.5), "1234,500");
    EXPECT_EQ(decimal(1234.5), "1234.500");
}

TEST(NumberTextTest, TextIsAddedBehindTheRest) {
    std::string text = "a,";
    appendOrdinal(text, 0);
    appendDecimal(text, 2.5);
    EXPECT_EQ(text, "a,12.500");
}

TEST(NumberTextTest, OrdinalsCountFromOne) {
    std::string text;
    appendOrdinal(text, 999999);
    EXPECT_EQ(text, "1000000");
    text.clear();
    appendOrdinal(text, std::numeric_limits<std::size_t>::max() - 1);
    EXPECT_EQ(text, std::to_string(std::numeric_limits<std::size_t>::max()));
}

} // namespace orbisk::test
