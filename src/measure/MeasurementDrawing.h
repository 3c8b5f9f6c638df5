#pragma once

#include "measure/MeasurementSet.h"

#include <osg/Array>
#include <osg/Geode>
#include <osg/Group>
#include <osg/StateSet>
#include <osg/Switch>
#include <osg/Vec3d>
#include <osg/Vec4>
#include <osg/observer_ptr>
#include <osg/ref_ptr>

#include <cstddef>
#include <vector>

namespace orbisk {

/// Draws the measurements of one kind, with all items of that kind, in the drawing slot of a model
/// switch. The slot holds a group with a geode for each item, in the order of the set, and last a
/// group with the preview. The current area comes first, and in it the fill before the outline, so
/// that the fill lies under all outlines.
///
/// The set is changed first, then the draw operation of the kind is called. The slot is shown when
/// there is something to draw and hidden otherwise. A draw operation also takes the preview away;
/// it is thus what ends a preview when an item is finished.
///
/// Nothing that is drawn is ever changed: it is replaced, and a draw thread that is busy with it
/// keeps it alive. Without a model switch all operations do nothing that can be seen. Main thread.
class MeasurementDrawing {
public:
    /// @param set what is drawn, in world coordinates; outlives the drawing.
    explicit MeasurementDrawing(const MeasurementSet& set);
    ~MeasurementDrawing();

    MeasurementDrawing(const MeasurementDrawing&) = delete;
    MeasurementDrawing& operator=(const MeasurementDrawing&) = delete;

    /// From now on draws into this switch (not owned; null: nowhere). What the former one shows is
    /// left to it.
    void setModelSwitch(osg::Switch* modelSwitch);

    /// Draws the points after the one at `index`, or one that was there, changed. All points are
    /// one geometry, so every index draws the same.
    void drawPoints(std::size_t index);

    /// Draws the lines after the one at `index` changed, or one that was there. Every line is
    /// compared with what is drawn of it and made anew where it differs, so every index draws the
    /// same.
    void drawLine(std::size_t index);

    /// Draws the areas after the one at `index` changed, compared as lines are. The current (last)
    /// one is filled with the set's triangles when it has at least 3 vertices.
    /// @param index beyond the last area: only the others are drawn.
    /// @param measured whether the area of this one could be computed; selects its colour now and
    /// in later drawings of other areas.
    void drawArea(std::size_t index, bool measured);

    /// Draws the travel path.
    void drawTravel();

    /// Draws the next segment of the current line, from its last vertex to `point` (world frame).
    /// Replaces the last preview only. Without a vertex to start from there is no preview.
    void drawLinePreview(const osg::Vec3d& point);

    /// The same for the current area.
    void drawAreaPreview(const osg::Vec3d& point);

    /// The same for the travel path.
    void drawTravelPreview(const osg::Vec3d& point);

    /// Hides the slot, whatever it shows. The next draw or preview operation shows it again.
    void hide();

private:
    enum class Kind { Points, Lines, Areas, Travel };

    /// A line or an area as it was last drawn.
    struct Item {
        osg::ref_ptr<osg::Vec3dArray> vertices;
        osg::ref_ptr<osg::Geode> geode; ///< null: to be made
        bool measured = false;          ///< of areas
    };

    using Items = std::vector<Item>;

    /// State sets, by what they add to the one of all measurements.
    struct States {
        osg::ref_ptr<osg::StateSet> plain;
        osg::ref_ptr<osg::StateSet> wide;      ///< lines of double width
        osg::ref_ptr<osg::StateSet> marker;    ///< large points
        osg::ref_ptr<osg::StateSet> pointSize; ///< large points, nothing else
    };

    static void follow(Items& items, const std::vector<std::vector<osg::Vec3d>>& current);

    void draw(Kind kind);
    osg::ref_ptr<osg::Group> makeDrawing(Kind kind);
    void addPoints(osg::Group& drawing) const;
    void addLines(osg::Group& drawing);
    void addAreas(osg::Group& drawing);
    void addTravel(osg::Group& drawing) const;
    osg::ref_ptr<osg::Geode> makeArea(const Item& area, bool isCurrent) const;
    void drawPreview(Kind kind, const std::vector<osg::Vec3d>* item, const osg::Vec3d& point);
    osg::ref_ptr<osg::Group> makePreview(Kind kind, const osg::Vec3d& start,
                                         const osg::Vec3d& end) const;
    bool shows(Kind kind) const;
    bool hasSlot() const;

    const MeasurementSet& m_set;
    States m_states;
    osg::observer_ptr<osg::Switch> m_modelSwitch;
    Kind m_kind = Kind::Points;
    osg::ref_ptr<osg::Group> m_drawing; ///< null before the first
    osg::ref_ptr<osg::Group> m_preview; ///< null while there is none
    Items m_lines;
    Items m_areas;
};

} // namespace orbisk
