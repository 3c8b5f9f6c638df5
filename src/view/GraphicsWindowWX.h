#pragma once

#include <osgViewer/GraphicsWindow>

namespace orbisk {

class OSGCanvas;

/// Lets the viewer draw into a canvas and hear of its events. Window coordinates are physical
/// pixels with their origin at the top left.
class GraphicsWindowWX : public osgViewer::GraphicsWindow {
public:
    /// @param canvas must outlive the use of this adapter.
    explicit GraphicsWindowWX(OSGCanvas* canvas);

    bool valid() const override;
    bool realizeImplementation() override;
    bool isRealizedImplementation() const override;
    void closeImplementation() override;
    bool makeCurrentImplementation() override;
    bool releaseContextImplementation() override;
    void swapBuffersImplementation() override;
    void grabFocus() override;
    void grabFocusIfPointerInWindow() override;

protected:
    ~GraphicsWindowWX() override;

private:
    void init();

    OSGCanvas* m_canvas;
};

} // namespace orbisk
