#include "platform/CheckedFile.h"

#include "support/FileLimits.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace orbisk::test {

namespace {

constexpr int manyBytes = 1'000'000;

class CheckedFileTest : public testing::Test {
protected:
    TemporaryFolder m_folder;
    const std::filesystem::path m_file = m_folder.path() / "file.bin";
};

} // namespace

TEST_F(CheckedFileTest, TakesEveryByteAsItIs) {
    const std::string bytes("a\0b\r\n\xff", 6);
    CheckedFile file(m_file);
    file.stream() << bytes;
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(readFile(m_file), bytes);
}

TEST_F(CheckedFileTest, ReplacesWhatStoodThere) {
    writeFile(m_file, "a long old text");
    CheckedFile file(m_file);
    file.stream() << "new";
    EXPECT_TRUE(file.finish());
    EXPECT_EQ(readFile(m_file), "new");
}

TEST_F(CheckedFileTest, FileOfNothingFails) {
    CheckedFile file(m_file);
    EXPECT_FALSE(file.finish());
}

TEST_F(CheckedFileTest, FolderThatIsNotThereFails) {
    CheckedFile file(m_folder.path() / "none" / "file.bin");
    file.stream() << "new";
    EXPECT_FALSE(file.finish());
}

TEST_F(CheckedFileTest, DiskThatFillsWithTheLastBytesFails) {
    const FullDisk full(0);
    CheckedFile file(m_file);
    file.stream() << "few";
    EXPECT_TRUE(file.stream().good()) << "the bytes are still in the buffer";
    EXPECT_FALSE(file.finish());
}

TEST_F(CheckedFileTest, DiskThatFillsOnTheWayFailsAtTheEndEvenIfThereIsRoomThen) {
    CheckedFile file(m_file);
    {
        const FullDisk full(1000);
        for (int i = 0; i < manyBytes; ++i)
            file.stream() << 'x';
    }
    file.stream().clear();
    file.stream() << "more";
    EXPECT_FALSE(file.finish());
}

TEST_F(CheckedFileTest, FailureThatOnlyAnotherStreamOnTheBufferSawCounts) {
    CheckedFile file(m_file);
    {
        const FullDisk full(1000);
        std::ostream other(file.stream().rdbuf());
        other << std::string(manyBytes, 'x');
        EXPECT_FALSE(other.good());
    }
    EXPECT_TRUE(file.stream().good());
    EXPECT_FALSE(file.finish());
}

} // namespace orbisk::test
