#include "online/TipText.h"

#include <gtest/gtest.h>

#include <random>

namespace orbisk::test {

namespace {

constexpr std::size_t lineLength = 76;

/// Base64 as its definition has it, bit by bit.
std::string encode(const std::string& bytes) {
    static const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    unsigned int value = 0;
    int bits = 0;
    for (const char byte : bytes)
        for (int bit = 7; bit >= 0; --bit) {
            value = value << 1 | (static_cast<unsigned char>(byte) >> bit & 1U);
            if (++bits == 6) {
                text += alphabet[value];
                value = 0;
                bits = 0;
            }
        }
    if (bits > 0)
        text += alphabet[value << (6 - bits)];
    while (text.size() % 4 != 0)
        text += '=';
    return text;
}

/// Lines of 76 characters, each but the last followed by a line feed.
std::string wrap(const std::string& text) {
    std::string lines;
    for (std::size_t i = 0; i < text.size(); i += lineLength)
        lines += (i == 0 ? "" : "\n") + text.substr(i, lineLength);
    return lines;
}

std::string randomBytes(std::mt19937& random, std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>(random() & 0xffU);
    return bytes;
}

} // namespace

TEST(TipTextTest, DecodesABoldHi) {
    EXPECT_EQ(decodeTip("PGI+aGk8L2I+"), "<b>hi</b>");
    EXPECT_EQ(decodeTip(encode("<p><b>hi</b>")), "<p><b>hi</b>");
}

TEST(TipTextTest, DecodesEachLengthOfPadding) {
    EXPECT_EQ(decodeTip("aGkh"), "hi!");
    EXPECT_EQ(decodeTip("aGk="), "hi");
    EXPECT_EQ(decodeTip("aA=="), "h");
}

TEST(TipTextTest, PaddingMayBeLeftOut) {
    EXPECT_EQ(decodeTip("aGk"), "hi");
    EXPECT_EQ(decodeTip("aA"), "h");
}

TEST(TipTextTest, ASingleCharacterLeftOverGivesNothing) {
    EXPECT_EQ(decodeTip("aGkha"), "hi!");
    EXPECT_EQ(decodeTip("a"), "");
}

TEST(TipTextTest, AtMostTwoPaddingCharactersAreTakenOff) {
    EXPECT_EQ(decodeTip("aA==="), "");
    EXPECT_EQ(decodeTip("=="), "");
    EXPECT_EQ(decodeTip("="), "");
}

TEST(TipTextTest, EmptyTextGivesNothing) {
    EXPECT_EQ(decodeTip(""), "");
    EXPECT_EQ(decodeTip("\n"), "");
    EXPECT_EQ(decodedTipSize(""), 0u);
    EXPECT_EQ(decodedTipSize("\n"), 0u);
}

TEST(TipTextTest, DecodesTheWholeAlphabet) {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    EXPECT_EQ(decodeTip(encode(bytes)), bytes);
    EXPECT_EQ(decodeTip("++//"), "\xfb\xef\xff");
}

TEST(TipTextTest, WrappedTextDecodesToTheSameAsUnwrappedText) {
    std::mt19937 random(1);
    for (std::size_t count = 0; count < 1000; ++count) {
        const std::string bytes = randomBytes(random, count);
        const std::string base64 = encode(bytes);
        ASSERT_EQ(decodeTip(base64), bytes) << count;
        ASSERT_EQ(decodeTip(wrap(base64)), bytes) << count;
        ASSERT_EQ(decodeTip(wrap(base64) + "\n"), bytes) << count;
    }
}

TEST(TipTextTest, SizeIsKnownBeforehand) {
    std::mt19937 random(2);
    for (std::size_t count = 0; count < 1000; ++count) {
        const std::string base64 = encode(randomBytes(random, count));
        ASSERT_EQ(decodedTipSize(base64), count);
        ASSERT_EQ(decodedTipSize(wrap(base64)), count);
    }
}

TEST(TipTextTest, SizeCountsALineFeedForEach77CharactersWhereThe77thIsOne) {
    const std::string line(lineLength, 'A');
    EXPECT_EQ(decodedTipSize(line), 57u);
    // One too short to tell, then one that is long enough but has its line feed elsewhere.
    EXPECT_EQ(decodedTipSize(line + "A"), 57u);
    EXPECT_EQ(decodedTipSize(line + "\nAA"), 58u);
    EXPECT_EQ(decodedTipSize("AAAA\n" + line), 60u);
}

TEST(TipTextTest, LineFeedsAreSkippedWhereAGroupBegins) {
    EXPECT_EQ(decodeTip("aGkh\naGkh"), "hi!hi!");
    EXPECT_EQ(decodeTip("\naGkh"), "hi!");
    EXPECT_EQ(decodeTip("aGkh\n\naGkh"), "hi!hi!");
}

TEST(TipTextTest, ALineFeedInsideAGroupEndsInNothing) {
    EXPECT_EQ(decodeTip("aG\nkh"), "");
    EXPECT_EQ(decodeTip("aGkha\nGkh"), "");
}

TEST(TipTextTest, CarriageReturnsEndInNothing) {
    EXPECT_EQ(decodeTip("aGkh\r\naGkh"), "");
    EXPECT_EQ(decodeTip("aGkh\r\n"), "");
}

TEST(TipTextTest, WhatIsNotBase64EndsInNothing) {
    for (const char* text : {"<html><body>Not found</body></html>", "aGkh aGkh", "aGk=aGkh",
                             "aGkh-_", "aGkh!", "\xe4\xbd\xa0\xe5\xa5\xbd"})
        EXPECT_EQ(decodeTip(text), "") << text;
    EXPECT_EQ(decodeTip(std::string_view("aGk\0", 4)), "");
}

} // namespace orbisk::test
