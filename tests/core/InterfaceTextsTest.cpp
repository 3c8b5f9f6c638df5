#include "support/SourceTree.h"

#include <gtest/gtest.h>

#include <regex>

namespace orbisk::test {

namespace {

/// Calls that show their first text to the user and get it as it stands in the source. Marks such
/// as "%s" and a lone "\n" are no text.
std::vector<std::string> untranslatedTexts(const std::string& source) {
    static const std::regex pattern(
        R"(\b(SetTitle|SetLabel|SetLabelText|SetToolTip|SetStatusText|SetHint|SetHelpText|)"
        R"(wxLogError|wxLogWarning|wxLogMessage|wxMessageBox|Caption)\s*\(\s*(wxT\(\s*|L)?)"
        R"rx("((\\.|%%|%[-+.0-9]*(l*[dufgxi]|z[du]|[sc])|[^"\\%A-Za-z])*)[A-Za-z])rx");
    std::vector<std::string> found;
    for (std::sregex_iterator match(source.begin(), source.end(), pattern), end; match != end;
         ++match)
        found.push_back(match->str());
    return found;
}

} // namespace

TEST(InterfaceTextsTest, ProgramTranslatesWhatItShows) {
    for (const auto& [file, text] : programSources())
        EXPECT_EQ(untranslatedTexts(text), std::vector<std::string>()) << file;
}

TEST(InterfaceTextsTest, CheckFindsBareTexts) {
    for (const char* code : {"SetTitle(\"Kelvane\");", "button->SetToolTip( \"Remove\" );",
                             "wxLogError(\"No %s\", a);", "wxMessageBox(wxT(\"Done\"))",
                             "pane.Caption(L\"Canvas\")", "wxLogError(\"%s gone\", a)"})
        EXPECT_EQ(untranslatedTexts(code).size(), 1u) << code;
}

TEST(InterfaceTextsTest, CheckLeavesMarkedTextsAlone) {
    for (const char* code :
         {"SetTitle(_(\"Kelvane\"));", "wxLogError(\"%s\", text);", "SetLabel(text);",
          "wxLogMessage(\"%s:%d\\n\", a, b)", "SetName(\"ID_CANVAS\")"})
        EXPECT_TRUE(untranslatedTexts(code).empty()) << code;
}

} // namespace orbisk::test
