#include "readers/CreaseNormals.h"

#include "support/DrawnModel.h"

#include <gtest/gtest.h>
#include <osg/Geometry>
#include <osgUtil/SmoothingVisitor>

#include <chrono>
#include <random>

namespace orbisk::test {

namespace {

using Triangles = std::vector<unsigned int>;

/// What the library makes of the same mesh.
void expectAsTheLibrary(const osg::Vec3Array& vertices, Triangles triangles) {
    const osg::ref_ptr<osg::Geometry> expected = new osg::Geometry;
    expected->setVertexArray(new osg::Vec3Array(vertices.begin(), vertices.end()));
    expected->addPrimitiveSet(new osg::DrawElementsUInt(osg::PrimitiveSet::TRIANGLES,
                                                        triangles.begin(), triangles.end()));
    osgUtil::SmoothingVisitor::smooth(*expected, osg::PI_2);

    const auto* smoothed = dynamic_cast<const osg::Vec3Array*>(expected->getVertexArray());
    const CreaseNormals crease = makeCreaseNormals(vertices, triangles);
    ASSERT_EQ(vertices.size() + crease.copies.size(), smoothed->size());
    for (std::size_t i = 0; i < crease.copies.size(); ++i)
        EXPECT_EQ(vertices[crease.copies[i]], (*smoothed)[vertices.size() + i]);
    const auto& normals = dynamic_cast<const osg::Vec3Array&>(*expected->getNormalArray());
    ASSERT_EQ(crease.normals->size(), normals.size());
    for (std::size_t i = 0; i < normals.size(); ++i)
        EXPECT_EQ((*crease.normals)[i], normals[i]);
    const osg::PrimitiveSet* set = expected->getPrimitiveSet(0);
    ASSERT_EQ(triangles.size(), set->getNumIndices());
    for (unsigned int i = 0; i < triangles.size(); ++i)
        EXPECT_EQ(triangles[i], set->index(i));
}

} // namespace

TEST(CreaseNormalsTest, RandomMeshesAreSmoothedAsByTheLibrary) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        // Few places to stand, so that some triangles have no area.
        std::uniform_int_distribution<int> place(0, 2 + round % 5);
        std::uniform_int_distribution<unsigned int> corner(0,
                                                           4 + static_cast<unsigned>(round) % 30);
        const osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        for (unsigned int i = 0; i <= corner.max(); ++i)
            vertices->push_back(osg::Vec3(static_cast<float>(place(random)),
                                          static_cast<float>(place(random)),
                                          static_cast<float>(place(random))));
        Triangles triangles;
        while (triangles.size() < 3u * static_cast<unsigned>(round % 60)) {
            const unsigned int a = corner(random);
            const unsigned int b = corner(random);
            const unsigned int c = corner(random);
            if (a != b && b != c && c != a)
                triangles.insert(triangles.end(), {a, b, c});
        }
        SCOPED_TRACE(round);
        expectAsTheLibrary(*vertices, triangles);
    }
}

TEST(CreaseNormalsTest, EdgesOfACubeAreSharp) {
    const osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array;
    for (int i = 0; i < 8; ++i)
        corners->push_back(osg::Vec3(static_cast<float>(i & 1), static_cast<float>(i >> 1 & 1),
                                     static_cast<float>(i >> 2)));
    Triangles cube = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                      2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
    expectAsTheLibrary(*corners, cube);
    const CreaseNormals crease = makeCreaseNormals(*corners, cube);
    for (const unsigned int vertex : cube) {
        const osg::Vec3& normal = (*crease.normals)[vertex];
        EXPECT_EQ(std::abs(normal.x()) + std::abs(normal.y()) + std::abs(normal.z()), 1.0f);
    }
}

TEST(CreaseNormalsTest, DoublesKeepTheirShapeFarFromTheOrigin) {
    const osg::Vec3d far(5e5, 4e6, 100);
    const std::vector<osg::Vec3d> shape = {{0, 0, 0}, {0.01, 0, 0}, {0, 0.01, 0}};
    const osg::ref_ptr<osg::Vec3dArray> vertices = new osg::Vec3dArray;
    for (const osg::Vec3d& vertex : shape)
        vertices->push_back(far + vertex);
    Triangles triangle = {0, 1, 2};
    const CreaseNormals crease = makeCreaseNormals(*vertices, triangle);
    EXPECT_EQ((*crease.normals)[0], osg::Vec3(0, 0, 1));
}

TEST(CreaseNormalsTest, MillionTrianglesWithoutAreaAtOneVertexTakeNoTime) {
    const osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    Triangles triangles;
    constexpr unsigned int count = 1'000'000;
    vertices->resize(count + 2);
    for (unsigned int i = 1; i <= count; ++i)
        triangles.insert(triangles.end(), {0, i, i + 1});
    const auto begin = std::chrono::steady_clock::now();
    const CreaseNormals crease = makeCreaseNormals(*vertices, triangles);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    EXPECT_EQ(crease.normals->size(), vertices->size() + crease.copies.size());
}

} // namespace orbisk::test
