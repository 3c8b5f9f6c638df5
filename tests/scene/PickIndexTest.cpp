#include "measure/PickIndex.h"

#include "measure/IndexedVisitor.h"
#include "measure/Picker.h"
#include "support/PickTools.h"
#include "support/SceneTools.h"
#include "view/ViewCamera.h"

#include <gtest/gtest.h>
#include <osg/MatrixTransform>

#include <cmath>
#include <limits>

namespace orbisk::test {

namespace {

constexpr unsigned int cells = 20;
constexpr double middleX = 10.25;
constexpr double middleY = 10.75; // beside the diagonal

/// Unit squares of two triangles each over [0, cells]^2 at one height, as a list.
osg::ref_ptr<osg::DrawElementsUShort> floorIndices() {
    osg::ref_ptr<osg::DrawElementsUShort> set = new osg::DrawElementsUShort(GL_TRIANGLES);
    for (unsigned int j = 0; j < cells; ++j)
        for (unsigned int i = 0; i < cells; ++i) {
            const unsigned int corner = j * (cells + 1) + i;
            for (const unsigned int step : {0u, 1u, cells + 2, 0u, cells + 2, cells + 1})
                set->push_back(static_cast<unsigned short>(corner + step));
        }
    return set;
}

template <typename Point>
std::vector<Point> floorPoints(double height) {
    std::vector<Point> points;
    for (unsigned int j = 0; j <= cells; ++j)
        for (unsigned int i = 0; i <= cells; ++i)
            points.emplace_back(i, j, height);
    return points;
}

osg::ref_ptr<osg::Geometry> makeFloor(double height = 0) {
    return makeGeometry(floorPoints<osg::Vec3>(height), floorIndices());
}

osg::ref_ptr<osg::Geometry> makeDoubleFloor(double height = 0) {
    return makeDoubleGeometry(floorPoints<osg::Vec3d>(height), floorIndices());
}

class PickIndexTest : public testing::Test {
protected:
    void build(osg::Node& model) {
        m_index.add(model);
        m_index.finish();
    }

    /// The height at which a pick finds the model, which must be what the walk finds.
    double pick(osg::Node& model, double x = middleX, double y = middleY) {
        const PickRay ray = rayDown(x, y);
        IndexedVisitor visitor(ray, m_index);
        model.accept(visitor);
        const auto wanted = firstHit(model, ray);
        EXPECT_EQ(wanted.has_value(), !visitor.hits().empty());
        if (!wanted || visitor.hits().empty())
            return std::numeric_limits<double>::quiet_NaN();
        EXPECT_TRUE(sameBits(*wanted, visitor.hits().front()));
        return wanted->z();
    }

    /// Whether a pick finds a tree for `geometry`; it counts as a pick.
    bool hasTree(const osg::Geometry& geometry, const osg::Matrixd& matrix = osg::Matrixd()) {
        m_index.beginPick();
        return m_index.find(geometry, matrix) != nullptr;
    }

