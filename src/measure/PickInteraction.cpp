#include "measure/PickInteraction.h"

#include "app/Translatable.h"
#include "measure/MeasurementDrawing.h"
#include "measure/PickSurface.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace orbisk {

namespace {

constexpr std::size_t fewestLineVertices = 2;
constexpr std::size_t fewestAreaVertices = 3;
constexpr double deleteReach = 1.0;

/// Whether `value` lies strictly between the ends of `centre`'s reach, cut to whole units.
bool isWithinReach(double value, double centre) {
    return value > std::trunc(centre - deleteReach) && value < std::trunc(centre + deleteReach);
}

bool isWithinReach(const osg::Vec3d& point, const osg::Vec3d& centre) {
    return isWithinReach(point.x(), centre.x()) && isWithinReach(point.y(), centre.y()) &&
           isWithinReach(point.z(), centre.z());
}

} // namespace

PickInteraction::PickInteraction(MeasurementSet& set, MeasurementDrawing& drawing,
                                 StartRoam startRoam)
    : m_set(set), m_drawing(drawing), m_startRoam(std::move(startRoam)) {}

PickInteraction::~PickInteraction() = default;

void PickInteraction::setPointMode(bool on) {
    setMode(Mode::Point, on);
}

void PickInteraction::setLineMode(bool on) {
    setMode(Mode::Line, on);
}

void PickInteraction::setAreaMode(bool on) {
    setMode(Mode::Area, on);
    if (on)
        m_polygonMeasure.emplace();
}

void PickInteraction::setTravelMode(bool on) {
    setMode(Mode::Travel, on);
}

void PickInteraction::endMode() {
    setMode(Mode::None, false);
}

void PickInteraction::setMode(Mode mode, bool on) {
    m_mode = on ? mode : Mode::None;
    m_polygonMeasure.reset();
    m_pointer.reset();
    m_drawing.hide();
    if (on && m_surface)
        m_surface->prepare();
}

std::optional<osg::Vec3d> PickInteraction::pick(CanvasPixel pixel) {
    osg::Vec3d point;
    try {
        if (m_surface && m_surface->pickPoint(pixel.x, pixel.y, point))
            return point;
    } catch (const std::out_of_range&) {
        // A model whose primitives go beyond its vertices is looked at, but not measured on.
    }
    return std::nullopt;
}

void PickInteraction::onLeftClick(CanvasPixel pixel) {
    if (m_mode == Mode::None)
        return;
    const auto point = pick(pixel);
    if (!point)
        return;
    if (pixel == m_lastAddPosition) {
        if (lineMode())
            finishLine();
        else if (areaMode())
            finishArea();
        else if (travelMode() && !m_set.travelPoints.empty())
            finishTravel();
        return;
    }
    if (pointMode())
        addPoint(*point);
    else if (lineMode())
        addLineVertex(*point);
    else if (areaMode())
        addAreaVertex(*point);
    else
        addTravelPoint(*point);
    m_lastAddPosition = pixel;
}

void PickInteraction::addPoint(const osg::Vec3d& point) {
    m_set.points.push_back(point);
    m_drawing.drawPoints(m_set.points.size() - 1);
    if (m_table)
        m_table->appendPointRow();
}

void PickInteraction::addLineVertex(const osg::Vec3d& vertex) {
    if (m_lineFinished || m_set.lines.empty())
        m_set.lines.emplace_back();
    m_set.lines.back().push_back(vertex);
    m_lineFinished = false;
    drawLines();
    if (m_table)
        m_table->appendLineVertexRow();
}

void PickInteraction::addAreaVertex(const osg::Vec3d& vertex) {
    if (m_areaFinished || m_set.areas.empty()) {
        m_set.areas.emplace_back();
        m_set.areaTriangles.clear();
    }
    m_set.areas.back().push_back(vertex);
    m_areaFinished = false;
    measureCurrentArea();
    drawAreas();
    if (m_table)
        m_table->appendAreaVertexRow();
}

void PickInteraction::addTravelPoint(const osg::Vec3d& point) {
    if (m_table && m_set.travelPoints.empty())
        m_table->rebuildTravelGrid();
    m_set.travelPoints.push_back(point);
    m_drawing.drawTravel();
    if (m_table)
        m_table->appendTravelRow();
}

