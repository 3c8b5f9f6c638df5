#include "support/RealModels.h"

#include <algorithm>
#include <cstdlib>

namespace orbisk::test {

namespace {

/// The library's own update of this old skeleton crashes.
constexpr const char* crashesWhenAnimated = "osg/example.osg";

} // namespace

void RealModelsTest::SetUp() {
    const char* folder = std::getenv("ORBISK_MODELS");
    if (!folder)
        GTEST_SKIP() << "ORBISK_MODELS names no folder of real models";
    m_root = folder;
}

std::vector<ModelFacts> RealModelsTest::models() const {
    std::vector<ModelFacts> all = readModelFacts(m_root);
    const std::string prefix = std::string(GetParam()) + "/";
    all.erase(std::remove_if(all.begin(), all.end(),
                             [&](const ModelFacts& facts) {
                                 return facts.file.rfind(prefix, 0) != 0 ||
                                        facts.file == crashesWhenAnimated;
                             }),
              all.end());
    EXPECT_FALSE(all.empty()) << "no models in " << prefix;
    return all;
}

std::string realModelFolderName(const testing::TestParamInfo<const char*>& info) {
    return std::string("in_") + info.param;
}

} // namespace orbisk::test