    PickIndex m_index;
};

} // namespace

TEST_F(PickIndexTest, StartsEmptyAndEndsWithoutHavingDoneAnything) {
    EXPECT_EQ(m_index.treeCount(), 0u);
    EXPECT_EQ(m_index.bytes(), 0u);
    m_index.finish();
    m_index.clear();
}

TEST_F(PickIndexTest, BuildsATreeForEachGeometryOfTheModel) {
    const auto first = makeFloor();
    const auto second = makeFloor(3);
    const auto model = groupOf({first, second});
    build(*model);
    EXPECT_EQ(m_index.treeCount(), 2u);
    EXPECT_GT(m_index.bytes(), 0u);
    EXPECT_TRUE(hasTree(*first));
    EXPECT_TRUE(hasTree(*second));
    EXPECT_EQ(pick(*model), 3.0);
}

TEST_F(PickIndexTest, AddingAModelTwiceBuildsNothingTwice) {
    const auto model = makeFloor();
    build(*model);
    build(*model);
    EXPECT_EQ(m_index.treeCount(), 1u);
}

TEST_F(PickIndexTest, SmallGeometriesNeedNone) {
    const auto quad = makeQuad(40);
    build(*quad);
    EXPECT_EQ(m_index.treeCount(), 0u);
    EXPECT_EQ(pick(*quad, 3, 4), 0.0);
}

TEST_F(PickIndexTest, TakesAtMostFortyBytesATriangle) {
    const auto model = makeFloor();
    build(*model);
    EXPECT_LE(m_index.bytes(), 2 * cells * cells * 40);
}

// What makes a tree invalid.

TEST_F(PickIndexTest, VerticesThatWereChangedDropTheTree) {
    const auto model = makeFloor();
    build(*model);
    auto& vertices = dynamic_cast<osg::Vec3Array&>(*model->getVertexArray());
    for (osg::Vec3& vertex : vertices)
        vertex.z() = 4;
    vertices.dirty();
    model->dirtyBound();
    EXPECT_FALSE(hasTree(*model));
    EXPECT_EQ(pick(*model), 4.0);
}

TEST_F(PickIndexTest, AnotherVertexArrayDropsTheTree) {
    const auto model = makeFloor();
    build(*model);
    const std::vector<osg::Vec3> higher = floorPoints<osg::Vec3>(4);
    // The new one may well stand where the old one stood.
    model->setVertexArray(nullptr);
    model->setVertexArray(new osg::Vec3Array(higher.begin(), higher.end()));
    EXPECT_FALSE(hasTree(*model));
    EXPECT_EQ(pick(*model), 4.0);
}

TEST_F(PickIndexTest, VertexArrayOfAnotherSizeDropsTheTree) {
    const auto model = makeFloor();
    build(*model);
    dynamic_cast<osg::Vec3Array&>(*model->getVertexArray()).push_back(osg::Vec3());
    EXPECT_FALSE(hasTree(*model));
    EXPECT_EQ(pick(*model), 0.0);
}

TEST_F(PickIndexTest, VertexArrayThatIsGoneIsNoHit) {
    const auto model = makeFloor();
    build(*model);
    model->setVertexArray(nullptr);
    EXPECT_FALSE(hasTree(*model));
    EXPECT_TRUE(std::isnan(pick(*model)));
}

TEST_F(PickIndexTest, PrimitivesThatWereChangedDropTheTree) {
    const auto model = makeFloor();
    build(*model);
    auto& set = dynamic_cast<osg::DrawElementsUShort&>(*model->getPrimitiveSet(0));
    std::fill(set.begin(), set.end(), static_cast<GLushort>(0));
    set.dirty();
    EXPECT_FALSE(hasTree(*model));
    EXPECT_TRUE(std::isnan(pick(*model)));
}

TEST_F(PickIndexTest, MoreOrOtherPrimitivesDropTheTree) {
    const auto model = makeFloor();
    build(*model);
    dynamic_cast<osg::DrawElementsUShort&>(*model->getPrimitiveSet(0)).resize(300);
    EXPECT_FALSE(hasTree(*model));
    build(*model);
    model->addPrimitiveSet(floorIndices());
    EXPECT_FALSE(hasTree(*model));
    EXPECT_EQ(pick(*model), 0.0);
    model->removePrimitiveSet(0, 2);
    EXPECT_FALSE(hasTree(*model));
    EXPECT_TRUE(std::isnan(pick(*model)));
}

TEST_F(PickIndexTest, AnotherModeOrRangeDropsTheTree) {
    const osg::ref_ptr<osg::DrawArrays> set = new osg::DrawArrays(GL_TRIANGLES, 0, 300);
    const auto model = makeGeometry(floorPoints<osg::Vec3>(0), set);
    build(*model);
    EXPECT_TRUE(hasTree(*model));
    set->setMode(GL_TRIANGLE_FAN);
    EXPECT_FALSE(hasTree(*model));
    m_index.clear();
    build(*model);
    EXPECT_TRUE(hasTree(*model));
    set->setFirst(1);
    EXPECT_FALSE(hasTree(*model));
}

TEST_F(PickIndexTest, AnotherMatrixInForceDropsTheTree) {
    const osg::ref_ptr<osg::MatrixTransform> model = new osg::MatrixTransform;
    const auto floor = makeFloor();
    model->addChild(floor);
    build(*model);
    EXPECT_TRUE(hasTree(*floor));
    model->setMatrix(osg::Matrixd::translate(0, 0, 5));
    EXPECT_FALSE(hasTree(*floor, model->getMatrix()));
    EXPECT_EQ(pick(*model), 5.0);
}

TEST_F(PickIndexTest, MatrixThatComesFromAnotherBranchCountsAsWell) {
    const auto floor = makeFloor();
    const osg::ref_ptr<osg::MatrixTransform> before = new osg::MatrixTransform;
    const auto model = groupOf({before, floor});
    build(*model);
    EXPECT_EQ(pick(*model), 0.0);
    before->setMatrix(osg::Matrixd::translate(0, 0, 5));
    EXPECT_EQ(pick(*model), 5.0);
}

TEST_F(PickIndexTest, RemovedChildrenAreNotHit) {
    const auto upper = makeFloor(3);
    const auto lower = makeFloor();
    const auto model = groupOf({upper, lower});
    build(*model);
    EXPECT_EQ(pick(*model), 3.0);
    model->asGroup()->removeChild(upper);
    EXPECT_EQ(pick(*model), 0.0);
    model->asGroup()->addChild(upper);
    EXPECT_EQ(pick(*model), 3.0);
}

TEST_F(PickIndexTest, GeometriesThatAreGoneTakeTheirTreesAlong) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 5; ++i)
        model->addChild(makeFloor(i));
    build(*model);
    EXPECT_EQ(m_index.treeCount(), 5u);
    model->removeChildren(1, 4);
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(pick(*model), 0.0);
    EXPECT_EQ(m_index.treeCount(), 1u);
}

