#include "measure/PickInteraction.h"

#include "measure/MeasurementDrawing.h"
#include "measure/PickSurface.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/Switch>

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orbisk::test {

namespace {

constexpr double nearPlane = -100.0;

/// A plane of pixels: (x, y) is hit at (x, y, 0), but for what was said to be elsewhere.
class PixelPlane : public PickSurface {
public:
    void prepare() override { ++preparations; }

    bool pickPoint(double x, double y, osg::Vec3d& point) override {
        ++picks;
        if (damaged)
            throw std::out_of_range("index");
        if (x < 0)
            return false;
        const auto place = places.find({static_cast<int>(x), static_cast<int>(y)});
        point = place == places.end() ? osg::Vec3d(x, y, 0) : place->second;
        return true;
    }

    osg::Vec3d nearPoint(double x, double y) const override { return {x, y, nearPlane}; }

    std::map<std::pair<int, int>, osg::Vec3d> places;
    bool damaged = false;
    int picks = 0;
    int preparations = 0;
};

/// Writes down what it is told.
class RecordingTable : public MeasurementTable {
public:
    void appendPointRow() override { calls.emplace_back("append point"); }
    void appendTravelRow() override { calls.emplace_back("append travel"); }
    void appendLineVertexRow() override { calls.emplace_back("append line vertex"); }
    void appendAreaVertexRow() override { calls.emplace_back("append area vertex"); }
    void removeLastAreaVertexRow() override { calls.emplace_back("remove area vertex"); }
    void rebuildPointGrid() override { calls.emplace_back("rebuild points"); }
    void rebuildTravelGrid() override { calls.emplace_back("rebuild travel"); }
    void rebuildLineGrid() override { calls.emplace_back("rebuild lines"); }
    void rebuildAreaGrid() override { calls.emplace_back("rebuild areas"); }

    std::vector<std::string> take() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

/// All vertices of the geometries below a node, in order.
class VertexList : public osg::NodeVisitor {
public:
    VertexList() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Geometry& geometry) override {
        const auto& array = dynamic_cast<osg::Vec3dArray&>(*geometry.getVertexArray());
        vertices.insert(vertices.end(), array.begin(), array.end());
    }

    std::vector<osg::Vec3d> vertices;
};

class PickInteractionTest : public testing::Test {
protected:
    PickInteractionTest()
        : m_switch(new osg::Switch), m_drawing(m_set),
          m_interaction(m_set, m_drawing, [this](const TravelPath& path) {
              m_flown = path;
              m_collectedAtStart = m_set.travelPoints;
              m_drawnAtStart = isDrawn();
          }) {
        for (int i = 0; i < 2; ++i)
            m_switch->addChild(new osg::Group);
        m_drawing.setModelSwitch(m_switch);
        m_interaction.setSurface(&m_plane);
        m_interaction.setTable(&m_table);
    }

    void click(int x, int y) { m_interaction.onLeftClick({x, y}); }

    void click(const std::vector<CanvasPixel>& pixels) {
        for (const CanvasPixel& pixel : pixels)
            m_interaction.onLeftClick(pixel);
    }

    bool isDrawn() const { return m_switch->getValue(SceneRoot::drawingSlot); }

    std::vector<osg::Vec3d> drawnVertices() const {
        VertexList list;
        if (isDrawn())
            m_switch->getChild(SceneRoot::drawingSlot)->accept(list);
        return list.vertices;
    }

    void movePointer(int x, int y) {
        m_interaction.onMouseMotion({x, y});
        m_interaction.updatePreview();
    }

    /// Labels of a right click's menu; those that cannot be chosen in parentheses.
    std::vector<std::string> menu(int x = 1, int y = 1) {
        std::vector<std::string> labels;
        for (const PickMenuItem& item : m_interaction.onRightClick({x, y}))
            labels.push_back(item.enabled ? item.label : "(" + std::string(item.label) + ")");
        return labels;
    }

    MeasurementSet m_set;
    osg::ref_ptr<osg::Switch> m_switch;
    MeasurementDrawing m_drawing;
    PixelPlane m_plane;
    RecordingTable m_table;
    std::optional<TravelPath> m_flown;
    TravelPath m_collectedAtStart{{}};
    bool m_drawnAtStart = true;
    PickInteraction m_interaction;
};

using Labels = std::vector<std::string>;
using Points = std::vector<osg::Vec3d>;

/// A polygon of four corners that the rules accept: no two edges are parallel.
const std::vector<CanvasPixel> quadrangle = {{1, 1}, {11, 2}, {14, 13}, {3, 10}};

} // namespace

TEST_F(PickInteractionTest, ClicksWithoutAModeMeasureNothing) {
    click(1, 2);
    EXPECT_EQ(m_plane.picks, 0);
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, SurfaceIsPreparedWhenAModeBeginsAndNotBefore) {
    EXPECT_EQ(m_plane.preparations, 0);
    m_interaction.setLineMode(true);
    EXPECT_EQ(m_plane.preparations, 1);
    m_interaction.setLineMode(false);
    m_interaction.endMode();
    EXPECT_EQ(m_plane.preparations, 1);
}

TEST_F(PickInteractionTest, AtMostOneModeIsOn) {
    m_interaction.setPointMode(true);
    m_interaction.setLineMode(true);
    EXPECT_FALSE(m_interaction.pointMode());
    EXPECT_TRUE(m_interaction.lineMode());
    m_interaction.setAreaMode(true);
    EXPECT_FALSE(m_interaction.lineMode());
    m_interaction.setTravelMode(true);
    EXPECT_FALSE(m_interaction.areaMode());
    EXPECT_TRUE(m_interaction.travelMode());
    m_interaction.setPointMode(false);
    EXPECT_FALSE(m_interaction.travelMode());
    EXPECT_FALSE(m_interaction.pointMode());
}

TEST_F(PickInteractionTest, ModeSwitchHidesTheDrawing) {
    m_interaction.setPointMode(true);
    click(1, 2);
    EXPECT_TRUE(isDrawn());
    m_interaction.setLineMode(true);
    EXPECT_FALSE(isDrawn());
    EXPECT_EQ(m_set.points.size(), 1u);
}

TEST_F(PickInteractionTest, PointIsStoredDrawnAndListed) {
    m_interaction.setPointMode(true);
    click(3, 4);
    click(5, 6);
    EXPECT_EQ(m_set.points, (Points{{3, 4, 0}, {5, 6, 0}}));
    EXPECT_EQ(drawnVertices(), m_set.points);
    EXPECT_EQ(m_table.take(), (Calls{"append point", "append point"}));
}

TEST_F(PickInteractionTest, SamePixelAddsNoSecondPoint) {
    m_interaction.setPointMode(true);
    click(3, 4);
    click(3, 4);
    EXPECT_EQ(m_set.points.size(), 1u);
    click(5, 6);
    click(3, 4);
    EXPECT_EQ(m_set.points.size(), 3u);
}

TEST_F(PickInteractionTest, BackgroundAddsNothingAndIsNotRemembered) {
    m_interaction.setLineMode(true);
    click(3, 4);
    click(-1, 4);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{3, 4, 0}}}));
    EXPECT_FALSE(m_interaction.lineFinished());
    click(3, 4);
    EXPECT_TRUE(m_interaction.lineFinished());
}

