#pragma once

#include <osg/Geometry>
#include <osg/Node>
#include <osg/ref_ptr>

#include <vector>

namespace orbisk {

/// Has the geometries of a model whose vertices are in double precision drawn as precisely. The
/// graphics library rounds what it is given to floats, steps of half a metre at the coordinates of
/// a survey; so a copy relative to the geometry's middle is drawn, under a matrix that is put
/// together in doubles. The geometries themselves stay as they are: picking, bounds and files know
/// nothing of it. Main thread, while nothing draws the model; may be called again.
void drawPrecisely(osg::Node& model);

/// Keeps the optimiser from working large offsets into vertices in single precision, which would
/// round them for good: the offsets of transforms with no other above or below. Before the
/// optimiser runs.
void keepLargeOffsets(osg::Node& model);

/// Takes what `drawPrecisely` did off a model while it is written to a file.
class PreciseDrawingOff {
public:
    explicit PreciseDrawingOff(osg::Node& model);
    ~PreciseDrawingOff();

    PreciseDrawingOff(const PreciseDrawingOff&) = delete;
    PreciseDrawingOff& operator=(const PreciseDrawingOff&) = delete;

private:
    struct Former {
        osg::ref_ptr<osg::Geometry> geometry;
        osg::ref_ptr<osg::Drawable::DrawCallback> callback;
    };

    std::vector<Former> m_geometries;
};

} // namespace orbisk
