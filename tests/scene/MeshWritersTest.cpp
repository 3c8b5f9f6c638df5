// The program's readers don't stand in the way of the library's writers.

#include "readers/ModelReaders.h"
#include "support/DrawnModel.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ReadGuard.h"

#include <gtest/gtest.h>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

namespace orbisk::test {

TEST(MeshWritersTest, WhatWasSavedIsReadByTheProgramsReaders) {
    const WorkingFolder folder;
    const QuietLibrary quiet;
    installReadGuard();
    for (const char* name : {"model.stl", "model.3ds"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(2.0f), name));
        const osg::ref_ptr<osg::Node> model = osgDB::readRefNodeFile(name);
        ASSERT_NE(model, nullptr);
        EXPECT_EQ(drawnModel(*model).triangles.size(), 2u);
        // What was read can be saved again, too.
        EXPECT_TRUE(osgDB::writeNodeFile(*model, name));
    }
}

TEST(MeshWritersTest, ExtensionsOfMeshesHaveTheProgramsReaders) {
    for (const char* extension : {"ply", "stl", "sta", "3ds"})
        EXPECT_NE(modelReaderFor(extension), nullptr) << extension;
    EXPECT_EQ(modelReaderFor("dxf"), nullptr);
}

} // namespace orbisk::test