TEST_F(PickInteractionTest, DamagedModelIsLikeBackground) {
    m_interaction.setPointMode(true);
    m_plane.damaged = true;
    click(3, 4);
    EXPECT_TRUE(m_set.points.empty());
}

TEST_F(PickInteractionTest, NothingIsPickedWithoutASurface) {
    m_interaction.setPointMode(true);
    m_interaction.setSurface(nullptr);
    click(3, 4);
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, FirstClickInTheUpperLeftCornerIsTakenForASecondOne) {
    m_interaction.setPointMode(true);
    click(0, 0);
    EXPECT_TRUE(m_set.points.empty());
    click(1, 0);
    click(0, 0);
    EXPECT_EQ(m_set.points.size(), 2u);
}

TEST_F(PickInteractionTest, MeasuresWithoutATable) {
    m_interaction.setTable(nullptr);
    m_interaction.setAreaMode(true);
    click(quadrangle);
    m_interaction.run(PickCommand::BackArea);
    m_interaction.run(PickCommand::ClearArea);
    EXPECT_TRUE(m_set.areas.empty());
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 5}});
    m_interaction.run(PickCommand::BackLine);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}}}));
}

TEST_F(PickInteractionTest, LineGrowsUntilItsLastPixelIsClickedAgain) {
    m_interaction.setLineMode(true);
    EXPECT_TRUE(m_interaction.lineFinished());
    click(1, 1);
    EXPECT_FALSE(m_interaction.lineFinished());
    click({{5, 1}, {5, 4}, {5, 4}});
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}, {5, 1, 0}, {5, 4, 0}}}));
    EXPECT_EQ(m_table.take(),
              (Calls{"append line vertex", "append line vertex", "append line vertex"}));
    click(5, 5);
    EXPECT_EQ(m_set.lines.size(), 2u);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{5, 5, 0}}));
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}, {5, 4, 0}, {5, 5, 0}}));
}

