#include "Canvas.h"

#include "Noise.h"

#include <osgDB/Options>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace samples {

Color mix(const Color& a, const Color& b, double t) {
    return {mix(a.r, b.r, t), mix(a.g, b.g, t), mix(a.b, b.b, t)};
}

Color scaled(const Color& color, double factor) {
    return {color.r * factor, color.g * factor, color.b * factor};
}

Canvas::Canvas(int width, int height) : m_width(width), m_height(height) {
    m_bytes.resize(offset(0, height));
}

void Canvas::set(int x, int y, const Color& color) {
    const auto byte = [](double value) {
        return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
    };
    std::uint8_t* pixel = &m_bytes[offset(x, y)];
    pixel[0] = byte(color.r);
    pixel[1] = byte(color.g);
    pixel[2] = byte(color.b);
}

Color Canvas::get(int x, int y) const {
    const std::uint8_t* pixel = &m_bytes[offset(x, y)];
    return {static_cast<double>(pixel[0]), static_cast<double>(pixel[1]),
            static_cast<double>(pixel[2])};
}

void Canvas::fill(int x0, int y0, int x1, int y1, const Color& color) {
    for (int y = std::max(y0, 0); y < std::min(y1, m_height); ++y) {
        for (int x = x0; x < x1; ++x) {
            set(((x % m_width) + m_width) % m_width, y, color);
        }
    }
}

Color Canvas::sample(double u, double v) const {
    const double wrapped = u - std::floor(u);
    const int x = std::min(m_width - 1, static_cast<int>(wrapped * m_width));
    const int y = std::clamp(static_cast<int>(v * m_height), 0, m_height - 1);
    return get(x, y);
}

Canvas Canvas::reduced(int x0, int y0, int size, int factor) const {
    const int target = size / factor;
    Canvas result(target, target);
    for (int y = 0; y < target; ++y) {
        for (int x = 0; x < target; ++x) {
            Color sum;
            for (int k = 0; k < factor * factor; ++k) {
                const Color c = get(x0 + x * factor + k % factor, y0 + y * factor + k / factor);
                sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b};
            }
            result.set(x, y, scaled(sum, 1.0 / (factor * factor)));
        }
    }
    return result;
}

osg::ref_ptr<osg::Image> Canvas::image(const std::string& fileName) const {
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(m_width, m_height, 1, GL_RGB, GL_UNSIGNED_BYTE);
    std::memcpy(image->data(), m_bytes.data(), m_bytes.size());
    image->setFileName(fileName);
    return image;
}

bool Canvas::writeJpeg(const std::string& path, int quality) const {
    osg::ref_ptr<osgDB::Options> options =
        new osgDB::Options("JPEG_QUALITY " + std::to_string(quality));
    return osgDB::writeImageFile(*image(path), path, options.get());
}

} // namespace samples
