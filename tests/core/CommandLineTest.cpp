#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

using Arguments = std::vector<std::string>;

std::string errorOf(const Arguments& arguments) {
    return parseCommandLine(arguments).error.value_or("");
}

CommandLine pictureOf(const Arguments& more) {
    Arguments arguments{"--screenshot", "out.png", "model.osgb"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return parseCommandLine(arguments);
}

} // namespace

TEST(CommandLineTest, NothingAsksForNothing) {
    const CommandLine line = parseCommandLine({});
    EXPECT_FALSE(line.help);
    EXPECT_FALSE(line.version);
    EXPECT_FALSE(line.model);
    EXPECT_FALSE(line.screenshot);
    EXPECT_FALSE(line.error);
}

TEST(CommandLineTest, TakesAModel) {
    const CommandLine line = parseCommandLine({"/models/a b/模型.osgb"});
    EXPECT_FALSE(line.error);
    EXPECT_EQ(line.model, "/models/a b/模型.osgb");
    EXPECT_FALSE(line.screenshot);
}

TEST(CommandLineTest, TakesAModelThatLooksLikeAnOptionAfterTwoDashes) {
    EXPECT_EQ(parseCommandLine({"--", "--help"}).model, "--help");
    EXPECT_FALSE(parseCommandLine({"--", "--help"}).help);
    EXPECT_EQ(parseCommandLine({"--", "--"}).model, "--");
    EXPECT_FALSE(parseCommandLine({"--"}).model);
}

TEST(CommandLineTest, RefusesTwoModels) {
    EXPECT_EQ(errorOf({"a.obj", "b.obj"}), "more than one model: b.obj");
    EXPECT_EQ(errorOf({"a.obj", "--", "b.obj"}), "more than one model: b.obj");
}

TEST(CommandLineTest, TakesHelpAndVersion) {
    EXPECT_TRUE(parseCommandLine({"--help"}).help);
    EXPECT_FALSE(parseCommandLine({"--help"}).version);
    EXPECT_TRUE(parseCommandLine({"--version"}).version);
    EXPECT_FALSE(parseCommandLine({"--version"}).help);
}

TEST(CommandLineTest, RefusesUnknownOptions) {
    for (const char* option : {"--bogus", "-h", "-", "--Help", "--help=1", "--screenshot=a.png"})
        EXPECT_EQ(errorOf({option}), "unknown option " + std::string(option));
    EXPECT_NE(errorOf({"--help", "--bogus"}), "");
}

TEST(CommandLineTest, PictureHasItsDefaults) {
    const CommandLine line = pictureOf({});
    ASSERT_FALSE(line.error);
    ASSERT_TRUE(line.screenshot);
    EXPECT_EQ(line.model, "model.osgb");
    EXPECT_EQ(line.screenshot->file, "out.png");
    EXPECT_EQ(line.screenshot->width, 1280);
    EXPECT_EQ(line.screenshot->height, 800);
    EXPECT_EQ(line.screenshot->mode, DisplayMode::AsLoaded);
}

TEST(CommandLineTest, PictureTakesASize) {
    for (const auto& [text, width, height] : {std::tuple{"640x480", 640, 480},
                                              {"1x1", 1, 1},
                                              {"16384x16384", 16384, 16384},
                                              {"007x08", 7, 8}}) {
        const CommandLine line = pictureOf({"--size", text});
        ASSERT_TRUE(line.screenshot && !line.error) << text;
        EXPECT_EQ(line.screenshot->width, width);
        EXPECT_EQ(line.screenshot->height, height);
    }
}

TEST(CommandLineTest, PictureRefusesWhatIsNoSize) {
    for (const char* text : {"",          "x",         "640",           "640x",     "x480",
                             "0x480",     "640x0",     "-640x480",      "640x-480", "+640x480",
                             "640X480",   "640x480x2", "640x480 ",      " 640x480", "640 x 480",
                             "16385x100", "100x16385", "99999999999x1", "6.4x4.8",  "640,480"})
        EXPECT_EQ(pictureOf({"--size", text}).error, "not a size: " + std::string(text));
}

TEST(CommandLineTest, PictureTakesAMode) {
    EXPECT_EQ(pictureOf({"--mode", "points"}).screenshot->mode, DisplayMode::PointCloud);
    EXPECT_EQ(pictureOf({"--mode", "tin"}).screenshot->mode, DisplayMode::Tin);
    EXPECT_EQ(pictureOf({"--mode", "gray"}).screenshot->mode, DisplayMode::Gray);
}

TEST(CommandLineTest, PictureRefusesWhatIsNoMode) {
    for (const char* text : {"", "Points", "grey", "tin ", "6"})
        EXPECT_EQ(pictureOf({"--mode", text}).error, "not a mode: " + std::string(text));
}

TEST(CommandLineTest, OptionsStandInAnyOrder) {
    const CommandLine line = parseCommandLine(
        {"--mode", "gray", "model.osgb", "--size", "30x20", "--screenshot", "out.png"});
    ASSERT_TRUE(line.screenshot && !line.error);
    EXPECT_EQ(line.model, "model.osgb");
    EXPECT_EQ(line.screenshot->file, "out.png");
    EXPECT_EQ(line.screenshot->width, 30);
    EXPECT_EQ(line.screenshot->mode, DisplayMode::Gray);
}

TEST(CommandLineTest, RefusesOptionsWithoutTheirValue) {
    EXPECT_EQ(errorOf({"a.obj", "--screenshot"}), "--screenshot needs a value");
    EXPECT_EQ(pictureOf({"--size"}).error, "--size needs a value");
    EXPECT_EQ(pictureOf({"--mode"}).error, "--mode needs a value");
}

TEST(CommandLineTest, RefusesPictureOptionsWithoutAPicture) {
    EXPECT_EQ(errorOf({"--size", "30x20", "a.obj"}), "--size and --mode belong to --screenshot");
    EXPECT_EQ(errorOf({"--mode", "tin", "a.obj"}), "--size and --mode belong to --screenshot");
}

TEST(CommandLineTest, RefusesAPictureWithoutAModel) {
    EXPECT_EQ(errorOf({"--screenshot", "out.png"}), "--screenshot needs a model");
}

TEST(CommandLineTest, HelpNamesEveryOption) {
    const std::string help = commandLineHelp();
    for (const char* option : {"--screenshot", "--size", "--mode", "--help", "--version", "MODEL",
                               "points", "tin", "gray", "1280x800"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
    EXPECT_EQ(help.back(), '\n');
}

TEST(CommandLineTest, VersionIsTheProjects) {
    EXPECT_EQ(versionLine(), "Orbisk " ORBISK_VERSION "\n");
}

} // namespace orbisk::test
