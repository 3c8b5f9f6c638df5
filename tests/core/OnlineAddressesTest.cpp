#include "online/OnlineAddresses.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(OnlineAddressesTest, AreThoseTheBuildWasGiven) {
    EXPECT_EQ(tipServer().host, ORBISK_TIP_SERVER);
    EXPECT_EQ(storedUrl(), ORBISK_DEFAULT_URL);
}

TEST(OnlineAddressesTest, TipServerHasItsUsualPort) {
    EXPECT_EQ(tipServer().port, 0);
}

TEST(OnlineAddressesTest, OneOfEachForTheProcess) {
    tipServer() = {"localhost", 8080};
    storedUrl() = "http://elsewhere.example";
    EXPECT_EQ(tipServer().host, "localhost");
    EXPECT_EQ(tipServer().port, 8080);
    EXPECT_EQ(storedUrl(), "http://elsewhere.example");
}

} // namespace orbisk::test
