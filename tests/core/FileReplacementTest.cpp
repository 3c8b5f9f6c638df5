#include "platform/FileReplacement.h"

#include "support/FileLimits.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

class FileReplacementTest : public ::testing::Test {
protected:
    TemporaryFolder m_folder;
    const fs::path m_file = m_folder.path() / "file.txt";
};

} // namespace

TEST_F(FileReplacementTest, MakesANewFile) {
    const std::string bytes("a\0b\r\n\xff", 6);
    EXPECT_TRUE(replaceFile(m_file, bytes));
    EXPECT_EQ(readFile(m_file), bytes);
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

TEST_F(FileReplacementTest, TakesTheOldFilesPlace) {
    writeFile(m_file, "a long old text");
    EXPECT_TRUE(replaceFile(m_file, "new"));
    EXPECT_EQ(readFile(m_file), "new");
    EXPECT_TRUE(replaceFile(m_file, ""));
    EXPECT_EQ(readFile(m_file), "");
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

TEST_F(FileReplacementTest, ReaderOfTheOldFileStillSeesAllOfIt) {
    writeFile(m_file, "old");
    fs::create_hard_link(m_file, m_folder.path() / "kept");
    ASSERT_TRUE(replaceFile(m_file, "new"));
    // Written into the same file, both names would show the new text at some time half of it.
    EXPECT_EQ(readFile(m_folder.path() / "kept"), "old");
}

TEST_F(FileReplacementTest, LinkStaysALink) {
    TemporaryFolder elsewhere;
    writeFile(elsewhere.path() / "real.txt", "old");
    fs::create_symlink(elsewhere.path() / "real.txt", m_file);
    EXPECT_TRUE(replaceFile(m_file, "new"));
    EXPECT_TRUE(fs::is_symlink(m_file));
    EXPECT_EQ(readFile(elsewhere.path() / "real.txt"), "new");
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
    EXPECT_EQ(entriesOf(elsewhere.path()), std::set<std::string>{"real.txt"});
}

TEST_F(FileReplacementTest, LinkToNothingYetStaysALink) {
    TemporaryFolder elsewhere;
    fs::create_symlink(elsewhere.path() / "real.txt", m_file);
    EXPECT_TRUE(replaceFile(m_file, "new"));
    EXPECT_TRUE(fs::is_symlink(m_file));
    EXPECT_EQ(readFile(elsewhere.path() / "real.txt"), "new");
}

TEST_F(FileReplacementTest, KeepsWhoMayReadTheFile) {
    writeFile(m_file, "old");
    fs::permissions(m_file, fs::perms::owner_read | fs::perms::owner_write);
    ASSERT_TRUE(replaceFile(m_file, "new"));
    EXPECT_EQ(fs::status(m_file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FileReplacementTest, FolderInTheWayStays) {
    fs::create_directory(m_file);
    writeFile(m_file / "inside", "kept");
    EXPECT_FALSE(replaceFile(m_file, "new"));
    EXPECT_EQ(readFile(m_file / "inside"), "kept");
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

TEST_F(FileReplacementTest, FolderThatIsNotThereStaysAway) {
    EXPECT_FALSE(replaceFile(m_folder.path() / "none" / "file.txt", "new"));
    EXPECT_TRUE(entriesOf(m_folder.path()).empty());
}

TEST_F(FileReplacementTest, FullDiskLeavesTheOldFile) {
    const std::string old(1000, 'o');
    writeFile(m_file, old);
    {
        const FullDisk full(1000);
        EXPECT_FALSE(replaceFile(m_file, std::string(100000, 'n')));
    }
    EXPECT_EQ(readFile(m_file), old);
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

TEST_F(FileReplacementTest, FullDiskMakesNoPartOfANewFile) {
    {
        const FullDisk full(0);
        EXPECT_FALSE(replaceFile(m_file, "new"));
    }
    EXPECT_TRUE(entriesOf(m_folder.path()).empty());
}

TEST_F(FileReplacementTest, WhatIsNotCommittedGoes) {
    writeFile(m_file, "old");
    {
        const FileReplacement replacement(m_file);
        writeFile(replacement.temporary(), "new");
        EXPECT_EQ(readFile(m_file), "old");
    }
    EXPECT_EQ(readFile(m_file), "old");
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

TEST_F(FileReplacementTest, NothingWrittenIsNotCommitted) {
    writeFile(m_file, "old");
    FileReplacement replacement(m_file);
    EXPECT_FALSE(replacement.commit());
    EXPECT_EQ(readFile(m_file), "old");
}

TEST_F(FileReplacementTest, TemporaryFileHasTheExtensionAndTakesNobodysName) {
    writeFile(m_folder.path() / "file.new.txt", "somebody's");
    {
        FileReplacement replacement(m_file);
        EXPECT_EQ(replacement.temporary().extension(), ".txt");
        EXPECT_EQ(replacement.temporary().parent_path(), m_folder.path());
        writeFile(replacement.temporary(), "new");
        EXPECT_TRUE(replacement.commit());
    }
    EXPECT_EQ(readFile(m_file), "new");
    EXPECT_EQ(readFile(m_folder.path() / "file.new.txt"), "somebody's");
}

TEST_F(FileReplacementTest, WriteProtectedFileStays) {
    writeFile(m_file, "old");
    fs::permissions(m_file, fs::perms::owner_read);
    ASSERT_EQ(chown(m_folder.path().c_str(), OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    ASSERT_EQ(chown(m_file.c_str(), OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    {
        const OrdinaryUser user;
        if (!user.holds())
            GTEST_SKIP() << "the superuser's rights cannot be put down here";
        EXPECT_FALSE(replaceFile(m_file, "new"));
        EXPECT_EQ(readFile(m_file), "old");
    }
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

TEST_F(FileReplacementTest, WriteProtectedFolderStays) {
    writeFile(m_file, "old");
    ASSERT_EQ(chown(m_folder.path().c_str(), OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    fs::permissions(m_folder.path(), fs::perms::owner_read | fs::perms::owner_exec);
    {
        const OrdinaryUser user;
        if (!user.holds())
            GTEST_SKIP() << "the superuser's rights cannot be put down here";
        EXPECT_FALSE(replaceFile(m_folder.path() / "other.txt", "new"));
        EXPECT_EQ(readFile(m_file), "old");
    }
    fs::permissions(m_folder.path(), fs::perms::owner_all);
    EXPECT_EQ(entriesOf(m_folder.path()), std::set<std::string>{"file.txt"});
}

} // namespace orbisk::test
