#include "readers/NativeReader.h"

#include "damage/Damage.h"
#include "readers/NativeInput.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>
#include <osg/MatrixTransform>
#include <osg/Texture2D>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <cctype>
#include <new>
#include <sstream>
#include <stdexcept>

namespace orbisk::test {

namespace {

using Result = osgDB::ReaderWriter::ReadResult;

class NativeReaderTest : public testing::Test {
protected:
    /// Whether the reader finds `bytes` damaged. Room for absurd numbers is not to be had.
    bool isDamaged(const std::string& name, const std::string& bytes) {
        writeFile(name, bytes);
        try {
            return !m_reader->readNode(name, nullptr).validNode();
        } catch (const DamagedFile&) {
            return true;
        } catch (const std::bad_alloc&) {
            return true;
        } catch (const std::length_error&) {
            return true;
        }
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    osg::ref_ptr<NativeReader> m_reader = new NativeReader;
};

/// A bit of everything: transforms, shared parts, a picture within the file, user data.
osg::ref_ptr<osg::Node> makeScene() {
    const osg::ref_ptr<osg::Geode> quad = makeQuadGeode();
    const osg::ref_ptr<osg::Image> image = makeImage({10, 200, 30, 255}, 8);
    image->setFileName("inside.png");
    addTexture(*quad->getOrCreateStateSet(), image);
    const osg::ref_ptr<osg::Geode> second = makeQuadGeode(3.0f);
    addTexture(*second->getOrCreateStateSet(), image);
    second->getDrawable(0)->asGeometry()->addPrimitiveSet(new osg::DrawArrays(GL_POINTS, 0, 4));
    osg::ref_ptr<osg::Group> scene = new osg::Group;
    scene->setName("the scene");
    for (const double x : {1.0, 1.0 / 3.0, 4e6}) {
        const osg::ref_ptr<osg::MatrixTransform> place =
            new osg::MatrixTransform(osg::Matrixd::translate(x, 0, 0));
        place->addChild(quad);
        place->addChild(second);
        scene->addChild(place);
    }
    scene->setUserValue("answer", 42);
    return scene;
}

std::string textOf(const osg::Node& node) {
    std::ostringstream text;
    const osg::ref_ptr<osgDB::Options> options =
        new osgDB::Options("Ascii WriteImageHint=IncludeData precision 17");
    osgDB::Registry::instance()->getReaderWriterForExtension("osgt")->writeNode(node, text,
                                                                                options);
    return text.str();
}

std::string write(const std::string& name, const std::string& options) {
    const osg::ref_ptr<osgDB::Options> written =
        new osgDB::Options("WriteImageHint=IncludeData " + options);
    // The library finds the writer of "osg2" only once it has found that of the others.
    osgDB::Registry::instance()->getReaderWriterForExtension("osgb");
    EXPECT_TRUE(osgDB::writeNodeFile(*makeScene(), name, written));
    return readFile(name);
}

/// The head of a text file, and what comes after it.
std::string inText(const std::string& content) {
    return "#Ascii Scene\n#Version 161\n#Generator OpenSceneGraph 3.6.5\n\n" + content;
}

/// A geode with one geometry that has three vertices and these words for its primitive sets.
std::string triangleWith(const std::string& primitives, const std::string& count = "3") {
    return inText("osg::Geode {\n UniqueID 1\n Drawables 1 {\n osg::Geometry {\n UniqueID 2\n " +
                  primitives + "\n VertexArray TRUE {\n osg::Vec3Array {\n UniqueID 4\n vector " +
                  count + " {\n 0 0 0\n 1 0 0\n 0 1 0\n }\n }\n }\n }\n }\n}\n");
}

const std::string goodPrimitives = "PrimitiveSetList 1 {\n osg::DrawArrays {\n UniqueID 3\n "
                                   "Mode TRIANGLES\n Count 3\n }\n }";

/// Groups one inside the other.
std::string nestedGroups(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "osg::Group {\n UniqueID " + std::to_string(i + 1) +
                (i + 1 < count ? "\n Children 1 {\n" : "\n");
    for (int i = 0; i < count; ++i)
        text += i == 0 ? "}\n" : "}\n}\n";
    return inText(text);
}

class NativeDamageTest : public testing::TestWithParam<std::pair<const char*, const char*>> {
protected:
    std::string name() const { return std::string("model.") + GetParam().first; }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    osg::ref_ptr<NativeReader> m_reader = new NativeReader;
};

} // namespace

TEST_P(NativeDamageTest, ReadsWhatThePackagedReaderReads) {
    write(name(), GetParam().second);
    Result own = m_reader->readNode(name(), nullptr);
    Result packaged = osgDB::Registry::instance()
                          ->getReaderWriterForExtension(GetParam().first)
                          ->readNode(name(), nullptr);
    ASSERT_TRUE(own.validNode());
    const osg::ref_ptr<osg::Node> ownNode = own.getNode();
    const osg::ref_ptr<osg::Node> packagedNode = packaged.getNode();
    EXPECT_GT(textOf(*ownNode).size(), 1000u);
    EXPECT_EQ(textOf(*ownNode), textOf(*packagedNode));
}

TEST_P(NativeDamageTest, FileCutAnywhereIsNoModel) {
    const std::string whole = write(name(), GetParam().second);
    const std::size_t step = std::max<std::size_t>(1, whole.size() / 400);
    // What is cut in the blanks at the end is whole.
    const std::size_t last = whole.find_last_not_of(" \n\r");
    for (std::size_t size = 0; size < last; size += step) {
        writeFile(name(), whole.substr(0, size));
        EXPECT_EQ(readModel(name()), nullptr) << size << " of " << whole.size();
    }
}

TEST_P(NativeDamageTest, DamagedFileBreaksNothing) {
    const std::string whole = write(name(), GetParam().second);
    constexpr std::uint64_t tries = 400;
    for (std::uint64_t seed = 0; seed < tries; ++seed) {
        writeFile(name(), damaged(whole, seed));
        const osg::ref_ptr<osg::Node> model = readModel(name());
        if (model) {
            EXPECT_GE(model->getBound().radius(), -1.0f);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, NativeDamageTest,
                         testing::Values(std::pair("osgb", ""), std::pair("osgt", ""),
                                         std::pair("osg2", "Ascii"), std::pair("osg2", ""),
                                         std::pair("osgb", "Compressor=zlib")),
                         [](const auto& kind) {
                             std::string name = kind.param.first;
                             for (const char letter : std::string(kind.param.second))
                                 if (std::isalnum(static_cast<unsigned char>(letter)))
                                     name += letter;
                             return name;
                         });

TEST_F(NativeReaderTest, TriangleOfTheseTestsIsGood) {
    EXPECT_FALSE(isDamaged("model.osgt", triangleWith(goodPrimitives)));
    EXPECT_FALSE(isDamaged("model.osgt", nestedGroups(3)));
}

TEST_F(NativeReaderTest, CountBeyondTheFileIsDamage) {
    EXPECT_TRUE(isDamaged("model.osgt", triangleWith(goodPrimitives, "4000000000")));
    EXPECT_TRUE(isDamaged("model.osgt", triangleWith(goodPrimitives, "100000")));
    EXPECT_TRUE(isDamaged("model.osgt", triangleWith(goodPrimitives, "-1")));
}

TEST_F(NativeReaderTest, OtherObjectAmongThePrimitivesIsDamage) {
    for (const char* wrong :
         {"PrimitiveSetList 1 {\n osg::Group {\n UniqueID 3\n }\n }",
          "PrimitiveSetList 1 {\n osg::NobodyKnows {\n UniqueID 3\n }\n }",
          "PrimitiveSetList 1 {\n NULL\n }",
          "PrimitiveSetList 1 {\n osg::DrawArrays {\n UniqueID 1\n }\n }",
          "PrimitiveSetList 2 {\n osg::DrawArrays {\n UniqueID 3\n }\n NULL\n }"})
        EXPECT_TRUE(isDamaged("model.osgt", triangleWith(wrong))) << wrong;
}

TEST_F(NativeReaderTest, NodeInsideItselfIsDamage) {
    EXPECT_TRUE(isDamaged("model.osgt", inText("osg::Group {\n UniqueID 1\n Children 1 {\n "
                                               "osg::Group {\n UniqueID 1\n }\n }\n}\n")));
    EXPECT_FALSE(
        isDamaged("model.osgt", inText("osg::Group {\n UniqueID 1\n Children 2 {\n osg::Group {\n "
                                       "UniqueID 2\n }\n osg::Group {\n UniqueID 2\n }\n }\n}\n")));
}

TEST_F(NativeReaderTest, PartsOfWhatIsNotShownMayBeReferredToLater) {
    writeFile("particles.osgt",
              inText("osg::Group {\n UniqueID 1\n Children 2 {\n"
                     "osgParticle::ParticleSystemUpdater {\n UniqueID 2\n ParticleSystems 1 {\n"
                     "osgParticle::ParticleSystem {\n UniqueID 3\n }\n }\n }\n"
                     "osg::Geode {\n UniqueID 4\n Drawables 1 {\n"
                     "osgParticle::ParticleSystem {\n UniqueID 3\n }\n }\n }\n }\n}\n"));
    const osg::ref_ptr<osg::Node> particles = osgDB::readRefNodeFile("particles.osgt");
    ASSERT_TRUE(particles);
    ASSERT_TRUE(particles->asGroup()->addChild(makeQuadGeode()));
    for (const char* name : {"shared.osgb", "shared.osgt"}) {
        ASSERT_TRUE(osgDB::writeNodeFile(*particles, name));
        const osg::ref_ptr<osg::Node> model = m_reader->readNode(name, nullptr).getNode();
        ASSERT_TRUE(model) << name;
        EXPECT_EQ(contentsOf(*model).triangles, 2u) << name;
    }
}

TEST_F(NativeReaderTest, DeepNestingIsDamage) {
    EXPECT_FALSE(isDamaged("model.osgt", nestedGroups(NativeInput::deepestObject)));
    EXPECT_TRUE(isDamaged("model.osgt", nestedGroups(NativeInput::deepestObject + 2)));
    EXPECT_TRUE(isDamaged("model.osgt", nestedGroups(200'000)));
}

TEST_F(NativeReaderTest, ImageThatRefersToAnotherObjectIsDamage) {
    const auto textured = [](const std::string& id) {
        return inText(
            "osg::Group {\n UniqueID 1\n StateSet TRUE {\n osg::StateSet {\n UniqueID 2\n "
            "TextureAttributeList 1 {\n Data 1 {\n osg::Texture2D {\n UniqueID 3\n "
            "Image TRUE {\n ClassName osg::Image\n UniqueID " +
            id +
            "\n FileName \"a.png\"\n WriteHint 0 2\n }\n }\n Value OFF\n }\n }\n }\n "
            "}\n}\n");
    };
    EXPECT_FALSE(isDamaged("model.osgt", textured("4")));
    EXPECT_TRUE(isDamaged("model.osgt", textured("1")));
    EXPECT_TRUE(isDamaged("model.osgt", textured("2")));
}

TEST_F(NativeReaderTest, ImageLargerThanItsDataIsDamage) {
    const std::string whole = write("model.osgt", "");
    const std::string size = "Size 8 8 1";
    const std::size_t place = whole.find(size);
    ASSERT_NE(place, std::string::npos);
    for (const char* wrong :
         {"Size 9 8 1", "Size 8 800 1", "Size 70000 70000 70000", "Size 8 8 2147483647"}) {
        std::string changed = whole;
        EXPECT_TRUE(isDamaged("model.osgt", changed.replace(place, size.size(), wrong))) << wrong;
    }
    std::string smaller = whole;
    EXPECT_FALSE(isDamaged("model.osgt", smaller.replace(place, size.size(), "Size 8 7 1")));
}

TEST_F(NativeReaderTest, BinaryImageLargerThanItsDataIsDamage) {
    std::string whole = write("model.osgb", "");
    const std::string size("\x08\0\0\0\x08\0\0\0\x01\0\0\0", 12);
    const std::size_t place = whole.find(size);
    ASSERT_NE(place, std::string::npos);
    whole[place] = 9;
    EXPECT_TRUE(isDamaged("model.osgb", whole));
    whole[place] = 7;
    EXPECT_FALSE(isDamaged("model.osgb", whole));
}

TEST_F(NativeReaderTest, OtherKindsOfFilesAreNotHandled) {
    writeFile("model.osgt", "<?xml version=\"1.0\"?><x/>");
    EXPECT_TRUE(m_reader->readNode("model.osgt", nullptr).notHandled());
    EXPECT_TRUE(m_reader->readNode("model.obj", nullptr).notHandled());
    EXPECT_TRUE(m_reader->readNode("missing.osgb", nullptr).notFound());
}

} // namespace orbisk::test
