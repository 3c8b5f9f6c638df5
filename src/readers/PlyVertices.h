#pragma once

#include "readers/PlyRows.h"

#include <osg/Array>
#include <osg/ref_ptr>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbisk {

/// The vertices of a PLY file. A vertex whose place is not finite is left out, as laser scanners
/// have them where they saw nothing; faces still count it.
class PlyVertices : public PlyRowReceiver {
public:
    /// Whether the element has what makes it vertices.
    static bool canTake(const PlyElement& element);

    /// @param element `canTake` it; its rows come next.
    /// @param mostRows how many rows there can be at most.
    PlyVertices(const PlyElement& element, std::size_t mostRows);

    void number(std::size_t property, double value) override;
    void list(std::size_t property, const std::vector<double>& values) override;
    void endRow() override;

    /// How many rows there were.
    std::size_t rows() const { return m_rows; }

    /// For each row, which vertex it became, or `leftOut`. Empty where none was left out.
    const std::vector<unsigned int>& vertexOfRow() const { return m_vertexOfRow; }
    static constexpr unsigned int leftOut = ~0u;

    /// To be called after the last row: has coordinates in single precision, if that is as good as
    /// what the file has.
    void finish();

    /// A `Vec3Array`, or a `Vec3dArray` where single precision isn't enough.
    osg::Array& positions() const;

    /// These are null where the file has none.
    osg::Vec3Array* normals() const { return m_normals.get(); }
    osg::Vec4Array* colours() const { return m_colours.get(); }
    osg::Vec2Array* textureCoordinates() const { return m_textureCoordinates.get(); }

private:
    /// What a property is good for. The order is that of the numbers in a row.
    enum Role {
        X,
        Y,
        Z,
        NormalX,
        NormalY,
        NormalZ,
        Red,
        Green,
        Blue,
        Alpha,
        TextureU,
        TextureV,
        Roles
    };

    /// Which range of numbers a colour has.
    enum class ColourScale { Bytes, Words, Unit };

    static ColourScale colourScaleOf(PlyType type);
    void assignRoles(const PlyElement& element);
    void assignColours(const PlyElement& element);
    void keepAttributes();
    osg::Vec4 colour() const;

    std::vector<Role> m_roles; ///< of each property
    bool m_has[Roles] = {};    ///< whether there is a property for a role
    double m_row[Roles] = {};  ///< the numbers of the row that is being read
    ColourScale m_colourScale = ColourScale::Bytes;
    std::size_t m_rows = 0;
    std::vector<unsigned int> m_vertexOfRow;
    osg::ref_ptr<osg::Vec3Array> m_floats;   ///< either these
    osg::ref_ptr<osg::Vec3dArray> m_doubles; ///< or these
    osg::ref_ptr<osg::Vec3Array> m_normals;
    osg::ref_ptr<osg::Vec4Array> m_colours;
    osg::ref_ptr<osg::Vec2Array> m_textureCoordinates;
};

} // namespace orbisk
