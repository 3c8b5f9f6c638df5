// The update traversal of a model of ten thousand geometries in an unchanged display mode, with
// the program's callback on the model and without it.

#include "support/Report.h"
#include "view/ModelUpdateCallback.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Group>
#include <osgUtil/UpdateVisitor>

#include <chrono>
#include <cstdlib>
#include <new>
#include <string>

namespace {

long allocations = 0;

} // namespace

// Counts what is taken from the heap, by this program or by a library.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace orbisk::bench;
using Clock = std::chrono::steady_clock;

constexpr int groups = 100;
constexpr int geometriesPerGroup = 100;
constexpr int repetitions = 41;

/// The callback looks through the model now and then: a measurement takes in whole such rounds.
constexpr int round = orbisk::ModelUpdateCallback::updatesBetweenWalks;

const Wanted none{Wanted::Bound::AtMost, 0.0};

/// One of the two models.
struct Case {
    Subject subject;
    bool everyGeodeUpdates; ///< so that the traversal comes to every geometry anyway
    int roundsPerRepetition;
};

const Case cases[] = {
    {{"update 10 000 geometries, all reached", "us", Choice::Lowest,
      Wanted{Wanted::Bound::AtMost, 1.1}},
     true,
     10},
    {{"update 10 000 geometries, static model", "us", Choice::Lowest, std::nullopt}, false, 100},
};

class TrivialCallback : public osg::NodeCallback {
public:
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override {
        traverse(node, visitor);
    }
};

osg::ref_ptr<osg::Geometry> makeTriangle(float place) {
    const osg::ref_ptr<osg::Vec3Array> points = new osg::Vec3Array;
    for (const osg::Vec3& corner : {osg::Vec3(0, 0, 0), osg::Vec3(1, 0, 0), osg::Vec3(0, 1, 0)})
        points->push_back(corner + osg::Vec3(place, 0, 0));
    osg::ref_ptr<osg::Geometry> triangle = new osg::Geometry;
    triangle->setVertexArray(points);
    triangle->addPrimitiveSet(new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, 3));
    return triangle;
}

osg::ref_ptr<osg::Group> makeModel(bool everyGeodeUpdates) {
    osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<TrivialCallback> callback = new TrivialCallback;
    for (int i = 0; i < groups; ++i) {
        const osg::ref_ptr<osg::Group> group = new osg::Group;
        for (int k = 0; k < geometriesPerGroup; ++k) {
            const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
            geode->addDrawable(makeTriangle(static_cast<float>(i * geometriesPerGroup + k)));
            if (everyGeodeUpdates)
                geode->setUpdateCallback(callback);
            group->addChild(geode);
        }
        model->addChild(group);
    }
    return model;
}

/// Traverses one model, with or without the callback on it.
class Traversal {
public:
    explicit Traversal(const Case& which)
        : m_case(which), m_model(makeModel(which.everyGeodeUpdates)), m_root(new osg::Group),
          m_callback(new orbisk::ModelUpdateCallback) {
        m_root->addChild(m_model);
    }

    /// Microseconds a traversal.
    double withCallback() {
        m_callback->attachTo(*m_model);
        // The first one has the mode to apply.
        traverse(1);
        const long before = allocations;
        const double time = traverse(m_case.roundsPerRepetition * round);
        m_allocations += allocations - before;
        m_callback->detachFrom(*m_model);
        return time;
    }

    double withoutCallback() {
        traverse(1);
        return traverse(m_case.roundsPerRepetition * round);
    }

    long allocationCount() const { return m_allocations; }

private:
    double traverse(int count) {
        const auto begin = Clock::now();
        for (int i = 0; i < count; ++i)
            m_root->accept(m_visitor);
        const std::chrono::duration<double, std::micro> time = Clock::now() - begin;
        return time.count() / count;
    }

    const Case& m_case;
    osg::ref_ptr<osg::Group> m_model;
    osg::ref_ptr<osg::Group> m_root;
    osg::ref_ptr<orbisk::ModelUpdateCallback> m_callback;
    osgUtil::UpdateVisitor m_visitor;
    long m_allocations = 0;
};

void measure(Report& report) {
    for (const Case& which : cases) {
        if (!report.wants(which.subject.name))
            continue;
        Traversal traversal(which);
        report.add(which.subject, interleave(
                                      repetitions, [&] { return traversal.withCallback(); },
                                      [&] { return traversal.withoutCallback(); }));
        report.add(Limit{which.subject.name + ", allocations", "", none},
                   static_cast<double>(traversal.allocationCount()));
    }
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
