#include "readers/SaferSerializers.h"

#include "readers/NativeInput.h"

#include <osg/Billboard>
#include <osg/Shape>
#include <osg/Uniform>
#include <osgDB/InputStream>
#include <osgDB/ObjectWrapper>
#include <osgDB/Registry>
#include <osgDB/Serializer>
#include <osgTerrain/TerrainTile>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>

namespace orbisk {

namespace {

/// A sphere of this detail has half a million triangles.
constexpr float highestDetail = 16.0f;
constexpr unsigned int mostUniformElements = 1 << 16;
constexpr unsigned int mostLayers = 64;
constexpr std::size_t mostShapes = 10'000;

/// Reads a property in a way of its own, and leaves writing to the library.
class OwnReading : public osgDB::BaseSerializer {
public:
    using Read = std::function<bool(osgDB::BaseSerializer&, osgDB::InputStream&, osg::Object&)>;

    OwnReading(osgDB::BaseSerializer& former, Read read)
        : osgDB::BaseSerializer(former.getUsage()), m_former(&former), m_read(std::move(read)) {}

    bool set(osg::Object& object, void* value) override { return m_former->set(object, value); }
    bool get(const osg::Object& object, void* value) override {
        return m_former->get(object, value);
    }

    bool read(osgDB::InputStream& stream, osg::Object& object) override {
        return m_read(*m_former, stream, object);
    }

    bool write(osgDB::OutputStream& stream, const osg::Object& object) override {
        return m_former->write(stream, object);
    }