TEST_F(PickIndexTest, KeepsNothingOfTheModelAlive) {
    osg::ref_ptr<osg::Geometry> floor = makeFloor();
    build(*floor);
    EXPECT_TRUE(hasTree(*floor));
    const osg::observer_ptr<osg::Array> vertices = floor->getVertexArray();
    const osg::observer_ptr<osg::PrimitiveSet> set = floor->getPrimitiveSet(0);
    const osg::observer_ptr<osg::Geometry> observed = floor;
    floor = nullptr;
    EXPECT_FALSE(observed.valid());
    EXPECT_FALSE(vertices.valid());
    EXPECT_FALSE(set.valid());
}

// What gets a tree later.

TEST_F(PickIndexTest, WhatTheModelLoadsLaterIsIndexedOnceTwoPicksMetIt) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    build(*model);
    const auto tile = makeFloor();
    model->addChild(tile);
    EXPECT_EQ(pick(*model), 0.0);
    m_index.finish();
    EXPECT_EQ(m_index.treeCount(), 0u);
    EXPECT_EQ(pick(*model), 0.0);
    m_index.finish();
    EXPECT_EQ(m_index.treeCount(), 1u);
    EXPECT_EQ(pick(*model), 0.0);
}

TEST_F(PickIndexTest, WhatChangesBetweenAnyTwoPicksIsNeverIndexed) {
    const osg::ref_ptr<osg::MatrixTransform> model = new osg::MatrixTransform;
    model->addChild(makeFloor());
    for (int i = 1; i <= 50; ++i) {
        model->setMatrix(osg::Matrixd::translate(0, 0, 0.01 * i));
        EXPECT_EQ(pick(*model), static_cast<double>(static_cast<float>(0.01 * i)));
    }
    m_index.finish();
    EXPECT_EQ(m_index.treeCount(), 0u);
}

