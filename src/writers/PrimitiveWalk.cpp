#include "writers/PrimitiveWalk.h"

#include <numeric>

namespace orbisk {

namespace {

constexpr std::size_t triangleCorners = 3;
constexpr std::size_t quadCorners = 4;

} // namespace

void PrimitiveWalk::drawArrays(GLenum mode, GLint first, GLsizei count) {
    if (first < 0 || count <= 0)
        return;
    m_indices.resize(static_cast<std::size_t>(count));
    std::iota(m_indices.begin(), m_indices.end(), static_cast<unsigned int>(first));
    walk(mode);
}

void PrimitiveWalk::drawElements(GLenum mode, GLsizei count, const GLubyte* indices) {
    walkElements(mode, count, indices);
}

void PrimitiveWalk::drawElements(GLenum mode, GLsizei count, const GLushort* indices) {
    walkElements(mode, count, indices);
}

void PrimitiveWalk::drawElements(GLenum mode, GLsizei count, const GLuint* indices) {
    walkElements(mode, count, indices);
}

template <typename Index>
void PrimitiveWalk::walkElements(GLenum mode, GLsizei count, const Index* indices) {
    if (!indices || count <= 0)
        return;
    m_indices.assign(indices, indices + count);
    walk(mode);
}

void PrimitiveWalk::walk(GLenum mode) {
    switch (mode) {
    case GL_POINTS:
        for (const unsigned int index : m_indices)
            point(index);
        break;
    case GL_LINES:
    case GL_LINE_STRIP:
    case GL_LINE_LOOP:
        walkLines(mode);
        break;
    default:
        walkFaces(mode);
    }
}

void PrimitiveWalk::walkLines(GLenum mode) {
    const std::size_t step = mode == GL_LINES ? 2 : 1;
    for (std::size_t i = 1; i < m_indices.size(); i += step)
        line(m_indices[i - 1], m_indices[i]);
    if (mode == GL_LINE_LOOP && m_indices.size() > 1)
        line(m_indices.back(), m_indices.front());
}

void PrimitiveWalk::walkFaces(GLenum mode) {
    const std::size_t count = m_indices.size();
    switch (mode) {
    case GL_TRIANGLES:
        for (std::size_t i = 0; i + triangleCorners <= count; i += triangleCorners)
            face(&m_indices[i], triangleCorners);
        break;
    case GL_TRIANGLE_STRIP:
        for (std::size_t i = 2; i < count; ++i)
            i % 2 == 0 ? triangle(i - 2, i - 1, i) : triangle(i - 2, i, i - 1);
        break;
    case GL_TRIANGLE_FAN:
        for (std::size_t i = 2; i < count; ++i)
            triangle(0, i - 1, i);
        break;
    case GL_QUADS:
        for (std::size_t i = 0; i + quadCorners <= count; i += quadCorners)
            face(&m_indices[i], quadCorners);
        break;
    case GL_QUAD_STRIP:
        for (std::size_t i = 0; i + quadCorners <= count; i += 2) {
            const unsigned int corners[quadCorners] = {m_indices[i], m_indices[i + 1],
                                                       m_indices[i + 3], m_indices[i + 2]};
            face(corners, quadCorners);
        }
        break;
    case GL_POLYGON:
        if (count >= triangleCorners)
            face(m_indices.data(), count);
        break;
    default:
        break;
    }
}

void PrimitiveWalk::triangle(std::size_t a, std::size_t b, std::size_t c) {
    const unsigned int corners[triangleCorners] = {m_indices[a], m_indices[b], m_indices[c]};
    face(corners, triangleCorners);
}

} // namespace orbisk
