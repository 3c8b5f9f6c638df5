#include "measure/MeasurementDrawing.h"

#include "measure/MeasurementGeometry.h"
#include "view/SceneRoot.h"

#include <osg/CullFace>
#include <osg/GL>
#include <osg/LineWidth>
#include <osg/Point>

#include <algorithm>
#include <utility>

namespace orbisk {

namespace {

constexpr int drawingBin = 20; ///< after the model, also where it is transparent
constexpr float pointSize = 10.0f;
constexpr float libraryLineWidth = 1.0f;
constexpr float lineWidth = 2.0f;
constexpr std::size_t leastFilledVertices = 3;

const osg::Vec4 pointColour(0.0f, 0.0f, 1.0f, 0.3f);
const osg::Vec4 lineColour(0.0f, 0.0f, 1.0f, 1.0f);
const osg::Vec4 unmeasuredColour(0.8f, 0.2f, 0.0f, 1.0f);
const osg::Vec4 fillColour(0.8f, 0.5f, 0.0f, 0.5f);
const osg::Vec4 travelColour(0.0f, 1.0f, 0.0f, 0.8f);

osg::ref_ptr<osg::StateSet> makePlainState() {
    osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    state->setDataVariance(osg::Object::STATIC);
    state->setMode(GL_BLEND, osg::StateAttribute::ON);
    state->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF);
    state->setMode(GL_LIGHTING, osg::StateAttribute::OFF | osg::StateAttribute::PROTECTED);
    state->setRenderBinDetails(drawingBin, "RenderBin");
    state->setAttributeAndModes(new osg::CullFace(osg::CullFace::BACK), osg::StateAttribute::OFF);
    return state;
}

osg::ref_ptr<osg::StateSet> makeWideState() {
    osg::ref_ptr<osg::StateSet> state = makePlainState();
    const osg::ref_ptr<osg::LineWidth> width = new osg::LineWidth(libraryLineWidth);
    width->setWidth(lineWidth);
    state->setAttribute(width);
    return state;
}

osg::ref_ptr<osg::StateSet> makeMarkerState() {
    osg::ref_ptr<osg::StateSet> state = makePlainState();
    state->setAttribute(new osg::Point(pointSize));
    return state;
}

osg::ref_ptr<osg::StateSet> makePointSizeState() {
    osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    state->setDataVariance(osg::Object::STATIC);
    state->setAttribute(new osg::Point(pointSize));
    return state;
}

osg::ref_ptr<osg::Vec3dArray> copyOf(const std::vector<osg::Vec3d>& vertices) {
    return new osg::Vec3dArray(vertices.begin(), vertices.end());
}

void addGeometry(osg::Geode& geode, GLenum mode, osg::Vec3dArray& vertices, const osg::Vec4& colour,
                 osg::StateSet* state) {
    const osg::ref_ptr<osg::Geometry> geometry = new MeasurementGeometry(mode, vertices, colour);
    geometry->setStateSet(state);
    geode.addDrawable(geometry);
}

osg::ref_ptr<osg::Geode> makeGeode(GLenum mode, osg::Vec3dArray& vertices, const osg::Vec4& colour,
                                   osg::StateSet* state) {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    addGeometry(*geode, mode, vertices, colour, state);
    return geode;
}

template <class Items>
const typename Items::value_type* lastOf(const Items& items) {
    return items.empty() ? nullptr : &items.back();
}

} // namespace

MeasurementDrawing::MeasurementDrawing(const MeasurementSet& set)
    : m_set(set), m_states{makePlainState(), makeWideState(), makeMarkerState(),
                           makePointSizeState()} {}

MeasurementDrawing::~MeasurementDrawing() = default;

void MeasurementDrawing::setModelSwitch(osg::Switch* modelSwitch) {
    m_modelSwitch = modelSwitch;
    m_drawing = nullptr;
    m_preview = nullptr;
}

void MeasurementDrawing::drawPoints(std::size_t /*index*/) {
    draw(Kind::Points);
}

void MeasurementDrawing::drawLine(std::size_t /*index*/) {
    draw(Kind::Lines);
}

void MeasurementDrawing::drawArea(std::size_t index, bool measured) {
    follow(m_areas, m_set.areas);
    if (index < m_areas.size()) {
        m_areas[index].measured = measured;
        m_areas[index].geode = nullptr;
    }
    draw(Kind::Areas);
}

void MeasurementDrawing::drawTravel() {
    draw(Kind::Travel);
}

void MeasurementDrawing::drawLinePreview(const osg::Vec3d& point) {
    drawPreview(Kind::Lines, lastOf(m_set.lines), point);
}

void MeasurementDrawing::drawAreaPreview(const osg::Vec3d& point) {
    drawPreview(Kind::Areas, lastOf(m_set.areas), point);
}

void MeasurementDrawing::drawTravelPreview(const osg::Vec3d& point) {
    drawPreview(Kind::Travel, &m_set.travelPoints, point);
}

void MeasurementDrawing::hide() {
    if (hasSlot())
        m_modelSwitch->setValue(SceneRoot::drawingSlot, false);
}