TEST_F(PickIndexTest, ChangedGeometryIsIndexedAnew) {
    const auto model = makeFloor();
    build(*model);
    model->getVertexArray()->dirty();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(pick(*model), 0.0);
    m_index.finish();
    EXPECT_TRUE(hasTree(*model));
}

// What gets none.

TEST_F(PickIndexTest, DoubleVerticesWithoutATransformHaveATree) {
    const auto model = makeDoubleFloor();
    build(*model);
    EXPECT_TRUE(hasTree(*model));
    EXPECT_EQ(pick(*model), 0.0);
}

TEST_F(PickIndexTest, DoubleVerticesUnderATransformStayWithTheWalk) {
    const osg::Matrixd lift = osg::Matrixd::translate(0, 0, 0.25);
    const auto floor = makeDoubleFloor();
    const auto model = transformed(floor, lift);
    build(*model);
    EXPECT_EQ(m_index.treeCount(), 0u);
    IndexedVisitor visitor(rayDown(middleX, middleY), m_index);
    model->accept(visitor);
    ASSERT_FALSE(visitor.hits().empty());
    EXPECT_EQ(visitor.hits().front().z(), 0.25);
    // Overwritten by the pick, as the walk does.
    EXPECT_EQ(dynamic_cast<osg::Vec3dArray&>(*floor->getVertexArray())[0].z(), 0.25);
}

TEST_F(PickIndexTest, OverwritingVerticesDropsTheTreeOfWhoSharesThem) {
    const auto still = makeDoubleFloor();
    const auto moved = makeDoubleFloor();
    moved->setVertexArray(still->getVertexArray());
    const auto model = groupOf({still, transformed(moved, osg::Matrixd::translate(0, 0, 0.25))});
    build(*model);
    EXPECT_EQ(m_index.treeCount(), 1u);
    IndexedVisitor visitor(rayDown(middleX, middleY), m_index);
    model->accept(visitor);
    ASSERT_EQ(visitor.hits().size(), 2u);
    EXPECT_FALSE(hasTree(*still));
}

TEST_F(PickIndexTest, GeometriesThatMayBeWrittenAtAnyTimeHaveNone) {
    const auto floor = makeFloor();
    floor->setDataVariance(osg::Object::DYNAMIC);
    build(*floor);
    EXPECT_EQ(m_index.treeCount(), 0u);
    EXPECT_EQ(pick(*floor), 0.0);
    const auto array = makeFloor();
    array->getVertexArray()->setDataVariance(osg::Object::DYNAMIC);
    build(*array);
    EXPECT_EQ(m_index.treeCount(), 0u);
}

TEST_F(PickIndexTest, VerticesOfOtherTypesHaveNone) {
    const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec4Array(500));
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 300));
    build(*geometry);
    EXPECT_EQ(m_index.treeCount(), 0u);
    EXPECT_TRUE(std::isnan(pick(*geometry, 0, 0)));
}

TEST_F(PickIndexTest, GeometryInVeryManyPlacesHasTreesForAFewAndIsPickedInAll) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const auto floor = makeFloor();
    constexpr int places = 40;
    for (int i = 0; i < places; ++i)
        model->addChild(transformed(floor, osg::Matrixd::translate(30.0 * i, 0, 0.125 * i)));
    build(*model);
    EXPECT_EQ(m_index.treeCount(), 16u);
    for (int round = 0; round < 3; ++round)
        for (int i = 0; i < places; ++i)
            EXPECT_EQ(pick(*model->getChild(static_cast<unsigned int>(i)), 30.0 * i + 3, 4),
                      0.125 * i);
    m_index.finish();
    EXPECT_LE(m_index.treeCount(), 16u);
}

// The worker.

