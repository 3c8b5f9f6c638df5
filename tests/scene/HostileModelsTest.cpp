#include "damage/Damage.h"
#include "damage/LookOutcome.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <vector>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t shares = 4;

std::vector<fs::path> hostileFiles(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// Each test takes its share of the files, so that they can run side by side.
class HostileModelsTest : public testing::TestWithParam<std::size_t> {};

} // namespace

TEST_P(HostileModelsTest, EndAsAFailedLoadOrAsASafeModel) {
    const char* models = std::getenv("ORBISK_MODELS");
    if (!models)
        GTEST_SKIP() << "ORBISK_MODELS names no folder of real models";
    const std::vector<fs::path> files = hostileFiles(fs::path(models) / "hostile");
    EXPECT_GT(files.size(), 50u);
    const TemporaryFolder folder;
    for (std::size_t i = GetParam(); i < files.size(); i += shares) {
        const LookOutcome outcome =
            lookAt(ORBISK_LOOK_AT_MODEL, files[i], folder.path() / "messages");
        EXPECT_TRUE(outcome.isSafe()) << files[i] << ": " << outcome.text();
    }
}

INSTANTIATE_TEST_SUITE_P(Share, HostileModelsTest, testing::Range(std::size_t(0), shares));

TEST(DamageTest, IsTheSameForTheSameSeed) {
    const std::string bytes(1000, 'x');
    std::set<std::string> different;
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        EXPECT_EQ(damaged(bytes, seed), damaged(bytes, seed));
        EXPECT_EQ(damagedOften(bytes, seed), damagedOften(bytes, seed));
        EXPECT_EQ(damagedMeaning(bytes, seed), damagedMeaning(bytes, seed));
        different.insert(damaged(bytes, seed));
        different.insert(damagedOften(bytes, seed));
    }
    EXPECT_GT(different.size(), 70u);
    EXPECT_EQ(damaged("", 1), "");
    EXPECT_EQ(damagedMeaning("", 1), "");
    EXPECT_EQ(damagedOften("", 1), "");
}

TEST(LookTest, TellsHowALookEnded) {
    const TemporaryFolder folder;
    const std::string messages = folder.path() / "messages";
    writeFile(folder.path() / "empty.osgb", "");
    const LookOutcome refused =
        lookAt(ORBISK_LOOK_AT_MODEL, folder.path() / "empty.osgb", messages);
    EXPECT_EQ(refused.text(), "refused");
    EXPECT_TRUE(refused.isSafe());
    const fs::path sample = fs::path(ORBISK_STAGE_DIR) / "samples" / "assembly.osgt";
    EXPECT_EQ(lookAt(ORBISK_LOOK_AT_MODEL, sample, messages).text(), "looked at");
    EXPECT_FALSE(lookAt("/bin/false", sample, messages).isSafe());
}

} // namespace orbisk::test