TEST_F(PickInteractionTest, ThirdClickAtThePixelLeavesTheLineFinished) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 1}, {5, 1}});
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_set.lines.size(), 1u);
}

TEST_F(PickInteractionTest, LineGoesOnAfterAnotherMode) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}});
    m_interaction.setPointMode(true);
    m_interaction.setLineMode(true);
    click(9, 9);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}, {5, 1, 0}, {9, 9, 0}}}));
}

TEST_F(PickInteractionTest, LineMenuNeedsTwoVerticesToFinishAndLoop) {
    m_interaction.setLineMode(true);
    EXPECT_TRUE(menu().empty());
    click(1, 1);
    EXPECT_EQ(menu(), (Labels{"(finish)", "(loop)", "back", "clear"}));
    click(5, 1);
    EXPECT_EQ(menu(), (Labels{"finish", "loop", "back", "clear"}));
    m_interaction.run(PickCommand::FinishLine);
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, MenusCommandsHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(PickCommand::DeletePoint), 6050);
    EXPECT_EQ(static_cast<int>(PickCommand::FinishLine), 6051);
    EXPECT_EQ(static_cast<int>(PickCommand::FinishArea), 6055);
    EXPECT_EQ(static_cast<int>(PickCommand::FinishTravel), 6058);
    EXPECT_EQ(static_cast<int>(PickCommand::ClearTravel), 6060);
}

TEST_F(PickInteractionTest, LoopRepeatsTheFirstVertexAndFinishes) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 4}});
    m_table.take();
    m_interaction.run(PickCommand::LoopLine);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{1, 1, 0}, {5, 1, 0}, {5, 4, 0}, {1, 1, 0}}));
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_table.take(), Calls{"append line vertex"});
    EXPECT_EQ(drawnVertices().size(), 4u);
}

TEST_F(PickInteractionTest, LoopOfOneVertexGivesTwoEqualOnes) {
    m_interaction.setLineMode(true);
    click(1, 1);
    m_interaction.run(PickCommand::LoopLine);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{1, 1, 0}, {1, 1, 0}}));
}

TEST_F(PickInteractionTest, LineBackLeavesAnEmptyCurrentLine) {
    m_interaction.setLineMode(true);
    click(1, 1);
    m_table.take();
    m_interaction.run(PickCommand::BackLine);
    EXPECT_EQ(m_set.lines, std::vector<MeasureLine>(1));
    EXPECT_FALSE(m_interaction.lineFinished());
    EXPECT_EQ(m_table.take(), Calls{"rebuild lines"});
    EXPECT_EQ(menu(), (Labels{"(finish)", "(loop)", "(back)", "clear"}));
    m_interaction.run(PickCommand::BackLine);
    EXPECT_EQ(m_set.lines, std::vector<MeasureLine>(1));
    click(7, 7);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{7, 7, 0}}}));
}

