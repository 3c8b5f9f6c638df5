#include "support/SourceTree.h"

#include <gtest/gtest.h>

#include <regex>

namespace orbisk::test {

namespace {

/// The toolkit renumbered its languages between versions: a number names another language than
/// the one that was meant.
std::vector<std::string> numericLanguages(const std::string& source) {
    static const std::regex pattern(
        R"((\bInit|\bmakeLocale|\bAddLanguage|\bSetLanguage|\bGetLanguageInfo|\bwxLocale(\s+\w+)?|)"
        R"(make_unique<wxLocale>|static_cast<wxLanguage>|\(wxLanguage\))\s*[({]?\s*[0-9]+\b)");
    std::vector<std::string> found;
    for (std::sregex_iterator match(source.begin(), source.end(), pattern), end; match != end;
         ++match)
        found.push_back(match->str());
    return found;
}

} // namespace

TEST(LanguageCodesTest, ProgramCallsLanguagesByName) {
    const Sources sources = programSources();
    for (const auto& [file, text] : sources)
        EXPECT_EQ(numericLanguages(text), std::vector<std::string>()) << file;
    const std::string language = sources.at("app/Language.cpp");
    EXPECT_NE(language.find("wxLANGUAGE_CHINESE_SIMPLIFIED"), std::string::npos);
    EXPECT_NE(language.find("wxLANGUAGE_ENGLISH"), std::string::npos);
}

TEST(LanguageCodesTest, CheckFindsNumbers) {
    for (const char* code :
         {"locale->Init(45, wxLOCALE_LOAD_DEFAULT);", "locale = makeLocale(57);",
          "wxLocale locale(45);", "new wxLocale( 45 )", "std::make_unique<wxLocale>(57, 0)",
          "static_cast<wxLanguage>(45)", "wxLocale::GetLanguageInfo(57)"})
        EXPECT_EQ(numericLanguages(code).size(), 1u) << code;
    EXPECT_TRUE(
        numericLanguages("locale->Init(wxLANGUAGE_ENGLISH, 2); Init(); wxLocale a;").empty());
}

} // namespace orbisk::test
