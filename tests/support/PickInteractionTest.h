#pragma once

#include "measure/MeasurementDrawing.h"
#include "measure/PickInteraction.h"
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

inline constexpr double nearPlane = -100.0;

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
inline const std::vector<CanvasPixel> quadrangle = {{1, 1}, {11, 2}, {14, 13}, {3, 10}};

} // namespace orbisk::test
