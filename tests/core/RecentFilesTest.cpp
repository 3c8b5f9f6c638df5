#include "app/RecentFiles.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

std::vector<std::string> numberedPaths(int count) {
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i)
        addRecentFile("/models/" + std::to_string(i) + ".osgb", paths);
    return paths;
}

} // namespace

TEST(RecentFilesTest, EleventhFileDropsTheOldest) {
    const auto paths = numberedPaths(11);
    ASSERT_EQ(paths.size(), 10u);
    EXPECT_EQ(paths.front(), "/models/10.osgb");
    EXPECT_EQ(paths.back(), "/models/1.osgb");
}

TEST(RecentFilesTest, ReopenedFileMovesToTheTop) {
    auto paths = numberedPaths(4);
    EXPECT_TRUE(addRecentFile("/models/1.osgb", paths));
    EXPECT_EQ(paths, (std::vector<std::string>{"/models/1.osgb", "/models/3.osgb", "/models/2.osgb",
                                               "/models/0.osgb"}));
}

TEST(RecentFilesTest, ReopenedFileInAFullListKeepsTheOthers) {
    auto paths = numberedPaths(10);
    addRecentFile("/models/0.osgb", paths);
    ASSERT_EQ(paths.size(), 10u);
    EXPECT_EQ(paths.front(), "/models/0.osgb");
    EXPECT_EQ(paths.back(), "/models/1.osgb");
}

TEST(RecentFilesTest, PathsThatDifferInCaseAreDifferent) {
    std::vector<std::string> paths;
    addRecentFile("/a.obj", paths);
    addRecentFile("/A.obj", paths);
    EXPECT_EQ(paths, (std::vector<std::string>{"/A.obj", "/a.obj"}));
}

TEST(RecentFilesTest, EmptyPathChangesNothing) {
    auto paths = numberedPaths(2);
    const auto before = paths;
    EXPECT_FALSE(addRecentFile("", paths));
    EXPECT_EQ(paths, before);
}

TEST(RecentFilesTest, RemovalOutsideTheListChangesNothing) {
    auto paths = numberedPaths(2);
    removeRecentFile(2, paths);
    EXPECT_EQ(paths.size(), 2u);
    removeRecentFile(0, paths);
    EXPECT_EQ(paths, (std::vector<std::string>{"/models/0.osgb"}));
}

} // namespace orbisk::test
