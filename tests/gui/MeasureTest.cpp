#include "measure/MeasurementSet.h"
#include "measure/PickDialog.h"
#include "support/CanvasTest.h"
#include "support/Screen.h"
#include "support/TableTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <osg/Geode>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>
#include <wx/uiaction.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <locale>
#include <sstream>

namespace orbisk::test {

/// Measures with the mouse itself on the canvas.
class MeasureTest : public CanvasTest {
protected:
    /// What a place of the canvas shows: a line from the near plane to the far plane.
    static std::pair<osg::Vec3d, osg::Vec3d> sightLine(const wxPoint& place) {
        const osg::Camera& camera = *frame()->viewer().osgViewer()->getCamera();
        const int scale = static_cast<int>(frame()->canvas()->GetContentScaleFactor());
        const int height = frame()->canvas()->GetClientSize().y * scale;
        const osg::Matrixd toWorld =
            osg::Matrixd::inverse(camera.getViewMatrix() * camera.getProjectionMatrix() *
                                  camera.getViewport()->computeWindowMatrix());
        const osg::Vec3d window(place.x * scale, height - place.y * scale, 0.0);
        return {window * toWorld, (window + osg::Vec3d(0, 0, 1)) * toWorld};
    }

    /// Where the library's own intersector finds the shown model under a place of the canvas.
    static osg::Vec3d expectedAt(const wxPoint& place) {
        const auto [begin, end] = sightLine(place);
        const osg::ref_ptr<osgUtil::LineSegmentIntersector> line =
            new osgUtil::LineSegmentIntersector(begin, end);
        osgUtil::IntersectionVisitor visitor(line);
        frame()->loader().modelNode()->accept(visitor);
        EXPECT_TRUE(line->containsIntersections());
        return line->containsIntersections() ? line->getFirstIntersection().getWorldIntersectPoint()
                                             : osg::Vec3d();
    }

    static void expectNear(const osg::Vec3d& point, const osg::Vec3d& expected) {
        const double size = static_cast<double>(frame()->loader().modelNode()->getBound().radius());
        EXPECT_LT((point - expected).length(), 1e-6 * size);
    }

    /// A tilted square around (5e5, 4e6, 100), drawn from one side and the other.
    static std::string writeSlope() {
        const osg::ref_ptr<osg::Vec3dArray> corners = new osg::Vec3dArray;
        for (const auto& [x, y] : {std::pair{-50, -50}, {50, -50}, {50, 50}, {-50, 50}})
            corners->push_back({5e5 + x, 4e6 + y, slopeHeight(5e5 + x, 4e6 + y)});
        const osg::ref_ptr<osg::Geometry> slope = new osg::Geometry;
        slope->setVertexArray(corners);
        slope->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_FAN, 0, 4));
        const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
        geode->addDrawable(slope);
        EXPECT_TRUE(osgDB::writeNodeFile(*geode, "slope.osgb"));
        return "slope.osgb";
    }

    static double slopeHeight(double x, double y) {
        return 100.0 + 0.25 * (x - 5e5) - 0.125 * (y - 4e6);
    }

    /// Where the slope is under a place of the canvas.
    static osg::Vec3d slopeAt(const wxPoint& place) {
        const auto [begin, end] = sightLine(place);
        const double above = begin.z() - slopeHeight(begin.x(), begin.y());
        const double below = slopeHeight(end.x(), end.y()) - end.z();
        return begin + (end - begin) * (above / (above + below));
    }

    /// Picks on the slope and compares with its plane, and with where the clicks were. The window
    /// may start in the middle of a unit: the mouse then comes a unit beside the place it was sent.
    static void expectPicksOnTheSlope() {
        choose(Command::PointPick);
        std::vector<wxPoint> clicks;
        const auto onClick = [&clicks](wxMouseEvent& event) {
            event.Skip();
            clicks.push_back(event.GetPosition());
        };
        frame()->canvas()->Bind(wxEVT_LEFT_UP, onClick);
        for (const wxPoint& offset : {wxPoint(0, 0), wxPoint(25, -20), wxPoint(-28, -23)}) {
            clickAt(middle() + offset);
            const wxPoint miss = clicks.back() - middle() - offset;
            EXPECT_LE(std::max(std::abs(miss.x), std::abs(miss.y)), 1);
        }
        frame()->canvas()->Unbind(wxEVT_LEFT_UP, onClick);
        ASSERT_EQ(set().points.size(), clicks.size());
        for (std::size_t i = 0; i < clicks.size(); ++i)
            expectOnTheSlopeUnder(clicks[i], set().points[i]);
    }

    static void expectOnTheSlopeUnder(const wxPoint& place, const osg::Vec3d& point) {
        const double scale = frame()->canvas()->GetContentScaleFactor();
        const osg::Camera& camera = *frame()->viewer().osgViewer()->getCamera();
        EXPECT_NEAR(point.z(), slopeHeight(point.x(), point.y()), 1e-6 * 100);
        const osg::Vec3d window = point * camera.getViewMatrix() * camera.getProjectionMatrix() *
                                  camera.getViewport()->computeWindowMatrix();
        EXPECT_NEAR(window.x(), place.x * scale, 1e-3);
        EXPECT_NEAR(camera.getViewport()->height() - window.y(), place.y * scale, 1e-3);
    }
};

