#include "measure/Picker.h"

#include "measure/IndexedVisitor.h"
#include "measure/PickIndex.h"
#include "measure/PickRay.h"
#include "view/SceneRoot.h"

#include <utility>

namespace orbisk {

namespace {

bool takeHit(osg::Node& model, IntersectionVisitor& visitor, osg::Vec3d& point) {
    model.accept(visitor);
    if (visitor.hits().empty())
        return false;
    point = visitor.hits().front();
    return true;
}

} // namespace

Picker::Picker(PickView view, PickIndex* index) : m_view(std::move(view)), m_index(index) {}

void Picker::prepare() {
    const osg::ref_ptr<osg::Node> shown = model();
    if (shown && m_index)
        m_index->add(*shown);
}

bool Picker::pickPoint(double x, double y, osg::Vec3d& point) {
    osg::ref_ptr<osg::Camera> camera;
    const osg::ref_ptr<osg::Node> shown = model();
    if (!shown || !m_view.camera.lock(camera))
        return false;
    const PickRay ray = makePickRay(*camera, position(x, y));
    if (m_index) {
        IndexedVisitor visitor(ray, *m_index, m_view.pauseDrawing);
        return takeHit(*shown, visitor, point);
    }
    IntersectionVisitor visitor(ray.origin, ray.direction, m_view.pauseDrawing);
    return takeHit(*shown, visitor, point);
}

osg::Vec3d Picker::nearPoint(double x, double y) const {
    osg::ref_ptr<osg::Camera> camera;
    return m_view.camera.lock(camera) ? nearPlanePoint(*camera, position(x, y)) : osg::Vec3d();
}

/// Null where none is shown.
osg::ref_ptr<osg::Node> Picker::model() const {
    osg::ref_ptr<osg::Switch> modelSwitch;
    if (!m_view.modelSwitch.lock(modelSwitch) ||
        modelSwitch->getNumChildren() <= SceneRoot::modelChild)
        return nullptr;
    return modelSwitch->getChild(SceneRoot::modelChild);
}

CanvasPosition Picker::position(double x, double y) const {
    return {x, y, static_cast<double>(m_view.canvasHeight())};
}

} // namespace orbisk
