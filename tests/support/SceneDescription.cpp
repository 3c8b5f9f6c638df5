#include "support/SceneDescription.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Image>
#include <osg/Material>
#include <osg/NodeVisitor>
#include <osg/TexMat>
#include <osg/Texture2D>
#include <osg/TriangleIndexFunctor>
#include <osgDB/FileNameUtils>

#include <array>
#include <cstdio>

namespace orbisk::test {

namespace {

using Indices = std::vector<unsigned int>;

struct TriangleCollector {
    void operator()(unsigned int a, unsigned int b, unsigned int c) {
        indices.insert(indices.end(), {a, b, c});
    }

    Indices indices;
};

Indices trianglesOf(const osg::Geometry& geometry) {
    osg::TriangleIndexFunctor<TriangleCollector> collector;
    geometry.accept(collector);
    return std::move(collector.indices);
}

/// The indices of primitives that are no surface.
Indices othersOf(const osg::Geometry& geometry, GLenum mode) {
    Indices indices;
    for (const auto& primitives : geometry.getPrimitiveSetList())
        if (primitives->getMode() == mode)
            for (unsigned int i = 0; i < primitives->getNumIndices(); ++i)
                indices.push_back(primitives->index(i));
    return indices;
}

class Writer {
public:
    void text(const std::string& text) { m_text += text; }
    void number(double value) {
        std::array<char, 40> digits{};
        // Adding 0 makes 0 of -0.
        std::snprintf(digits.data(), digits.size(), " %a", value + 0.0);
        m_text += digits.data();
    }
    template <class Vector>
    void vector(const char* name, const Vector& value) {
        m_text += name;
        for (int i = 0; i < Vector::num_components; ++i)
            number(static_cast<double>(value[i]));
    }
    template <class Array>
    void element(const char* name, const osg::Array* array, unsigned int index) {
        if (const auto* values = dynamic_cast<const Array*>(array))
            vector(name, values->at(index));
    }
    std::string take() { return std::move(m_text); }

private:
    std::string m_text;
};

void writeCorner(const osg::Geometry& geometry, unsigned int index, Writer& writer) {
    writer.element<osg::Vec3Array>(" p", geometry.getVertexArray(), index);
    writer.element<osg::Vec3dArray>(" d", geometry.getVertexArray(), index);
    writer.element<osg::Vec3Array>(" n", geometry.getNormalArray(), index);
    writer.element<osg::Vec4Array>(" c", geometry.getColorArray(), index);
    writer.element<osg::Vec2Array>(" t", geometry.getTexCoordArray(0), index);
    writer.text("\n");
}

void writeMaterial(const osg::StateSet& states, Writer& writer) {
    const auto* material =
        dynamic_cast<const osg::Material*>(states.getAttribute(osg::StateAttribute::MATERIAL));
    if (!material)
        return;
    constexpr auto face = osg::Material::FRONT;
    writer.text("material " + material->getName());
    writer.vector(" a", material->getAmbient(face));
    writer.vector(" d", material->getDiffuse(face));
    writer.vector(" s", material->getSpecular(face));
    writer.vector(" e", material->getEmission(face));
    writer.number(static_cast<double>(material->getShininess(face)));
    writer.text("\n");
}

void writeTextures(const osg::StateSet& states, Writer& writer) {
    for (unsigned int unit = 0; unit < states.getTextureAttributeList().size(); ++unit) {
        writer.text("unit " + std::to_string(unit));
        const auto attribute = [&](osg::StateAttribute::Type type) {
            return states.getTextureAttribute(unit, type);
        };
        if (const auto* texture =
                dynamic_cast<const osg::Texture2D*>(attribute(osg::StateAttribute::TEXTURE))) {
            const osg::Image& image = *texture->getImage();
            writer.text(" " + osgDB::getSimpleFileName(image.getFileName()) + " " +
                        std::to_string(image.s()) + "x" + std::to_string(image.t()) + " wrap " +
                        std::to_string(texture->getWrap(osg::Texture::WRAP_S)));
        }
        if (const auto* matrix =
                dynamic_cast<const osg::TexMat*>(attribute(osg::StateAttribute::TEXMAT)))
            for (int i = 0; i < 16; ++i)
                writer.number(matrix->getMatrix().ptr()[i]);
        if (attribute(osg::StateAttribute::TEXGEN))
            writer.text(" generated");
        writer.text("\n");
    }
}

void writeState(const osg::StateSet* states, Writer& writer) {
    if (!states) {
        writer.text("no state\n");
        return;
    }
    writeMaterial(*states, writer);
    writeTextures(*states, writer);
    writer.text("blend " + std::to_string(states->getMode(GL_BLEND)) + " bin " +
                std::to_string(states->getRenderingHint()) + "\n");
}

class SceneVisitor : public osg::NodeVisitor {
public:
    SceneVisitor() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Geode& geode) override {
        for (unsigned int i = 0; i < geode.getNumDrawables(); ++i)
            if (const osg::Geometry* geometry = geode.getDrawable(i)->asGeometry())
                apply(*geometry, geode.getName());
    }

    Writer writer;
    std::vector<osg::Vec3d> corners;

private:
    void apply(const osg::Geometry& geometry, const std::string& name) {
        writer.text("geometry " + name + "\n");
        writeState(geometry.getStateSet(), writer);
        const Indices triangles = trianglesOf(geometry);
        writePart("triangles\n", geometry, triangles);
        writePart("segments\n", geometry, othersOf(geometry, GL_LINES));
        writePart("points\n", geometry, othersOf(geometry, GL_POINTS));
        const auto* floats = dynamic_cast<const osg::Vec3Array*>(geometry.getVertexArray());
        const auto* doubles = dynamic_cast<const osg::Vec3dArray*>(geometry.getVertexArray());
        for (const unsigned int index : triangles)
            corners.push_back(floats ? osg::Vec3d(floats->at(index)) : doubles->at(index));
    }

    void writePart(const char* title, const osg::Geometry& geometry, const Indices& indices) {
        writer.text(title);
        for (const unsigned int index : indices)
            writeCorner(geometry, index, writer);
    }
};

} // namespace

std::string describeScene(osg::Node& scene) {
    SceneVisitor visitor;
    scene.accept(visitor);
    return visitor.writer.take();
}

std::vector<osg::Vec3d> trianglesOf(osg::Node& scene) {
    SceneVisitor visitor;
    scene.accept(visitor);
    return visitor.corners;
}

double areaOf(osg::Node& scene) {
    const std::vector<osg::Vec3d> corners = trianglesOf(scene);
    double area = 0.0;
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3)
        area += ((corners[i + 1] - corners[i]) ^ (corners[i + 2] - corners[i])).length() / 2.0;
    return area;
}

} // namespace orbisk::test