    const std::string& getName() const override { return m_former->getName(); }
    osgDB::IntLookup* getIntLookup() override { return m_former->getIntLookup(); }

private:
    osg::ref_ptr<osgDB::BaseSerializer> m_former;
    Read m_read;
};

void replace(const char* className, const char* property, const OwnReading::Read& read) {
    osgDB::ObjectWrapper* wrapper =
        osgDB::Registry::instance()->getObjectWrapperManager()->findWrapper(className);
    if (!wrapper)
        return;
    for (auto& serializer : wrapper->getSerializerList())
        if (serializer->getName() == property)
            serializer = new OwnReading(*serializer, read);
}

/// Whether a property that has a reading of its own is there.
bool isPresent(osgDB::InputStream& stream, const char* property) {
    if (!stream.isBinary())
        return stream.matchString(property);
    bool isThere = false;
    stream >> isThere;
    return isThere;
}

bool readPositions(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object& object) {
    auto& billboard = dynamic_cast<osg::Billboard&>(object);
    if (!isPresent(stream, "PositionList"))
        return true;
    const unsigned int count = stream.readSize();
    stream >> stream.BEGIN_BRACKET;
    for (unsigned int i = 0; i < count; ++i) {
        osg::Vec3d position;
        stream >> position;
        if (i < billboard.getPositionList().size())
            billboard.setPosition(i, position);
    }
    stream >> stream.END_BRACKET;
    return true;
}

/// The area of the height field that this thread reads: it is believed when its heights are there.
thread_local std::pair<unsigned int, unsigned int> announcedArea;

bool readArea(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object&) {
    announcedArea = {};
    if (isPresent(stream, "Area"))
        stream >> announcedArea.first >> announcedArea.second;
    return true;
}

bool readHeights(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object& object) {
    auto& field = dynamic_cast<osg::HeightField&>(object);
    const auto [columns, rows] = std::exchange(announcedArea, {});
    if (!isPresent(stream, "Heights"))
        return true;
    const osg::ref_ptr<osg::Array> array = stream.readArray();
    const auto* heights = dynamic_cast<const osg::FloatArray*>(array.get());
    // The slopes at a height are taken from its neighbours in either direction.
    constexpr unsigned int fewest = 2;
    if (!heights || columns < fewest || rows < fewest ||
        std::uint64_t(columns) * rows > heights->size())
        return true;
    field.allocate(columns, rows);
    std::copy_n(heights->begin(), field.getFloatArray()->size(), field.getFloatArray()->begin());
    return true;
}

bool readIndices(osgDB::BaseSerializer& former, osgDB::InputStream& stream, osg::Object& object) {
    const bool isRead = former.read(stream, object);
    auto& mesh = dynamic_cast<osg::TriangleMesh&>(object);
    const osg::IndexArray* indices = mesh.getIndices();
    const std::size_t vertices = mesh.getVertices() ? mesh.getVertices()->size() : 0;
    for (unsigned int i = 0; indices && i < indices->getNumElements(); ++i)
        if (indices->index(i) >= vertices) {
            mesh.setIndices(nullptr);
            break;
        }
    return isRead;
}

bool readDetail(osgDB::BaseSerializer& former, osgDB::InputStream& stream, osg::Object& object) {
    const bool isRead = former.read(stream, object);
    auto& hints = dynamic_cast<osg::TessellationHints&>(object);
    if (!(hints.getDetailRatio() >= 0.0f))
        hints.setDetailRatio(1.0f);
    hints.setDetailRatio(std::min(hints.getDetailRatio(), highestDetail));
    return isRead;
}

/// Whether `shape` is `wanted` or contains it, or is made of too many shapes to be told.
bool contains(const osg::Shape& shape, const osg::Shape& wanted, std::size_t& shapes) {
    if (&shape == &wanted || ++shapes > mostShapes)
        return true;
    const auto* composite = dynamic_cast<const osg::CompositeShape*>(&shape);
    for (unsigned int i = 0; composite && i < composite->getNumChildren(); ++i)
        if (contains(*composite->getChild(i), wanted, shapes))
            return true;
    return false;
}

bool readShapes(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object& object) {
    auto& composite = dynamic_cast<osg::CompositeShape&>(object);
    if (!isPresent(stream, "Children"))
        return true;
    unsigned int count = 0;
    stream >> count >> stream.BEGIN_BRACKET;
    std::size_t shapes = 0;
    for (unsigned int i = 0; i < count; ++i) {
        const osg::ref_ptr<osg::Shape> child = stream.readObjectOfType<osg::Shape>();
        if (child && !contains(*child, composite, shapes))
            composite.addChild(child);
    }
    stream >> stream.END_BRACKET;
    return true;
}

bool readElementCount(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object& object) {
    unsigned int count = 0;
    if (stream.isBinary() || stream.matchString("NumElements"))
        stream >> count;
    if (count > mostUniformElements)
        throw DamagedFile("a uniform of absurd size");
    if (count > 0)
        dynamic_cast<osg::Uniform&>(object).setNumElements(count);
    return true;
}

bool readElements(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object& object) {
    auto& uniform = dynamic_cast<osg::Uniform&>(object);
    if (!isPresent(stream, "Elements"))
        return true;
    bool hasArray = false;
    stream >> hasArray;
    const osg::ref_ptr<osg::Array> array = hasArray ? stream.readArray() : nullptr;
    // The library takes no array that does not fit.
    if (auto* floats = dynamic_cast<osg::FloatArray*>(array.get()))
        uniform.setArray(floats);
    else if (auto* doubles = dynamic_cast<osg::DoubleArray*>(array.get()))
        uniform.setArray(doubles);
    else if (auto* numbers = dynamic_cast<osg::IntArray*>(array.get()))
        uniform.setArray(numbers);
    else if (auto* naturals = dynamic_cast<osg::UIntArray*>(array.get()))
        uniform.setArray(naturals);
    return true;
}

bool readColorLayers(osgDB::BaseSerializer&, osgDB::InputStream& stream, osg::Object& object) {
    auto& tile = dynamic_cast<osgTerrain::TerrainTile&>(object);
    if (!isPresent(stream, "ColorLayers"))
        return true;
    unsigned int count = 0;
    stream >> count >> stream.BEGIN_BRACKET;
    for (unsigned int i = 0; i < count; ++i) {
        unsigned int number = 0;
        stream >> stream.PROPERTY("Layer") >> number;
        const osg::ref_ptr<osgTerrain::Layer> layer = stream.readObjectOfType<osgTerrain::Layer>();
        if (number >= mostLayers)
            throw DamagedFile("a terrain of absurdly many layers");
        if (layer)
            tile.setColorLayer(number, layer);
    }
    stream >> stream.END_BRACKET;
    return true;
}

} // namespace

void installSaferSerializers() {
    static std::once_flag once;
    std::call_once(once, [] {
        replace("osg::Billboard", "PositionList", readPositions);
        replace("osg::HeightField", "Area", readArea);
        replace("osg::HeightField", "Heights", readHeights);
        replace("osg::TriangleMesh", "Indices", readIndices);
        replace("osg::TessellationHints", "DetailRatio", readDetail);
        replace("osg::CompositeShape", "Children", readShapes);
        replace("osg::Uniform", "NumElements", readElementCount);
        replace("osg::Uniform", "Elements", readElements);
        replace("osgTerrain::TerrainTile", "ColorLayers", readColorLayers);
    });
}

} // namespace orbisk
