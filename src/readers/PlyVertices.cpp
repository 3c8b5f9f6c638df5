#include "readers/PlyVertices.h"

#include <osg/BoundingBox>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numeric>

namespace orbisk {

namespace {

constexpr double mostOfByte = 255.0;
constexpr double mostOfWord = 65535.0;

/// What single precision may cost before coordinates are kept in double precision, as a part of
/// the model's size. It always costs some: up to 0.6 of this where the model lies at the origin.
constexpr double mostLost = 1e-7;

float finiteOr(double value, float instead) {
    const auto rounded = static_cast<float>(value);
    return std::isfinite(rounded) ? rounded : instead;
}

bool isFiniteInSinglePrecision(double value) {
    return std::isfinite(static_cast<float>(value));
}

/// Whether floats would move these vertices by more than they move those of any model.
bool needsDoubles(const osg::Vec3dArray& vertices) {
    osg::BoundingBoxd box;
    for (const osg::Vec3d& vertex : vertices)
        box.expandBy(vertex);
    if (!box.valid())
        return false;
    const double allowed = mostLost * (box._max - box._min).length();
    return std::any_of(vertices.begin(), vertices.end(), [allowed](const osg::Vec3d& vertex) {
        const osg::Vec3d moved = osg::Vec3d(osg::Vec3(vertex)) - vertex;
        return std::max({std::abs(moved.x()), std::abs(moved.y()), std::abs(moved.z())}) > allowed;
    });
}

} // namespace

bool PlyVertices::canTake(const PlyElement& element) {
    const auto isNumber = [&](const char* name) {
        const std::optional<std::size_t> place = element.find({name});
        return place && !element.properties[*place].countType;
    };
    return isNumber("x") && isNumber("y") && isNumber("z");
}

PlyVertices::PlyVertices(const PlyElement& element, std::size_t mostRows)
    : m_roles(element.properties.size(), Roles) {
    assignRoles(element);
    const auto isDouble = [&](const char* name) {
        return element.properties[*element.find({name})].type == PlyType::Float64;
    };
    if (isDouble("x") || isDouble("y") || isDouble("z"))
        m_doubles = new osg::Vec3dArray;
    else
        m_floats = new osg::Vec3Array;
    if (m_has[NormalX] || m_has[NormalY] || m_has[NormalZ])
        m_normals = new osg::Vec3Array;
    if (m_has[Red])
        m_colours = new osg::Vec4Array;
    if (m_has[TextureU] || m_has[TextureV])
        m_textureCoordinates = new osg::Vec2Array;
    for (osg::Array* array : std::initializer_list<osg::Array*>{m_floats, m_doubles, m_normals,
                                                                m_colours, m_textureCoordinates})
        if (array)
            array->reserveArray(static_cast<unsigned int>(mostRows));
}

PlyVertices::ColourScale PlyVertices::colourScaleOf(PlyType type) {
    switch (type) {
    case PlyType::Float32:
    case PlyType::Float64:
        return ColourScale::Unit;
    case PlyType::Int16:
    case PlyType::UInt16:
        return ColourScale::Words;
    default:
        return ColourScale::Bytes;
    }
}

void PlyVertices::assignRoles(const PlyElement& element) {
    constexpr struct {
        const char* name;
        Role role;
    } names[] = {{"x", X},
                 {"y", Y},
                 {"z", Z},
                 {"nx", NormalX},
                 {"ny", NormalY},
                 {"nz", NormalZ},
                 {"texture_u", TextureU},
                 {"texture_v", TextureV}};
    for (const auto& row : names) {
        const std::optional<std::size_t> place = element.find({row.name});
        if (!place || element.properties[*place].countType)
            continue;
        m_roles[*place] = row.role;
        m_has[row.role] = true;
    }
    assignColours(element);
}

/// Of several colours the vertex has the first kind.
void PlyVertices::assignColours(const PlyElement& element) {
    constexpr const char* kinds[][4] = {{"red", "green", "blue", "alpha"},
                                        {"diffuse_red", "diffuse_green", "diffuse_blue", ""},
                                        {"specular_red", "specular_green", "specular_blue", ""}};
    for (const auto& kind : kinds) {
        for (int i = 0; i < 4; ++i) {
            const std::optional<std::size_t> place = element.find({kind[i]});
            if (!place || element.properties[*place].countType)
                continue;
            const Role role = static_cast<Role>(Red + i);
            m_roles[*place] = role;
            m_has[role] = true;
            m_colourScale = colourScaleOf(element.properties[*place].type);
        }
        if (m_has[Red])
            return;
    }
}

void PlyVertices::number(std::size_t property, double value) {
    const Role role = m_roles[property];
    if (role != Roles)
        m_row[role] = value;
}

void PlyVertices::list(std::size_t, const std::vector<double>&) {}

void PlyVertices::endRow() {
    const std::size_t row = m_rows++;
    const bool isThere = isFiniteInSinglePrecision(m_row[X]) &&
                         isFiniteInSinglePrecision(m_row[Y]) && isFiniteInSinglePrecision(m_row[Z]);
    if (!isThere && m_vertexOfRow.empty()) {
        m_vertexOfRow.resize(row);
        std::iota(m_vertexOfRow.begin(), m_vertexOfRow.end(), 0);
    }
    if (!isThere || !m_vertexOfRow.empty())
        m_vertexOfRow.push_back(isThere ? positions().getNumElements() : leftOut);
    if (!isThere)
        return;
    const osg::Vec3d position(m_row[X], m_row[Y], m_row[Z]);
    if (m_doubles)
        m_doubles->push_back(position);
    else
        m_floats->push_back(osg::Vec3(position));
    keepAttributes();
}

void PlyVertices::keepAttributes() {
    if (m_normals)
        m_normals->push_back(osg::Vec3(finiteOr(m_row[NormalX], 0.0f),
                                       finiteOr(m_row[NormalY], 0.0f),
                                       finiteOr(m_row[NormalZ], 0.0f)));
    if (m_colours)
        m_colours->push_back(colour());
    if (m_textureCoordinates)
        m_textureCoordinates->push_back(
            osg::Vec2(finiteOr(m_row[TextureU], 0.0f), finiteOr(m_row[TextureV], 0.0f)));
}

osg::Vec4 PlyVertices::colour() const {
    const double most = m_colourScale == ColourScale::Bytes   ? mostOfByte
                        : m_colourScale == ColourScale::Words ? mostOfWord
                                                              : 1.0;
    osg::Vec4 colour(0.0f, 0.0f, 0.0f, 1.0f);
    for (int i = 0; i < 4; ++i)
        if (m_has[Red + i])
            colour[i] = std::clamp(finiteOr(m_row[Red + i] / most, 0.0f), 0.0f, 1.0f);
    return colour;
}

void PlyVertices::finish() {
    if (!m_doubles || needsDoubles(*m_doubles))
        return;
    m_floats = new osg::Vec3Array(m_doubles->begin(), m_doubles->end());
    m_doubles = nullptr;
}

osg::Array& PlyVertices::positions() const {
    if (m_doubles)
        return *m_doubles;
    return *m_floats;
}

} // namespace orbisk