/// Makes `items` stand for `current`: those that are still there keep their drawing, also when
/// others before them were removed; the rest have none yet.
void MeasurementDrawing::follow(Items& items, const std::vector<std::vector<osg::Vec3d>>& current) {
    const Items former = std::exchange(items, {});
    const bool sameCount = former.size() == current.size();
    auto next = former.begin();
    items.reserve(current.size());
    for (std::size_t i = 0; i < current.size(); ++i) {
        const auto showsIt = [&](const Item& item) {
            return item.vertices->asVector() == current[i];
        };
        const auto found = sameCount ? former.begin() + static_cast<std::ptrdiff_t>(i)
                                     : std::find_if(next, former.end(), showsIt);
        Item item;
        if (found != former.end()) {
            item = *found;
            next = found + 1;
        }
        if (found == former.end() || !showsIt(item)) {
            item.vertices = copyOf(current[i]);
            item.geode = nullptr;
        }
        items.push_back(item);
    }
}

void MeasurementDrawing::draw(Kind kind) {
    if (!hasSlot())
        return;
    m_kind = kind;
    m_preview = nullptr;
    m_drawing = makeDrawing(kind);
    m_modelSwitch->setChild(SceneRoot::drawingSlot, m_drawing);
    m_modelSwitch->setValue(SceneRoot::drawingSlot, m_drawing->getNumChildren() > 0);
}

osg::ref_ptr<osg::Group> MeasurementDrawing::makeDrawing(Kind kind) {
    osg::ref_ptr<osg::Group> drawing = new osg::Group;
    switch (kind) {
    case Kind::Points:
        addPoints(*drawing);
        break;
    case Kind::Lines:
        addLines(*drawing);
        break;
    case Kind::Areas:
        addAreas(*drawing);
        break;
    case Kind::Travel:
        addTravel(*drawing);
        break;
    }
    return drawing;
}

void MeasurementDrawing::addPoints(osg::Group& drawing) const {
    if (m_set.points.empty())
        return;
    drawing.setStateSet(m_states.pointSize);
    drawing.addChild(makeGeode(GL_POINTS, *copyOf(m_set.points), pointColour, m_states.plain));
}

void MeasurementDrawing::addLines(osg::Group& drawing) {
    follow(m_lines, m_set.lines);
    for (Item& line : m_lines) {
        if (line.vertices->empty())
            continue;
        if (!line.geode)
            line.geode = makeGeode(GL_LINE_STRIP, *line.vertices, lineColour, m_states.wide);
        drawing.addChild(line.geode);
    }
}

void MeasurementDrawing::addAreas(osg::Group& drawing) {
    follow(m_areas, m_set.areas);
    for (Item& area : m_areas) {
        if (area.vertices->empty())
            continue;
        const bool isCurrent = &area == &m_areas.back();
        const bool isFilled = area.geode && area.geode->getNumDrawables() > 1;
        if (!area.geode || isCurrent || isFilled)
            area.geode = makeArea(area, isCurrent);
        // The bin draws in the order of the children, and no outline may lie under the fill.
        drawing.insertChild(isCurrent ? 0 : drawing.getNumChildren(), area.geode);
    }
}

osg::ref_ptr<osg::Geode> MeasurementDrawing::makeArea(const Item& area, bool isCurrent) const {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    if (isCurrent && area.vertices->size() >= leastFilledVertices && !m_set.areaTriangles.empty())
        addGeometry(*geode, GL_TRIANGLES, *copyOf(m_set.areaTriangles), fillColour, m_states.plain);
    addGeometry(*geode, GL_LINE_STRIP, *area.vertices,
                area.measured ? lineColour : unmeasuredColour, m_states.wide);
    return geode;
}

void MeasurementDrawing::addTravel(osg::Group& drawing) const {
    if (!m_set.travelPoints.empty())
        drawing.addChild(
            makeGeode(GL_LINE_STRIP, *copyOf(m_set.travelPoints), travelColour, m_states.plain));
}

void MeasurementDrawing::drawPreview(Kind kind, const std::vector<osg::Vec3d>* item,
                                     const osg::Vec3d& point) {
    if (!hasSlot())
        return;
    if (!shows(kind))
        draw(kind);
    if (m_preview)
        m_drawing->removeChild(m_preview);
    m_preview = item && !item->empty() ? makePreview(kind, item->back(), point) : nullptr;
    if (m_preview)
        m_drawing->addChild(m_preview);
}

osg::ref_ptr<osg::Group> MeasurementDrawing::makePreview(Kind kind, const osg::Vec3d& start,
                                                         const osg::Vec3d& end) const {
    const bool isTravel = kind == Kind::Travel;
    const osg::Vec4& colour = isTravel ? travelColour : lineColour;
    const osg::ref_ptr<osg::Geode> geode = makeGeode(GL_LINE_STRIP, *copyOf({start, end}), colour,
                                                     isTravel ? m_states.plain : m_states.wide);
    addGeometry(*geode, GL_POINTS, *copyOf({end}), colour, m_states.marker);
    osg::ref_ptr<osg::Group> preview = new osg::Group;
    preview->addChild(geode);
    return preview;
}

/// Whether the slot shows this kind by a drawing of ours.
bool MeasurementDrawing::shows(Kind kind) const {
    return hasSlot() && m_kind == kind && m_drawing &&
           m_modelSwitch->getChild(SceneRoot::drawingSlot) == m_drawing &&
           m_modelSwitch->getValue(SceneRoot::drawingSlot);
}

bool MeasurementDrawing::hasSlot() const {
    return m_modelSwitch.valid() && m_modelSwitch->getNumChildren() > SceneRoot::drawingSlot;
}

} // namespace orbisk
