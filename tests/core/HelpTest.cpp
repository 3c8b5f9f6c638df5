#include "app/CommandLine.h"
#include "app/CommandTable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;

const fs::path helpFolder = fs::path(ORBISK_SOURCE_DIR) / "resources/help";

/// The first group of every match.
std::vector<std::string> allMatches(const std::string& text, const std::string& pattern) {
    const std::regex expression(pattern, std::regex::icase);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match)
        found.push_back((*match)[1]);
    return found;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::string escaped(const std::string& text) {
    return replaced(replaced(replaced(text, "&", "&amp;"), "<", "&lt;"), ">", "&gt;");
}

/// The Chinese texts of the catalog's source, by the English ones.
std::map<std::string, std::string> chineseTexts() {
    const std::string catalog =
        readFile(fs::path(ORBISK_SOURCE_DIR) / "resources/translations/zh.po");
    const std::regex entry("msgid \"(.*)\"\nmsgstr \"(.*)\"");
    std::map<std::string, std::string> texts;
    for (std::sregex_iterator match(catalog.begin(), catalog.end(), entry), end; match != end;
         ++match)
        texts[(*match)[1]] = (*match)[2];
    return texts;
}

} // namespace

/// The help of one language.
class HelpTest : public ::testing::TestWithParam<const char*> {
protected:
    fs::path folder() const { return helpFolder / GetParam(); }
    std::string text(const std::string& file) const { return readFile(folder() / file); }

    Names pages() const {
        Names names;
        for (const auto& entry : fs::directory_iterator(folder()))
            if (entry.path().extension() == ".html")
                names.insert(entry.path().filename().string());
        return names;
    }

