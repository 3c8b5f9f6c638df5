#include "support/IveModels.h"

#include "support/PackagedReader.h"
#include "support/SceneTools.h"

#include <osg/AlphaFunc>
#include <osg/AnimationPath>
#include <osg/AutoTransform>
#include <osg/Billboard>
#include <osg/BlendColor>
#include <osg/BlendEquation>
#include <osg/BlendFunc>
#include <osg/Camera>
#include <osg/CameraView>
#include <osg/ClipNode>
#include <osg/ClipPlane>
#include <osg/ClusterCullingCallback>
#include <osg/ColorMask>
#include <osg/CoordinateSystemNode>
#include <osg/CullFace>
#include <osg/Depth>
#include <osg/Fog>
#include <osg/FragmentProgram>
#include <osg/FrontFace>
#include <osg/ImageSequence>
#include <osg/LOD>
#include <osg/Light>
#include <osg/LightModel>
#include <osg/LightSource>
#include <osg/LineStipple>
#include <osg/LineWidth>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osg/Multisample>
#include <osg/OccluderNode>
#include <osg/OcclusionQueryNode>
#include <osg/PagedLOD>
#include <osg/Point>
#include <osg/PointSprite>
#include <osg/PolygonMode>
#include <osg/PolygonOffset>
#include <osg/PolygonStipple>
#include <osg/PositionAttitudeTransform>
#include <osg/Program>
#include <osg/ProxyNode>
#include <osg/Scissor>
#include <osg/Sequence>
#include <osg/ShadeModel>
#include <osg/Stencil>
#include <osg/StencilTwoSided>
#include <osg/Switch>
#include <osg/TexEnv>
#include <osg/TexEnvCombine>
#include <osg/TexGen>
#include <osg/TexGenNode>
#include <osg/TexMat>
#include <osg/Texture1D>
#include <osg/Texture2D>
#include <osg/Texture2DArray>
#include <osg/Texture3D>
#include <osg/TextureCubeMap>
#include <osg/TextureRectangle>
#include <osg/VertexProgram>
#include <osg/Viewport>
#include <osgDB/ObjectWrapper>
#include <osgSim/DOFTransform>
#include <osgSim/Impostor>
#include <osgSim/LightPointNode>
#include <osgSim/MultiSwitch>
#include <osgSim/Sector>
#include <osgSim/ShapeAttribute>
#include <osgSim/VisibilityGroup>
#include <osgTerrain/GeometryTechnique>
#include <osgTerrain/Terrain>
#include <osgTerrain/TerrainTile>
#include <osgText/Text>

#include <initializer_list>
#include <sstream>

namespace orbisk::test {

namespace {

osg::ref_ptr<osg::Image> picture() {
    return makeImage({1, 2, 3, 4});
}

/// A node above a few squares.
template <typename Node>
osg::ref_ptr<Node> above(osg::ref_ptr<Node> parent, int squares = 2) {
    for (int i = 0; i < squares; ++i)
        parent->addChild(makeQuadGeode(2.0f, osg::Vec3(static_cast<float>(i), 0, 0)));
    return parent;
}

osg::ref_ptr<osg::Geode> geodeOf(osg::Drawable* drawable) {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(drawable);
    return geode;
}

/// A square in a state that has one attribute.
template <typename Attribute>
osg::ref_ptr<osg::Node> inState(Attribute* attribute) {
    osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    osg::StateSet& state = *geode->getOrCreateStateSet();
    if (attribute->isTextureAttribute())
        state.setTextureAttributeAndModes(1, attribute);
    else
        state.setAttributeAndModes(attribute);
    return geode;
}

template <typename Texture>
osg::ref_ptr<osg::Node> textured() {
    const osg::ref_ptr<Texture> texture = new Texture;
    texture->setImage(picture());
    return inState(texture.get());
}

osg::ref_ptr<osg::Node> cubeTextured() {
    const osg::ref_ptr<osg::TextureCubeMap> texture = new osg::TextureCubeMap;
    for (unsigned int side = 0; side < 6; ++side)
        texture->setImage(side, picture());
    return inState(texture.get());
}

osg::ref_ptr<osg::Node> layeredTexture() {
    const osg::ref_ptr<osg::Texture2DArray> texture = new osg::Texture2DArray;
    texture->setTextureSize(4, 4, 2);
    texture->setImage(0, picture());
    texture->setImage(1, picture());
    return inState(texture.get());
}

osg::ref_ptr<osg::Node> film() {
    const osg::ref_ptr<osg::ImageSequence> sequence = new osg::ImageSequence;
    sequence->addImage(picture());
    sequence->addImage(picture());
    return inState(new osg::Texture2D(sequence));
}

osg::ref_ptr<osg::Node> program() {
    const osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, "void main() {}"));
    program->addBindAttribLocation("name", 3);
    return inState(program.get());
}

