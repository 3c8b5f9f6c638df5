#pragma once

#include "measure/MeasurementSet.h"
#include "measure/MeasurementTable.h"
#include "measure/PolygonMeasure.h"

#include <osg/Vec3d>

#include <functional>
#include <optional>
#include <vector>

namespace orbisk {

class MeasurementDrawing;
class PickSurface;

/// A pixel of the canvas, origin top left.
struct CanvasPixel {
    int x = 0;
    int y = 0;

    bool operator==(const CanvasPixel& other) const { return x == other.x && y == other.y; }
};

/// What the context menus of the pick modes offer.
enum class PickCommand : int {
    DeletePoint = 6050,
    FinishLine,
    LoopLine,
    BackLine,
    ClearLine,
    FinishArea,
    BackArea,
    ClearArea,
    FinishTravel,
    BackTravel,
    ClearTravel
};

/// An entry of a context menu.
struct PickMenuItem {
    PickCommand command;
    const char* label; ///< in the source's language
    bool enabled;
};

/// Turns clicks on the canvas into measurements. In each of the four modes a left click adds the
/// point under the pointer to the current item, a second one at the same pixel finishes the item,
/// and the pointer's motion shows the next segment. Every change is drawn, and told to the table
/// while there is one.
///
/// It stays when the canvas is replaced; what it picks on is given to it. Main thread.
class PickInteraction : public MeasurementEdits {
public:
    using StartRoam = std::function<void(const TravelPath&)>;

    /// @param set what is measured, and @param drawing its picture; both outlive this.
    /// @param startRoam flies along the travel points, of which the set has been emptied by then.
    PickInteraction(MeasurementSet& set, MeasurementDrawing& drawing, StartRoam startRoam);
    ~PickInteraction() override;

    /// Null while there is nothing to pick on: clicks are ignored then.
    void setSurface(PickSurface* surface) { m_surface = surface; }

    /// Null while the table is closed.
    void setTable(MeasurementTable* table) { m_table = table; }

    /// Each ends the other modes, and hides what is drawn.
    void setPointMode(bool on);
    void setLineMode(bool on);
    void setAreaMode(bool on);
    void setTravelMode(bool on);

    /// Ends whatever mode is on, and hides what is drawn.
    void endMode();

    bool pointMode() const { return m_mode == Mode::Point; }
    bool lineMode() const { return m_mode == Mode::Line; }
    bool areaMode() const { return m_mode == Mode::Area; }
    bool travelMode() const { return m_mode == Mode::Travel; }

    /// Whether the next pick starts a new line.
    bool lineFinished() const { return m_lineFinished; }
    /// Whether the next pick starts a new area.
    bool areaFinished() const { return m_areaFinished; }

    /// A left click: press and release at the same pixel.
    void onLeftClick(CanvasPixel pixel);

    /// A right click. @return the menu to show at the pointer; empty: none.
    std::vector<PickMenuItem> onRightClick(CanvasPixel pixel);

    /// Carries out what was chosen from the menu; what it did not offer does nothing.
    void run(PickCommand command);

    /// Remembers where the pointer is; cheap.
    void onMouseMotion(CanvasPixel pixel) { m_pointer = pixel; }

    /// Draws the segment to where the pointer has moved since the last call; to be called once a
    /// frame.
    void updatePreview();

    /// Forgets all measurements, for another model.
    void clear();

    void pointsChanged() override;
    void linesChanged(bool currentErased) override;
    void areasChanged(bool currentErased) override;
    void travelChanged() override;
    void tableClosed() override;

private:
    enum class Mode { None, Point, Line, Area, Travel };

    void setMode(Mode mode, bool on);
    std::optional<osg::Vec3d> pick(CanvasPixel pixel);
    void addPoint(const osg::Vec3d& point);
    void addLineVertex(const osg::Vec3d& vertex);
    void addAreaVertex(const osg::Vec3d& vertex);
    void addTravelPoint(const osg::Vec3d& point);
    void deletePoint();
    void finishLine();
    void loopLine();
    void backLine();
    void clearLine();
    void finishArea();
    void backArea();
    void clearArea();
    void finishTravel();
    void backTravel();
    void clearTravel();
    void measureCurrentArea();
    void drawLines();
    void drawAreas();
    std::vector<PickMenuItem> pointMenu(CanvasPixel pixel);
    std::vector<PickMenuItem> lineMenu() const;
    std::vector<PickMenuItem> areaMenu() const;
    std::vector<PickMenuItem> travelMenu() const;

    MeasurementSet& m_set;
    MeasurementDrawing& m_drawing;
    StartRoam m_startRoam;
    PickSurface* m_surface = nullptr;
    MeasurementTable* m_table = nullptr;
    Mode m_mode = Mode::None;
    bool m_lineFinished = true;
    bool m_areaFinished = true;
    bool m_areaMeasured = false;   ///< the current area
    CanvasPixel m_lastAddPosition; ///< of the click that added last; at first the upper left corner
    std::optional<CanvasPixel> m_pointer; ///< moved there since the last preview
    osg::Vec3d m_menuPickPoint;
    std::optional<PolygonMeasure> m_polygonMeasure; ///< while in area mode
};

} // namespace orbisk