void PickInteraction::measureCurrentArea() {
    m_areaMeasured = false;
    if (m_set.areas.empty() || m_set.areas.back().size() < fewestAreaVertices)
        return;
    PolygonMeasure fresh;
    PolygonMeasure& polygon = m_polygonMeasure ? *m_polygonMeasure : fresh;
    double area = 0.0;
    m_areaMeasured = polygon.measureArea(m_set.areas.back(), m_set.areaTriangles, area);
}

void PickInteraction::drawLines() {
    m_drawing.drawLine(m_set.lines.empty() ? 0 : m_set.lines.size() - 1);
}

void PickInteraction::drawAreas() {
    m_drawing.drawArea(m_set.areas.empty() ? 0 : m_set.areas.size() - 1, m_areaMeasured);
}

std::vector<PickMenuItem> PickInteraction::onRightClick(CanvasPixel pixel) {
    switch (m_mode) {
    case Mode::Point:
        return pointMenu(pixel);
    case Mode::Line:
        return lineMenu();
    case Mode::Area:
        return areaMenu();
    case Mode::Travel:
        return travelMenu();
    case Mode::None:
        break;
    }
    return {};
}

std::vector<PickMenuItem> PickInteraction::pointMenu(CanvasPixel pixel) {
    if (m_set.points.empty())
        return {};
    const auto point = pick(pixel);
    if (!point)
        return {};
    m_menuPickPoint = *point;
    return {{PickCommand::DeletePoint, translatable("delete"), true}};
}

std::vector<PickMenuItem> PickInteraction::lineMenu() const {
    if (m_lineFinished || m_set.lines.empty())
        return {};
    const std::size_t vertices = m_set.lines.back().size();
    const bool isLine = vertices >= fewestLineVertices;
    return {{PickCommand::FinishLine, translatable("finish"), isLine},
            {PickCommand::LoopLine, translatable("loop"), isLine},
            {PickCommand::BackLine, translatable("back"), vertices > 0},
            {PickCommand::ClearLine, translatable("clear"), true}};
}

std::vector<PickMenuItem> PickInteraction::areaMenu() const {
    if (m_areaFinished || m_set.areas.empty())
        return {};
    const std::size_t vertices = m_set.areas.back().size();
    return {{PickCommand::FinishArea, translatable("finish"), vertices >= fewestAreaVertices},
            {PickCommand::BackArea, translatable("back"), vertices > 0},
            {PickCommand::ClearArea, translatable("clear"), true}};
}

std::vector<PickMenuItem> PickInteraction::travelMenu() const {
    return {{PickCommand::FinishTravel, translatable("finish"), true},
            {PickCommand::BackTravel, translatable("back"), !m_set.travelPoints.empty()},
            {PickCommand::ClearTravel, translatable("clear"), true}};
}

void PickInteraction::run(PickCommand command) {
    switch (command) {
    case PickCommand::DeletePoint:
        return deletePoint();
    case PickCommand::FinishLine:
        return finishLine();
    case PickCommand::LoopLine:
        return loopLine();
    case PickCommand::BackLine:
        return backLine();
    case PickCommand::ClearLine:
        return clearLine();
    case PickCommand::FinishArea:
        return finishArea();
    case PickCommand::BackArea:
        return backArea();
    case PickCommand::ClearArea:
        return clearArea();
    case PickCommand::FinishTravel:
        return finishTravel();
    case PickCommand::BackTravel:
        return backTravel();
    case PickCommand::ClearTravel:
        return clearTravel();
    }
}

void PickInteraction::deletePoint() {
    const auto found =
        std::find_if(m_set.points.rbegin(), m_set.points.rend(), [this](const osg::Vec3d& point) {
            return isWithinReach(point, m_menuPickPoint);
        });
    if (found == m_set.points.rend())
        return;
    m_set.points.erase(std::next(found).base());
    m_drawing.drawPoints(m_set.points.empty() ? 0 : m_set.points.size() - 1);
    if (m_table)
        m_table->rebuildPointGrid();
}

void PickInteraction::finishLine() {
    m_lineFinished = true;
    drawLines();
}

