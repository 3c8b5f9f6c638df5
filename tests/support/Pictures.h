#pragma once

#include <gtest/gtest.h>
#include <osg/Image>
#include <osg/Vec3>
#include <osg/ref_ptr>

#include <functional>
#include <string>

namespace orbisk::test {

/// Part of a picture, in pixels from its lower left corner.
struct PictureArea {
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
};

/// Reads a PNG; null where there is none.
osg::ref_ptr<osg::Image> readPicture(const std::string& file);

/// The colour of a pixel, each part between 0 and 1.
osg::Vec3 pixel(const osg::Image& picture, int x, int y);

/// The mean colour of an area.
osg::Vec3 meanColour(const osg::Image& picture, const PictureArea& area);

/// How many pixels `wanted` holds for.
int countPixels(const osg::Image& picture, const std::function<bool(const osg::Vec3&)>& wanted);

/// The difference between the greatest and the least part of a colour: 0 for a grey.
float colourfulness(const osg::Vec3& colour);

/// Whether `picture` looks like the reference of that name. A pixel counts as equal when a
/// neighbour of the same colour lies in the other picture, so that another rasteriser passes; the
/// share of other pixels is measured against those that show something. A failure leaves both
/// pictures and their difference in the build folder. With ORBISK_UPDATE_REFERENCES set the
/// picture becomes the reference.
testing::AssertionResult looksLikeReference(const osg::Image& picture, const std::string& name);

} // namespace orbisk::test
