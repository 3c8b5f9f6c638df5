#include "support/Pictures.h"

#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr float colourTolerance = 24.0f / 255.0f;
constexpr double mostDiffering = 0.03; ///< of the pixels that show something
constexpr int least = 20;              ///< pixels that may differ in any case

const osg::Vec3 background(0.8f, 0.8f, 0.8f);

bool near(const osg::Vec3& a, const osg::Vec3& b) {
    for (int i = 0; i < 3; ++i)
        if (std::abs(a[i] - b[i]) > colourTolerance)
            return false;
    return true;
}

bool hasNeighbour(const osg::Image& picture, int x, int y, const osg::Vec3& colour) {
    for (int v = std::max(y - 1, 0); v <= std::min(y + 1, picture.t() - 1); ++v)
        for (int u = std::max(x - 1, 0); u <= std::min(x + 1, picture.s() - 1); ++u)
            if (near(pixel(picture, u, v), colour))
                return true;
    return false;
}

/// Marks in white where two pictures of one size differ.
struct Difference {
    Difference(const osg::Image& a, const osg::Image& b) : marks(new osg::Image) {
        marks->allocateImage(a.s(), a.t(), 1, GL_RGB, GL_UNSIGNED_BYTE);
        for (int y = 0; y < a.t(); ++y)
            for (int x = 0; x < a.s(); ++x) {
                const osg::Vec3 here = pixel(a, x, y);
                const osg::Vec3 there = pixel(b, x, y);
                const bool equal = hasNeighbour(b, x, y, here) && hasNeighbour(a, x, y, there);
                marks->setColor(equal ? osg::Vec4(0, 0, 0, 1) : osg::Vec4(1, 1, 1, 1),
                                static_cast<unsigned int>(x), static_cast<unsigned int>(y));
                differing += equal ? 0 : 1;
                shown += near(here, background) && near(there, background) ? 0 : 1;
            }
    }

    osg::ref_ptr<osg::Image> marks;
    int differing = 0;
    int shown = 0;
};

} // namespace

osg::ref_ptr<osg::Image> readPicture(const std::string& file) {
    return osgDB::readRefImageFile(file);
}

osg::Vec3 pixel(const osg::Image& picture, int x, int y) {
    const osg::Vec4 colour =
        picture.getColor(static_cast<unsigned int>(x), static_cast<unsigned int>(y));
    return {colour.r(), colour.g(), colour.b()};
}

osg::Vec3 meanColour(const osg::Image& picture, const PictureArea& area) {
    osg::Vec3d sum;
    for (int y = area.y; y < area.y + area.h; ++y)
        for (int x = area.x; x < area.x + area.w; ++x)
            sum += pixel(picture, x, y);
    return sum / (area.w * area.h);
}

int countPixels(const osg::Image& picture, const std::function<bool(const osg::Vec3&)>& wanted) {
    int count = 0;
    for (int y = 0; y < picture.t(); ++y)
        for (int x = 0; x < picture.s(); ++x)
            count += wanted(pixel(picture, x, y)) ? 1 : 0;
    return count;
}

float colourfulness(const osg::Vec3& colour) {
    const auto [least, most] = std::minmax({colour.x(), colour.y(), colour.z()});
    return most - least;
}

testing::AssertionResult looksLikeReference(const osg::Image& picture, const std::string& name) {
    const fs::path reference =
        fs::path(ORBISK_SOURCE_DIR) / "tests" / "data" / "render" / (name + ".png");
    if (std::getenv("ORBISK_UPDATE_REFERENCES")) {
        fs::create_directories(reference.parent_path());
        if (osgDB::writeImageFile(picture, reference.string()))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "cannot write " << reference;
    }
    const osg::ref_ptr<osg::Image> wanted =
        fs::exists(reference) ? readPicture(reference.string()) : nullptr;
    if (!wanted)
        return testing::AssertionFailure() << "there is no reference " << reference;
    if (wanted->s() != picture.s() || wanted->t() != picture.t())
        return testing::AssertionFailure() << "another size than " << reference;
    const Difference difference(picture, *wanted);
    if (difference.differing <= std::max(least, static_cast<int>(difference.shown * mostDiffering)))
        return testing::AssertionSuccess();
    const fs::path folder = fs::path(ORBISK_STAGE_DIR).parent_path() / "render-failures";
    fs::create_directories(folder);
    osgDB::writeImageFile(picture, (folder / (name + "-actual.png")).string());
    osgDB::writeImageFile(*wanted, (folder / (name + "-reference.png")).string());
    osgDB::writeImageFile(*difference.marks, (folder / (name + "-difference.png")).string());
    return testing::AssertionFailure()
           << difference.differing << " of " << difference.shown << " pixels differ from "
           << reference << "; the pictures are in " << folder;
}

} // namespace orbisk::test
