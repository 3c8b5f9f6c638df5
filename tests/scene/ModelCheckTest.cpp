#include "view/ModelCheck.h"

#include "support/CheckTest.h"

#include <osg/AutoTransform>
#include <osg/Camera>
#include <osg/LOD>
#include <osg/MatrixTransform>
#include <osg/PositionAttitudeTransform>
#include <osg/Projection>
#include <osgSim/DOFTransform>

#include <climits>
#include <cmath>
#include <utility>

namespace orbisk::test {

namespace {

class ModelCheckTest : public CheckTest {
protected:
    ModelCheckTest() : m_quad(makeQuad()), m_geode(new osg::Geode) { m_geode->addDrawable(m_quad); }

    void setPrimitives(osg::PrimitiveSet* set) {
        m_quad->removePrimitiveSet(0, m_quad->getNumPrimitiveSets());
        m_quad->addPrimitiveSet(set);
    }

    osg::Vec3Array& vertices() { return dynamic_cast<osg::Vec3Array&>(*m_quad->getVertexArray()); }

    /// Whether the quad's only primitive set is still there after the check.
    bool keeps(osg::PrimitiveSet* set) {
        setPrimitives(set);
        EXPECT_EQ(checkModel(*m_geode), std::nullopt);
        return m_quad->getNumPrimitiveSets() == 1;
    }

    /// Whether what stands under a node of this kind is left out once `change` was made to it.
    template <typename Kind, typename Change>
    bool leavesOut(const Change& change) {
        const osg::ref_ptr<Kind> node = new Kind;
        node->addChild(m_geode);
        EXPECT_EQ(checkModel(*node), std::nullopt);
        EXPECT_EQ(node->getNumChildren(), 1u) << "before the change";
        change(*node);
        EXPECT_EQ(checkModel(*node), std::nullopt);
        return node->getNumChildren() == 0;
    }

    osg::ref_ptr<osg::Geometry> m_quad; ///< four vertices
    osg::ref_ptr<osg::Geode> m_geode;
};

/// A primitive set of indices from 0 on, and one at the end.
template <typename Elements>
osg::ref_ptr<Elements> indicesUpTo(unsigned int last) {
    const osg::ref_ptr<Elements> set = new Elements(GL_TRIANGLES);
    for (const unsigned int index : {0u, 1u, last})
        set->push_back(static_cast<typename Elements::value_type>(index));
    return set;
}

/// Groups one inside the other. @return the outermost.
osg::ref_ptr<osg::Group> chainOf(std::size_t length) {
    osg::ref_ptr<osg::Group> outermost = new osg::Group;
    for (std::size_t i = 1; i < length; ++i) {
        const osg::ref_ptr<osg::Group> next = new osg::Group;
        next->addChild(outermost);
        outermost = next;
    }
    return outermost;
}

} // namespace

TEST_F(ModelCheckTest, GoodModelStaysAsItIs) {
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_EQ(m_quad->getNumPrimitiveSets(), 1u);
    EXPECT_NE(m_quad->getNormalArray(), nullptr);
    EXPECT_NE(m_quad->getTexCoordArray(0), nullptr);
    EXPECT_EQ(vertices().front(), osg::Vec3(-1, -1, 0));
}

TEST_F(ModelCheckTest, IndicesBeyondTheVerticesAreLeftOut) {
    EXPECT_TRUE(keeps(indicesUpTo<osg::DrawElementsUByte>(3)));
    EXPECT_FALSE(keeps(indicesUpTo<osg::DrawElementsUByte>(4)));
    EXPECT_TRUE(keeps(indicesUpTo<osg::DrawElementsUShort>(3)));
    EXPECT_FALSE(keeps(indicesUpTo<osg::DrawElementsUShort>(65535)));
    EXPECT_TRUE(keeps(indicesUpTo<osg::DrawElementsUInt>(3)));
    EXPECT_FALSE(keeps(indicesUpTo<osg::DrawElementsUInt>(4)));
    EXPECT_FALSE(keeps(indicesUpTo<osg::DrawElementsUInt>(4'000'000'000u)));
}

TEST_F(ModelCheckTest, RangesBeyondTheVerticesAreLeftOut) {
    EXPECT_TRUE(keeps(new osg::DrawArrays(GL_TRIANGLES, 0, 4)));
    EXPECT_TRUE(keeps(new osg::DrawArrays(GL_TRIANGLES, 1, 3)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_TRIANGLES, 0, 5)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_TRIANGLES, 2, 3)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_TRIANGLES, -1, 3)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_TRIANGLES, 1, -3)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_TRIANGLES, INT_MAX, INT_MAX)));
}

