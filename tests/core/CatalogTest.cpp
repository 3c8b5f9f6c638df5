#include "support/RunCommand.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

class CatalogTest : public ::testing::Test {
protected:
    void SetUp() override {
        const CommandResult extracted = runCommand(shellQuoted(m_texts / "extract-texts"));
        ASSERT_EQ(extracted.status, 0) << extracted.output;
        m_template = extracted.output;
        m_catalog = readFile(m_texts / "zh.po");
    }

    /// Whether a catalog translates each text of a template, and none besides.
    CommandResult compare(const std::string& catalog, const std::string& textTemplate) {
        writeFile(m_folder.path() / "catalog.po", catalog);
        writeFile(m_folder.path() / "template.pot", textTemplate);
        return runCommand("cd " + shellQuoted(m_folder.path()) +
                          " && msgcmp catalog.po template.pot");
    }

    static std::string withEntry(const std::string& file, const std::string& text,
                                 const std::string& translation) {
        return file + "\nmsgid \"" + text + "\"\nmsgstr \"" + translation + "\"\n";
    }

    const fs::path m_texts = fs::path(ORBISK_SOURCE_DIR) / "resources" / "translations";
    TemporaryFolder m_folder;
    std::string m_template;
    std::string m_catalog;
};

} // namespace

TEST_F(CatalogTest, ExtractionFindsTextsOfEveryKind) {
    for (const char* text :
         {"Open", "&File", "Kelvane", "File does not exist!", "Brenholt tip message", "PanelInit"})
        EXPECT_NE(m_template.find("msgid \"" + std::string(text) + "\"\n"), std::string::npos)
            << text;
}

TEST_F(CatalogTest, ChineseIsComplete) {
    const CommandResult result = compare(m_catalog, m_template);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(result.output, "");
}

TEST_F(CatalogTest, CheckFindsAMissingEntry) {
    const CommandResult result = compare(m_catalog, withEntry(m_template, "A new text", ""));
    EXPECT_NE(result.status, 0);
}

TEST_F(CatalogTest, CheckFindsAnEmptyTranslation) {
    const CommandResult result =
        compare(withEntry(m_catalog, "A new text", ""), withEntry(m_template, "A new text", ""));
    EXPECT_NE(result.status, 0);
}

TEST_F(CatalogTest, CheckFindsAFuzzyEntry) {
    const std::string entry = "msgid \"Copyright:\"\n";
    std::string fuzzy = m_catalog;
    ASSERT_NE(fuzzy.find(entry), std::string::npos);
    fuzzy.insert(fuzzy.find(entry), "#, fuzzy\n");
    EXPECT_NE(compare(fuzzy, m_template).status, 0);
}

TEST_F(CatalogTest, CheckFindsALeftOverEntry) {
    const CommandResult result = compare(withEntry(m_catalog, "Nowhere", "x"), m_template);
    EXPECT_NE(result.output, "");
}

} // namespace orbisk::test
