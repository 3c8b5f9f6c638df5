#include "writers/ExactNumbers.h"

#include <gtest/gtest.h>
#include <osg/Math>

#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

namespace orbisk::test {

namespace {

constexpr int cases = 200000;

bool readBack(double number) {
    const double read = osg::asciiToDouble(exactText(number).c_str());
    return std::memcmp(&read, &number, sizeof number) == 0;
}

double withBits(std::uint64_t bits) {
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

} // namespace

TEST(ExactNumbersTest, EverydayNumbersAreShort) {
    EXPECT_EQ(exactText(0.0), "0");
    EXPECT_EQ(exactText(1.0), "1");
    EXPECT_EQ(exactText(-2.5), "-2.5");
    EXPECT_EQ(exactText(0.1), "0.1");
}

TEST(ExactNumbersTest, ZeroKeepsItsSign) {
    EXPECT_TRUE(readBack(0.0));
    EXPECT_TRUE(readBack(-0.0));
}

// Read by the library, the shortest text of about every other such number is its neighbour.
TEST(ExactNumbersTest, SurveyedCoordinatesComeBackBitForBit) {
    std::mt19937_64 random(7);
    std::uniform_int_distribution<int> easting(0, 100'000'000);
    std::uniform_int_distribution<int> northing(0, 1'000'000'000);
    int plainFails = 0;
    for (int i = 0; i < cases; ++i) {
        const double x = easting(random) / 100.0;
        const double y = northing(random) / 1000.0;
        ASSERT_TRUE(readBack(x)) << x;
        ASSERT_TRUE(readBack(-y)) << y;
        std::ostringstream plain;
        plain.precision(std::numeric_limits<double>::max_digits10);
        plain << x;
        plainFails += osg::asciiToDouble(plain.str().c_str()) == x ? 0 : 1;
    }
    EXPECT_GT(plainFails, 0) << "the library reads as the standard does: this is not needed";
}

TEST(ExactNumbersTest, NumbersOfAnyBitsComeBackBitForBit) {
    std::mt19937_64 random(8);
    std::uniform_int_distribution<std::uint64_t> bits;
    int others = 0;
    for (int i = 0; i < cases; ++i) {
        const double number =
            std::ldexp(withBits((bits(random) & 0x800fffffffffffffu) | 0x3ff0000000000000u),
                       static_cast<int>(bits(random) % 120) - 60);
        others += readBack(number) ? 0 : 1;
    }
    EXPECT_EQ(others, 0);
}

TEST(ExactNumbersTest, SinglePrecisionComesBackBitForBitToo) {
    std::mt19937_64 random(9);
    std::uniform_real_distribution<float> coordinate(-1e7f, 1e7f);
    for (int i = 0; i < cases; ++i) {
        const float number = coordinate(random);
        const auto read =
            static_cast<float>(osg::asciiToDouble(exactText(static_cast<double>(number)).c_str()));
        ASSERT_EQ(read, number);
    }
}

// Its shortest text is read as infinity, and nodes have it as "no limit".
TEST(ExactNumbersTest, GreatestNumbersStayFinite) {
    EXPECT_TRUE(readBack(std::numeric_limits<double>::max()));
    EXPECT_TRUE(readBack(-std::numeric_limits<double>::max()));
    EXPECT_TRUE(readBack(static_cast<double>(std::numeric_limits<float>::max())));
    EXPECT_TRUE(readBack(static_cast<double>(std::numeric_limits<float>::min())));
}

// The library reads words as 0.
TEST(ExactNumbersTest, WhatIsNotFiniteStaysSo) {
    EXPECT_TRUE(readBack(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(readBack(-std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(std::isnan(osg::asciiToDouble(exactText(std::nan("")).c_str())));
}

TEST(ExactNumbersTest, SmallestNumbersHaveSomeTextAndNoEndlessSearch) {
    EXPECT_EQ(exactText(std::numeric_limits<double>::denorm_min()), "5e-324");
}

TEST(ExactNumbersTest, StreamWritesBothKindsWhateverItsPrecision) {
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new ExactNumbers));
    stream.precision(2);
    stream << 493994.87 << ' ' << 0.1f << ' ' << 12;
    double wide = 0.0;
    std::string narrow;
    int whole = 0;
    std::istringstream(stream.str()) >> wide >> narrow >> whole;
    EXPECT_NEAR(wide, 493994.87, 1e-9);
    EXPECT_EQ(static_cast<float>(osg::asciiToDouble(narrow.c_str())), 0.1f);
    EXPECT_EQ(whole, 12);
}

} // namespace orbisk::test