osg::ref_ptr<osg::Node> fragmentProgram() {
    const osg::ref_ptr<osg::FragmentProgram> program = new osg::FragmentProgram;
    program->setProgramLocalParameter(2, osg::Vec4(1, 2, 3, 4));
    program->setFragmentProgram("!!ARBfp1.0 END");
    return inState(program.get());
}

osg::ref_ptr<osg::Node> uniforms() {
    osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    osg::StateSet& state = *geode->getOrCreateStateSet();
    state.addUniform(new osg::Uniform("vector", osg::Vec3(1, 2, 3)));
    state.addUniform(new osg::Uniform("matrix", osg::Matrixf()));
    state.addUniform(new osg::Uniform("whole", 7));
    state.addUniform(new osg::Uniform(osg::Uniform::FLOAT_VEC4, "several", 5));
    return geode;
}

osg::ref_ptr<osg::Node> arraysOfAllKinds() {
    const osg::ref_ptr<osg::Geometry> geometry = makeQuad();
    const unsigned int count = geometry->getVertexArray()->getNumElements();
    unsigned int unit = 0;
    for (osg::Array* array : std::initializer_list<osg::Array*>{
             new osg::IntArray(count), new osg::UByteArray(count), new osg::UShortArray(count),
             new osg::UIntArray(count), new osg::FloatArray(count), new osg::Vec2Array(count),
             new osg::Vec4Array(count), new osg::Vec2sArray(count), new osg::Vec3sArray(count),
             new osg::Vec4sArray(count), new osg::Vec2bArray(count), new osg::Vec3bArray(count),
             new osg::Vec4bArray(count), new osg::Vec2dArray(count), new osg::Vec3dArray(count),
             new osg::Vec4dArray(count)})
        geometry->setVertexAttribArray(unit++, array, osg::Array::BIND_PER_VERTEX);
    geometry->setColorArray(new osg::Vec4ubArray(1), osg::Array::BIND_OVERALL);
    geometry->setSecondaryColorArray(new osg::Vec3Array(count), osg::Array::BIND_PER_VERTEX);
    geometry->setFogCoordArray(new osg::FloatArray(count), osg::Array::BIND_PER_VERTEX);
    return geodeOf(geometry);
}

osg::ref_ptr<osg::Node> primitivesOfAllKinds() {
    const osg::ref_ptr<osg::Geometry> geometry = makeQuad();
    const GLuint wholes[] = {0, 1, 2};
    const GLushort shorts[] = {0, 1, 2};
    const GLubyte bytes[] = {0, 1, 2};
    const GLint lengths[] = {2, 2};
    geometry->addPrimitiveSet(new osg::DrawElementsUInt(GL_TRIANGLES, 3, wholes));
    geometry->addPrimitiveSet(new osg::DrawElementsUShort(GL_TRIANGLES, 3, shorts));
    geometry->addPrimitiveSet(new osg::DrawElementsUByte(GL_TRIANGLES, 3, bytes));
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_POINTS, 0, 4));
    geometry->addPrimitiveSet(new osg::DrawArrayLengths(GL_LINES, 0, 2, const_cast<int*>(lengths)));
    geometry->setInitialBound(osg::BoundingBox(-1, -1, -1, 1, 1, 1));
    return geodeOf(geometry);
}

osg::ref_ptr<osg::Node> label(const char* text) {
    const osg::ref_ptr<osgText::Text> label = new osgText::Text;
    label->setText(osgText::String(text, osgText::String::ENCODING_UTF8));
    return geodeOf(label);
}

/// A node of a library that the program is not linked with.
osg::ref_ptr<osg::Node> effect(const std::string& className) {
    osgDB::ObjectWrapper* wrapper =
        osgDB::Registry::instance()->getObjectWrapperManager()->findWrapper(className);
    const osg::ref_ptr<osg::Group> node = dynamic_cast<osg::Group*>(wrapper->createInstance());
    return above(node);
}

