#include "support/DrawnModel.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osg/Texture2D>
#include <osg/TriangleIndexFunctor>
#include <osg/io_utils>

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>
#include <tuple>

namespace orbisk::test {

namespace {

struct TriangleTaker {
    std::function<void(unsigned int, unsigned int, unsigned int)> take;

    void operator()(unsigned int a, unsigned int b, unsigned int c) const { take(a, b, c); }
};

template <class Vector, class Array>
bool takeFrom(const osg::Array* array, unsigned int index, Vector& vector) {
    const auto* typed = dynamic_cast<const Array*>(array);
    if (typed)
        vector = Vector((*typed)[index]);
    return typed != nullptr;
}

std::string describe(const osg::StateSet& stateSet) {
    std::ostringstream text;
    text << "state, bin " << stateSet.getRenderingHint();
    for (const auto& [mode, value] : stateSet.getModeList())
        text << ", mode " << mode << " " << value;
    for (const auto& [type, attribute] : stateSet.getAttributeList()) {
        text << ", " << attribute.first->className();
        if (const auto* material = dynamic_cast<const osg::Material*>(attribute.first.get()))
            text << " " << material->getName() << " " << material->getAmbient(osg::Material::FRONT)
                 << " " << material->getDiffuse(osg::Material::FRONT) << " "
                 << material->getSpecular(osg::Material::FRONT) << " "
                 << material->getShininess(osg::Material::FRONT);
    }
    for (unsigned int unit = 0; unit < stateSet.getTextureAttributeList().size(); ++unit) {
        for (const auto& [type, attribute] : stateSet.getTextureAttributeList()[unit]) {
            text << ", unit " << unit << " " << attribute.first->className();
            const auto* texture = dynamic_cast<const osg::Texture2D*>(attribute.first.get());
            if (!texture)
                continue;
            const osg::Image* image = texture->getImage();
            text << " " << texture->getName() << " " << texture->getWrap(osg::Texture::WRAP_S)
                 << " " << texture->getFilter(osg::Texture::MIN_FILTER) << " "
                 << image->getFileName() << " " << image->s() << " " << image->t() << " "
                 << image->getPixelFormat();
        }
    }
    return text.str();
}

class Taker : public osg::NodeVisitor {
public:
    explicit Taker(DrawnModel& model) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), m_model(model) {}

    bool isSafe() const { return m_safe; }

    void apply(osg::Node& node) override {
        m_model.nodes.push_back(std::string(node.className()) + " " + node.getName());
        if (node.getStateSet())
            m_model.nodes.push_back(test::describe(*node.getStateSet()));
        traverse(node);
    }

    void apply(osg::Transform& node) override {
        std::ostringstream text;
        text.precision(17);
        if (const auto* transform = node.asMatrixTransform())
            for (int i = 0; i < 16; ++i)
                // Both zeros are written alike.
                text << transform->getMatrix().ptr()[i] + 0.0 << " ";
        m_model.nodes.push_back(text.str());
        const osg::Matrixd before = m_toWorld;
        osg::Matrixd matrix;
        node.computeLocalToWorldMatrix(matrix, this);
        m_toWorld = matrix * before;
        apply(static_cast<osg::Node&>(node));
        m_toWorld = before;
    }

    void apply(osg::Geometry& geometry) override {
        describe(geometry);
        const osg::Array* vertices = geometry.getVertexArray();
        m_vertices = vertices ? vertices->getNumElements() : 0;
        for (const osg::Array* array :
             {geometry.getNormalArray(), geometry.getColorArray(), geometry.getTexCoordArray(0)})
            if (array && array->getBinding() == osg::Array::BIND_PER_VERTEX &&
                array->getNumElements() != m_vertices)
                m_safe = false;
        for (unsigned int i = 0; i < m_vertices; ++i)
            if (!std::isfinite(vertexAt(geometry, i).place.length2()))
                m_safe = false;
        for (unsigned int i = 0; i < geometry.getNumPrimitiveSets(); ++i)
            take(geometry, *geometry.getPrimitiveSet(i));
    }

private:
    void describe(osg::Geometry& geometry) {
        std::ostringstream text;
        text << "Geometry of "
             << (geometry.getVertexArray() ? geometry.getVertexArray()->className() : "nothing");
        for (unsigned int i = 0; i < geometry.getNumPrimitiveSets(); ++i)
            text << ", " << geometry.getPrimitiveSet(i)->className() << " mode "
                 << geometry.getPrimitiveSet(i)->getMode() << " count "
                 << geometry.getPrimitiveSet(i)->getNumIndices();
        m_model.nodes.push_back(text.str());
        if (geometry.getStateSet())
            m_model.nodes.push_back(test::describe(*geometry.getStateSet()));
    }