TEST_F(PickInteractionTest, LineClearRemovesTheCurrentLineOnly) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 1}, {8, 8}, {9, 9}});
    m_table.take();
    m_interaction.run(PickCommand::ClearLine);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{1, 1, 0}, {5, 1, 0}}}));
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_EQ(m_table.take(), Calls{"rebuild lines"});
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    m_interaction.run(PickCommand::ClearLine);
    EXPECT_TRUE(m_set.lines.empty());
    EXPECT_FALSE(isDrawn());
}

TEST_F(PickInteractionTest, AreaIsMeasuredFromThreeVerticesOn) {
    m_interaction.setAreaMode(true);
    m_plane.places = {{{10, 0}, {10, 0, 1}}, {{0, 10}, {0, 10, 2}}};
    click({{0, -1}, {10, 0}});
    EXPECT_TRUE(m_set.areaTriangles.empty());
    click(0, 10);
    EXPECT_EQ(m_set.areaTriangles.size(), 3u);
    EXPECT_EQ(m_set.areas.size(), 1u);
    EXPECT_EQ(m_table.take(),
              (Calls{"append area vertex", "append area vertex", "append area vertex"}));
    EXPECT_EQ(drawnVertices().size(), 6u); // the filling and the outline
    click(0, 10);
    EXPECT_TRUE(m_interaction.areaFinished());
    EXPECT_EQ(m_set.areaTriangles.size(), 3u);
    click(3, 3);
    EXPECT_EQ(m_set.areas.size(), 2u);
    EXPECT_TRUE(m_set.areaTriangles.empty());
}

TEST_F(PickInteractionTest, CrossingVertexIsKept) {
    m_interaction.setAreaMode(true);
    click({{0, -1}, {10, 10}, {10, 1}, {1, 11}});
    EXPECT_EQ(m_set.areas.back().size(), 4u);
    EXPECT_FALSE(m_interaction.areaFinished());
}

TEST_F(PickInteractionTest, AreaMenuNeedsThreeVerticesToFinish) {
    m_interaction.setAreaMode(true);
    EXPECT_TRUE(menu().empty());
    click({{0, -1}, {10, 1}});
    EXPECT_EQ(menu(), (Labels{"(finish)", "back", "clear"}));
    click(13, 12);
    EXPECT_EQ(menu(), (Labels{"finish", "back", "clear"}));
    m_interaction.run(PickCommand::FinishArea);
    EXPECT_TRUE(m_interaction.areaFinished());
    EXPECT_TRUE(menu().empty());
}

TEST_F(PickInteractionTest, AreaBackMeasuresAgain) {
    m_interaction.setAreaMode(true);
    click(quadrangle);
    m_table.take();
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas.back().size(), 3u);
    EXPECT_FALSE(m_interaction.areaFinished());
    EXPECT_EQ(m_table.take(), Calls{"remove area vertex"});
}

TEST_F(PickInteractionTest, FailedAreaBackRemovesOneVertexMore) {
    m_interaction.setAreaMode(true);
    // With the fourth vertex the polygon crosses itself, whatever the fifth.
    click({{0, -1}, {10, 10}, {10, 1}, {1, 11}, {-0, 30}});
    ASSERT_EQ(m_set.areas.back().size(), 5u);
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas.back().size(), 3u);
}

TEST_F(PickInteractionTest, AreaBackToNothingIsNotOffered) {
    m_interaction.setAreaMode(true);
    click(0, -1);
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas, std::vector<MeasureArea>(1));
    EXPECT_EQ(menu(), (Labels{"(finish)", "(back)", "clear"}));
    m_interaction.run(PickCommand::BackArea);
    EXPECT_EQ(m_set.areas, std::vector<MeasureArea>(1));
}

