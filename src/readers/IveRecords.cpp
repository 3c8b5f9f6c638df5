#include "readers/IveRecords.h"

#include "readers/TextWords.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>
#include <utility>

namespace orbisk {

namespace {

/// A record as it is written down here.
///
/// A number is a run of as many bytes of plain data, a capital letter begins the name of another
/// record; `{ }` is a list behind its count, `?{ }` is there where a flag before it says so, and
/// `from13{ }` in files of version 13 and later. The other words are in `fieldFor`.
struct Row {
    IveFamily family;
    std::int32_t tag;
    std::string_view name;
    std::string_view fields;
};

using F = IveFamily;

constexpr Row rows[] = {
    {F::None, 0x1, "Object", "from12{ text } 1 from31{ ?{ userdata } }"},
    {F::Node, 0x2, "Node",
     "Object until12{ text } 1 { text } ?{ stateset } ?{ AnimationPathCallback } "
     "from6{ ?{ ClusterCullingCallback } } from39{ ?{ unknown } } from10{ ?{ 16 } } 4"},
    {F::Node, 0x3, "Group", "Node { node }"},
    {F::Node, 0x4, "MatrixTransform", "Group 128"},
    {F::StateSet, 0x5, "StateSet",
     "Object below4 4 text { 8 } { attribute 4 } { { 8 } } { { attribute 4 } } "
     "from10{ { uniform 4 } }"},
    {F::Node, 0x6, "Geode", "Node { drawable }"},
    {F::None, 0x7, "Image", "Object text from32{ 4 } 32 { 4 } ?{ text }"},
    {F::Node, 0x8, "LightSource", "Group ?{ Light } 4"},
    {F::Attribute, 0x9, "Light", "Object 100"},
    {F::Node, 0x10, "Billboard", "Geode 28 positions"},
    {F::Node, 0x11, "LOD", "Group from3{ 4 } 16 from3{ 4 } { 8 }"},
    {F::Node, 0x12, "Sequence", "Group from22{ 4 } { 4 } from22{ 4 } 24 from22{ 8 }"},
    {F::Node, 0x13, "Transform", "Group 4"},
    {F::Node, 0x14, "PositionAttitudeTransform", "Transform 52"},
    {F::None, 0x15, "AnimationPath", "Object 4 { 44 }"},
    {F::Node, 0x16, "Switch", "Group times{ 1 }"},
    {F::Node, 0x17, "OccluderNode", "Group ?{ ConvexPlanarOccluder }"},
    {F::Node, 0x18, "Impostor", "LOD 4"},
    {F::None, 0x19, "ConvexPlanarOccluder", "Object ConvexPlanarPolygon { ConvexPlanarPolygon }"},
    {F::None, 0x20, "ConvexPlanarPolygon", "{ 12 }"},
    {F::Node, 0x21, "PagedLOD",
     "Node from6{ text } 8 from41{ 1 } { node } 20 { 8 } { text } from15{ { 4 } { 4 } }"},
    {F::Node, 0x22, "DOFTransform", "Transform 272 from11{ 1 } 5"},
    {F::Node, 0x23, "CoordinateSystemNode", "Group text text ?{ EllipsoidModel }"},
    {F::None, 0x24, "EllipsoidModel", "Object 16"},
    {F::Node, 0x25, "TexGenNode", "Group 4 ?{ TexGen }"},
    {F::Node, 0x26, "ClipNode", "Group from37{ 4 } { ClipPlane }"},
    {F::Node, 0x27, "ProxyNode", "Node 20 from45{ 4 } links"},
    {F::Node, 0x28, "Camera",
     "Transform 20 ?{ attribute } ?{ attribute } 280 { 8 ?{ Image } ?{ attribute } 9 }"},
    {F::Node, 0x29, "CameraView", "Transform 48"},
    {F::Node, 0x30, "AutoTransform", "Transform 33 from25{ 12 } 28"},
    {F::Node, 0x31, "OcclusionQueryNode", "Group 10"},
    {F::None, 0x32, "ImageSequence", "Object 12 { text } else{ { image } }"},
    {F::None, 0x51, "AnimationPathCallback", "Object 44 long?{ AnimationPath }"},
    {F::None, 0x52, "ClusterCullingCallback", "Object 32"},

    {F::Attribute, 0x101, "AlphaFunc", "Object 8"},
    {F::Attribute, 0x102, "BlendFunc", "Object 8"},
    {F::Attribute, 0x103, "BlendFuncSeparate", "Object 16"},
    {F::Attribute, 0x105, "BlendColor", "Object 16"},
    {F::Attribute, 0x110, "Material", "Object 145"},
    {F::None, 0x120, "Texture", "Object 44 from8{ 4 } from9{ 8 } from14{ 8 } from43{ 9 }"},
    {F::Attribute, 0x121, "Texture1D", "Texture image"},
    {F::Attribute, 0x122, "Texture2D", "Texture image"},
    {F::Attribute, 0x123, "Texture3D", "Texture image"},
    {F::Attribute, 0x124, "TextureCubeMap", "Texture 12 cubeimages"},
    {F::Attribute, 0x125, "TexEnv", "Object 20"},
    {F::Attribute, 0x126, "TexEnvCombine", "Object 80"},
    {F::Attribute, 0x127, "TexGen", "Object 4 from5{ until19{ 64 } from19{ 128 } }"},
    {F::Attribute, 0x128, "CullFace", "Object 4"},
    {F::Attribute, 0x129, "PolygonOffset", "Object 8"},
    {F::Attribute, 0x12a, "ShadeModel", "Object 4"},
    {F::Attribute, 0x12b, "Point", "Object 28"},
    {F::Attribute, 0x12c, "TexMat", "Object 64 from17{ 1 }"},
    {F::Attribute, 0x12d, "LineWidth", "Object 4"},
    {F::Attribute, 0x12e, "FragmentProgram", "Object { 20 } text"},
    {F::Attribute, 0x12f, "VertexProgram", "Object text"},
    {F::Attribute, 0x130, "Depth", "Object 13"},
    {F::Attribute, 0x131, "Stencil", "Object 28"},
    {F::Attribute, 0x132, "StencilTwoSided", "Object 56"},
    {F::Attribute, 0x133, "ColorMask", "Object 4"},
    {F::Attribute, 0x134, "BlendEquation", "Object until40{ 4 } from40{ 8 }"},
    {F::Attribute, 0x1121, "LightModel", "Object 22"},
    {F::Attribute, 0x1122, "ClipPlane", "Object 36"},
    {F::Attribute, 0x1123, "FrontFace", "Object 4"},
    {F::Attribute, 0x1124, "Program", "Object from30{ 12 } { text 4 } { shader }"},
    {F::Shader, 0x1125, "Shader", "Object until12{ text } 4 text"},
    {F::Uniform, 0x1126, "Uniform", "Object until16{ olduniform } from16{ uniformarray }"},
    {F::Attribute, 0x1127, "Viewport", "Object 16"},
    {F::Attribute, 0x1128, "Scissor", "Object 16"},
    {F::Attribute, 0x1129, "PolygonMode", "Object 8"},
    {F::Attribute, 0x1130, "TextureRectangle", "Texture image"},
    {F::Attribute, 0x1131, "PointSprite", "Object 4"},
    {F::Attribute, 0x1132, "Multisample", "Object 9"},
    {F::Attribute, 0x1133, "Fog", "Object 36"},
    {F::Attribute, 0x1134, "LineStipple", "Object 6"},
    {F::Attribute, 0x1135, "PolygonStipple", "Object stipple"},
    {F::Attribute, 0x1136, "Texture2DArray", "Texture 8 count 4 times{ image }"},

    {F::None, 0x1000, "Drawable",
     "Object ?{ stateset } ?{ ClusterCullingCallback } from10{ ?{ 24 } } 3"},
    {F::Drawable, 0x1001, "Geometry",
     "Drawable { primitives } ?{ array } ?{ indices } "
     "?{ below5 from13{ array } until13{ { 12 } } } ?{ indices } "
     "?{ below5 array } ?{ indices } ?{ below5 array } ?{ indices } ?{ below5 array } ?{ indices } "
     "{ ?{ array } ?{ indices } } { below5 1 ?{ array } ?{ indices } }"},
    {F::Drawable, 0x1002, "ShapeDrawable", "from4{ Drawable } until4{ Object } 16 ?{ shape }"},
    {F::Shape, 0x2001, "Sphere", "Object 16"},
    {F::Shape, 0x2002, "Box", "Object 40"},
    {F::Shape, 0x2004, "Cone", "Object 36"},
    {F::Shape, 0x2005, "Cylinder", "Object 36"},
    {F::Shape, 0x2006, "Capsule", "Object 36"},
    {F::Shape, 0x2007, "HeightField", "Object heightarea"},

    {F::None, 0x10000, "PrimitiveSet", "Object from38{ 4 } 4"},
    {F::Primitives, 0x10001, "DrawArrays", "PrimitiveSet 8"},
    {F::Primitives, 0x10002, "DrawArrayLengths", "PrimitiveSet 4 { 4 }"},
    {F::Primitives, 0x10003, "DrawElementsUShort", "PrimitiveSet { 2 }"},
    {F::Primitives, 0x10004, "DrawElementsUInt", "PrimitiveSet { 4 }"},
    {F::Primitives, 0x10005, "DrawElementsUByte", "PrimitiveSet { 1 }"},

    {F::None, 0x100001, "BlinkSequence", "Object { 24 } 16"},
    {F::Sector, 0x100002, "AzimElevationSector", "24"},
    {F::Sector, 0x100003, "ElevationSector", "12"},
    {F::Sector, 0x100004, "AzimSector", "12"},
    {F::Sector, 0x100005, "ConeSector", "20"},
    {F::None, 0x100006, "LightPoint", "37 ?{ sector } ?{ BlinkSequence } 4"},
    {F::Node, 0x100007, "LightPointNode", "Node 12 from24{ 1 } { LightPoint }"},
    {F::Node, 0x100008, "MultiSwitch", "Group 5 switchsets"},
    {F::Node, 0x100009, "VisibilityGroup", "Group node 8"},
    {F::Sector, 0x10000a, "DirectionalSector", "28"},

    {F::Node, 0x200001, "TerrainTile",
     "Group from44{ 4 } from26{ 12 } from23{ locator layer { layer } } "
     "until23{ ?{ Locator } ?{ anylayer } { ?{ anylayer } } } ?{ 4 }"},
    {F::Locator, 0x200002, "Locator", "Object 4 text text ?{ EllipsoidModel } 130"},
    {F::None, 0x200003, "Layer",
     "Object from23{ locator from34{ 8 } until34{ 4 } } until23{ ?{ Locator } } 8 "
     "from27{ ?{ validdata } }"},
    {F::Layer, 0x200004, "ImageLayer", "Layer imagebymode"},
    {F::Layer, 0x200005, "HeightFieldLayer",
     "Layer ?{ from35{ packedheightarea } until35{ shape } } else{ text }"},
    {F::Layer, 0x200006, "CompositeLayer", "Layer { ?{ ?{ anylayer } } else{ text } }"},
    {F::ValidData, 0x20000b, "ValidRange", "8"},
    {F::ValidData, 0x20000c, "NoDataValue", "4"},
    {F::Layer, 0x20000d, "SwitchLayer", "CompositeLayer 4"},
    {F::Node, 0x20000e, "Terrain", "CoordinateSystemNode 12 ?{ 4 }"},

    {F::Node, 0x1000001, "MultiTextureControl", "Group { 4 }"},
    {F::None, 0x1000002, "Effect", "Group 5"},
    {F::Node, 0x1000003, "AnisotropicLighting", "Effect image 4"},
    {F::Node, 0x1000004, "BumpMapping", "Effect 12 Texture2D Texture2D"},
    {F::Node, 0x1000005, "Cartoon", "Effect 24"},
    {F::Node, 0x1000006, "Scribe", "Effect 20"},

    {F::Drawable, 0x10000001, "Text",
     "Drawable text fontsize 20 from20{ 4 } 57 from41{ 20 } from28{ 100 } ?{ text } "
     "else{ from18{ letters } until18{ smallletters } }"},
    {F::Drawable, 0x10000002, "Text3D",
     "Drawable text fontsize 20 from20{ 4 } 49 ?{ text } "
     "else{ from18{ letters } until18{ smallletters } }"},
    {F::Drawable, 0x10000003, "FadeText", "Text 4"}};

struct Word {
    std::string_view text;
    IveField field;
};

IveField oneOf(IveStep step, IveFamily family) {
    return {step, 0, family};
}

IveField special(IveSpecial which) {
    return {IveStep::Special, 0, IveFamily::None, which};
}

const Word words[] = {{"text", {IveStep::Text}},
                      {"node", oneOf(IveStep::Shared, F::Node)},
                      {"drawable", oneOf(IveStep::Shared, F::Drawable)},
                      {"stateset", oneOf(IveStep::Shared, F::StateSet)},
                      {"attribute", oneOf(IveStep::Shared, F::Attribute)},
                      {"uniform", oneOf(IveStep::Shared, F::Uniform)},
                      {"shader", oneOf(IveStep::Shared, F::Shader)},
                      {"shape", oneOf(IveStep::Shared, F::Shape)},
                      {"layer", oneOf(IveStep::SharedOrNone, F::Layer)},
                      {"locator", oneOf(IveStep::SharedOrNone, F::Locator)},
                      {"anylayer", oneOf(IveStep::OneOf, F::Layer)},
                      {"primitives", oneOf(IveStep::OneOf, F::Primitives)},
                      {"sector", oneOf(IveStep::OneOf, F::Sector)},
                      {"validdata", oneOf(IveStep::OneOf, F::ValidData)},
                      {"unknown", special(IveSpecial::Unknown)},
                      {"count", special(IveSpecial::Count)},
                      {"userdata", special(IveSpecial::UserData)},
                      {"array", special(IveSpecial::Array)},
                      {"indices", special(IveSpecial::Indices)},
                      {"letters", special(IveSpecial::Letters)},
                      {"smallletters", special(IveSpecial::SmallLetters)},
                      {"stipple", special(IveSpecial::Stipple)},
                      {"positions", special(IveSpecial::Positions)},
                      {"switchsets", special(IveSpecial::SwitchSets)},
                      {"links", special(IveSpecial::Links)},
                      {"fontsize", special(IveSpecial::FontSize)},
                      {"heightarea", special(IveSpecial::HeightArea)},
                      {"packedheightarea", special(IveSpecial::PackedHeightArea)},
                      {"image", special(IveSpecial::Image)},
                      {"imagebymode", special(IveSpecial::ImageByMode)},
                      {"cubeimages", special(IveSpecial::CubeImages)},
                      {"olduniform", special(IveSpecial::OldUniform)},
                      {"uniformarray", special(IveSpecial::UniformArray)}};

/// What opens a bracket or has a number behind it.
const Word numberedWords[] = {{"{", {IveStep::List}},          {"?{", {IveStep::Flag}},
                              {"long?{", {IveStep::LongFlag}}, {"times{", {IveStep::Times}},
                              {"else{", {IveStep::Else}},      {"from", {IveStep::From}},
                              {"until", {IveStep::Until}},     {"below", {IveStep::Below}}};

std::uint32_t numberIn(std::string_view word) {
    const auto begin = std::find_if(word.begin(), word.end(),
                                    [](unsigned char c) { return std::isdigit(c) != 0; });
    std::uint32_t number = 0;
    std::from_chars(word.data() + (begin - word.begin()), word.data() + word.size(), number);
    return number;
}

/// The records in the order of the rows; those that are part of others keep their places.
class Records {
public:
    Records() {
        for (const Row& row : rows)
            m_records.push_back({row.name, row.family, row.tag, {}});
        for (std::size_t i = 0; i < m_records.size(); ++i) {
            std::string_view text = rows[i].fields;
            m_records[i].fields = fields(text);
            m_byTag[{m_records[i].family, m_records[i].tag}] = &m_records[i];
        }
    }

