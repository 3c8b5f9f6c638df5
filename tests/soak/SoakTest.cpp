// A long day with the program: model after model is opened, looked at in each mode, measured,
// saved, the language changed, the table opened and closed. What the process holds stays the same.
//
// ORBISK_SOAK_ROUNDS says how many times the models are gone through, ORBISK_MODELS may name a
// folder of more models.

#include "measure/PickDialog.h"
#include "soak/Footprint.h"
#include "support/GuiTest.h"
#include "view/OSGCanvas.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

constexpr int usualRounds = 6;
/// The first third of the rounds doesn't count: caches of the toolkit and of the renderer fill up,
/// and each kind of window is made for the first time.
constexpr std::size_t parts = 3;

/// The toolkit's dialog reads folders on threads of its own. What orders them is invisible to the
/// thread sanitizer, and to leave out what it says of their library would leave out most else: the
/// program's own events pass through that one.
#ifdef __SANITIZE_THREAD__
constexpr bool hasFileDialogs = false;
#else
constexpr bool hasFileDialogs = true;
#endif

constexpr double settlingSeconds = 1.0;
constexpr int mostSettlingSteps = 30;
constexpr double settledKibibytes = 16.0;
/// With fewer rounds a third of them says little about the heap, which differs from one to the
/// next by what the renderer keeps in store.
constexpr std::size_t fewestForMemory = 9;

/// What each figure may have grown from the middle third of the rounds to the last, for each model
/// opened between them. Less than a leaked window, tree, texture, handle or thread would take; the
/// allowance on top is what the same round differs by from one time to the next.
struct Bound {
    double Footprint::*field;
    double perOpen;
    double allowance;
};

const Bound bounds[] = {
    {&Footprint::heapKibibytes, 2.0, 128.0},  {&Footprint::residentKibibytes, 64.0, 16384.0},
    {&Footprint::threads, 0.0, 1.0},          {&Footprint::files, 0.0, 1.0},
    {&Footprint::serverResources, 0.05, 4.0},
};

const Bound& boundOf(double Footprint::*field) {
    for (const Bound& bound : bounds)
        if (bound.field == field)
            return bound;
    throw std::runtime_error("a figure without a bound");
}

/// Readable models of the folder that the environment names; none of what is there is hostile.
const char* const moreModels[] = {
    "osg/cow.osgt",   "osg/clock.osgt",      "osg/lz.osgt",
    "obj/spider.obj", "osgearth/bench.osgb", "generated/tin_utm_double.osgb",
};

} // namespace

class SoakTest : public GuiTest {
protected:
    static int rounds() {
        const char* asked = std::getenv("ORBISK_SOAK_ROUNDS");
        return asked ? std::atoi(asked) : usualRounds;
    }

    static std::vector<std::string> models() {
        std::vector<std::string> models;
        for (const char* name :
             {"valley.osgb", "scan.osgb", "assembly.osgt", "tiles.osgb", "valley.obj"})
            models.push_back(sample(name));
        // Reads fail, too.
        models.push_back(sample("missing.osgb"));
        const char* folder = std::getenv("ORBISK_MODELS");
        for (const char* name : moreModels)
            if (folder && fs::exists(fs::path(folder) / name))
                models.push_back(fs::path(folder) / name);
        return models;
    }

    /// A click on the canvas, past the window system.
    static void clickAt(const wxPoint& place) {
        for (const wxEventType type : {wxEVT_MOTION, wxEVT_LEFT_DOWN, wxEVT_LEFT_UP}) {
            wxMouseEvent event(type);
            event.SetEventObject(frame()->canvas());
            event.SetPosition(place);
            event.m_leftDown = type == wxEVT_LEFT_DOWN;
            frame()->canvas()->ProcessWindowEvent(event);
        }
        runFor(0.02);
    }