TEST_F(PickIndexTest, ClearForgetsAllAndStopsTheWorker) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    std::vector<osg::observer_ptr<osg::Array>> vertices;
    for (int i = 0; i < 200; ++i) {
        const auto floor = makeFloor(i);
        vertices.emplace_back(floor->getVertexArray());
        model->addChild(floor);
    }
    for (int round = 0; round < 5; ++round) {
        m_index.add(*model);
        m_index.clear();
        EXPECT_EQ(m_index.treeCount(), 0u);
    }
    m_index.add(*model);
    m_index.clear();
    model->removeChildren(0, model->getNumChildren());
    for (const auto& array : vertices)
        EXPECT_FALSE(array.valid());
}

TEST_F(PickIndexTest, EndsWhileTheWorkerIsBusy) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 100; ++i)
        model->addChild(makeFloor(i));
    for (int round = 0; round < 5; ++round) {
        PickIndex index;
        index.add(*model);
    }
}

TEST_F(PickIndexTest, PicksWhileTheWorkerBuildsFindTheSame) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 100; ++i)
        model->addChild(makeFloor(0.05 * i));
    for (int round = 0; round < 3; ++round) {
        m_index.add(*model);
        for (int i = 0; i < 30; ++i)
            EXPECT_NEAR(pick(*model, 0.5 + 0.6 * i, middleY), 4.95, 1e-6);
        m_index.clear();
    }
}

TEST_F(PickIndexTest, VerticesCanBeOverwrittenWhileTheWorkerBuilds) {
    // Each pair shares its vertices: one is being indexed when the pick overwrites the other.
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 50; ++i) {
        const auto still = makeDoubleFloor(0.05 * i);
        const auto moved = makeDoubleFloor();
        moved->setVertexArray(still->getVertexArray());
        model->addChild(transformed(still, osg::Matrixd::identity()));
        model->addChild(transformed(moved, osg::Matrixd::rotate(1e-4, osg::Vec3d(0, 0, 1))));
    }
    for (int round = 0; round < 5; ++round) {
        m_index.add(*model);
        for (int i = 0; i < 5; ++i) {
            IndexedVisitor visitor(rayDown(middleX, middleY), m_index);
            model->accept(visitor);
            EXPECT_EQ(visitor.hits().size(), 100u);
        }
    }
}

TEST_F(PickIndexTest, GeometriesCanGoWhileTheWorkerBuilds) {
    for (int round = 0; round < 10; ++round) {
        const osg::ref_ptr<osg::Group> model = new osg::Group;
        for (int i = 0; i < 50; ++i)
            model->addChild(makeFloor(0.05 * i));
        m_index.add(*model);
        model->removeChildren(25, 25);
        EXPECT_NEAR(pick(*model), 1.2, 1e-6);
    }
}

TEST_F(PickIndexTest, PickerFindsTheSameWithAndWithoutIt) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 30.0, {200, 100});
    camera->setViewMatrixAsLookAt({-30, -40, 50}, {middleX, middleY, 0}, {0, 0, 1});
    const osg::ref_ptr<osg::Switch> modelSwitch = new osg::Switch;
    modelSwitch->addChild(new osg::Group);
    modelSwitch->addChild(makeFloor());
    build(*modelSwitch->getChild(1));
    const PickView view{camera.get(), modelSwitch.get(), [] { return 100; }, {}};
    Picker plain(view);
    Picker indexed(view, &m_index);
    int hits = 0;
    for (double x = 0; x < 200; x += 7)
        for (double y = 0; y < 100; y += 7) {
            osg::Vec3d one(1, 2, 3);
            osg::Vec3d other(1, 2, 3);
            EXPECT_EQ(plain.pickPoint(x, y, one), indexed.pickPoint(x, y, other));
            EXPECT_TRUE(sameBits(one, other));
            hits += one == osg::Vec3d(1, 2, 3) ? 0 : 1;
        }
    EXPECT_GT(hits, 20);
}

} // namespace orbisk::test
