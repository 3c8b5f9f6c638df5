// A small picture to paint textures on.
#pragma once

#include <osg/Image>
#include <osg/ref_ptr>

#include <cstdint>
#include <string>
#include <vector>

namespace samples {

/// Linear mixing is fine for the muted colours used here; channels run 0 .. 255.
struct Color {
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
};

Color mix(const Color& a, const Color& b, double t);
Color scaled(const Color& color, double factor);

/// An RGB picture whose first row is the lowest one.
class Canvas {
public:
    Canvas(int width, int height);

    int width() const { return m_width; }
    int height() const { return m_height; }
    void set(int x, int y, const Color& color);
    Color get(int x, int y) const;
    /// Fills x0 .. x1-1, y0 .. y1-1, wrapping horizontally.
    void fill(int x0, int y0, int x1, int y1, const Color& color);
    /// The colour at a texture coordinate; repeats horizontally, clamps vertically.
    Color sample(double u, double v) const;
    /// A part of the picture, reduced by averaging squares of @p factor pixels.
    Canvas reduced(int x0, int y0, int size, int factor) const;

    /// A copy as an image that carries @p fileName as its relative name.
    osg::ref_ptr<osg::Image> image(const std::string& fileName) const;
    /// Writes a JPEG file; returns false when that fails.
    bool writeJpeg(const std::string& path, int quality) const;

private:
    std::size_t offset(int x, int y) const {
        return 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                    static_cast<std::size_t>(x));
    }

    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace samples
