// Geometries of old: an element for each primitive, and indices beside an array.

#include "view/OldGeometry.h"

#include "damage/LookOutcome.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/GeometryCheck.h"

#include <gtest/gtest.h>

#include <string>

namespace orbisk::test {

namespace {

osg::ref_ptr<osg::Vec3Array> normals(unsigned int count) {
    osg::ref_ptr<osg::Vec3Array> array = new osg::Vec3Array;
    for (unsigned int i = 0; i < count; ++i)
        array->push_back(osg::Vec3(0, 0, static_cast<float>(i + 1)));
    return array;
}

/// A square of triangles with normals for primitives.
osg::ref_ptr<osg::Geometry> withNormals(unsigned int count, osg::PrimitiveSet* set) {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(makeQuad()->getVertexArray());
    geometry->setNormalArray(normals(count), bindPerPrimitive);
    geometry->addPrimitiveSet(set);
    return geometry;
}

osg::PrimitiveSet* twoTriangles() {
    const GLuint corners[] = {0, 1, 2, 0, 2, 3};
    return new osg::DrawElementsUInt(GL_TRIANGLES, 6, corners);
}

bool isPerVertex(const osg::Array* array, unsigned int vertices) {
    return array && array->getBinding() == osg::Array::BIND_PER_VERTEX &&
           array->getNumElements() == vertices;
}

/// A text of the format of old: a triangle again and again with a number of normals and a corner.
std::string oldText(int triangles, int normals, const std::string& corner) {
    std::string text = "Geode {\n num_drawables 1\n Geometry {\n PrimitiveSets 1\n {\n "
                       "DrawElementsUInt TRIANGLES " +
                       std::to_string(3 * triangles) + "\n {\n";
    for (int i = 0; i < triangles; ++i)
        text += "0 1 " + corner + "\n";
    text += " }\n }\n VertexArray Vec3Array 3\n {\n 0 0 0\n 1 0 0\n 0 1 0\n }\n"
            " NormalBinding PER_PRIMITIVE\n NormalArray Vec3Array " +
            std::to_string(normals) + "\n {\n";
    for (int i = 0; i < normals; ++i)
        text += "0 0 1\n";
    return text + " }\n }\n}\n";
}

class OldGeometryTest : public testing::Test {
protected:
    static std::string outcomeOf(const std::string& text) {
        writeFile("model.osg", text);
        return lookAt(ORBISK_LOOK_AT_MODEL, "model.osg", "messages").text();
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

} // namespace

TEST_F(OldGeometryTest, NormalsOfPrimitivesBecomeThoseOfVertices) {
    const osg::ref_ptr<osg::Geometry> geometry = withNormals(2, twoTriangles());
    checkGeometry(*geometry);
    ASSERT_TRUE(isPerVertex(geometry->getNormalArray(), 6));
    const auto& found = static_cast<const osg::Vec3Array&>(*geometry->getNormalArray());
    for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(found[i], osg::Vec3(0, 0, i < 3 ? 1.0f : 2.0f));
    EXPECT_EQ(geometry->getVertexArray()->getNumElements(), 6u);
}

TEST_F(OldGeometryTest, TooFewNormalsForThePrimitivesAreLeftOut) {
    const osg::ref_ptr<osg::Geometry> geometry = withNormals(1, twoTriangles());
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getNormalArray(), nullptr);
    EXPECT_EQ(geometry->getNumPrimitiveSets(), 1u);
}

TEST_F(OldGeometryTest, PrimitivesAreCountedAsTheyAreRenewed) {
    const auto count = [](osg::PrimitiveSet* set) { return primitiveCount(*withNormals(1, set)); };
    const GLint lengths[] = {3, 4, 0};
    EXPECT_EQ(count(new osg::DrawArrays(GL_POINTS, 0, 4)), 4u);
    EXPECT_EQ(count(new osg::DrawArrays(GL_LINES, 0, 3)), 2u);
    EXPECT_EQ(count(new osg::DrawArrays(GL_TRIANGLES, 0, 4)), 2u);
    EXPECT_EQ(count(new osg::DrawArrays(GL_QUADS, 0, 5)), 2u);
    EXPECT_EQ(count(new osg::DrawArrays(GL_TRIANGLE_STRIP, 0, 4)), 1u);
    EXPECT_EQ(count(new osg::DrawArrays(GL_TRIANGLE_STRIP, 0, 0)), 0u);
    EXPECT_EQ(count(new osg::DrawArrayLengths(GL_POLYGON, 0, 3, const_cast<GLint*>(lengths))), 2u);
    EXPECT_EQ(count(new osg::DrawArrayLengths(GL_POINTS, 0, 3, const_cast<GLint*>(lengths))), 7u);
}

TEST_F(OldGeometryTest, NormalsOfPrimitivesThatWouldTakeTooManyVerticesAreLeftOut) {
    // A strip is one primitive, so that one normal would be enough.
    const osg::ref_ptr<osg::PrimitiveSet> strip =
        new osg::DrawElementsUByte(GL_TRIANGLE_STRIP, 20'000'001);
    const osg::ref_ptr<osg::Geometry> geometry = withNormals(1, strip);
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getNormalArray(), nullptr);
    EXPECT_EQ(geometry->getVertexArray()->getNumElements(), 4u);
    EXPECT_EQ(geometry->getNumPrimitiveSets(), 1u);
}

TEST_F(OldGeometryTest, LengthsThatTheLibraryRenewsWronglyAreNotDrawnBeyondTheVertices) {
    const GLint lengths[] = {2, 2};
    const osg::ref_ptr<osg::Geometry> geometry =
        withNormals(2, new osg::DrawArrayLengths(GL_LINES, 0, 2, const_cast<GLint*>(lengths)));
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getNumPrimitiveSets(), 0u);
}

