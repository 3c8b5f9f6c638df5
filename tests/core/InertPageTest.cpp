#include "online/InertPage.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(InertPageTest, PageFollowsItsPolicy) {
    const std::string tip = "<html><head><title>T</title></head><body>提示</body></html>";
    const std::string page = inertPage(tip);
    ASSERT_GT(page.size(), tip.size());
    EXPECT_EQ(page.substr(page.size() - tip.size()), tip);
    const std::size_t policy = page.find("http-equiv=\"Content-Security-Policy\"");
    ASSERT_NE(policy, std::string::npos);
    EXPECT_LT(policy, page.size() - tip.size());
}

TEST(InertPageTest, PolicyAllowsWhatThePageCarriesOnly) {
    const std::string page = inertPage("");
    EXPECT_NE(page.find("default-src 'none'"), std::string::npos);
    EXPECT_EQ(page.find("script-src"), std::string::npos);
    EXPECT_EQ(page.find("http:"), std::string::npos);
    EXPECT_EQ(page.find('*'), std::string::npos);
}

TEST(InertPageTest, LinksOfTheWebAndOfMailAreFollowed) {
    for (const char* address : {"http://brenholt.example", "https://brenholt.example/?a=b#c",
                                "HTTPS://BRENHOLT.EXAMPLE", "mailto:info@brenholt.example"})
        EXPECT_TRUE(mayFollowLink(address)) << address;
}

TEST(InertPageTest, OtherLinksAreNot) {
    for (const char* address : {"", "http:", "file:///etc/passwd", "javascript:alert(1)",
                                "data:text/html,x", "/usr/bin/true", "-new-window",
                                "about:blank#here", " http://brenholt.example", "httpx://a"})
        EXPECT_FALSE(mayFollowLink(address)) << address;
}

} // namespace orbisk::test