osg::ref_ptr<osg::Node> billboard() {
    osg::ref_ptr<osg::Billboard> billboard = new osg::Billboard;
    billboard->addDrawable(makeQuad(), osg::Vec3(1, 2, 3));
    billboard->addDrawable(makeQuad(), osg::Vec3(4, 5, 6));
    return billboard;
}

osg::ref_ptr<osg::Node> camera() {
    const osg::ref_ptr<osg::Camera> camera = above<osg::Camera>(new osg::Camera);
    camera->setViewport(0, 0, 10, 10);
    camera->setColorMask(true, true, false, true);
    camera->attach(osg::Camera::COLOR_BUFFER0, picture());
    camera->attach(osg::Camera::DEPTH_BUFFER, new osg::Texture2D);
    return camera;
}

osg::ref_ptr<osg::Node> occluder() {
    const osg::ref_ptr<osg::OccluderNode> node = above<osg::OccluderNode>(new osg::OccluderNode);
    const osg::ref_ptr<osg::ConvexPlanarOccluder> occluder = new osg::ConvexPlanarOccluder;
    osg::ConvexPlanarPolygon hole;
    for (const osg::Vec3& corner : {osg::Vec3(0, 0, 0), osg::Vec3(1, 0, 0), osg::Vec3(0, 1, 0)}) {
        occluder->getOccluder().add(corner);
        hole.add(corner * 0.5f);
    }
    occluder->addHole(hole);
    node->setOccluder(occluder);
    return node;
}

osg::ref_ptr<osg::Node> levels() {
    osg::ref_ptr<osg::LOD> levels = new osg::LOD;
    levels->addChild(makeQuadGeode(), 0.0f, 10.0f);
    levels->addChild(makeQuadGeode(), 10.0f, 1e6f);
    return levels;
}

osg::ref_ptr<osg::Node> pages() {
    osg::ref_ptr<osg::PagedLOD> pages = new osg::PagedLOD;
    pages->addChild(makeQuadGeode(), 0.0f, 1e6f);
    pages->setFileName(1, "missing.ive");
    pages->setRange(1, 1e6f, 1e7f);
    pages->setPriorityOffset(1, 2.0f);
    return pages;
}

osg::ref_ptr<osg::Node> lightPoints() {
    const osg::ref_ptr<osgSim::LightPointNode> node = new osgSim::LightPointNode;
    const osg::ref_ptr<osgSim::BlinkSequence> blinking = new osgSim::BlinkSequence;
    blinking->addPulse(1.0, osg::Vec4(1, 1, 1, 1));
    for (osgSim::Sector* sector : std::initializer_list<osgSim::Sector*>{
             new osgSim::AzimElevationSector, new osgSim::AzimSector, new osgSim::ElevationSector,
             new osgSim::ConeSector, new osgSim::DirectionalSector}) {
        osgSim::LightPoint point;
        point._sector = sector;
        point._blinkSequence = blinking;
        node->addLightPoint(point);
    }
    return node;
}

osg::ref_ptr<osg::Node> multiSwitch() {
    const osg::ref_ptr<osgSim::MultiSwitch> node =
        above<osgSim::MultiSwitch>(new osgSim::MultiSwitch, 3);
    node->setAllChildrenOn(2);
    return node;
}

osg::ref_ptr<osg::Node> described() {
    const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
    geode->addDescription("described");
    geode->setInitialBound(osg::BoundingSphere(osg::Vec3(), 3.0f));
    geode->setCullCallback(new osg::ClusterCullingCallback(osg::Vec3(), osg::Vec3(0, 0, 1), 0.5f));
    const osg::ref_ptr<osgSim::ShapeAttributeList> attributes = new osgSim::ShapeAttributeList;
    attributes->push_back(osgSim::ShapeAttribute("whole", 7));
    attributes->push_back(osgSim::ShapeAttribute("real", 7.5));
    attributes->push_back(osgSim::ShapeAttribute("text", "seven"));
    geode->setUserData(attributes);
    return geode;
}

osg::ref_ptr<osg::Node> moving() {
    const osg::ref_ptr<osg::MatrixTransform> node =
        above<osg::MatrixTransform>(new osg::MatrixTransform(osg::Matrix::translate(1, 2, 3)));
    const osg::ref_ptr<osg::AnimationPath> path = new osg::AnimationPath;
    path->insert(0.0, osg::AnimationPath::ControlPoint(osg::Vec3(1, 2, 3)));
    path->insert(1.0, osg::AnimationPath::ControlPoint(osg::Vec3(3, 2, 1)));
    node->setUpdateCallback(new osg::AnimationPathCallback(path));
    return node;
}