    const IveRecord* find(IveFamily family, std::int32_t tag) const {
        const auto found = m_byTag.find({family, tag});
        return found != m_byTag.end() ? found->second : nullptr;
    }

    const IveRecord& named(std::string_view name) const {
        return *std::find_if(m_records.begin(), m_records.end(),
                             [&](const IveRecord& record) { return record.name == name; });
    }

private:
    /// Takes the fields off the front of `text`, up to the bracket that closes them.
    std::vector<IveField> fields(std::string_view& text) const {
        std::vector<IveField> result;
        for (std::string_view word = takeWord(text); !word.empty() && word != "}";
             word = takeWord(text)) {
            result.push_back(fieldFor(word));
            if (word.back() == '{')
                result.back().inside = fields(text);
        }
        return result;
    }

    IveField fieldFor(std::string_view word) const {
        if (std::isdigit(static_cast<unsigned char>(word.front())) != 0)
            return {IveStep::Bytes, numberIn(word)};
        if (std::isupper(static_cast<unsigned char>(word.front())) != 0)
            return {IveStep::Record, 0, IveFamily::None, IveSpecial::Unknown, &named(word)};
        for (const Word& known : words)
            if (known.text == word)
                return known.field;
        for (const Word& known : numberedWords)
            if (word.substr(0, known.text.size()) == known.text) {
                IveField field = known.field;
                field.size = numberIn(word);
                return field;
            }
        return special(IveSpecial::Unknown);
    }

    std::vector<IveRecord> m_records;
    std::map<std::pair<IveFamily, std::int32_t>, const IveRecord*> m_byTag;
};

const Records& records() {
    static const Records all;
    return all;
}

} // namespace

const IveRecord* iveRecord(IveFamily family, std::int32_t tag) {
    return records().find(family, tag);
}

const IveRecord& iveRecord(std::string_view name) {
    return records().named(name);
}

} // namespace orbisk
