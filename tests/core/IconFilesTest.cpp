#include "app/CommandTable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <vector>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

const fs::path resources = fs::path(ORBISK_SOURCE_DIR) / "resources";

std::string withoutComments(std::string svg) {
    for (auto begin = svg.find("<!--"); begin != std::string::npos; begin = svg.find("<!--"))
        svg.erase(begin, svg.find("-->", begin) - begin);
    return svg;
}

/// What the toolkit's drawing of SVG leaves out without a word: elements it does not know, and
/// attributes that clip, mask, filter or refer to a style sheet.
std::set<std::string> undrawable(const std::string& svg) {
    static const std::set<std::string> known = {
        "svg",  "g",        "path",    "rect", "circle",         "ellipse",
        "line", "polyline", "polygon", "defs", "linearGradient", "radialGradient",
        "stop", "title",    "desc"};
    static const std::regex element("<([A-Za-z][A-Za-z0-9:]*)");
    static const std::regex attribute("\\s(clip-path|mask|filter|class|marker-[a-z]+)\\s*=");
    const std::string text = withoutComments(svg);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), element), end; match != end; ++match)
        if (!known.count((*match)[1]))
            found.insert((*match)[1]);
    for (std::sregex_iterator match(text.begin(), text.end(), attribute), end; match != end;
         ++match)
        found.insert((*match)[1]);
    return found;
}

std::vector<fs::path> pictures() {
    std::vector<fs::path> paths;
    for (const char* folder : {"icons", "artwork"})
        for (const auto& entry : fs::directory_iterator(resources / folder))
            if (entry.path().extension() == ".svg")
                paths.push_back(entry.path());
    return paths;
}

/// The side a name such as "icon_open32" calls for; 0 where it names none.
int sideInName(const std::string& stem) {
    std::smatch match;
    return std::regex_search(stem, match, std::regex("[0-9]+$")) ? std::stoi(match.str()) : 0;
}

} // namespace

TEST(IconFilesTest, EveryToolHasItsIcon) {
    for (const CommandRow& row : commandTable)
        if (row.tool.icon) {
            EXPECT_TRUE(fs::exists(resources / "icons" / (std::string(row.tool.icon) + ".svg")))
                << row.tool.icon;
        }
}

TEST(IconFilesTest, EveryIconOfTheProgramIsThere) {
    for (const char* name :
         {"icon_open32", "icon_save32", "icon_original32", "icon_pts32", "icon_tin32",
          "icon_gray32", "icon_point32", "icon_line32", "icon_rect32", "icon_travel32", "icon_tips",
          "icon_open48", "icon_help48", "icon_trash32", "icon_trash_current32", "aaaa"})
        EXPECT_NE(readFile(resources / "icons" / (std::string(name) + ".svg")), "") << name;
}

TEST(IconFilesTest, PicturesHoldOnlyWhatIsDrawn) {
    ASSERT_GE(pictures().size(), 16u);
    for (const fs::path& path : pictures())
        EXPECT_EQ(undrawable(readFile(path)), std::set<std::string>()) << path;
}

TEST(IconFilesTest, IconsHaveTheSizeOfTheirName) {
    for (const fs::path& path : pictures()) {
        const int side = sideInName(path.stem().string());
        const std::string size = std::to_string(side);
        if (side != 0) {
            EXPECT_NE(readFile(path).find("width=\"" + size + "\" height=\"" + size + "\""),
                      std::string::npos)
                << path;
        }
    }
}

TEST(IconFilesTest, CheckFindsWhatIsNotDrawn) {
    for (const char* name : {"text", "style", "use", "mask", "clipPath", "filter", "pattern",
                             "image", "symbol", "foreignObject"})
        EXPECT_EQ(undrawable("<svg><" + std::string(name) + " a=\"b\"/></svg>"),
                  std::set<std::string>{name});
    EXPECT_EQ(undrawable("<svg><g clip-path=\"url(#a)\" mask=\"url(#b)\" class=\"c\"/></svg>"),
              (std::set<std::string>{"class", "clip-path", "mask"}));
    EXPECT_EQ(undrawable("<?xml version=\"1.0\"?><svg><!-- <text> --><path d=\"M0 0\"/></svg>"),
              std::set<std::string>());
}

} // namespace orbisk::test