TEST_F(ModelCheckTest, LengthsBeyondTheVerticesAreLeftOut) {
    GLsizei fits[] = {3, 1};
    GLsizei tooLong[] = {3, 2};
    GLsizei negative[] = {5, -1};
    EXPECT_TRUE(keeps(new osg::DrawArrayLengths(GL_TRIANGLES, 0, 2, fits)));
    EXPECT_FALSE(keeps(new osg::DrawArrayLengths(GL_TRIANGLES, 1, 2, fits)));
    EXPECT_FALSE(keeps(new osg::DrawArrayLengths(GL_TRIANGLES, 0, 2, tooLong)));
    EXPECT_FALSE(keeps(new osg::DrawArrayLengths(GL_TRIANGLES, 0, 2, negative)));
}

TEST_F(ModelCheckTest, EmptyPrimitiveSetsStay) {
    EXPECT_TRUE(keeps(new osg::DrawArrays(GL_TRIANGLES, 0, 0)));
    EXPECT_TRUE(keeps(new osg::DrawElementsUInt(GL_TRIANGLES)));
}

TEST_F(ModelCheckTest, UnknownModesAndAbsurdInstancesAreLeftOut) {
    EXPECT_TRUE(keeps(new osg::DrawArrays(GL_PATCHES, 0, 4)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_PATCHES + 1, 0, 4)));
    EXPECT_TRUE(keeps(new osg::DrawArrays(GL_TRIANGLES, 0, 4, 1000)));
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_TRIANGLES, 0, 4, INT_MAX)));
}

TEST_F(ModelCheckTest, OtherPrimitiveSetsOfTheGeometryStay) {
    m_quad->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 5));
    m_quad->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    ASSERT_EQ(m_quad->getNumPrimitiveSets(), 2u);
    EXPECT_EQ(m_quad->getPrimitiveSet(1)->getNumIndices(), 3u);
}

TEST_F(ModelCheckTest, WithoutVerticesNothingIsDrawn) {
    m_quad->setVertexArray(nullptr);
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_EQ(m_quad->getNumPrimitiveSets(), 0u);
}

TEST_F(ModelCheckTest, ShortCompanionsAreLeftOutAndTheTrianglesStay) {
    m_quad->setNormalArray(new osg::Vec3Array(3), osg::Array::BIND_PER_VERTEX);
    m_quad->setColorArray(new osg::Vec4Array(3), osg::Array::BIND_PER_VERTEX);
    m_quad->setSecondaryColorArray(new osg::Vec4Array(3), osg::Array::BIND_PER_VERTEX);
    m_quad->setFogCoordArray(new osg::FloatArray(3), osg::Array::BIND_PER_VERTEX);
    m_quad->setTexCoordArray(0, new osg::Vec2Array(3), osg::Array::BIND_PER_VERTEX);
    m_quad->setTexCoordArray(1, new osg::Vec2Array(4), osg::Array::BIND_PER_VERTEX);
    m_quad->setVertexAttribArray(6, new osg::FloatArray(3), osg::Array::BIND_PER_VERTEX);
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_EQ(m_quad->getNumPrimitiveSets(), 1u);
    EXPECT_EQ(m_quad->getNormalArray(), nullptr);
    EXPECT_EQ(m_quad->getColorArray(), nullptr);
    EXPECT_EQ(m_quad->getSecondaryColorArray(), nullptr);
    EXPECT_EQ(m_quad->getFogCoordArray(), nullptr);
    EXPECT_EQ(m_quad->getTexCoordArray(0), nullptr);
    EXPECT_NE(m_quad->getTexCoordArray(1), nullptr);
    EXPECT_EQ(m_quad->getVertexAttribArray(6), nullptr);
}

TEST_F(ModelCheckTest, CompanionsOfOtherBindingsNeedWhatTheyAreReadFor) {
    m_quad->setNormalArray(new osg::Vec3Array(0), osg::Array::BIND_OVERALL);
    m_quad->setColorArray(new osg::Vec4Array(1), osg::Array::BIND_PER_PRIMITIVE_SET);
    m_quad->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_EQ(m_quad->getNormalArray(), nullptr);
    EXPECT_EQ(m_quad->getColorArray(), nullptr);
}

