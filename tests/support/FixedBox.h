#pragma once

#include <osg/BoundingBox>
#include <osg/Drawable>

namespace orbisk::test {

/// Reports a fixed box as a drawable's bound and counts how often it is asked.
class FixedBox : public osg::Drawable::ComputeBoundingBoxCallback {
public:
    explicit FixedBox(const osg::BoundingBox& box) : m_box(box) {}

    osg::BoundingBox computeBound(const osg::Drawable&) const override {
        ++calls;
        return m_box;
    }

    mutable int calls = 0;

private:
    osg::BoundingBox m_box;
};

} // namespace orbisk::test
