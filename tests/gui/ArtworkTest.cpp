#include "platform/Artwork.h"

#include "EmbeddedFiles.h"
#include "app/CommandTable.h"
#include "support/GuiTest.h"

#include <wx/image.h>

#include <cmath>
#include <string>

namespace orbisk::test {

namespace {

/// The mean difference of two pictures' colours over white, of 255.
double difference(const wxBitmap& one, const wxBitmap& other) {
    const wxImage a = one.ConvertToImage();
    const wxImage b = other.ConvertToImage();
    const auto overWhite = [](const wxImage& image, int x, int y) {
        const double alpha = image.HasAlpha() ? image.GetAlpha(x, y) / 255.0 : 1.0;
        const auto blend = [alpha](int channel) { return 255.0 + (channel - 255.0) * alpha; };
        return wxRealPoint(blend(image.GetRed(x, y)),
                           (blend(image.GetGreen(x, y)) + blend(image.GetBlue(x, y))) / 2.0);
    };
    double sum = 0.0;
    for (int y = 0; y < a.GetHeight(); ++y)
        for (int x = 0; x < a.GetWidth(); ++x) {
            const wxRealPoint apart = overWhite(a, x, y) - overWhite(b, x, y);
            sum += (std::fabs(apart.x) + std::fabs(apart.y)) / 2.0;
        }
    return sum / a.GetWidth() / a.GetHeight();
}

bool isPainted(const std::string& name, const wxSize& size) {
    return !embeddedFile(name + "-" + std::to_string(size.x) + "x" + std::to_string(size.y) +
                         ".png")
                .empty();
}

class ArtworkTest : public GuiTest {
protected:
    ArtworkTest() { start(); }

    /// Compares what was painted while building with what the toolkit paints.
    static void expectPainted(const std::string& name, const wxSize& size) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(isPainted(name, size));
        const wxBitmap painted = platform::artwork(name, size).GetBitmap(size);
        ASSERT_TRUE(painted.IsOk());
        ASSERT_EQ(painted.GetSize(), size);
        const wxBitmap drawn =
            wxBitmapBundle::FromSVG(embeddedFile(name + ".svg").data(), size).GetBitmap(size);
        wxImage white(size);
        white.Clear(255);
        const double ink = difference(painted, wxBitmap(white));
        EXPECT_GT(ink, 8.0);
        // The two painters smooth edges in ways of their own.
        EXPECT_LT(difference(painted, drawn), ink / 5.0);
    }
};

} // namespace

TEST_F(ArtworkTest, EveryDrawingWasPaintedWhileBuilding) {
    for (const CommandRow& row : commandTable)
        if (row.tool.icon)
            expectPainted(row.tool.icon, {32, 32});
    for (const char* name : {"icon_open48", "icon_help48"})
        expectPainted(name, {48, 48});
    for (const char* name : {"icon_trash32", "icon_trash_current32", "icon_tips"})
        expectPainted(name, {32, 32});
    for (const int side : {16, 24, 32, 48, 96})
        expectPainted("aaaa", {side, side});
    expectPainted("welcome", {128, 128});
    expectPainted("banner", {250, 70});
}

TEST_F(ArtworkTest, OtherSizesAreDrawnWhenAskedFor) {
    const wxBitmapBundle bundle = platform::artwork("icon_help48", {48, 48});
    EXPECT_EQ(bundle.GetDefaultSize(), wxSize(48, 48));
    EXPECT_EQ(bundle.GetPreferredBitmapSizeAtScale(1.5), wxSize(72, 72));
    const wxSize large(72, 72);
    ASSERT_FALSE(isPainted("icon_help48", large));
    const wxBitmap drawn = bundle.GetBitmap(large);
    ASSERT_TRUE(drawn.IsOk());
    EXPECT_EQ(drawn.GetSize(), large);
    EXPECT_EQ(bundle.GetBitmap({48, 48}).GetSize(), wxSize(48, 48));
}

TEST_F(ArtworkTest, UnknownNameGivesAnEmptyBundle) {
    EXPECT_FALSE(platform::artwork("nothing", {32, 32}).IsOk());
}

} // namespace orbisk::test
