#include "support/TemporaryFolder.h"
#include "view/Screenshot.h"

#include <gtest/gtest.h>

namespace orbisk::test {

TEST(ViewPictureTest, UnreadableModelIsNamed) {
    const WorkingFolder folder;
    ScreenshotRequest request;
    request.file = "picture.png";
    AppSettings settings;
    const auto error = takeScreenshot(request, "missing.osgb", settings);
    ASSERT_TRUE(error);
    EXPECT_NE(error->find("missing.osgb"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists("picture.png"));
}

} // namespace orbisk::test