void PickInteraction::loopLine() {
    if (m_set.lines.empty() || m_set.lines.back().empty())
        return;
    MeasureLine& line = m_set.lines.back();
    line.push_back(osg::Vec3d(line.front()));
    m_lineFinished = true;
    drawLines();
    if (m_table)
        m_table->appendLineVertexRow();
}

void PickInteraction::backLine() {
    if (m_set.lines.empty() || m_set.lines.back().empty())
        return;
    m_set.lines.back().pop_back();
    drawLines();
    if (m_table)
        m_table->rebuildLineGrid();
}

void PickInteraction::clearLine() {
    m_lineFinished = true;
    if (!m_set.lines.empty())
        m_set.lines.pop_back();
    drawLines();
    if (m_table)
        m_table->rebuildLineGrid();
}

void PickInteraction::finishArea() {
    m_areaFinished = true;
    drawAreas();
}

void PickInteraction::backArea() {
    if (m_set.areas.empty() || m_set.areas.back().empty() || !m_polygonMeasure)
        return;
    MeasureArea& area = m_set.areas.back();
    area.pop_back();
    double measured = 0.0;
    m_areaMeasured = m_polygonMeasure->measureAreaOrDropLast(area, m_set.areaTriangles, measured);
    drawAreas();
    if (m_table)
        m_table->removeLastAreaVertexRow();
}

void PickInteraction::clearArea() {
    m_areaFinished = true;
    if (!m_set.areas.empty())
        m_set.areas.pop_back();
    m_set.areaTriangles.clear();
    // The area before it is the last one now, and its filling is the one to be shown.
    measureCurrentArea();
    drawAreas();
    if (m_table)
        m_table->rebuildAreaGrid();
}

void PickInteraction::finishTravel() {
    const TravelPath path = std::exchange(m_set.travelPoints, {});
    clearTravel();
    if (m_startRoam)
        m_startRoam(path);
}

void PickInteraction::backTravel() {
    if (m_set.travelPoints.empty())
        return;
    m_set.travelPoints.pop_back();
    m_drawing.drawTravel();
    if (m_table)
        m_table->rebuildTravelGrid();
}

void PickInteraction::clearTravel() {
    m_set.travelPoints.clear();
    m_drawing.drawTravel();
    if (m_table)
        m_table->rebuildTravelGrid();
}

void PickInteraction::updatePreview() {
    if (!m_pointer || !m_surface)
        return;
    const CanvasPixel pixel = *std::exchange(m_pointer, std::nullopt);
    const bool isCollecting = (lineMode() && !m_lineFinished) || (areaMode() && !m_areaFinished) ||
                              (travelMode() && !m_set.travelPoints.empty());
    if (!isCollecting)
        return;
    const auto hit = pick(pixel);
    const osg::Vec3d point = hit ? *hit : m_surface->nearPoint(pixel.x, pixel.y);
    if (lineMode())
        m_drawing.drawLinePreview(point);
    else if (areaMode())
        m_drawing.drawAreaPreview(point);
    else
        m_drawing.drawTravelPreview(point);
}

void PickInteraction::clear() {
    m_set.clear();
    m_lineFinished = true;
    m_areaFinished = true;
    m_areaMeasured = false;
    m_lastAddPosition = {};
    m_pointer.reset();
    m_drawing.hide();
    if (!m_table)
        return;
    m_table->rebuildPointGrid();
    m_table->rebuildLineGrid();
    m_table->rebuildAreaGrid();
    m_table->rebuildTravelGrid();
}

void PickInteraction::pointsChanged() {
    if (pointMode())
        m_drawing.drawPoints(m_set.points.empty() ? 0 : m_set.points.size() - 1);
}

void PickInteraction::linesChanged(bool currentErased) {
    if (currentErased)
        m_lineFinished = true;
    if (lineMode())
        drawLines();
}

void PickInteraction::areasChanged(bool currentErased) {
    if (currentErased)
        m_areaFinished = true;
    m_set.areaTriangles.clear();
    measureCurrentArea();
    if (areaMode())
        drawAreas();
}

void PickInteraction::travelChanged() {
    if (travelMode())
        m_drawing.drawTravel();
}

void PickInteraction::tableClosed() {
    m_table = nullptr;
}

} // namespace orbisk