TEST_F(ModelCheckTest, InfiniteAndHugeCoordinatesBecomeNoNumbers) {
    vertices()[0].x() = infinite<float>;
    vertices()[1].y() = -infinite<float>;
    vertices()[2].z() = 1e30f;
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_TRUE(std::isnan(vertices()[0].x()));
    EXPECT_TRUE(std::isnan(vertices()[1].y()));
    EXPECT_TRUE(std::isnan(vertices()[2].z()));
    EXPECT_EQ(vertices()[0].y(), -1.0f);
    EXPECT_EQ(vertices()[3], osg::Vec3(-1, 1, 0));
    EXPECT_LT(m_geode->getBound().radius(), 2.0f);
    EXPECT_EQ(m_quad->getNumPrimitiveSets(), 1u);
}

TEST_F(ModelCheckTest, CoordinatesOfSurveysStay) {
    vertices()[0].set(4e6f, -5e5f, 8000.0f);
    vertices()[1].set(1e18f, 0, 0);
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_EQ(vertices()[0], osg::Vec3(4e6f, -5e5f, 8000.0f));
    EXPECT_EQ(vertices()[1], osg::Vec3(1e18f, 0, 0));
}

TEST_F(ModelCheckTest, DoubleVerticesAreCheckedAsWell) {
    const osg::ref_ptr<osg::Vec3dArray> doubles = new osg::Vec3dArray(4);
    (*doubles)[1].x() = 1e300;
    (*doubles)[2].x() = 5e5;
    m_quad->setVertexArray(doubles);
    EXPECT_EQ(checkModel(*m_geode), std::nullopt);
    EXPECT_TRUE(std::isnan((*doubles)[1].x()));
    EXPECT_EQ((*doubles)[2].x(), 5e5);
    EXPECT_FALSE(keeps(new osg::DrawArrays(GL_POINTS, 0, 5)));
}

TEST_F(ModelCheckTest, EveryNumberOfAMatrixCounts) {
    for (int i = 0; i < 16; ++i) {
        osg::Matrixd matrix;
        matrix(i / 4, i % 4) = i % 2 == 0 ? notANumber<double> : infinite<double>;
        EXPECT_TRUE(leavesOut<osg::MatrixTransform>([&](auto& node) { node.setMatrix(matrix); }))
            << i;
        EXPECT_TRUE(leavesOut<osg::Projection>([&](auto& node) { node.setMatrix(matrix); })) << i;
        EXPECT_TRUE(leavesOut<osg::Camera>([&](auto& node) { node.setViewMatrix(matrix); })) << i;
        EXPECT_TRUE(leavesOut<osg::Camera>([&](auto& node) { node.setProjectionMatrix(matrix); }))
            << i;
        EXPECT_TRUE(leavesOut<osgSim::DOFTransform>([&](auto& node) { node.setPutMatrix(matrix); }))
            << i;
        EXPECT_TRUE(leavesOut<osgSim::DOFTransform>([&](auto& node) {
            node.setInversePutMatrix(matrix);
        })) << i;
    }
}

TEST_F(ModelCheckTest, EveryNumberOfAPlaceCounts) {
    using Place = osg::PositionAttitudeTransform;
    using Turned = osg::AutoTransform;
    for (int i = 0; i < 3; ++i) {
        osg::Vec3d vector(1, 1, 1);
        vector[i] = notANumber<double>;
        EXPECT_TRUE(leavesOut<Place>([&](auto& node) { node.setPosition(vector); })) << i;
        EXPECT_TRUE(leavesOut<Place>([&](auto& node) { node.setScale(vector); })) << i;
        EXPECT_TRUE(leavesOut<Place>([&](auto& node) { node.setPivotPoint(vector); })) << i;
        EXPECT_TRUE(leavesOut<Turned>([&](auto& node) { node.setPosition(vector); })) << i;
        EXPECT_TRUE(leavesOut<Turned>([&](auto& node) { node.setScale(vector); })) << i;
        EXPECT_TRUE(leavesOut<Turned>([&](auto& node) { node.setPivotPoint(vector); })) << i;
    }
    for (int i = 0; i < 4; ++i) {
        osg::Vec4d numbers(0, 0, 0, 1);
        numbers[i] = infinite<double>;
        const osg::Quat rotation(numbers);
        EXPECT_TRUE(leavesOut<Place>([&](auto& node) { node.setAttitude(rotation); })) << i;
        EXPECT_TRUE(leavesOut<Turned>([&](auto& node) { node.setRotation(rotation); })) << i;
    }
}