TEST_F(OldGeometryTest, PrimitivesOfAnotherGeometryStayAsTheyAre) {
    const osg::ref_ptr<osg::PrimitiveSet> shared = twoTriangles();
    const osg::ref_ptr<osg::Geometry> other = withNormals(0, shared);
    checkGeometry(*other);
    const osg::ref_ptr<osg::Geometry> geometry = withNormals(2, shared);
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getPrimitiveSet(0)->index(5), 5u);
    EXPECT_EQ(other->getPrimitiveSet(0)->index(5), 3u);
}

TEST_F(OldGeometryTest, IndicesBesideAnArrayAreFollowed) {
    const osg::ref_ptr<osg::Geometry> geometry =
        withNormals(0, new osg::DrawArrays(GL_TRIANGLES, 0, 6));
    unsigned int corners[] = {0, 1, 2, 0, 2, 3};
    geometry->getVertexArray()->setUserData(new osg::UIntArray(6, corners));
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getVertexArray()->getNumElements(), 6u);
    EXPECT_EQ(geometry->getNumPrimitiveSets(), 1u);
}

TEST_F(OldGeometryTest, IndicesBeyondTheirArrayLeaveNothingToDraw) {
    const osg::ref_ptr<osg::Geometry> geometry =
        withNormals(0, new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    int corners[] = {0, 1, -1};
    geometry->getVertexArray()->setUserData(new osg::IntArray(3, corners));
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getVertexArray(), nullptr);
    EXPECT_EQ(geometry->getNumPrimitiveSets(), 0u);
}

TEST_F(OldGeometryTest, IndicesBeyondTheNormalsLeaveOutTheNormals) {
    const osg::ref_ptr<osg::Geometry> geometry = withNormals(2, twoTriangles());
    unsigned int corners[] = {0, 2};
    geometry->getNormalArray()->setUserData(new osg::UIntArray(2, corners));
    checkGeometry(*geometry);
    EXPECT_EQ(geometry->getNormalArray(), nullptr);
    EXPECT_EQ(geometry->getNumPrimitiveSets(), 1u);
}

TEST_F(OldGeometryTest, FilesOfOldWithTooFewNormalsAreLookedAt) {
    EXPECT_EQ(outcomeOf(oldText(2, 2, "2")), "looked at");
    EXPECT_EQ(outcomeOf(oldText(200'000, 1, "2")), "looked at");
    EXPECT_EQ(outcomeOf(oldText(200, 200, "900000000")), "looked at");
}

} // namespace orbisk::test
