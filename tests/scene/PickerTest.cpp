#include "measure/Picker.h"

#include "measure/PickIndex.h"
#include "support/PickTools.h"
#include "support/SceneTools.h"
#include "view/SceneRoot.h"
#include "view/ViewCamera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <stdexcept>

namespace orbisk::test {

namespace {

constexpr ViewSize canvas{800, 600};

/// A camera that looks down on the world's origin, and a model switch that has two children.
class PickerTest : public testing::Test {
protected:
    PickerTest() : m_camera(new osg::Camera), m_switch(new osg::Switch) {
        setUpCamera(*m_camera, 30.0, canvas);
        lookFrom({0, 0, 100});
        m_switch->addChild(new osg::Group);
    }

    void lookFrom(const osg::Vec3d& eye, const osg::Vec3d& center = {}) {
        m_camera->setViewMatrixAsLookAt(eye, center, {0, 1, 0});
    }

    Picker makePicker(PickIndex* index = nullptr) {
        return Picker({m_camera.get(), m_switch.get(), [] { return canvas.h; }, {}}, index);
    }

    /// Where a point of the world is seen on the canvas.
    osg::Vec2d seenAt(const osg::Vec3d& point) const {
        const osg::Vec3d window = point * m_camera->getViewMatrix() *
                                  m_camera->getProjectionMatrix() *
                                  m_camera->getViewport()->computeWindowMatrix();
        return {window.x(), canvas.h - window.y()};
    }

    osg::ref_ptr<osg::Camera> m_camera;
    osg::ref_ptr<osg::Switch> m_switch;
};

/// A grid of triangles over [-side / 2, side / 2]^2 whose heights a function gives.
osg::ref_ptr<osg::Geometry> makeSurface(double side, unsigned int cells,
                                        const std::function<double(double, double)>& height) {
    std::vector<osg::Vec3d> points;
    for (unsigned int j = 0; j <= cells; ++j)
        for (unsigned int i = 0; i <= cells; ++i) {
            const double x = side * (i / static_cast<double>(cells) - 0.5);
            const double y = side * (j / static_cast<double>(cells) - 0.5);
            points.emplace_back(x, y, height(x, y));
        }
    const osg::ref_ptr<osg::DrawElementsUInt> set = new osg::DrawElementsUInt(GL_TRIANGLES);
    for (unsigned int j = 0; j < cells; ++j)
        for (unsigned int i = 0; i < cells; ++i) {
            const unsigned int corner = j * (cells + 1) + i;
            for (const unsigned int step : {0u, 1u, cells + 2, 0u, cells + 2, cells + 1})
                set->push_back(corner + step);
        }
    return makeDoubleGeometry(points, set);
}

} // namespace

TEST_F(PickerTest, PicksTheSurfaceUnderThePosition) {
    m_switch->addChild(makeQuad(40, {0, 0, 5}));
    osg::Vec3d point;
    const osg::Vec2d position = seenAt({7, -3, 5});
    ASSERT_TRUE(makePicker().pickPoint(position.x(), position.y(), point));
    EXPECT_LT((point - osg::Vec3d(7, -3, 5)).length(), 1e-9);
}

TEST_F(PickerTest, MissLeavesThePointUntouched) {
    m_switch->addChild(makeQuad(2));
    osg::Vec3d point(1, 2, 3);
    EXPECT_FALSE(makePicker().pickPoint(0, 0, point));
    EXPECT_EQ(point, osg::Vec3d(1, 2, 3));
}

TEST_F(PickerTest, FewerThanTwoChildrenAreNoHit) {
    osg::Vec3d point(1, 2, 3);
    EXPECT_FALSE(makePicker().pickPoint(400, 300, point));
    m_switch->removeChildren(0, 1);
    EXPECT_FALSE(makePicker().pickPoint(400, 300, point));
    EXPECT_EQ(point, osg::Vec3d(1, 2, 3));
}

TEST_F(PickerTest, CameraOrSwitchThatIsGoneIsNoHit) {
    m_switch->addChild(makeQuad(40));
    Picker picker = makePicker();
    osg::Vec3d point(1, 2, 3);
    ASSERT_TRUE(picker.pickPoint(400, 300, point));
    point = osg::Vec3d(1, 2, 3);
    m_switch = nullptr;
    EXPECT_FALSE(picker.pickPoint(400, 300, point));
    m_camera = nullptr;
    EXPECT_FALSE(picker.pickPoint(400, 300, point));
    EXPECT_EQ(picker.nearPoint(400, 300), osg::Vec3d());
    EXPECT_EQ(point, osg::Vec3d(1, 2, 3));
}

TEST_F(PickerTest, OnlyTheModelIsTested) {
    m_switch->setChild(0, makeQuad(40, {0, 0, 20}));
    m_switch->addChild(makeQuad(2, {0, 0, 0}));
    m_switch->addChild(makeQuad(40, {0, 0, 10}));
    osg::Vec3d point;
    ASSERT_TRUE(makePicker().pickPoint(400, 300, point));
    EXPECT_NEAR(point.z(), 0, 1e-9);
    const osg::Vec2d beside = seenAt({5, 5, 0});
    EXPECT_FALSE(makePicker().pickPoint(beside.x(), beside.y(), point));
}

TEST_F(PickerTest, ModelThatIsSwitchedOffIsStillPicked) {
    m_switch->addChild(makeQuad(40), false);
    osg::Vec3d point;
    EXPECT_TRUE(makePicker().pickPoint(400, 300, point));
}

TEST_F(PickerTest, OutOfRangeIndexReachesTheCaller) {
    m_switch->addChild(makeGeometry({{-5, -5, 0}, {5, -5, 0}, {0, 5, 0}},
                                    new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 1, 3)));
    osg::Vec3d point(1, 2, 3);
    EXPECT_THROW(makePicker().pickPoint(400, 300, point), std::out_of_range);
    EXPECT_EQ(point, osg::Vec3d(1, 2, 3));
}

