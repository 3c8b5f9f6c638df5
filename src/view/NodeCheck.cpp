#include "view/NodeCheck.h"

#include "readers/NativeClasses.h"
#include "view/GeometryCheck.h"
#include "view/StateCheck.h"

#include <osg/AutoTransform>
#include <osg/Billboard>
#include <osg/Camera>
#include <osg/Geometry>
#include <osg/LOD>
#include <osg/MatrixTransform>
#include <osg/Notify>
#include <osg/PositionAttitudeTransform>
#include <osg/Projection>
#include <osg/Sequence>
#include <osg/Switch>
#include <osgSim/DOFTransform>
#include <osgSim/LightPointNode>
#include <osgSim/MultiSwitch>
#include <osgTerrain/TerrainTile>
#include <osgText/TextBase>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

namespace orbisk {

namespace {

constexpr float largestLightPoint = 64.0f; ///< in pixels
constexpr unsigned int finestFont = 256;   ///< in pixels

template <typename Vector>
bool areUsable(const Vector& vector, int size) {
    for (int i = 0; i < size; ++i)
        if (!isUsableCoordinate(static_cast<double>(vector[i])))
            return false;
    return true;
}

bool isUsable(const osg::Vec3d& vector) {
    return areUsable(vector, 3);
}

bool isUsable(const osg::Quat& rotation) {
    return areUsable(rotation, 4);
}

bool isUsable(const osg::Matrixd& matrix) {
    constexpr int elements = 16;
    return areUsable(matrix.ptr(), elements);
}

bool isUsable(const osg::BoundingSphere& sphere) {
    return isUsable(sphere.center()) && isUsableCoordinate(static_cast<double>(sphere.radius()));
}

bool placesItsChildren(const osgSim::DOFTransform& joint) {
    for (const osg::Vec3& vector :
         {joint.getMinHPR(), joint.getMaxHPR(), joint.getIncrementHPR(), joint.getCurrentHPR(),
          joint.getMinTranslate(), joint.getMaxTranslate(), joint.getIncrementTranslate(),
          joint.getCurrentTranslate(), joint.getMinScale(), joint.getMaxScale(),
          joint.getIncrementScale(), joint.getCurrentScale()})
        if (!isUsable(vector))
            return false;
    return isUsable(joint.getPutMatrix()) && isUsable(joint.getInversePutMatrix());
}

/// Whether the numbers that place a transform's children make sense.
bool placesItsChildren(osg::Transform& transform) {
    if (const osg::MatrixTransform* matrix = transform.asMatrixTransform())
        return isUsable(matrix->getMatrix());
    if (const osg::PositionAttitudeTransform* place = transform.asPositionAttitudeTransform())
        return isUsable(place->getPosition()) && isUsable(place->getAttitude()) &&
               isUsable(place->getScale()) && isUsable(place->getPivotPoint());
    if (const auto* turned = dynamic_cast<const osg::AutoTransform*>(&transform))
        return isUsable(turned->getPosition()) && isUsable(turned->getRotation()) &&
               isUsable(turned->getScale()) && isUsable(turned->getPivotPoint());
    if (const osg::Camera* camera = transform.asCamera())
        return isUsable(camera->getViewMatrix()) && isUsable(camera->getProjectionMatrix());
    if (const auto* joint = dynamic_cast<const osgSim::DOFTransform*>(&transform))
        return placesItsChildren(*joint);
    return true;
}

void checkLod(osg::LOD& lod) {
    // Any other centre is asked of the children, which have not been looked at yet.
    const bool hasOwnCenter =
        lod.getCenterMode() == osg::LOD::USER_DEFINED_CENTER ||
        lod.getCenterMode() == osg::LOD::UNION_OF_BOUNDING_SPHERE_AND_USER_DEFINED;
    if ((!hasOwnCenter || isUsable(lod.getCenter())) &&
        isUsableCoordinate(static_cast<double>(lod.getRadius())))
        return;
    lod.setCenterMode(osg::LOD::USE_BOUNDING_SPHERE_CENTER);
    lod.setCenter(osg::Vec3());
    lod.setRadius(-1.0f);
}

/// A list of one element for each child.
template <typename List>
List asLongAs(List list, std::size_t children, typename List::value_type missing) {
    list.resize(children, missing);
    return list;
}

void checkSwitch(osg::Switch& node) {
    if (node.getValueList().size() < node.getNumChildren())
        node.setValueList(asLongAs(node.getValueList(), node.getNumChildren(), false));
}

void checkMultiSwitch(osgSim::MultiSwitch& node) {
    for (unsigned int set = 0; set < node.getSwitchSetList().size(); ++set)
        if (node.getValueList(set).size() < node.getNumChildren())
            node.setValueList(set, asLongAs(node.getValueList(set), node.getNumChildren(), false));
}

/// A sequence that catches up goes through all its frames again and again until the time is
/// reached, and without any time it never is.
void checkSequence(osg::Sequence& node) {
    std::vector<double> times = asLongAs(node.getTimeList(), node.getNumChildren(), 1.0);
    for (double& time : times)
        if (!(time >= 0.0) || !isUsableCoordinate(time))
            time = 1.0;
    node.setTimeList(times);
    node.setSync(false);
    osg::Sequence::LoopMode mode = osg::Sequence::LOOP;
    int begin = 0;
    int end = 0;
    node.getInterval(mode, begin, end);
    const int last = static_cast<int>(times.size()) - 1;
    if (begin > last || end > last)
        node.setInterval(mode, std::min(begin, last), std::min(end, last));
    float speed = 1.0f;
    int repetitions = 0;
    node.getDuration(speed, repetitions);
    if (!isUsableCoordinate(static_cast<double>(speed)))
        node.setDuration(1.0f, repetitions);
    if (!isUsableCoordinate(node.getLastFrameTime()))
        node.setLastFrameTime(0.0);
}

void checkBillboard(osg::Billboard& node) {
    node.getPositionList().resize(node.getNumDrawables());
    for (osg::Vec3& position : node.getPositionList())
        if (!isUsable(position))
            position = osg::Vec3();
    if (!isUsable(node.getAxis()))
        node.setAxis(osg::Z_AXIS);
    if (!isUsable(node.getNormal()))
        node.setNormal(-osg::Y_AXIS);
}

bool blinks(const osgSim::BlinkSequence& sequence) {
    double whole = 0.0;
    for (int i = 0; i < sequence.getNumPulses(); ++i) {
        double length = 0.0;
        osg::Vec4 color;
        sequence.getPulse(static_cast<unsigned int>(i), length, color);
        if (!(length >= 0.0))
            return false;
        whole += length;
    }
    return whole > 0.0 && isUsableCoordinate(whole) && isUsableCoordinate(sequence.getPhaseShift());
}

void checkLightPoints(osgSim::LightPointNode& node) {
    // There is a list for each size in pixels.
    if (!(node.getMaxPixelSize() <= largestLightPoint))
        node.setMaxPixelSize(largestLightPoint);
    if (!(node.getMaxPixelSize() >= 1.0f))
        node.setMaxPixelSize(1.0f);
    if (!(std::fabs(node.getMinPixelSize()) <= largestLightPoint))
        node.setMinPixelSize(0.0f);
    auto& points = node.getLightPointList();
    points.erase(std::remove_if(points.begin(), points.end(),
                                [](const osgSim::LightPoint& point) {
                                    return !isUsable(point._position) ||
                                           !isUsableCoordinate(point._radius) ||
                                           !isUsableCoordinate(point._intensity);
                                }),
                 points.end());
    for (osgSim::LightPoint& point : points)
        if (point._blinkSequence && !blinks(*point._blinkSequence))
            point._blinkSequence = nullptr;
    node.dirtyBound();
}

void checkText(osgText::TextBase& text) {
    if (text.getFontWidth() > finestFont || text.getFontHeight() > finestFont)
        text.setFontResolution(std::min(text.getFontWidth(), finestFont),
                               std::min(text.getFontHeight(), finestFont));
    if (!isUsableCoordinate(text.getCharacterHeight()) ||
        !isUsableCoordinate(text.getCharacterAspectRatio()))
        text.setCharacterSize(1.0f, 1.0f);
    if (!isUsableCoordinate(text.getMaximumWidth()))
        text.setMaximumWidth(0.0f);
    if (!isUsableCoordinate(text.getMaximumHeight()))
        text.setMaximumHeight(0.0f);
    if (!isUsableCoordinate(text.getLineSpacing()))
        text.setLineSpacing(0.0f);
    if (!isUsable(text.getPosition()))
        text.setPosition(osg::Vec3());
    if (!isUsable(text.getRotation()))
        text.setRotation(osg::Quat());
}

bool isWholeLayer(osgTerrain::Layer& layer) {
    constexpr unsigned int fewest = 2;
    if (layer.getNumColumns() < fewest || layer.getNumRows() < fewest)
        return false;
    osg::Image* image = layer.getImage();
    return !image || isWhole(*image);
}

bool isPlaced(const osgTerrain::Layer* layer) {
    return layer && layer->getLocator();
}

/// Sees to it that a layer tells where the tile is; what draws it does without a test.
void placeTile(osgTerrain::TerrainTile& tile) {
    if (isPlaced(tile.getElevationLayer()) || isPlaced(tile.getColorLayer(0)))
        return;
    if (!tile.getElevationLayer() && !tile.getColorLayer(0))
        tile.setColorLayer(0, new osgTerrain::ImageLayer);
    osgTerrain::Layer* layer =
        tile.getElevationLayer() ? tile.getElevationLayer() : tile.getColorLayer(0);
    layer->setLocator(tile.getLocator() ? tile.getLocator() : new osgTerrain::Locator);
}

void checkTile(osgTerrain::TerrainTile& tile) {
    if (tile.getElevationLayer() && !isWholeLayer(*tile.getElevationLayer()))
        tile.setElevationLayer(nullptr);
    for (unsigned int i = 0; i < tile.getNumColorLayers(); ++i)
        if (tile.getColorLayer(i) && !isWholeLayer(*tile.getColorLayer(i)))
            tile.setColorLayer(i, nullptr);
    placeTile(tile);
}

/// Keeps drawables that are there twice from being put together with themselves, which the library
/// does with what belongs to one group and cannot do.
void keepRepetitionsApart(osg::Group& group) {
    std::set<const osg::Node*> met;
    for (unsigned int i = 0; i < group.getNumChildren(); ++i) {
        osg::Node* child = group.getChild(i);
        if (child->asDrawable() && !met.insert(child).second)
            child->setDataVariance(osg::Object::DYNAMIC);
    }
}

void checkGroup(osg::Group& group) {
    keepRepetitionsApart(group);
    if (osg::Transform* transform = group.asTransform()) {
        if (!placesItsChildren(*transform))
            group.removeChildren(0, group.getNumChildren());
    } else if (auto* lod = dynamic_cast<osg::LOD*>(&group)) {
        checkLod(*lod);
    } else if (osg::Switch* node = group.asSwitch()) {
        checkSwitch(*node);
    } else if (auto* multi = dynamic_cast<osgSim::MultiSwitch*>(&group)) {
        checkMultiSwitch(*multi);
    } else if (auto* sequence = dynamic_cast<osg::Sequence*>(&group)) {
        checkSequence(*sequence);
    } else if (auto* billboard = dynamic_cast<osg::Billboard*>(&group)) {
        checkBillboard(*billboard);
    } else if (const auto* projection = dynamic_cast<const osg::Projection*>(&group)) {
        if (!isUsable(projection->getMatrix()))
            group.removeChildren(0, group.getNumChildren());
    } else if (auto* tile = dynamic_cast<osgTerrain::TerrainTile*>(&group)) {
        checkTile(*tile);
    }
}

} // namespace

osg::ref_ptr<osg::Node> shownForm(osg::Node& node) {
    const std::string kit = node.libraryName();
    if (kit.compare(0, 3, "osg") != 0 || isShownClass(kit + "::" + node.className()))
        return &node;
    OSG_WARN << kit << "::" << node.className() << " is not shown." << std::endl;
    osg::ref_ptr<osg::Node> form;
    if (node.asDrawable())
        form = new osg::Geometry;
    else if (const auto* lod = dynamic_cast<const osg::LOD*>(&node))
        form = new osg::LOD(*lod, osg::CopyOp::SHALLOW_COPY);
    else if (const osg::Group* group = node.asGroup())
        form = new osg::Group(*group, osg::CopyOp::SHALLOW_COPY);
    else
        form = new osg::Node;
    // They are for the node that it was.
    form->setUpdateCallback(nullptr);
    form->setEventCallback(nullptr);
    form->setCullCallback(nullptr);
    return form;
}

void checkNode(osg::Node& node) {
    if (node.getInitialBound().valid() && !isUsable(node.getInitialBound()))
        node.setInitialBound(osg::BoundingSphere());
    if (osg::Group* group = node.asGroup())
        checkGroup(*group);
    else if (auto* text = dynamic_cast<osgText::TextBase*>(&node))
        checkText(*text);
    else if (auto* lights = dynamic_cast<osgSim::LightPointNode*>(&node))
        checkLightPoints(*lights);
}

} // namespace orbisk