    /// The pages that a contents or index file names.
    std::vector<std::string> pagesNamedIn(const std::string& file) const {
        return allMatches(text(file), R"re(<param name="Local" value="([^"#]*))re");
    }

    std::string option(const std::string& name) const {
        const auto found = allMatches(text("orbisk.hhp"), "(?:^|\n)" + name + "=([^\n]*)");
        return found.size() == 1 ? found.front() : std::string();
    }

    /// A label as the interface shows it in this language.
    std::string label(const std::string& english) const {
        if (std::string(GetParam()) == "en")
            return english;
        static const auto texts = chineseTexts();
        const auto found = texts.find(english);
        return found == texts.end() ? "(untranslated) " + english : found->second;
    }

    std::string allPages() const {
        std::string all;
        for (const std::string& page : pages())
            all += text(page);
        return all;
    }
};

TEST_P(HelpTest, ProjectNamesTheFilesThatAreThere) {
    EXPECT_TRUE(fs::exists(folder() / option("Contents file")));
    EXPECT_TRUE(fs::exists(folder() / option("Index file")));
    EXPECT_TRUE(fs::exists(folder() / option("Default topic")));
    EXPECT_EQ(option("Charset"), "utf-8");
    EXPECT_FALSE(option("Title").empty());
    const std::string project = text("orbisk.hhp");
    const auto files = allMatches(project.substr(project.find("[FILES]")), "\n([^\n]+)");
    EXPECT_EQ(Names(files.begin(), files.end()), pages());
}

TEST_P(HelpTest, ContentsHoldEveryPageOnce) {
    const auto named = pagesNamedIn("orbisk.hhc");
    EXPECT_EQ(named.size(), pages().size());
    EXPECT_EQ(Names(named.begin(), named.end()), pages());
}

TEST_P(HelpTest, IndexNamesPagesThatAreThere) {
    const Names there = pages();
    const auto named = pagesNamedIn("orbisk.hhk");
    EXPECT_GT(named.size(), there.size());
    for (const std::string& page : named)
        EXPECT_TRUE(there.count(page)) << page;
    const auto terms = allMatches(text("orbisk.hhk"), R"re(<param name="Name" value="([^"]*)")re");
    EXPECT_EQ(Names(terms.begin(), terms.end()).size(), terms.size())
        << "a term stands there twice";
}

// The viewer would convert contents and index a second time if these named their charset, too.
TEST_P(HelpTest, CharsetIsNamedOnce) {
    for (const char* file : {"orbisk.hhc", "orbisk.hhk"})
        EXPECT_EQ(text(file).find("charset"), std::string::npos) << file;
    for (const std::string& page : pages())
        EXPECT_EQ(allMatches(text(page), "(charset)=utf-8").size(), 1u) << page;
}

TEST_P(HelpTest, LinksAndPicturesAreThere) {
    for (const std::string& page : pages())
        for (const std::string& target : allMatches(text(page), R"re((?:href|src)="([^"#]*))re"))
            EXPECT_TRUE(fs::exists(folder() / target)) << page << " names " << target;
}

TEST_P(HelpTest, EveryPictureIsShown) {
    const auto shown = allMatches(allPages(), R"re(src="([^"]*)")re");
    const Names names(shown.begin(), shown.end());
    for (const auto& picture : fs::directory_iterator(folder() / "pictures"))
        EXPECT_TRUE(names.count("pictures/" + picture.path().filename().string()))
            << picture.path();
}

TEST_P(HelpTest, BothLanguagesHaveTheSamePages) {
    Names english;
    for (const auto& entry : fs::directory_iterator(helpFolder / "en"))
        if (entry.path().extension() == ".html")
            english.insert(entry.path().filename().string());
    EXPECT_EQ(pages(), english);
}

TEST_P(HelpTest, EveryCommandIsDescribed) {
    const std::string menus = text("menus.html");
    for (const MenuTitle& menu : menuTitles) {
        // "&File", and in Chinese the letter in brackets behind the word.
        const std::string title = replaced(replaced(label(menu.title), "(&F)", ""), "&", "");
        EXPECT_NE(menus.find("<b>" + title + "</b>"), std::string::npos) << title;
    }
    for (const CommandRow& row : commandTable) {
        if (row.menu == CommandMenu::None)
            continue;
        EXPECT_NE(menus.find("<b>" + label(row.label) + "</b>"), std::string::npos)
            << label(row.label);
    }
}

TEST_P(HelpTest, EveryToolIsDescribedWithItsIcon) {
    const std::string tools = text("toolbar.html");
    std::vector<std::string> icons;
    for (const CommandRow& row : commandTable) {
        if (!row.tool.icon)
            continue;
        icons.emplace_back(row.tool.icon);
        const std::string name = label(row.tool.shortHelp);
        const std::string line = std::string("pictures/") + row.tool.icon +
                                 R"(.png" width="32" height="32" alt=")" + name +
                                 R"("></td><td><b>)" + name + "</b>";
        EXPECT_NE(tools.find(line), std::string::npos) << name;
    }
    EXPECT_EQ(allMatches(tools, R"re(src="pictures/(icon_\w+)\.png)re").size(), icons.size());
}

TEST_P(HelpTest, CommandLineTextIsTheProgramsOwn) {
    EXPECT_NE(text("commandline.html").find(escaped(commandLineHelp())), std::string::npos);
}

TEST_P(HelpTest, PicturesStaySmall) {
    constexpr std::uintmax_t limit = 1'500'000;
    std::uintmax_t size = 0;
    for (const auto& picture : fs::directory_iterator(folder() / "pictures"))
        size += picture.file_size();
    EXPECT_GT(size, 0u);
    EXPECT_LT(size, limit);
}

INSTANTIATE_TEST_SUITE_P(Languages, HelpTest, ::testing::Values("en", "zh"),
                         [](const auto& language) { return std::string(language.param); });

TEST(HelpStartPageTest, LinksToBothLanguages) {
    const auto links = allMatches(readFile(helpFolder / "start.html"), R"re(href="([^"]*)")re");
    EXPECT_EQ(links, (std::vector<std::string>{"zh/index.html", "en/index.html"}));
}

} // namespace orbisk::test
