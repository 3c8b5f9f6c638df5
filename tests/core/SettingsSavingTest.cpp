#include "core/SettingsHelpers.h"
#include "settings/SettingsFile.h"
#include "support/CommaLocale.h"
#include "support/FileLimits.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <set>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

class SettingsSavingTest : public ::testing::Test {
protected:
    std::set<std::string> entries() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.path()))
            names.insert(entry.path().filename().string());
        return names;
    }

    void belongToOrdinaryUser() const {
        for (const fs::path& path : {m_folder.path(), m_folder.path() / settingsFileName})
            ASSERT_EQ(chown(path.c_str(), OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    }

    const std::set<std::string> m_onlyTheFile = {settingsFileName};
    WorkingFolder m_folder;
};

} // namespace

TEST_F(SettingsSavingTest, LeavesNothingBesideTheFile) {
    save(unusualSettings());
    EXPECT_EQ(entries(), m_onlyTheFile);
    save(AppSettings());
    EXPECT_EQ(entries(), m_onlyTheFile);
}

TEST_F(SettingsSavingTest, ReplacesInOneStep) {
    save(AppSettings());
    const std::string old = readFile(settingsFileName);
    fs::create_hard_link(settingsFileName, "kept");
    save(unusualSettings());
    // Who has the old file open sees all of it, never a part of the new one.
    EXPECT_EQ(readFile("kept"), old);
    EXPECT_EQ(describe(loaded()), describe(unusualSettings()));
}

TEST_F(SettingsSavingTest, ShorterFileHasNoRestOfTheLongerOne) {
    save(unusualSettings());
    save(AppSettings());
    EXPECT_EQ(describe(loaded()), describe(AppSettings()));
}

TEST_F(SettingsSavingTest, LinkStaysALink) {
    const TemporaryFolder elsewhere;
    writeFile(elsewhere.path() / "mine.json", "{}");
    fs::create_symlink(elsewhere.path() / "mine.json", settingsFileName);
    save(unusualSettings());
    EXPECT_TRUE(fs::is_symlink(settingsFileName));
    EXPECT_EQ(entries(), m_onlyTheFile);
    EXPECT_EQ(describe(loaded()), describe(unusualSettings()));
    EXPECT_NE(readFile(elsewhere.path() / "mine.json"), "{}");
}

TEST_F(SettingsSavingTest, FullDiskLeavesTheOldFile) {
    save(AppSettings());
    const std::string old = readFile(settingsFileName);
    for (const rlim_t room : {0, 10, 500}) {
        const FullDisk full(room);
        save(unusualSettings());
    }
    EXPECT_EQ(readFile(settingsFileName), old);
    EXPECT_EQ(entries(), m_onlyTheFile);
}

TEST_F(SettingsSavingTest, FolderOfTheFilesNameIsSilent) {
    fs::create_directory(settingsFileName);
    writeFile(fs::path(settingsFileName) / "inside", "kept");
    testing::internal::CaptureStderr();
    save(unusualSettings());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(readFile(fs::path(settingsFileName) / "inside"), "kept");
    EXPECT_EQ(entries(), m_onlyTheFile);
}

TEST_F(SettingsSavingTest, FolderThatIsGoneIsSilent) {
    const fs::path gone = m_folder.path() / "gone";
    fs::create_directory(gone);
    fs::current_path(gone);
    fs::remove(gone);
    testing::internal::CaptureStderr();
    save(unusualSettings());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    fs::current_path(m_folder.path());
    EXPECT_TRUE(entries().empty());
}

TEST_F(SettingsSavingTest, WriteProtectedFolderKeepsTheOldFile) {
    save(AppSettings());
    const std::string old = readFile(settingsFileName);
    belongToOrdinaryUser();
    fs::permissions(m_folder.path(), fs::perms::owner_read | fs::perms::owner_exec);
    {
        const OrdinaryUser user;
        if (!user.holds())
            GTEST_SKIP() << "the superuser's rights cannot be put down here";
        save(unusualSettings());
        const std::string now = readFile(settingsFileName);
        // The file itself may be written, so either of the two whole ones is right.
        if (now != old) {
            EXPECT_EQ(describe(loaded()), describe(unusualSettings()));
        }
    }
    fs::permissions(m_folder.path(), fs::perms::owner_all);
    EXPECT_EQ(entries(), m_onlyTheFile);
}

TEST_F(SettingsSavingTest, WriteProtectedFileStays) {
    save(AppSettings());
    const std::string old = readFile(settingsFileName);
    belongToOrdinaryUser();
    fs::permissions(settingsFileName, fs::perms::owner_read);
    const OrdinaryUser user;
    if (!user.holds())
        GTEST_SKIP() << "the superuser's rights cannot be put down here";
    save(unusualSettings());
    EXPECT_EQ(readFile(settingsFileName), old);
    EXPECT_EQ(entries(), m_onlyTheFile);
}

TEST_F(SettingsSavingTest, DecimalCommaStaysOutOfTheFile) {
    AppSettings settings = unusualSettings();
    settings.rect = {12345678, -1234567, 1000, 1000000};
    save(settings);
    const std::string plain = readFile(settingsFileName);
    const CommaLocale locale;
    if (!locale.problem().empty())
        GTEST_SKIP() << locale.problem();
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(describe(loaded()), describe(settings));
    save(settings);
    EXPECT_EQ(readFile(settingsFileName), plain);
    EXPECT_NE(plain.find("\"fovy\" : 42.12345678901234"), std::string::npos);
    EXPECT_EQ(describe(loaded()), describe(settings));
}

} // namespace orbisk::test