TEST_F(MeasureTest, PointsAreWhereTheModelIs) {
    startWith(sample("valley.osgb"));
    choose(Command::PointPick);
    const std::vector<wxPoint> places = {middle(), middle() + wxPoint(50, 35),
                                         middle() - wxPoint(45, 20)};
    for (const wxPoint& place : places)
        clickAt(place);
    ASSERT_EQ(set().points.size(), places.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        expectNear(set().points[i], expectedAt(places[i]));
}

TEST_F(MeasureTest, PicksLieOnTheSurfaceUnderThePointer) {
    startWith(writeSlope());
    expectPicksOnTheSlope();
}

TEST_F(MeasureTest, PicksLieUnderThePointerOnADisplayOfDoubleScale) {
    if (!inEnvironment({{"GDK_SCALE", "2"}}))
        return;
    writeSettings(R"({"x":10,"y":10,"w":600,"h":460})", languageEnglish);
    start();
    ASSERT_EQ(frame()->GetContentScaleFactor(), 2.0);
    load(writeSlope());
    runFor(0.3);
    expectPicksOnTheSlope();
}

TEST_F(MeasureTest, SecondClickFinishesTheLine) {
    startWith(sample("valley.osgb"));
    choose(Command::LinePick);
    clickAt(middle());
    clickAt(middle() + wxPoint(50, 0));
    clickAt(middle() + wxPoint(50, 30));
    EXPECT_FALSE(frame()->interaction().lineFinished());
    clickAt(middle() + wxPoint(50, 30));
    EXPECT_TRUE(frame()->interaction().lineFinished());
    ASSERT_EQ(set().lines.size(), 1u);
    ASSERT_EQ(set().lines[0].size(), 3u);
    expectNear(set().lines[0][2], expectedAt(middle() + wxPoint(50, 30)));
}

TEST_F(MeasureTest, DragTurnsTheViewAndMeasuresNothing) {
    startWith(sample("valley.osgb"));
    choose(Command::LinePick);
    wxUIActionSimulator mouse;
    const wxPoint from = onScreen(*frame()->canvas(), middle());
    mouse.MouseMove(from);
    runFor(0.1);
    mouse.MouseDown();
    mouse.MouseMove(from + wxPoint(1, 0));
    runFor(0.1);
    mouse.MouseUp();
    runFor(0.2);
    EXPECT_TRUE(set().lines.empty());
}

TEST_F(MeasureTest, BackgroundIsNotMeasured) {
    startWith(sample("valley.osgb"));
    choose(Command::PointPick);
    clickAt({3, 3});
    EXPECT_TRUE(set().points.empty());
}

TEST_F(MeasureTest, RightClickBeforeAnythingWasPickedShowsNoMenu) {
    startWith(sample("valley.osgb"));
    int step = 10;
    for (const Command command : {Command::PointPick, Command::LinePick, Command::AreaPick}) {
        choose(command);
        clickAt(middle(), wxMOUSE_BTN_RIGHT);
        // A menu would hold the pointer, and this click would only close it.
        clickAt(middle() + wxPoint(step, 10));
        step += 10;
    }
    EXPECT_EQ(set().points.size(), 1u);
    EXPECT_EQ(set().lines.size(), 1u);
    EXPECT_EQ(set().areas.size(), 1u);
}

TEST_F(MeasureTest, LinesMenuLoops) {
    startWith(sample("valley.osgb"));
    choose(Command::LinePick);
    clickAt(middle());
    clickAt(middle() + wxPoint(50, 0));
    clickAt(middle() + wxPoint(50, 30));
    chooseFromMenu(middle() + wxPoint(50, 30), "loop");
    ASSERT_EQ(set().lines[0].size(), 4u);
    EXPECT_EQ(set().lines[0].front(), set().lines[0].back());
    EXPECT_TRUE(frame()->interaction().lineFinished());
}

TEST_F(MeasureTest, AreasMenuTakesAVertexBack) {
    startWith(sample("valley.osgb"));
    choose(Command::AreaPick);
    for (const wxPoint& step : {wxPoint(0, 0), wxPoint(45, 5), wxPoint(50, 45), wxPoint(5, 40)})
        clickAt(middle() + step);
    ASSERT_EQ(set().areas.size(), 1u);
    ASSERT_EQ(set().areas[0].size(), 4u);
    chooseFromMenu(middle(), "back");
    EXPECT_EQ(set().areas[0].size(), 3u);
    chooseFromMenu(middle(), "clear");
    EXPECT_TRUE(set().areas.empty());
}

TEST_F(MeasureTest, PointsMenuDeletesThePointUnderThePointer) {
    startWith(writeTestModel());
    choose(Command::PointPick);
    clickAt(middle() + wxPoint(13, 21));
    clickAt(middle() - wxPoint(45, 40));
    chooseFromMenu(middle() + wxPoint(13, 21), "delete");
    ASSERT_EQ(set().points.size(), 1u);
    expectNear(set().points[0], expectedAt(middle() - wxPoint(45, 40)));
}

TEST_F(MeasureTest, TravelPointsAreCollectedAndConsumed) {
    startWith(sample("valley.osgb"));
    choose(Command::AutomaticRoam);
    clickAt(middle());
    clickAt(middle() + wxPoint(50, 0));
    EXPECT_EQ(set().travelPoints.size(), 2u);
    clickAt(middle() + wxPoint(50, 0));
    EXPECT_TRUE(set().travelPoints.empty());
}

TEST_F(MeasureTest, PreviewFollowsThePointer) {
    startWith(sample("valley.osgb"));
    choose(Command::LinePick);
    clickAt(middle());
    wxUIActionSimulator mouse;
    const Screen screen;
    const wxPoint end = onScreen(*frame()->canvas(), middle() + wxPoint(120, 80));
    const wxRect around(end - wxPoint(4, 4), wxSize(9, 9));
    EXPECT_EQ(screen.colours(around).count(0x0000ff), 0u);
    mouse.MouseMove(end);
    EXPECT_TRUE(runUntil([&] { return screen.colours(around).count(0x0000ff) == 1; }, 5.0));
}

TEST_F(MeasureTest, OtherModelEmptiesTheSet) {
    startWith(sample("valley.osgb"));
    choose(Command::LinePick);
    clickAt(middle());
    load(writeTestModel());
    EXPECT_TRUE(set().lines.empty());
    EXPECT_TRUE(frame()->interaction().lineFinished());
    EXPECT_FALSE(frame()->interaction().lineMode());
    EXPECT_FALSE(menuItem(Command::LinePick).IsChecked());
    choose(Command::PointPick);
    clickAt(middle() + wxPoint(13, 21));
    ASSERT_EQ(set().points.size(), 1u);
    expectNear(set().points[0], expectedAt(middle() + wxPoint(13, 21)));
}

TEST_F(MeasureTest, LanguageSwitchKeepsWhatWasMeasuredAndTheMode) {
    startWith(sample("valley.osgb"));
    choose(Command::LinePick);
    clickAt(middle());
    choose(Command::Chinese);
    ASSERT_TRUE(runUntil([] { return appSettings().language == languageChinese; }));
    runFor(0.5);
    EXPECT_EQ(set().lines.size(), 1u);
    EXPECT_TRUE(frame()->viewer().scene().modelSwitch()->getValue(SceneRoot::drawingSlot));
    EXPECT_TRUE(menuItem(Command::LinePick).IsChecked());
    clickAt(middle() + wxPoint(50, 0));
    ASSERT_EQ(set().lines[0].size(), 2u);
    expectNear(set().lines[0][1], expectedAt(middle() + wxPoint(50, 0)));
}

TEST_F(MeasureTest, TableOpensOnceAtItsPlace) {
    startWith(sample("valley.osgb"));
    choose(Command::MeasureTable);
    runFor(0.3);
    PickDialog* table = frame()->measurementTable();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->GetTitle(), "Measurement Table");
    EXPECT_EQ(table->GetPosition(), wxPoint(frame()->GetSize().x - table->GetSize().x - 50, 50));
    choose(Command::MeasureTable);
    EXPECT_EQ(frame()->measurementTable(), table);
    table->Close();
    runFor(0.2);
    EXPECT_EQ(frame()->measurementTable(), nullptr);
    choose(Command::MeasureTable);
    EXPECT_NE(frame()->measurementTable(), nullptr);
}

