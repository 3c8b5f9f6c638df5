#include "platform/MemoryLimit.h"

#include "platform/MemoryBlock.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace orbisk::test {

namespace {

constexpr std::size_t megabyte = std::size_t(1) << 20;

class MemoryLimitTest : public testing::Test {
protected:
    void SetUp() override {
        if (!MemoryLimit::isSupported())
            GTEST_SKIP() << "memory is a sanitizer's, or each library's own";
        ASSERT_TRUE(MemoryLimit::isActive());
    }
};

/// Whether this thread gets a block of so many megabytes, which it gives back.
bool canHave(std::size_t megabytes) {
    try {
        const std::vector<char> block(megabytes * megabyte);
        return !block.empty();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace

TEST(MemoryBlockTest, HasRoomForWhatWasAskedFor) {
    const auto block = std::make_unique<unsigned char[]>(1000);
    EXPECT_GE(usableBytes(block.get()), 1000u);
    EXPECT_LT(usableBytes(block.get()), 2000u);
}

TEST_F(MemoryLimitTest, LargerBlocksAreRefusedWhileItLives) {
    {
        const MemoryLimit limit(10 * megabyte);
        EXPECT_TRUE(canHave(9));
        EXPECT_FALSE(canHave(11));
    }
    EXPECT_TRUE(canHave(11));
}

TEST_F(MemoryLimitTest, BlocksCountTogetherUntilTheyAreGivenBack) {
    const MemoryLimit limit(10 * megabyte);
    {
        const std::vector<char> held(6 * megabyte);
        EXPECT_FALSE(canHave(6));
    }
    EXPECT_TRUE(canHave(6));
}

TEST_F(MemoryLimitTest, OneInsideAnotherAddsToIt) {
    const MemoryLimit limit(10 * megabyte);
    const MemoryLimit inner(10 * megabyte);
    EXPECT_TRUE(canHave(18));
    EXPECT_FALSE(canHave(22));
}

TEST_F(MemoryLimitTest, OtherThreadsAreNotLimited) {
    const MemoryLimit limit(megabyte);
    bool could = false;
    std::thread([&could] { could = canHave(20); }).join();
    EXPECT_TRUE(could);
}

TEST_F(MemoryLimitTest, LimitsLibrariesToo) {
    const MemoryLimit limit(10 * megabyte);
    EXPECT_THROW(std::string(20 * megabyte, 'x'), std::bad_alloc);
}

} // namespace orbisk::test