    void take(osg::Geometry& geometry, osg::PrimitiveSet& set) {
        for (unsigned int i = 0; i < set.getNumIndices(); ++i) {
            if (set.index(i) >= m_vertices) {
                m_safe = false;
                return;
            }
        }
        if (set.getMode() == osg::PrimitiveSet::POINTS)
            for (unsigned int i = 0; i < set.getNumIndices(); ++i)
                m_model.points.push_back(vertexAt(geometry, set.index(i)));
        osg::TriangleIndexFunctor<TriangleTaker> functor;
        functor.take = [&](unsigned int a, unsigned int b, unsigned int c) {
            m_model.triangles.push_back(
                {vertexAt(geometry, a), vertexAt(geometry, b), vertexAt(geometry, c)});
        };
        set.accept(functor);
    }

    DrawnVertex vertexAt(const osg::Geometry& geometry, unsigned int index) const {
        DrawnVertex vertex;
        const osg::Array* places = geometry.getVertexArray();
        if (!takeFrom<osg::Vec3d, osg::Vec3Array>(places, index, vertex.place))
            takeFrom<osg::Vec3d, osg::Vec3dArray>(places, index, vertex.place);
        vertex.place = vertex.place * m_toWorld;
        const osg::Array* normals = geometry.getNormalArray();
        if (normals && index < normals->getNumElements())
            takeFrom<osg::Vec3d, osg::Vec3Array>(normals, index, vertex.normal);
        const osg::Array* colours = geometry.getColorArray();
        if (colours && index < colours->getNumElements())
            takeFrom<osg::Vec4, osg::Vec4Array>(colours, index, vertex.colour);
        const osg::Array* coordinates = geometry.getTexCoordArray(0);
        if (coordinates && index < coordinates->getNumElements())
            takeFrom<osg::Vec2, osg::Vec2Array>(coordinates, index, vertex.textureCoordinates);
        return vertex;
    }

    DrawnModel& m_model;
    osg::Matrixd m_toWorld;
    unsigned int m_vertices = 0;
    bool m_safe = true;
};

auto tied(const DrawnVertex& vertex) {
    return std::tie(vertex.place, vertex.normal, vertex.colour, vertex.textureCoordinates);
}

template <class Things>
std::string differenceOf(const std::string& what, const Things& a, const Things& b) {
    if (a.size() != b.size())
        return std::to_string(a.size()) + " and " + std::to_string(b.size()) + " " + what + "s";
    const auto [first, second] = std::mismatch(a.begin(), a.end(), b.begin());
    if (first == a.end())
        return {};
    return what + " " + std::to_string(first - a.begin()) + ": " + testing::PrintToString(*first) +
           "\nand: " + testing::PrintToString(*second);
}

} // namespace

bool operator==(const DrawnVertex& a, const DrawnVertex& b) {
    return tied(a) == tied(b);
}

bool operator<(const DrawnVertex& a, const DrawnVertex& b) {
    return tied(a) < tied(b);
}

std::ostream& operator<<(std::ostream& out, const DrawnVertex& vertex) {
    return out << "at " << vertex.place << " normal " << vertex.normal << " colour "
               << vertex.colour << " texture " << vertex.textureCoordinates;
}

DrawnModel drawnModel(osg::Node& model) {
    DrawnModel drawn;
    Taker taker(drawn);
    model.accept(taker);
    EXPECT_TRUE(taker.isSafe());
    return drawn;
}

DrawnModel inAnyOrder(DrawnModel model) {
    for (DrawnTriangle& triangle : model.triangles)
        std::rotate(triangle.begin(), std::min_element(triangle.begin(), triangle.end()),
                    triangle.end());
    std::sort(model.triangles.begin(), model.triangles.end());
    return model;
}

std::string difference(const DrawnModel& a, const DrawnModel& b) {
    std::string text = differenceOf("node", a.nodes, b.nodes);
    if (text.empty())
        text = differenceOf("point", a.points, b.points);
    if (text.empty())
        text = differenceOf("triangle", a.triangles, b.triangles);
    return text;
}

bool isSafe(osg::Node& model) {
    DrawnModel drawn;
    Taker taker(drawn);
    model.accept(taker);
    return taker.isSafe();
}

} // namespace orbisk::test