TEST_F(MeasureTest, ModeCommandClosesTheTable) {
    startWith(sample("valley.osgb"));
    choose(Command::MeasureTable);
    choose(Command::PointPick);
    runFor(0.2);
    EXPECT_EQ(frame()->measurementTable(), nullptr);
    choose(Command::MeasureTable);
    clickAt(middle() + wxPoint(0, 50));
    EXPECT_EQ(set().points.size(), 1u);
}

TEST_F(MeasureTest, LanguageSwitchKeepsTheTableOpen) {
    startWith(sample("valley.osgb"));
    choose(Command::MeasureTable);
    choose(Command::Chinese);
    ASSERT_TRUE(runUntil([] { return appSettings().language == languageChinese; }));
    runFor(0.3);
    ASSERT_NE(frame()->measurementTable(), nullptr);
    EXPECT_NE(frame()->measurementTable()->GetTitle(), "Measurement Table");
}

TEST_F(MeasureTest, ClosingTheFrameClosesTheTableAndSavesThePlace) {
    startWith(sample("valley.osgb"));
    choose(Command::MeasureTable);
    runFor(0.2);
    close();
    const std::string saved = readFile("datafile.json");
    EXPECT_NE(saved.find("\"x\" : 20"), std::string::npos) << saved;
}

/// Measures on a slope, and knows from the model what has to come out.
class MeasuredSlopeTest : public MeasureTest {
protected:
    MeasuredSlopeTest() {
        startWith(writeSlope());
        const wxPoint at = middle();
        m_points = pick(Command::PointPick, {at, at + wxPoint(25, -20)});
        m_line = pick(Command::LinePick,
                      {at - wxPoint(30, 0), at - wxPoint(0, 25), at + wxPoint(28, 3)});
        m_area = pick(Command::AreaPick, {at - wxPoint(25, 20), at + wxPoint(24, -18),
                                          at + wxPoint(29, 22), at + wxPoint(-20, 25)});
    }