TEST_F(PickInteractionTest, AreaClearOfTheOnlyAreaLeavesNone) {
    m_interaction.setAreaMode(true);
    click({{0, -1}, {10, 1}});
    m_table.take();
    m_interaction.run(PickCommand::ClearArea);
    EXPECT_TRUE(m_set.areas.empty());
    EXPECT_TRUE(m_interaction.areaFinished());
    EXPECT_EQ(m_table.take(), Calls{"rebuild areas"});
    EXPECT_FALSE(isDrawn());
    click(13, 12);
    EXPECT_EQ(m_set.areas, (std::vector<MeasureArea>{{{13, 12, 0}}}));
}

TEST_F(PickInteractionTest, AreaClearFillsTheAreaBeforeIt) {
    m_interaction.setAreaMode(true);
    m_plane.places = {{{10, 0}, {10, 0, 1}}, {{0, 10}, {0, 10, 2}}};
    click({{0, -1}, {10, 0}, {0, 10}, {0, 10}, {30, 30}, {40, 30}});
    m_interaction.run(PickCommand::ClearArea);
    EXPECT_EQ(m_set.areaTriangles.size(), 3u);
    EXPECT_EQ(drawnVertices().size(), 6u);
}

TEST_F(PickInteractionTest, TravelPathIsCollectedAndFlown) {
    m_interaction.setTravelMode(true);
    click(1, 1);
    EXPECT_EQ(m_table.take(), (Calls{"rebuild travel", "append travel"}));
    click(5, 1);
    EXPECT_EQ(m_table.take(), Calls{"append travel"});
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    EXPECT_FALSE(m_flown);
    click(5, 1);
    ASSERT_TRUE(m_flown);
    EXPECT_EQ(*m_flown, (TravelPath{{1, 1, 0}, {5, 1, 0}}));
    EXPECT_TRUE(m_set.travelPoints.empty());
    EXPECT_FALSE(isDrawn());
    m_flown.reset();
    click(5, 1);
    EXPECT_FALSE(m_flown) << "a third click would end the roam by flying along nothing";
}

TEST_F(PickInteractionTest, RoamStartsWhenItsPointsAreConsumed) {
    m_interaction.setTravelMode(true);
    click(1, 1);
    click(5, 1);
    m_interaction.run(PickCommand::FinishTravel);
    EXPECT_EQ(m_flown, (TravelPath{{1, 1, 0}, {5, 1, 0}}));
    EXPECT_TRUE(m_collectedAtStart.empty());
    EXPECT_FALSE(m_drawnAtStart);
}

TEST_F(PickInteractionTest, TravelMenuIsAlwaysThere) {
    m_interaction.setTravelMode(true);
    EXPECT_EQ(menu(), (Labels{"finish", "(back)", "clear"}));
    click(1, 1);
    click(5, 1);
    EXPECT_EQ(menu(-1, 0), (Labels{"finish", "back", "clear"}));
    m_interaction.run(PickCommand::BackTravel);
    EXPECT_EQ(m_set.travelPoints, (TravelPath{{1, 1, 0}}));
    m_interaction.run(PickCommand::ClearTravel);
    EXPECT_TRUE(m_set.travelPoints.empty());
    m_interaction.run(PickCommand::ClearTravel);
    m_interaction.run(PickCommand::BackTravel);
    EXPECT_TRUE(m_set.travelPoints.empty());
    EXPECT_FALSE(isDrawn());
    EXPECT_FALSE(m_flown);
    m_interaction.run(PickCommand::FinishTravel);
    EXPECT_EQ(m_flown, TravelPath());
}

TEST_F(PickInteractionTest, ClearingAnEmptyTravelPathStillRedraws) {
    m_interaction.setTravelMode(true);
    m_switch->setValue(SceneRoot::drawingSlot, true);
    m_interaction.run(PickCommand::ClearTravel);
    EXPECT_TRUE(m_set.travelPoints.empty());
    EXPECT_FALSE(isDrawn());
    EXPECT_EQ(m_table.take(), Calls{"rebuild travel"});
}