osg::ref_ptr<osg::Node> terrain() {
    const osg::ref_ptr<osg::HeightField> field = new osg::HeightField;
    field->allocate(3, 4);
    for (unsigned int row = 0; row < 4; ++row)
        field->setHeight(1, row, static_cast<float>(row));
    const osg::ref_ptr<osgTerrain::Locator> locator = new osgTerrain::Locator;
    locator->setTransformAsExtents(0, 0, 1, 1);
    const osg::ref_ptr<osgTerrain::HeightFieldLayer> heights =
        new osgTerrain::HeightFieldLayer(field);
    heights->setLocator(locator);
    heights->setValidDataOperator(new osgTerrain::NoDataValue(-1.0f));
    const osg::ref_ptr<osgTerrain::ImageLayer> colours = new osgTerrain::ImageLayer(picture());
    colours->setValidDataOperator(new osgTerrain::ValidRange(0.0f, 1.0f));
    const osg::ref_ptr<osgTerrain::SwitchLayer> choice = new osgTerrain::SwitchLayer;
    choice->addLayer(new osgTerrain::ImageLayer(picture()));
    const osg::ref_ptr<osgTerrain::CompositeLayer> parts = new osgTerrain::CompositeLayer;
    parts->addLayer(new osgTerrain::ImageLayer(picture()));
    parts->addLayer("missing.png");
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    tile->setLocator(locator);
    tile->setElevationLayer(heights);
    tile->setColorLayer(0, colours);
    tile->setColorLayer(1, choice);
    tile->setColorLayer(2, parts);
    tile->setTerrainTechnique(new osgTerrain::GeometryTechnique);
    const osg::ref_ptr<osgTerrain::Terrain> terrain = new osgTerrain::Terrain;
    terrain->addChild(tile);
    terrain->setTerrainTechniquePrototype(new osgTerrain::GeometryTechnique);
    return terrain;
}

osg::ref_ptr<osg::Node> evenTerrain() {
    const osg::ref_ptr<osg::HeightField> field = new osg::HeightField;
    field->allocate(3, 4);
    const osg::ref_ptr<osgTerrain::HeightFieldLayer> heights =
        new osgTerrain::HeightFieldLayer(field);
    heights->setLocator(new osgTerrain::Locator);
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    tile->setElevationLayer(heights);
    return tile;
}

std::vector<IveModel> states() {
    return {{"AlphaFunc", inState(new osg::AlphaFunc)},
            {"BlendColor", inState(new osg::BlendColor)},
            {"BlendEquation", inState(new osg::BlendEquation)},
            {"BlendFunc", inState(new osg::BlendFunc)},
            {"BlendFuncSeparate", inState(new osg::BlendFunc(GL_ONE, GL_ZERO, GL_ZERO, GL_ONE))},
            {"ClipPlane", inState(new osg::ClipPlane(1))},
            {"ColorMask", inState(new osg::ColorMask)},
            {"CullFace", inState(new osg::CullFace)},
            {"Depth", inState(new osg::Depth)},
            {"Fog", inState(new osg::Fog)},
            {"FrontFace", inState(new osg::FrontFace)},
            {"Light", inState(new osg::Light)},
            {"LightModel", inState(new osg::LightModel)},
            {"LineStipple", inState(new osg::LineStipple)},
            {"LineWidth", inState(new osg::LineWidth)},
            {"Material", inState(new osg::Material)},
            {"Multisample", inState(new osg::Multisample)},
            {"Point", inState(new osg::Point)},
            {"PointSprite", inState(new osg::PointSprite)},
            {"PolygonMode", inState(new osg::PolygonMode)},
            {"PolygonOffset", inState(new osg::PolygonOffset)},
            {"PolygonStipple", inState(new osg::PolygonStipple)},
            {"Scissor", inState(new osg::Scissor)},
            {"ShadeModel", inState(new osg::ShadeModel)},
            {"Stencil", inState(new osg::Stencil)},
            {"StencilTwoSided", inState(new osg::StencilTwoSided)},
            {"TexEnv", inState(new osg::TexEnv)},
            {"TexEnvCombine", inState(new osg::TexEnvCombine)},
            {"TexGen", inState(new osg::TexGen)},
            {"TexMat", inState(new osg::TexMat)},
            {"VertexProgram", inState(new osg::VertexProgram)},
            {"Viewport", inState(new osg::Viewport(0, 0, 10, 10))},
            {"FragmentProgram", fragmentProgram()},
            {"Program", program()},
            {"Uniforms", uniforms()},
            {"Texture1D", textured<osg::Texture1D>()},
            {"Texture2D", textured<osg::Texture2D>()},
            {"Texture3D", textured<osg::Texture3D>()},
            {"TextureRectangle", textured<osg::TextureRectangle>()},
            {"TextureCubeMap", cubeTextured()},
            {"Texture2DArray", layeredTexture()},
            {"ImageSequence", film()}};
}

