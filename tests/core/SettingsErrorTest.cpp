#include "core/SettingsHelpers.h"
#include "settings/SettingsFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <random>

namespace orbisk::test {

namespace {

class SettingsErrorTest : public ::testing::Test {
protected:
    /// Loads `text`, which is no JSON: nothing may change by it.
    static SettingsError errorOf(const std::string& text) {
        writeFile(settingsFileName, text);
        AppSettings settings = unusualSettings();
        const auto error = loadSettings(settings, testDisplay, plainEncoding());
        EXPECT_TRUE(error) << text.substr(0, 100);
        EXPECT_EQ(describe(settings), describe(unusualSettings()));
        EXPECT_EQ(readFile(settingsFileName), text);
        return error.value_or(SettingsError());
    }

    static void expectErrorAt(const std::string& text, int line, int column) {
        const SettingsError error = errorOf(text);
        EXPECT_EQ(error.line, line) << text;
        EXPECT_EQ(error.column, column) << text;
        EXPECT_NE(error.message, "") << text;
    }

    /// Some file systems wait for the disk when a file is emptied and written anew.
    static void writeFresh(const std::string& text) {
        std::filesystem::remove(settingsFileName);
        writeFile(settingsFileName, text);
    }

    WorkingFolder m_folder;
};

/// A change such as a broken disk, an editor or a transfer makes.
class Mutation {
public:
    explicit Mutation(std::uint32_t seed) : m_random(seed) {}

    std::string of(std::string text) {
        for (std::size_t changes = 1 + below(3); changes > 0 && !text.empty(); --changes)
            change(text);
        return text;
    }

private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }

    void change(std::string& text) {
        const std::size_t at = below(text.size());
        const std::size_t length = 1 + below(20);
        switch (below(5)) {
        case 0:
            text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ (1u << below(8)));
            break;
        case 1:
            text.erase(at, length);
            break;
        case 2:
            text.insert(at, 1, likelyByte());
            break;
        case 3:
            text.resize(at);
            break;
        default:
            text.insert(below(text.size()), text.substr(at, length));
        }
    }

    char likelyByte() {
        static constexpr char marks[] = "{}[],:\"\\/*-+.eE0189\n\r\t \0\xff\xc3u";
        return marks[below(sizeof marks - 1)];
    }

    std::mt19937 m_random;
};

} // namespace

TEST_F(SettingsErrorTest, TellsLineAndColumn) {
    expectErrorAt("nonsense", 1, 1);
    expectErrorAt("{\n  \"project\": {\n    \"data\": oops\n  }\n}\n", 3, 13);
    expectErrorAt("{\"a\" 1}", 1, 6);
    expectErrorAt("{\n\"a\": 1\n\"b\": 2\n}", 3, 1);
    expectErrorAt("{\r\n  \"a\": 1\r\n  \"b\": 2\r\n}", 3, 3);
    expectErrorAt("{\"a\": [1 2]}", 1, 10);
    expectErrorAt("\n\n   ]", 3, 4);
}

TEST_F(SettingsErrorTest, TellsWhereTheTextEndsTooEarly) {
    expectErrorAt("{", 1, 2);
    expectErrorAt("{\n  \"a\": {\n", 3, 1);
}

TEST_F(SettingsErrorTest, EmptyFileIsNoSettings) {
    expectErrorAt("", 1, 1);
    EXPECT_EQ(errorOf("\n\n").line, 3);
}

TEST_F(SettingsErrorTest, OtherFilesAreNoSettings) {
    EXPECT_GE(errorOf(std::string("\0\1\2\0", 4)).line, 1);
    EXPECT_GE(errorOf("\xff\xfe{\0}\0").line, 1);
    EXPECT_GE(errorOf("<?xml version=\"1.0\"?><a/>").line, 1);
    EXPECT_GE(errorOf("{\"project\":{\"data\":{\"fovy\":1e999}}}").line, 1);
    EXPECT_GE(errorOf("{\"project\":{\"data\":{\"fovy\":inf}}}").line, 1);
    EXPECT_GE(errorOf("{\"a\":\"\\ud800\"}").line, 1);
}

TEST_F(SettingsErrorTest, DeepNestingIsAnError) {
    EXPECT_NE(errorOf(std::string(2000, '[')).message, "");
    EXPECT_NE(errorOf(std::string(100000, '[')).message, "");
    std::string objects;
    for (int i = 0; i < 2000; ++i)
        objects += "{\"a\":";
    EXPECT_NE(errorOf(objects).message, "");
    EXPECT_NE(errorOf(std::string(2000, '[') + std::string(2000, ']')).message, "");
}

TEST_F(SettingsErrorTest, WholeTextsThatAreNoObjectReadAsEmpty) {
    for (const char* text : {"[]", "5", "null", "\"text\"", "[{\"project\":{}}]", "true"})
        EXPECT_EQ(describe(loadedFrom(text)), describe(AppSettings())) << text;
}

TEST_F(SettingsErrorTest, DamagedFilesLoadOrGiveAnError) {
    save(unusualSettings());
    const std::string whole = readFile(settingsFileName);
    Mutation mutation(20190601);
    int loads = 0;
    int errors = 0;
    for (int i = 0; i < 10000 && !HasFailure(); ++i) {
        const std::string text = mutation.of(whole);
        writeFresh(text);
        AppSettings settings = unusualSettings();
        const auto error = loadSettings(settings, testDisplay, plainEncoding());
        EXPECT_EQ(readFile(settingsFileName), text);
        if (!error) {
            ++loads;
            continue;
        }
        ++errors;
        EXPECT_GE(error->line, 1) << text;
        EXPECT_GE(error->column, 1) << text;
        EXPECT_EQ(describe(settings), describe(unusualSettings())) << text;
    }
    // Both happen: otherwise the changes are too small or too large to show anything.
    EXPECT_GT(loads, 500);
    EXPECT_GT(errors, 500);
}

TEST_F(SettingsErrorTest, WhatLoadsCanBeSavedAndLoadedAgain) {
    save(unusualSettings());
    const std::string whole = readFile(settingsFileName);
    Mutation mutation(110);
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
        const std::string text = mutation.of(whole);
        writeFresh(text);
        AppSettings settings;
        if (loadSettings(settings, testDisplay, plainEncoding()))
            continue;
        save(settings);
        AppSettings again;
        const auto error = loadSettings(again, testDisplay, plainEncoding());
        ASSERT_FALSE(error) << error->message << '\n' << text;
        EXPECT_EQ(again.path_recent.size(), settings.path_recent.size());
        EXPECT_EQ(again.rect.x, settings.rect.x);
        EXPECT_EQ(again.fovy, settings.fovy) << text;
    }
}

} // namespace orbisk::test
