#pragma once

#include "support/ModelFacts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

namespace orbisk::test {

/// The real models of one folder below the one that the environment names in ORBISK_MODELS. A test
/// is skipped where it names none.
class RealModelsTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override;

    /// Those that can be read.
    std::vector<ModelFacts> models() const;

    std::filesystem::path pathOf(const ModelFacts& facts) const { return m_root / facts.file; }

private:
    std::filesystem::path m_root;
};

/// The folders of real models that have any which can be read.
inline constexpr const char* realModelFolders[] = {
    "osg", "osgearth", "obj",   "rifle_in_4_formats", "3ds", "dxf", "dae", "stl", "ply",
    "wrl", "other",    "empty", "generated"};

/// The name of a test of one of them.
std::string realModelFolderName(const testing::TestParamInfo<const char*>& info);

} // namespace orbisk::test