    /// Clicks in a mode. @return where the model is under the clicks.
    static std::vector<osg::Vec3d> pick(Command mode, const std::vector<wxPoint>& places) {
        choose(mode);
        std::vector<osg::Vec3d> expected;
        for (const wxPoint& place : places) {
            clickAt(place);
            expected.push_back(slopeAt(place));
        }
        return expected;
    }

    static double lengthBefore(const std::vector<osg::Vec3d>& item, std::size_t vertex) {
        return vertex == 0 ? 0.0 : (item[vertex] - item[vertex - 1]).length();
    }

    static double lengthOf(const std::vector<osg::Vec3d>& item) {
        double sum = 0.0;
        for (std::size_t i = 0; i < item.size(); ++i)
            sum += lengthBefore(item, i);
        return sum;
    }

    /// Of a flat, convex polygon; its sign is that of the product of its normal's components.
    static double areaOf(const std::vector<osg::Vec3d>& item) {
        osg::Vec3d sum;
        for (std::size_t i = 2; i < item.size(); ++i)
            sum += (item[i - 1] - item[0]) ^ (item[i] - item[0]);
        return std::copysign(sum.length() / 2, sum.x() * sum.y() * sum.z());
    }

    std::vector<double> pointNumbers() const {
        std::vector<double> numbers;
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            numbers.push_back(static_cast<double>(i + 1));
            numbers.insert(numbers.end(), m_points[i].ptr(), m_points[i].ptr() + 3);
        }
        return numbers;
    }

    /// The numbers of the rows that show an item: those before the vertex's number, which are the
    /// same in each row, then those of the vertex, and in the first row the total.
    static std::vector<double> numbersOf(const std::vector<osg::Vec3d>& item,
                                         const std::vector<double>& before, double total) {
        std::vector<double> numbers;
        for (std::size_t i = 0; i < item.size(); ++i) {
            numbers.insert(numbers.end(), before.begin(), before.end());
            const osg::Vec3d& at = item[i];
            const double number = static_cast<double>(i + 1);
            for (const double value : {number, at.x(), at.y(), at.z(), lengthBefore(item, i)})
                numbers.push_back(value);
            if (i == 0)
                numbers.push_back(total);
        }
        return numbers;
    }

    /// All numbers of a text, whatever stands between them.
    static std::vector<double> numbersIn(std::string text) {
        std::replace_if(
            text.begin(), text.end(), [](char c) { return c == ',' || c == '\n'; }, ' ');
        std::istringstream stream(text);
        stream.imbue(std::locale::classic());
        return {std::istream_iterator<double>(stream), std::istream_iterator<double>()};
    }

    static std::string textOf(const char* gridName) {
        const auto& grid = dynamic_cast<const wxGrid&>(
            *wxWindow::FindWindowByName(gridName, frame()->measurementTable()));
        std::string text;
        for (const GridRow& row : textsOf(grid))
            for (const std::string& cell : row)
                text += cell + "\n";
        return text;
    }

    /// The header taken off.
    static std::string rowsIn(const std::filesystem::path& file) {
        const std::string text = readFile(file);
        return text.substr(text.find('\n') + 1);
    }

    /// To the last decimal of a text.
    static void expectNumbers(const std::vector<double>& numbers,
                              const std::vector<double>& expected) {
        ASSERT_EQ(numbers.size(), expected.size());
        for (std::size_t i = 0; i < numbers.size(); ++i)
            EXPECT_NEAR(numbers[i], expected[i], 1e-3);
    }

    std::vector<osg::Vec3d> m_points;
    std::vector<osg::Vec3d> m_line;
    std::vector<osg::Vec3d> m_area;
};

TEST_F(MeasuredSlopeTest, TableShowsWhatTheModelGives) {
    choose(Command::MeasureTable);
    expectNumbers(numbersIn(textOf("ID_GRID_POINT")), pointNumbers());
    expectNumbers(numbersIn(textOf("ID_GRID_LINE")), numbersOf(m_line, {}, lengthOf(m_line)));
    expectNumbers(numbersIn(textOf("ID_GRID_RECT")), numbersOf(m_area, {}, areaOf(m_area)));
}

TEST_F(MeasuredSlopeTest, FilesHoldWhatTheModelGives) {
    choose(Command::MeasureTable);
    runFor(0.2);
    const TemporaryFolder parent;
    saveTableInto(*frame()->measurementTable(), parent.path());
    const std::filesystem::path folder = parent.path() / "PickData";
    expectNumbers(numbersIn(rowsIn(folder / "Points.csv")), pointNumbers());
    expectNumbers(numbersIn(rowsIn(folder / "Lines.csv")),
                  numbersOf(m_line, {1}, lengthOf(m_line)));
    expectNumbers(numbersIn(rowsIn(folder / "Rectangles.txt")),
                  numbersOf(m_area, {1}, areaOf(m_area)));
}

} // namespace orbisk::test
