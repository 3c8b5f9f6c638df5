#include "app/WebAddress.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(WebAddressTest, DecodesPairsOfDigits) {
    EXPECT_EQ(decodeHexText("68747470"), "http");
    EXPECT_EQ(decodeHexText("2f2F"), "//");
    EXPECT_EQ(decodeHexText(""), "");
    EXPECT_EQ(decodeHexText("e4bda0"), "你");
    EXPECT_EQ(decodeHexText("4100ff"), std::string("A\0\xff", 3));
}

TEST(WebAddressTest, LeavesAnOddDigitOut) {
    EXPECT_EQ(decodeHexText("68747"), "ht");
    EXPECT_EQ(decodeHexText("6"), "");
}

TEST(WebAddressTest, EndsAtAPairThatIsNoNumber) {
    EXPECT_EQ(decodeHexText("68zz70"), "h");
    EXPECT_EQ(decodeHexText("687g70"), "h");
    EXPECT_EQ(decodeHexText("68g770"), "h");
    EXPECT_EQ(decodeHexText("680x70"), "h");
    // Digits of another script.
    EXPECT_EQ(decodeHexText("68６８70"), "h");
}

TEST(WebAddressTest, EndsAtBlanksAndSigns) {
    EXPECT_EQ(decodeHexText("68 470"), "h");
    EXPECT_EQ(decodeHexText("684 70"), "h");
    EXPECT_EQ(decodeHexText("68+470"), "h");
    EXPECT_EQ(decodeHexText("68-470"), "h");
}

TEST(WebAddressTest, MakerAddressIsTheOneTheBuildWasGiven) {
    EXPECT_EQ(decodeHexText(makerWebAddressDigits()), ORBISK_MAKER_WEB_ADDRESS);
    EXPECT_EQ(makerWebAddressDigits().size(), 2 * std::string(ORBISK_MAKER_WEB_ADDRESS).size());
}

TEST(WebAddressTest, OneTextForTheProcess) {
    const std::string before = webAddress();
    webAddress() = "http://elsewhere.example";
    EXPECT_EQ(webAddress(), "http://elsewhere.example");
    webAddress() = before;
}

} // namespace orbisk::test