    static void lookInEachMode() {
        for (const Command mode : {Command::PointCloud, Command::Tin, Command::Gray, Command::Gray,
                                   Command::Skybox, Command::Skybox, Command::ResetModel})
            choose(mode);
    }

    static void measure() {
        const wxSize size = frame()->canvas()->GetClientSize();
        const wxPoint middle(size.x / 2, size.y / 2);
        for (const Command mode :
             {Command::PointPick, Command::LinePick, Command::AreaPick, Command::AutomaticRoam}) {
            choose(mode);
            for (const wxPoint& step : {wxPoint(0, 0), wxPoint(30, 5), wxPoint(11, 37)})
                clickAt(middle + step);
        }
        // The last place once more ends the travel path, and the camera flies.
        clickAt(middle + wxPoint(11, 37));
        choose(Command::AutomaticRoam);
    }

    static void openAndCloseTheTable() {
        choose(Command::MeasureTable);
        ASSERT_NE(frame()->measurementTable(), nullptr);
        frame()->measurementTable()->Close();
        EXPECT_TRUE(runUntil([] { return !frame()->measurementTable(); }));
    }

    static void save(const std::string& name) {
        if (!hasFileDialogs)
            return;
        chooseInNextFileDialog((fs::current_path() / name).string());
        choose(Command::Save);
        fs::remove(name);
    }

    static void useModel(const std::string& model) {
        load(model);
        lookInEachMode();
        measure();
        openAndCloseTheTable();
        runFor(0.1);
    }

    /// What the process holds once nothing more comes or goes: trees for picks are built and the
    /// renderer has dropped the former model.
    static Footprint settled(const FootprintMeter& meter) {
        Footprint before = meter.take();
        for (int i = 0; i < mostSettlingSteps; ++i) {
            runFor(settlingSeconds);
            const Footprint now = meter.take();
            if (std::abs(now.heapKibibytes - before.heapKibibytes) < settledKibibytes)
                return now;
            before = now;
        }
        return before;
    }

    static void expectFlat(const std::vector<Footprint>& taken, std::size_t modelCount) {
        const std::size_t third = taken.size() / parts;
        const auto opens = static_cast<double>(third * modelCount);
        for (const FootprintFigure& figure : footprintFigures()) {
            const double middle = lowestOf(taken, third, 2 * third, figure.field);
            const double last = lowestOf(taken, 2 * third, taken.size(), figure.field);
            const Bound& bound = boundOf(figure.field);
            std::printf("%s: %.0f in the middle third, %.0f in the last\n", figure.name, middle,
                        last);
            const bool isMemory = figure.field == &Footprint::heapKibibytes ||
                                  figure.field == &Footprint::residentKibibytes;
            if (isMemory && taken.size() < fewestForMemory)
                continue;
            EXPECT_LE(last - middle, bound.perOpen * opens + bound.allowance) << figure.name;
        }
    }

    static void print(std::size_t round, const Footprint& footprint) {
        std::printf("round %zu:", round);
        for (const FootprintFigure& figure : footprintFigures())
            std::printf("  %s %.0f", figure.name, footprint.*figure.field);
        std::printf("\n");
        std::fflush(stdout);
    }
};

TEST_F(SoakTest, HoldsNoMoreInTheEndThanInTheMiddle) {
    start();
    const FootprintMeter meter;
    std::vector<Footprint> taken;
    const std::vector<std::string> all = models();
    for (int round = 0; round < rounds() && !HasFatalFailure(); ++round) {
        for (const std::string& model : all)
            useModel(model);
        frame()->switchLanguage(languageChinese);
        runFor(0.2);
        frame()->switchLanguage(languageEnglish);
        runFor(0.2);
        // Each round ends alike, and with a model that has no pictures: of large ones the renderer
        // keeps some in store, now more, now fewer.
        load(sample("assembly.osgt"));
        save("saved.osgb");
        taken.push_back(settled(meter));
        print(taken.size(), taken.back());
    }
    expectFlat(taken, all.size());
}

} // namespace orbisk::test
