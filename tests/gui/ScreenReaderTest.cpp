#include "app/WebAddress.h"
#include "measure/PickDialog.h"
#include "support/GuiTest.h"
#include "support/TestModels.h"
#include "view/OSGCanvas.h"

#include <wx/bmpbuttn.h>
#include <wx/grid.h>

#include <algorithm>
#include <string>
#include <vector>

#ifdef __WXGTK__

extern "C" {
struct _AtkObject; // NOLINT(bugprone-reserved-identifier)
_AtkObject* gtk_widget_get_accessible(WXWidget widget);
const char* atk_object_get_name(_AtkObject* object);
}

namespace orbisk::test {

namespace {

std::string nameOf(const wxWindow& window) {
    const char* name = atk_object_get_name(gtk_widget_get_accessible(window.GetHandle()));
    return name ? name : "";
}

bool showsNoText(const wxWindow& window) {
    return dynamic_cast<const wxBitmapButton*>(&window) || dynamic_cast<const wxGrid*>(&window) ||
           dynamic_cast<const OSGCanvas*>(&window);
}

/// Names of the windows in `parent` that show no text of their own.
std::vector<std::string> namesIn(const wxWindow& parent) {
    std::vector<std::string> names;
    for (const wxWindow* child : parent.GetChildren()) {
        if (showsNoText(*child))
            names.push_back(nameOf(*child));
        const std::vector<std::string> below = namesIn(*child);
        names.insert(names.end(), below.begin(), below.end());
    }
    std::sort(names.begin(), names.end());
    return names;
}

using Names = std::vector<std::string>;

} // namespace

class ScreenReaderTest : public GuiTest {};

TEST_F(ScreenReaderTest, ButtonsOfTheWelcomePageHaveNames) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageEnglish, R"(["a.osgb"])");
    start();
    Names wanted{"3D view", "Help file", "Open file", "Remove from the list", webAddress()};
    std::sort(wanted.begin(), wanted.end());
    EXPECT_EQ(namesIn(*frame()), wanted);
}

TEST_F(ScreenReaderTest, ViewIsNamedInTheLanguageOfTheProgram) {
    writeSettings(R"({"x":40,"y":40,"w":900,"h":700})", languageChinese);
    start();
    load(writeTestModel());
    EXPECT_EQ(nameOf(*frame()->canvas()), "三维视图");
}

TEST_F(ScreenReaderTest, GridsOfTheTableAreNamedAsTheirPages) {
    start();
    load(writeTestModel());
    choose(Command::MeasureTable);
    EXPECT_EQ(namesIn(*frame()->measurementTable()), (Names{"Area", "Line", "Point", "Travel"}));
}

} // namespace orbisk::test

#endif
