#include "readers/ObjScene.h"

#include "readers/ObjGeometry.h"

#include <osg/Geode>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

namespace orbisk {

namespace {

/// Longer names are cut: thousands of geodes may share one that fills a file.
constexpr std::size_t longestName = 1024;

/// The groups by number, in the order in which the scene has them.
std::vector<std::uint32_t> sortedGroups(const ObjFile& file) {
    std::vector<std::uint32_t> byName(file.names.size());
    std::iota(byName.begin(), byName.end(), 0);
    std::sort(byName.begin(), byName.end(),
              [&](std::uint32_t a, std::uint32_t b) { return file.names[a] < file.names[b]; });
    std::vector<std::uint32_t> rank(file.names.size());
    for (std::uint32_t i = 0; i < byName.size(); ++i)
        rank[byName[i]] = i;

    const auto key = [&](std::uint32_t number) {
        const ObjGroup& group = file.groups[number];
        return std::tuple(rank[group.material], rank[group.object], rank[group.name],
                          group.hasTextures, group.hasNormals, group.smoothing);
    };
    std::vector<std::uint32_t> groups(file.groups.size());
    std::iota(groups.begin(), groups.end(), 0);
    std::sort(groups.begin(), groups.end(),
              [&](std::uint32_t a, std::uint32_t b) { return key(a) < key(b); });
    return groups;
}

/// The elements of a file by their groups, those of a group in the order of the file.
class ElementsByGroup {
public:
    explicit ElementsByGroup(const ObjFile& file)
        : m_ends(file.groups.size() + 1), m_elements(file.elements.size()) {
        for (const ObjElement& element : file.elements)
            ++m_ends[element.group + 1];
        std::partial_sum(m_ends.begin(), m_ends.end(), m_ends.begin());
        std::vector<std::size_t> next = m_ends;
        for (const ObjElement& element : file.elements)
            m_elements[next[element.group]++] = &element;
    }

    std::vector<const ObjElement*> of(std::uint32_t group) const {
        const auto at = [&](std::size_t index) {
            return m_elements.begin() + static_cast<std::ptrdiff_t>(m_ends[index]);
        };
        return {at(group), at(group + 1)};
    }

private:
    std::vector<std::size_t> m_ends; ///< of the group before
    std::vector<const ObjElement*> m_elements;
};

std::string nameOf(const ObjGroup& group, const ObjFile& file) {
    const std::string& object = file.names[group.object];
    const std::string name = file.names[group.name].substr(0, longestName);
    if (object.empty() || name.empty())
        return object.empty() ? name : object.substr(0, longestName);
    return name + ":" + object.substr(0, longestName);
}

} // namespace

osg::ref_ptr<osg::Group> makeObjScene(const ObjFile& file, const ObjOptions& options,
                                      MaterialStates& materials) {
    osg::ref_ptr<osg::Group> scene = new osg::Group;
    ObjGeometry geometries(file, options);
    const ElementsByGroup elements(file);
    for (const std::uint32_t number : sortedGroups(file)) {
        const ObjGroup& group = file.groups[number];
        const osg::ref_ptr<osg::Geometry> geometry = geometries.make(group, elements.of(number));
        if (!geometry)
            continue;
        geometry->setStateSet(materials.stateSet(file.names[group.material]));
        osg::ref_ptr<osg::Geode> geode = new osg::Geode;
        geode->setName(nameOf(group, file));
        geode->addDrawable(geometry);
        scene->addChild(geode);
    }
    return scene->getNumChildren() > 0 ? scene : nullptr;
}

} // namespace orbisk
