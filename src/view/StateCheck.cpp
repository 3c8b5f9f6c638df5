#include "view/StateCheck.h"

#include "platform/MemoryBlock.h"

#include <osg/Notify>
#include <osg/Texture>
#include <osg/Uniform>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace orbisk {

namespace {

/// The bytes of one level of an image; far too many where its numbers are absurd.
std::uint64_t levelBytes(const osg::Image& image, unsigned int level) {
    constexpr std::uint64_t bitsPerByte = 8;
    constexpr std::uint64_t tooMany = std::numeric_limits<std::uint64_t>::max() / 2;
    const auto side = [level](int whole) { return std::max(whole >> level, 1); };
    const int width = side(image.s());
    const int height = side(image.t());
    const int depth = side(image.r());
    const std::uint64_t bits =
        osg::Image::computePixelSizeInBits(image.getPixelFormat(), image.getDataType());
    const std::uint64_t pixels =
        std::uint64_t(std::max(width, image.getRowLength())) * static_cast<std::uint64_t>(height);
    // The library computes in 32 bits.
    constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
    if (pixels > most || pixels * static_cast<std::uint64_t>(depth) > most ||
        pixels * static_cast<std::uint64_t>(depth) * bits / bitsPerByte > most)
        return tooMany;
    return osg::Image::computeImageSizeInBytes(width, height, depth, image.getPixelFormat(),
                                               image.getDataType(),
                                               static_cast<int>(image.getPacking()));
}

bool isOwnMemory(const osg::Image& image) {
    return image.getAllocationMode() == osg::Image::USE_NEW_DELETE ||
           image.getAllocationMode() == osg::Image::USE_MALLOC_FREE;
}

template <typename Array>
std::size_t sizeOf(const Array* array) {
    return array ? array->size() : 0;
}

/// Whether a uniform that has an array finds all its elements in it.
bool hasItsElements(const osg::Uniform& uniform) {
    const std::vector<std::size_t> sizes = {
        sizeOf(uniform.getFloatArray()), sizeOf(uniform.getDoubleArray()),
        sizeOf(uniform.getIntArray()),   sizeOf(uniform.getUIntArray()),
        sizeOf(uniform.getInt64Array()), sizeOf(uniform.getUInt64Array())};
    const std::size_t size = *std::max_element(sizes.begin(), sizes.end());
    const std::uint64_t components = static_cast<std::uint64_t>(
        std::max(0, osg::Uniform::getTypeNumComponents(uniform.getType())));
    return size == 0 || size >= uniform.getNumElements() * components;
}

void checkTexture(osg::Texture& texture) {
    for (unsigned int i = 0; i < texture.getNumImages(); ++i)
        if (osg::Image* image = texture.getImage(i))
            if (!isWhole(*image)) {
                OSG_WARN << "Left out an image that is larger than its data." << std::endl;
                texture.setImage(i, nullptr);
            }
}

} // namespace

bool isWhole(osg::Image& image) {
    if (!image.data())
        return true;
    const unsigned int packing = image.getPacking();
    if (packing != 1 && packing != 2 && packing != 4 && packing != 8)
        return false;
    if (image.s() < 0 || image.t() < 0 || image.r() < 0)
        return false;
    if (!isOwnMemory(image))
        return true;
    const std::uint64_t usable = usableBytes(image.data());
    for (unsigned int level = 0; level < image.getNumMipmapLevels(); ++level)
        if (image.getMipmapOffset(level) + levelBytes(image, level) > usable)
            return false;
    return true;
}

void checkState(osg::StateSet& state) {
    for (unsigned int unit = 0; unit < state.getTextureAttributeList().size(); ++unit)
        for (const auto& [kind, attribute] : state.getTextureAttributeList()[unit])
            if (osg::Texture* texture = attribute.first->asTexture())
                checkTexture(*texture);
    std::vector<std::string> broken;
    for (const auto& [name, uniform] : state.getUniformList())
        if (uniform.first && !hasItsElements(*uniform.first))
            broken.push_back(name);
    for (const std::string& name : broken)
        state.removeUniform(name);
}

} // namespace orbisk
