#include "measure/PickIndex.h"

#include <osg/MatrixTransform>
#include <osg/NodeVisitor>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace orbisk {

namespace {

/// One geometry may stand under several transforms; so many of its places have a tree.
constexpr std::size_t mostPlaces = 16;
/// Fewer vertices and indices are tested one by one as fast.
constexpr std::size_t smallGeometry = 256;
/// Entries of geometries that are gone are looked for no more often than that.
constexpr unsigned int fewestPicksBetweenCleanings = 64;

/// Whether some part of the program may write the geometry's vertices at any time, as animations
/// do. A subclass may do with them what it likes.
bool mayBeWritten(const osg::Geometry& geometry) {
    const bool isPlain = typeid(geometry) == typeid(osg::Geometry);
    const osg::Array* vertices = geometry.getVertexArray();
    return !isPlain || geometry.getDataVariance() == osg::Object::DYNAMIC ||
           (vertices && vertices->getDataVariance() == osg::Object::DYNAMIC);
}

bool isSmall(const osg::Geometry& geometry) {
    std::size_t size = geometry.getVertexArray()->getNumElements();
    for (const auto& set : geometry.getPrimitiveSetList())
        if (size <= smallGeometry)
            size += PickTriangles(*set).count();
    return size <= smallGeometry;
}

/// The matrices' own comparison takes what is no number for equal to anything.
bool equal(const osg::Matrixd& one, const osg::Matrixd& other) {
    constexpr std::size_t elements = 16;
    return std::equal(one.ptr(), one.ptr() + elements, other.ptr());
}

/// Whether the geometry, under this matrix, is one for a tree.
bool isIndexable(const osg::Geometry& geometry, const osg::Matrixd& matrix) {
    const osg::Array* vertices = geometry.getVertexArray();
    if (!vertices || mayBeWritten(geometry) || isSmall(geometry))
        return false;
    return vertices->getType() == osg::Array::Vec3ArrayType ||
           (vertices->getType() == osg::Array::Vec3dArrayType && matrix.isIdentity());
}

} // namespace

/// A tree to be built. The main thread owns it; the worker has it from its start to `isDone`.
struct PickIndex::Job {
    explicit Job(GeometrySource asked) : source(std::move(asked)) {}

    GeometrySource source;
    std::atomic<bool> cancelled = false;
    std::atomic<bool> isDone = false;
    std::optional<GeometryIndex> result;
};

/// A geometry that picks met under a matrix, as it was then. It is seen first, then there is a job,
/// then an index, or none because it would be no use.
struct PickIndex::Entry {
    Entry(const osg::Geometry& geometry, const osg::Matrixd& inForce, unsigned int pick)
        : mark(geometry), matrix(inForce), lastPick(pick) {}

    GeometryMark mark;
    osg::Matrixd matrix;
    unsigned int lastPick;
    std::unique_ptr<Job> job;
    std::optional<GeometryIndex> index;
    bool isUseless = false;
};

/// Meets geometries as a pick does.
class PickIndex::Collector : public osg::NodeVisitor {
public:
    explicit Collector(PickIndex& index)
        : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), m_index(index) {}

    META_NodeVisitor(orbisk, PickIndex::Collector)

        void apply(osg::MatrixTransform& transform) override {
        m_matrix = transform.getMatrix();
        traverse(transform);
    }

    void apply(osg::Geometry& geometry) override {
        if (!isIndexable(geometry, m_matrix) || m_index.entryOf(geometry, m_matrix))
            return;
        if (Entry* entry = m_index.makeEntry(geometry, m_matrix))
            m_index.queue(*entry, geometry);
    }

private:
    PickIndex& m_index;
    osg::Matrixd m_matrix;
};

PickIndex::PickIndex() = default;

PickIndex::~PickIndex() {
    clear();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

void PickIndex::add(osg::Node& model) {
    Collector collector(*this);
    model.accept(collector);
}

void PickIndex::clear() {
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_queue.clear();
        if (m_running)
            m_running->cancelled = true;
        m_changed.wait(lock, [this] { return !m_running; });
    }
    m_entries.clear();
    m_discarded.clear();
}

void PickIndex::finish() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_queue.empty() && !m_running; });
}

void PickIndex::beginPick() {
    ++m_pick;
    if (++m_picksSinceCleaning >
        std::max<std::size_t>(fewestPicksBetweenCleanings, m_entries.size()))
        dropDeadEntries();
}