TEST_F(PickerTest, PreparingBuildsTheModelsTreesOnce) {
    m_switch->addChild(makeSurface(10, 20, [](double, double) { return 0.0; }));
    PickIndex index;
    Picker picker = makePicker(&index);
    EXPECT_EQ(index.treeCount(), 0u);
    for (int i = 0; i < 2; ++i) {
        picker.prepare();
        index.finish();
        EXPECT_EQ(index.treeCount(), 1u);
    }
}

TEST_F(PickerTest, PreparingWithoutAModelOrAnIndexDoesNothing) {
    PickIndex index;
    makePicker(&index).prepare();
    index.finish();
    EXPECT_EQ(index.treeCount(), 0u);
    m_switch->addChild(makeQuad(40));
    makePicker().prepare();
    osg::Vec3d point;
    EXPECT_TRUE(makePicker().pickPoint(400, 300, point));
}

TEST_F(PickerTest, NearPointIsTheOneOfTheCamera) {
    const osg::Vec3d point = makePicker().nearPoint(123, 456);
    EXPECT_TRUE(sameBits(point, nearPlanePoint(*m_camera, {123, 456, 600})));
    EXPECT_NEAR(point.z(), 90, 1e-9);
}

TEST_F(PickerTest, PlaneIsPickedExactly) {
    const double side = 1000;
    m_switch->addChild(makeSurface(side, 40, [](double x, double y) { return 0.3 * x - 0.2 * y; }));
    lookFrom({300, -4000, 5000});
    Picker picker = makePicker();
    for (int i = 0; i < 100; ++i) {
        const double x = 0.97 * side * ((i % 10) / 9.0 - 0.5);
        const double y = 0.97 * side * ((i / 10) / 9.0 - 0.5);
        const osg::Vec3d wanted(x, y, 0.3 * x - 0.2 * y);
        const osg::Vec2d position = seenAt(wanted);
        osg::Vec3d point;
        ASSERT_TRUE(picker.pickPoint(position.x(), position.y(), point));
        EXPECT_LT((point - wanted).length(), 1e-6 * side);
    }
}

TEST_F(PickerTest, SphereIsPickedWhereTheRayMeetsIt) {
    // As many cells as keep the flat triangles within a millionth of the sphere's size.
    const double radius = 50;
    const double part = 8;
    const unsigned int cells = 200;
    m_switch->addChild(makeSurface(part, cells, [radius](double x, double y) {
        return std::sqrt(radius * radius - x * x - y * y);
    }));
    Picker picker = makePicker();
    for (int i = 0; i < 25; ++i) {
        const osg::Vec2d position =
            seenAt({0.8 * part * ((i % 5) / 4.0 - 0.5), 0.8 * part * ((i / 5) / 4.0 - 0.5), 49});
        const PickRay ray = makePickRay(*m_camera, {position.x(), position.y(), canvas.h});
        osg::Vec3d point;
        ASSERT_TRUE(picker.pickPoint(position.x(), position.y(), point));
        const double b = ray.origin * ray.direction;
        const double distance = -b - std::sqrt(b * b - ray.origin.length2() + radius * radius);
        EXPECT_LT((point - (ray.origin + ray.direction * distance)).length(), 1e-6 * 2 * radius);
    }
}

TEST_F(PickerTest, TerrainIsPickedOnItsTriangles) {
    const double side = 400;
    const auto height = [](double x, double y) { return 12 * std::sin(x / 35) * std::cos(y / 35); };
    const unsigned int cells = 200;
    m_switch->addChild(makeSurface(side, cells, height));
    lookFrom({20, -30, 900});
    Picker picker = makePicker();
    // The corners of the grid lie on the function itself.
    for (unsigned int i = 3; i < cells; i += 14) {
        const double x = side * (i / static_cast<double>(cells) - 0.5);
        const double y = side * ((cells - i) / static_cast<double>(cells) - 0.5);
        const osg::Vec2d position = seenAt({x, y, height(x, y)});
        osg::Vec3d point;
        ASSERT_TRUE(picker.pickPoint(position.x(), position.y(), point));
        EXPECT_LT((point - osg::Vec3d(x, y, height(x, y))).length(), 1e-6 * side);
    }
}

} // namespace orbisk::test