TEST_F(PickInteractionTest, PointMenuNeedsPointsAndAHit) {
    m_interaction.setPointMode(true);
    EXPECT_TRUE(menu().empty());
    click(3, 4);
    EXPECT_EQ(menu(), Labels{"delete"});
    EXPECT_TRUE(menu(-1, 4).empty());
}

TEST_F(PickInteractionTest, DeleteTakesThePointNearThePointer) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{3, 4}, {3.5, 4.5, 10.5}}, {{8, 8}, {8.5, 8.5, 10.5}}};
    click({{3, 4}, {8, 8}});
    m_table.take();
    m_plane.places[{20, 20}] = {3.9, 4.2, 10.9};
    ASSERT_EQ(menu(20, 20), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_EQ(m_set.points, (Points{{8.5, 8.5, 10.5}}));
    EXPECT_EQ(m_table.take(), Calls{"rebuild points"});
    EXPECT_EQ(drawnVertices(), m_set.points);
}

TEST_F(PickInteractionTest, DeleteTakesTheNewestOfSeveral) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{1, 1}, {3.5, 4.5, 10.5}}, {{2, 2}, {3.6, 4.4, 10.4}}, {{3, 3}, {9, 9, 9}}};
    click({{1, 1}, {2, 2}, {3, 3}});
    ASSERT_EQ(menu(1, 1), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_EQ(m_set.points, (Points{{3.5, 4.5, 10.5}, {9, 9, 9}}));
}

TEST_F(PickInteractionTest, DeleteFarFromEveryPointDeletesNothing) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{1, 1}, {3.5, 4.5, 10.5}}, {{2, 2}, {5.1, 4.5, 10.5}}};
    click(1, 1);
    m_table.take();
    ASSERT_EQ(menu(2, 2), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_EQ(m_set.points.size(), 1u);
    EXPECT_TRUE(m_table.take().empty());
}

TEST_F(PickInteractionTest, DeletesBoxIsCutToWholeUnits) {
    m_interaction.setPointMode(true);
    // The pointer at 3.2 reaches from 2 to 4 on each axis, both left out.
    m_plane.places = {{{1, 1}, {3.2, 3.2, 3.2}},
                      {{2, 2}, {4.1, 3.2, 3.2}},
                      {{3, 3}, {2.05, 3.2, 3.2}},
                      {{4, 4}, {2.0, 3.2, 3.2}}};
    click({{2, 2}, {4, 4}, {3, 3}});
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(menu(1, 1), Labels{"delete"});
        m_interaction.run(PickCommand::DeletePoint);
    }
    EXPECT_EQ(m_set.points, (Points{{4.1, 3.2, 3.2}, {2.0, 3.2, 3.2}}));
}

TEST_F(PickInteractionTest, DeletesBoxAroundZeroIsCutTowardsZero) {
    m_interaction.setPointMode(true);
    // The pointer at 0.5 reaches from 0 to 1.
    m_plane.places = {
        {{1, 1}, {0.5, 0.5, 0.5}}, {{2, 2}, {-0.3, 0.5, 0.5}}, {{3, 3}, {0.3, 0.5, 0.5}}};
    click({{2, 2}, {3, 3}});
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(menu(1, 1), Labels{"delete"});
        m_interaction.run(PickCommand::DeletePoint);
    }
    EXPECT_EQ(m_set.points, (Points{{-0.3, 0.5, 0.5}}));
}

TEST_F(PickInteractionTest, DeletedLastPointHidesTheDrawing) {
    m_interaction.setPointMode(true);
    m_plane.places = {{{1, 1}, {3.5, 4.5, 10.5}}};
    click(1, 1);
    ASSERT_EQ(menu(1, 1), Labels{"delete"});
    m_interaction.run(PickCommand::DeletePoint);
    EXPECT_TRUE(m_set.points.empty());
    EXPECT_FALSE(isDrawn());
}