const GeometryIndex* PickIndex::find(const osg::Geometry& geometry, const osg::Matrixd& matrix) {
    if (mayBeWritten(geometry))
        return nullptr;
    Entry* entry = entryOf(geometry, matrix);
    if (!entry) {
        if (isIndexable(geometry, matrix))
            makeEntry(geometry, matrix);
        return nullptr;
    }
    takeResult(*entry);
    // One that still is what it was is indexable still.
    const bool isSame = entry->mark.matches(geometry);
    if (!isSame && !isIndexable(geometry, matrix))
        return nullptr;
    const bool wasMetBefore = entry->lastPick != m_pick;
    entry->lastPick = m_pick;
    if (!isSame) {
        discard(*entry);
        *entry = Entry(geometry, matrix, m_pick);
    } else if (!entry->index && !entry->job && !entry->isUseless && wasMetBefore) {
        queue(*entry, geometry);
    }
    return entry->index ? &*entry->index : nullptr;
}

void PickIndex::release(const osg::Array& vertices) {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (auto next = m_queue.begin(); next != m_queue.end();) {
        Job& job = **next;
        const bool reads = job.source.vertices == &vertices;
        if (reads) {
            job.cancelled = true;
            job.isDone = true;
        }
        next = reads ? m_queue.erase(next) : std::next(next);
    }
    if (m_running && m_running->source.vertices == &vertices) {
        m_running->cancelled = true;
        const Job* reading = m_running;
        m_changed.wait(lock, [this, reading] { return m_running != reading; });
    }
}

std::size_t PickIndex::bytes() {
    std::size_t sum = 0;
    for (auto& [geometry, entries] : m_entries)
        for (Entry& entry : entries) {
            takeResult(entry);
            sum += entry.index ? entry.index->tree().bytes() : 0;
        }
    return sum;
}

std::size_t PickIndex::treeCount() {
    std::size_t count = 0;
    for (auto& [geometry, entries] : m_entries)
        for (Entry& entry : entries) {
            takeResult(entry);
            count += entry.index ? 1 : 0;
        }
    return count;
}

PickIndex::Entry* PickIndex::entryOf(const osg::Geometry& geometry, const osg::Matrixd& matrix) {
    const auto found = m_entries.find(&geometry);
    if (found == m_entries.end())
        return nullptr;
    for (Entry& entry : found->second)
        if (equal(entry.matrix, matrix))
            return &entry;
    return nullptr;
}

/// The entry of a place that has none. Where there are too many places it takes that of the one
/// that was not met for longest; null if this pick met them all.
PickIndex::Entry* PickIndex::makeEntry(const osg::Geometry& geometry, const osg::Matrixd& matrix) {
    std::vector<Entry>& entries = m_entries[&geometry];
    if (entries.size() < mostPlaces)
        return &entries.emplace_back(geometry, matrix, m_pick);
    const auto oldest =
        std::min_element(entries.begin(), entries.end(),
                         [](const Entry& a, const Entry& b) { return a.lastPick < b.lastPick; });
    if (oldest->lastPick == m_pick)
        return nullptr;
    discard(*oldest);
    *oldest = Entry(geometry, matrix, m_pick);
    return &*oldest;
}

void PickIndex::queue(Entry& entry, const osg::Geometry& geometry) {
    entry.job = std::make_unique<Job>(GeometrySource(geometry, entry.matrix));
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.push_back(entry.job.get());
    }
    if (!m_worker.joinable())
        m_worker = std::thread(&PickIndex::work, this);
    m_changed.notify_all();
}

void PickIndex::takeResult(Entry& entry) {
    if (!entry.job || !entry.job->isDone)
        return;
    entry.index = std::move(entry.job->result);
    entry.isUseless = !entry.index && !entry.job->cancelled;
    entry.job.reset();
}

/// Gives up what an entry has. A job that the worker is at stays until it is done.
void PickIndex::discard(Entry& entry) {
    entry.index.reset();
    if (!entry.job)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.erase(std::remove(m_queue.begin(), m_queue.end(), entry.job.get()), m_queue.end());
    if (m_running == entry.job.get()) {
        m_running->cancelled = true;
        m_discarded.push_back(std::move(entry.job));
    }
    entry.job.reset();
}

void PickIndex::dropDeadEntries() {
    m_picksSinceCleaning = 0;
    for (auto next = m_entries.begin(); next != m_entries.end();) {
        const bool isDead = !next->second.front().mark.exists();
        if (isDead)
            for (Entry& entry : next->second)
                discard(entry);
        next = isDead ? m_entries.erase(next) : std::next(next);
    }
    m_discarded.erase(std::remove_if(m_discarded.begin(), m_discarded.end(),
                                     [](const auto& job) { return job->isDone.load(); }),
                      m_discarded.end());
}

void PickIndex::work() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_ending || !m_queue.empty(); });
        if (m_ending)
            return;
        Job& job = *m_queue.front();
        m_queue.pop_front();
        m_running = &job;
        lock.unlock();
        job.result = GeometryIndex::build(job.source, job.cancelled);
        lock.lock();
        m_running = nullptr;
        job.isDone = true;
        m_changed.notify_all();
    }
}

} // namespace orbisk
