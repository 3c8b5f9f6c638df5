#include "platform/RunTimePath.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace orbisk::test {

TEST(RunTimePathTest, JoinsPartsWithTheSystemsSeparator) {
    const std::string separator(1, static_cast<char>(std::filesystem::path::preferred_separator));
    EXPECT_EQ(runTimePath({"image", "SkyBoxMap", "front.png"}),
              "image" + separator + "SkyBoxMap" + separator + "front.png");
}

TEST(RunTimePathTest, StaysRelativeToTheWorkingDirectory) {
    EXPECT_EQ(runTimePath({"internation"}), "internation");
    EXPECT_TRUE(std::filesystem::path(runTimePath({"help", "en"})).is_relative());
    EXPECT_EQ(runTimePath({}), "");
}

} // namespace orbisk::test
