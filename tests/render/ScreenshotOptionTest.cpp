#include "support/ChildProcess.h"
#include "support/KnownModel.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

struct ProgramResult {
    int exitCode;
    std::string output;
    std::string errors;
};

/// Runs the built program as a user does, in a folder of its own.
class ScreenshotOptionTest : public testing::Test {
protected:
    ScreenshotOptionTest() {
        writeKnownModel("model.osgb");
        fs::create_symlink(ORBISK_STAGE_DIR "/image", "image");
    }

    static ProgramResult run(const std::vector<std::string>& arguments,
                             const std::vector<std::string>& launcher = {}) {
        std::vector<std::string> words = launcher;
        words.emplace_back(ORBISK_STAGE_DIR "/orbisk");
        words.insert(words.end(), arguments.begin(), arguments.end());
        ChildProcess program(words);
        const int exitCode = program.wait();
        return {exitCode, program.output(), program.errorOutput()};
    }

    static void expectFailure(const ProgramResult& result, const std::string& named) {
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors.substr(0, 8), "orbisk: ");
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_EQ(result.errors.empty() ? '\0' : result.errors.back(), '\n');
        EXPECT_NE(result.errors.find(named), std::string::npos) << result.errors;
        EXPECT_FALSE(fs::exists("picture.png"));
    }

    static void expectPicture(const ProgramResult& result, int width, int height) {
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "");
        const osg::ref_ptr<osg::Image> picture = readPicture("picture.png");
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(picture->s(), width);
        EXPECT_EQ(picture->t(), height);
    }

    WorkingFolder m_folder;
};

} // namespace

TEST_F(ScreenshotOptionTest, PictureHasTheUsualSize) {
    expectPicture(run({"--screenshot", "picture.png", "model.osgb"}), 1280, 800);
}

TEST_F(ScreenshotOptionTest, PictureHasTheSizeAskedFor) {
    expectPicture(run({"--screenshot", "picture.png", "--size", "200x100", "model.osgb"}), 200,
                  100);
}

TEST_F(ScreenshotOptionTest, PictureIsAPngWhateverItsName) {
    const ProgramResult result = run({"--screenshot", "picture", "--size", "64x48", "model.osgb"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(readFile("picture").substr(0, 8), "\x89PNG\r\n\x1a\n");
}

TEST_F(ScreenshotOptionTest, ModesGiveDifferentPictures) {
    const auto bytesIn = [](const std::string& mode) {
        const ProgramResult result =
            run({"--screenshot", "picture.png", "--size", "160x120", "--mode", mode, "model.osgb"});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return readFile("picture.png");
    };
    const std::string points = bytesIn("points");
    const std::string tin = bytesIn("tin");
    const std::string gray = bytesIn("gray");
    EXPECT_NE(points, tin);
    EXPECT_NE(tin, gray);
    EXPECT_NE(gray, points);
}

TEST_F(ScreenshotOptionTest, SettingsOfTheWorkingDirectoryAreFollowed) {
    const auto corner = [](const std::string& sky) {
        writeFile("datafile.json",
                  R"({"project":{"data":{"sky_show":)" + sky + R"(,"fovy":30.0}}})");
        run({"--screenshot", "picture.png", "--size", "160x120", "model.osgb"});
        const osg::ref_ptr<osg::Image> picture = readPicture("picture.png");
        return picture ? pixel(*picture, 0, 0) : osg::Vec3(-1, -1, -1);
    };
    const osg::Vec3 background(0.8f, 0.8f, 0.8f);
    EXPECT_LT((corner("0") - background).length(), 0.01f);
    EXPECT_GT((corner("1") - background).length(), 0.05f);
}

TEST_F(ScreenshotOptionTest, NothingElseIsWritten) {
    run({"--screenshot", "picture.png", "--size", "64x48", "model.osgb"});
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator("."))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"image", "model.osgb", "picture.png"}));
}

TEST_F(ScreenshotOptionTest, MissingModelIsOneLine) {
    expectFailure(run({"--screenshot", "picture.png", "missing.osgb"}), "missing.osgb");
}

TEST_F(ScreenshotOptionTest, DamagedModelIsOneLine) {
    writeFile("damaged.osgb", "this is no model");
    expectFailure(run({"--screenshot", "picture.png", "damaged.osgb"}), "damaged.osgb");
}

TEST_F(ScreenshotOptionTest, TruncatedModelIsOneLine) {
    const std::string whole = readFile("model.osgb");
    writeFile("half.osgb", whole.substr(0, whole.size() / 2));
    expectFailure(run({"--screenshot", "picture.png", "half.osgb"}), "half.osgb");
}

TEST_F(ScreenshotOptionTest, ModelOfUnknownFormatIsOneLine) {
    writeFile("model.nosuchformat", "x");
    expectFailure(run({"--screenshot", "picture.png", "model.nosuchformat"}), "model.nosuchformat");
}

TEST_F(ScreenshotOptionTest, UnwritablePictureIsOneLine) {
    expectFailure(run({"--screenshot", "no/such/folder/p.png", "--size", "64x48", "model.osgb"}),
                  "no/such/folder/p.png");
    fs::create_directory("folder");
    expectFailure(run({"--screenshot", "folder", "--size", "64x48", "model.osgb"}), "folder");
}

TEST_F(ScreenshotOptionTest, BadSizeIsOneLine) {
    for (const char* size : {"0x10", "10", "-5x5", "10x", "x", "10x10x10", "1e3x5", "99999x5", ""})
        expectFailure(run({"--screenshot", "picture.png", "--size", size, "model.osgb"}), size);
}

TEST_F(ScreenshotOptionTest, UnsetDisplayIsOneLine) {
    // Even where some display runs on this machine: it belongs to somebody else.
    expectFailure(run({"--screenshot", "picture.png", "--size", "64x48", "model.osgb"},
                      {"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY"}),
                  "display");
}

TEST_F(ScreenshotOptionTest, DisplayThatDoesNotAnswerIsOneLine) {
    expectFailure(run({"--screenshot", "picture.png", "--size", "64x48", "model.osgb"},
                      {"env", "DISPLAY=:54321"}),
                  "display");
}

TEST_F(ScreenshotOptionTest, DamagedSettingsAreOneLine) {
    writeFile("datafile.json", "{");
    expectFailure(run({"--screenshot", "picture.png", "model.osgb"}), "datafile.json");
}

} // namespace orbisk::test