TEST_F(ModelCheckTest, EveryNumberOfAJointCounts) {
    using Joint = osgSim::DOFTransform;
    using Set = void (Joint::*)(const osg::Vec3&);
    const std::pair<const char*, Set> parts[] = {{"lowest angles", &Joint::setMinHPR},
                                                 {"highest angles", &Joint::setMaxHPR},
                                                 {"steps of angles", &Joint::setIncrementHPR},
                                                 {"angles", &Joint::setCurrentHPR},
                                                 {"lowest place", &Joint::setMinTranslate},
                                                 {"highest place", &Joint::setMaxTranslate},
                                                 {"steps of place", &Joint::setIncrementTranslate},
                                                 {"place", &Joint::setCurrentTranslate},
                                                 {"lowest scale", &Joint::setMinScale},
                                                 {"highest scale", &Joint::setMaxScale},
                                                 {"steps of scale", &Joint::setIncrementScale},
                                                 {"scale", &Joint::setCurrentScale}};
    for (const auto& [name, set] : parts)
        for (int i = 0; i < 3; ++i) {
            osg::Vec3 vector(1, 1, 1);
            vector[i] = infinite<float>;
            const auto change = [&, part = set](Joint& joint) { (joint.*part)(vector); };
            EXPECT_TRUE(leavesOut<Joint>(change)) << name << i;
        }
}

TEST_F(ModelCheckTest, TransformWithoutNumbersOfItsOwnStays) {
    EXPECT_FALSE(leavesOut<osg::Transform>([](auto&) {}));
}

TEST_F(ModelCheckTest, TransformThatFlattensEverythingStays) {
    const osg::ref_ptr<osg::MatrixTransform> transform =
        new osg::MatrixTransform(osg::Matrixd::scale(0, 0, 0));
    transform->addChild(m_geode);
    EXPECT_EQ(checkModel(*transform), std::nullopt);
    EXPECT_EQ(transform->getNumChildren(), 1u);
}

TEST_F(ModelCheckTest, BoundsWithoutNumbersAreForgotten) {
    const osg::ref_ptr<osg::LOD> lod = new osg::LOD;
    lod->addChild(m_geode, 0, 1e9f);
    lod->setCenter(osg::Vec3(notANumber<float>, 0, 0));
    lod->setRadius(infinite<float>);
    lod->setInitialBound(osg::BoundingSphere(osg::Vec3(), infinite<float>));
    EXPECT_EQ(checkModel(*lod), std::nullopt);
    EXPECT_LT(lod->getBound().radius(), 2.0f);
    EXPECT_TRUE(lod->getBound().valid());
}

TEST_F(ModelCheckTest, ModelThatContainsItselfIsRefused) {
    const osg::ref_ptr<osg::Group> outer = new osg::Group;
    const osg::ref_ptr<osg::Group> inner = new osg::Group;
    outer->addChild(inner);
    inner->addChild(m_geode);
    inner->addChild(outer);
    EXPECT_NE(checkModel(*outer), std::nullopt);
    EXPECT_EQ(outer->referenceCount(), 1);
    EXPECT_EQ(inner->referenceCount(), 1);
}

TEST_F(ModelCheckTest, ModelIsAllowedToBeDeepAndNotDeeper) {
    EXPECT_EQ(checkModel(*chainOf(deepestModel)), std::nullopt);
    EXPECT_NE(checkModel(*chainOf(deepestModel + 1)), std::nullopt);
}

TEST_F(ModelCheckTest, VeryDeepModelIsRefusedAndDeleted) {
    // Deleted one inside the other these would need more stack than there is.
    EXPECT_NE(checkModel(*chainOf(1'000'000)), std::nullopt);
}

TEST_F(ModelCheckTest, DepthCountsThroughSharedNodes) {
    const osg::ref_ptr<osg::Group> shared = chainOf(deepestModel - 10);
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(shared);
    const osg::ref_ptr<osg::Group> lower = chainOf(20);
    osg::Group* lowest = lower;
    while (lowest->getNumChildren() > 0)
        lowest = lowest->getChild(0)->asGroup();
    lowest->addChild(shared);
    model->addChild(lower);
    EXPECT_NE(checkModel(*model), std::nullopt);
}

TEST_F(ModelCheckTest, SharedNodesAreFine) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 1000; ++i)
        model->addChild(m_geode);
    EXPECT_EQ(checkModel(*model), std::nullopt);
    EXPECT_EQ(model->getNumChildren(), 1000u);
}

TEST_F(ModelCheckTest, TooManyPathsAreRefused) {
    osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 60; ++i) {
        const osg::ref_ptr<osg::Group> next = new osg::Group;
        next->addChild(model);
        next->addChild(model);
        model = next;
    }
    EXPECT_NE(checkModel(*model), std::nullopt);
}

} // namespace orbisk::test