std::vector<IveModel> nodes() {
    const osg::ref_ptr<osgSim::VisibilityGroup> visibility =
        above<osgSim::VisibilityGroup>(new osgSim::VisibilityGroup);
    visibility->setVisibilityVolume(makeQuadGeode());
    const osg::ref_ptr<osg::ClipNode> clips = above<osg::ClipNode>(new osg::ClipNode);
    clips->addClipPlane(new osg::ClipPlane(0));
    const osg::ref_ptr<osg::TexGenNode> coordinates = above<osg::TexGenNode>(new osg::TexGenNode);
    coordinates->setTexGen(new osg::TexGen);
    const osg::ref_ptr<osg::ProxyNode> link = above<osg::ProxyNode>(new osg::ProxyNode);
    link->setFileName(0, "missing.ive");
    return {{"MatrixTransform", moving()},
            {"Billboard", billboard()},
            {"LOD", levels()},
            {"PagedLOD", pages()},
            {"Camera", camera()},
            {"Occluder", occluder()},
            {"MultiSwitch", multiSwitch()},
            {"LightPoints", lightPoints()},
            {"Described", described()},
            {"Terrain", terrain()},
            {"EvenTerrain", evenTerrain()},
            {"VisibilityGroup", visibility},
            {"ClipNode", clips},
            {"TexGenNode", coordinates},
            {"ProxyNode", link},
            {"Node", new osg::Node},
            {"LightSource", above<osg::LightSource>(new osg::LightSource)},
            {"Sequence", above<osg::Sequence>(new osg::Sequence)},
            {"Switch", above<osg::Switch>(new osg::Switch, 3)},
            {"PositionAttitudeTransform",
             above<osg::PositionAttitudeTransform>(new osg::PositionAttitudeTransform)},
            {"AutoTransform", above<osg::AutoTransform>(new osg::AutoTransform)},
            {"CameraView", above<osg::CameraView>(new osg::CameraView)},
            {"DOFTransform", above<osgSim::DOFTransform>(new osgSim::DOFTransform)},
            {"Impostor", above<osgSim::Impostor>(new osgSim::Impostor)},
            {"CoordinateSystemNode",
             above<osg::CoordinateSystemNode>(new osg::CoordinateSystemNode("WKT", "none"))},
            {"OcclusionQueryNode", above<osg::OcclusionQueryNode>(new osg::OcclusionQueryNode)},
            {"AnisotropicLighting", effect("osgFX::AnisotropicLighting")},
            {"Cartoon", effect("osgFX::Cartoon")},
            {"Scribe", effect("osgFX::Scribe")},
            {"MultiTextureControl", effect("osgFX::MultiTextureControl")}};
}

} // namespace

std::vector<IveModel> iveModels() {
    const char* foreign = "\xe6\xb5\x8b\xe9\x87\x8f";
    std::vector<IveModel> models = nodes();
    for (const IveModel& state : states())
        models.push_back(state);
    models.push_back({"Arrays", arraysOfAllKinds()});
    models.push_back({"Primitives", primitivesOfAllKinds()});
    models.push_back({"Text", label("label")});
    models.push_back({"ForeignText", label(foreign)});
    return models;
}

std::string iveFile(const osg::Node& model, const std::string& options) {
    std::ostringstream stream;
    const osg::ref_ptr<osgDB::Options> writing = new osgDB::Options(options);
    packagedReader("ive", "IVE Reader/Writer")->writeNode(model, stream, writing);
    return stream.str();
}

} // namespace orbisk::test