TEST_F(PickInteractionTest, PreviewFollowsThePointerWhileALineGrows) {
    m_interaction.setLineMode(true);
    movePointer(4, 4);
    EXPECT_FALSE(isDrawn());
    click(1, 1);
    movePointer(7, 8);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {1, 1, 0}, {7, 8, 0}, {7, 8, 0}}));
    movePointer(-5, 8);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(-5, 8, nearPlane));
    click(1, 1);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}}));
    movePointer(9, 9);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}}));
}

TEST_F(PickInteractionTest, PreviewFollowsInAreaAndTravelMode) {
    m_interaction.setAreaMode(true);
    click(1, 1);
    movePointer(7, 8);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(7, 8, 0));
    m_interaction.setTravelMode(true);
    movePointer(7, 8);
    EXPECT_FALSE(isDrawn());
    click(2, 1);
    movePointer(7, 9);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(7, 9, 0));
    m_interaction.setPointMode(true);
    click(3, 1);
    movePointer(7, 10);
    EXPECT_EQ(drawnVertices(), (Points{{3, 1, 0}}));
}

TEST_F(PickInteractionTest, ManyMotionsCostOnePick) {
    m_interaction.setLineMode(true);
    click(1, 1);
    m_plane.picks = 0;
    for (int x = 0; x < 50; ++x)
        m_interaction.onMouseMotion({x, 8});
    EXPECT_EQ(m_plane.picks, 0);
    m_interaction.updatePreview();
    m_interaction.updatePreview();
    EXPECT_EQ(m_plane.picks, 1);
    EXPECT_EQ(drawnVertices().back(), osg::Vec3d(49, 8, 0));
}

TEST_F(PickInteractionTest, ClearForgetsEverythingAndBeginsAnew) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}});
    m_table.take();
    m_interaction.clear();
    EXPECT_TRUE(m_set.lines.empty());
    EXPECT_TRUE(m_interaction.lineFinished());
    EXPECT_FALSE(isDrawn());
    EXPECT_EQ(m_table.take().size(), 4u);
    click(5, 1);
    EXPECT_EQ(m_set.lines, (std::vector<MeasureLine>{{{5, 1, 0}}}));
}

TEST_F(PickInteractionTest, TableThatErasesTheCurrentLineFinishesIt) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}, {5, 1}, {8, 8}});
    m_set.lines.pop_back();
    m_interaction.linesChanged(true);
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    click(9, 9);
    EXPECT_EQ(m_set.lines.size(), 2u);
    m_set.lines.front().pop_back();
    m_interaction.linesChanged(false);
    click(10, 9);
    EXPECT_EQ(m_set.lines.back(), (MeasureLine{{9, 9, 0}, {10, 9, 0}}));
}

TEST_F(PickInteractionTest, TableThatChangesTheCurrentAreaFillsItAnew) {
    m_interaction.setAreaMode(true);
    m_plane.places = {{{10, 0}, {10, 0, 1}}, {{0, 10}, {0, 10, 2}}};
    click({{0, -1}, {10, 0}, {0, 10}});
    m_set.areas.back().pop_back();
    m_interaction.areasChanged(false);
    EXPECT_TRUE(m_set.areaTriangles.empty());
    EXPECT_EQ(drawnVertices().size(), 2u);
}

TEST_F(PickInteractionTest, TableRedrawsOnlyWhatIsShown) {
    m_interaction.setLineMode(true);
    click({{1, 1}, {5, 1}});
    m_set.points.emplace_back(1, 2, 3);
    m_interaction.pointsChanged();
    EXPECT_EQ(drawnVertices(), (Points{{1, 1, 0}, {5, 1, 0}}));
    m_interaction.setTravelMode(true);
    m_set.travelPoints.emplace_back(1, 2, 3);
    m_interaction.travelChanged();
    EXPECT_EQ(drawnVertices(), (Points{{1, 2, 3}}));
}

} // namespace orbisk::test
