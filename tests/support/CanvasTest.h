#pragma once

#include "measure/MeasurementSet.h"
#include "support/GuiTest.h"

#include <string>

namespace orbisk::test {

/// Uses the mouse itself on the canvas of the program.
class CanvasTest : public GuiTest {
protected:
    /// Starts in English and opens a model; nothing is measured on it yet.
    void startWith(const std::string& model);

    /// The middle of the canvas, where the models are.
    static wxPoint middle();

    /// A click at a place of the canvas.
    static void clickAt(const wxPoint& place, int button = wxMOUSE_BTN_LEFT);

    /// A right click, after which the entry of this label is chosen with the keyboard.
    static void chooseFromMenu(const wxPoint& place, const std::string& label);

    static MeasurementSet& set() { return measurementSet(); }
};

} // namespace orbisk::test
