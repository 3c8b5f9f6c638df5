#include "support/SourceTree.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace orbisk::test {

namespace {

using Lines = std::vector<std::string>;

/// The parts of a text between blank lines.
std::vector<Lines> paragraphsOf(const std::string& text) {
    std::vector<Lines> paragraphs(1);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty())
            paragraphs.back().push_back(line);
        else if (!paragraphs.back().empty())
            paragraphs.emplace_back();
    }
    return paragraphs;
}

/// Whether a line at the margin begins a class or a free function.
bool begins(const std::string& line) {
    static const std::regex type(R"((template.*|(class|struct|union)\s+\w+[^;]*))");
    static const std::regex function(
        R"((?!namespace|using|wx[A-Z]|#|return)[a-z][\w:<>,&* ]*\(.*)");
    return std::regex_match(line, type) || std::regex_match(line, function);
}

/// The first lines of classes and free functions of a header that no comment tells of. One comment
/// may stand for several functions that follow each other without a blank line.
Lines undocumented(const std::string& header) {
    Lines found;
    for (const Lines& paragraph : paragraphsOf(header))
        for (const std::string& line : paragraph) {
            if (line.rfind("///", 0) == 0)
                break;
            if (begins(line)) {
                found.push_back(line);
                break;
            }
        }
    return found;
}

} // namespace

TEST(HeaderDocumentationTest, ClassesAndFunctionsAreDescribed) {
    for (const auto& [file, text] : programSources())
        if (file.size() > 2 && file.substr(file.size() - 2) == ".h") {
            EXPECT_EQ(undocumented(text), Lines()) << file;
        }
}

TEST(HeaderDocumentationTest, CheckFindsWhatIsNotDescribed) {
    for (const char* code :
         {"class A {\n", "struct B : C {\n", "void f();\n",
          "bool f(const std::string& a,\n  int);\n", "inline int f() {\n",
          "std::vector<int>& f();\n", "// a\nint f();\n", "/// About g.\nvoid g();\n\nvoid f();\n",
          "template <class T>\nT f();\n", "namespace a {\nvoid f();\n"})
        EXPECT_EQ(undocumented(code).size(), 1u) << code;
}

TEST(HeaderDocumentationTest, CheckLeavesTheRestAlone) {
    for (const char* code :
         {"/// About A.\nclass A {\n    int m_a;\n\n    void f();\n};\n", "class A;\nstruct B;\n",
          "/// About both.\nvoid f();\nvoid g();\n", "wxDECLARE_EVENT(evtA, B);\n",
          "#define A(b)\n", "using A = std::function<void(int)>;\n",
          "namespace a {\n\n/// A.\nvoid f();\n\n} // namespace a (b)\n",
          "inline constexpr int a = 5;\n"})
        EXPECT_EQ(undocumented(code), Lines()) << code;
}

} // namespace orbisk::test
