// The damaged and ill-meant files of a folder of models: a failed read, or a scene that can be
// drawn and picked. Without the folder they are skipped; ObjReaderTest has small ones of each kind.

#include "readers/ModelReaders.h"
#include "support/DrawnModel.h"
#include "support/SceneTools.h"

#include <gtest/gtest.h>
#include <osgDB/Options>

#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace orbisk::test {

namespace fs = std::filesystem;

TEST(ObjHostileModelsTest, FailOrGiveASafeScene) {
    const char* const folder = std::getenv("ORBISK_MODELS");
    if (!folder)
        GTEST_SKIP() << "ORBISK_MODELS names no folder of models";
    const QuietLibrary quiet;
    int count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(folder) / "hostile")) {
        const std::string name = entry.path().filename().string();
        // Whether pictures may be read that are none is not the reader's to say.
        const bool hasOddPicture = name.rfind("obj_texture", 0) == 0;
        if (entry.path().extension() != ".obj" || hasOddPicture)
            continue;
        ++count;
        const osg::ref_ptr<osg::Node> scene =
            modelReaderFor("obj")->readNode(entry.path().string(), nullptr).getNode();
        if (!scene)
            continue;
        EXPECT_TRUE(isSafe(*scene)) << name;
        EXPECT_TRUE(std::isfinite(scene->getBound().radius())) << name;
    }
    EXPECT_GT(count, 15);
}

} // namespace orbisk::test
