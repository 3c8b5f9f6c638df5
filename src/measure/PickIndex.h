#pragma once

#include "measure/GeometryIndex.h"

#include <osg/Geometry>
#include <osg/Matrixd>
#include <osg/Node>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_map>
#include <vector>

namespace orbisk {

/// Makes picking fast: triangle trees of the model's geometries, built on a thread of its own while
/// the model is already shown. What has no tree yet is found the slow way, with the same result.
///
/// A tree belongs to a geometry, its vertices and primitive sets as they are, and the matrix in
/// force. When any of that changes the tree is dropped, and a new one is built once two picks in a
/// row met the geometry unchanged. The same goes for what the model loads later. No trees have
/// geometries that may be written while they are read (dynamic ones, and those of derived types),
/// those with vertices in double precision under a transform, and small ones.
///
/// The index keeps no geometry alive. The worker reads vertices and indices; nobody may write them
/// meanwhile, but for a pick, which asks with `release`. Before anything else changes the model,
/// call `clear`.
///
/// All operations are the main thread's.
class PickIndex {
public:
    PickIndex();
    ~PickIndex();

    PickIndex(const PickIndex&) = delete;
    PickIndex& operator=(const PickIndex&) = delete;

    /// Has trees built for all that is in `model` now, in the order of a pick. Returns at once.
    void add(osg::Node& model);

    /// Forgets everything. The worker has let go of the model when this returns, which it does
    /// within milliseconds, or tens of them where a geometry has ten million triangles.
    void clear();

    /// Waits until everything that was asked for is built.
    void finish();

    /// Begins a pick: what is found from now on was met by the same one.
    void beginPick();

    /// The index of a geometry that the current pick met under `matrix`; null while there is none.
    const GeometryIndex* find(const osg::Geometry& geometry, const osg::Matrixd& matrix);

    /// Makes sure that the worker does not read `vertices`, which are about to change.
    void release(const osg::Array& vertices);

    /// What all trees take in memory.
    std::size_t bytes();

    /// How many trees there are.
    std::size_t treeCount();

private:
    class Collector;
    struct Job;
    struct Entry;

    Entry* entryOf(const osg::Geometry& geometry, const osg::Matrixd& matrix);
    Entry* makeEntry(const osg::Geometry& geometry, const osg::Matrixd& matrix);
    void queue(Entry& entry, const osg::Geometry& geometry);
    void takeResult(Entry& entry);
    void discard(Entry& entry);
    void dropDeadEntries();
    void work();

    std::unordered_map<const osg::Geometry*, std::vector<Entry>> m_entries;
    std::vector<std::unique_ptr<Job>> m_discarded; ///< dropped while the worker was at them
    unsigned int m_pick = 0;
    unsigned int m_picksSinceCleaning = 0;

    std::mutex m_mutex; ///< guards what follows, and the ends of jobs
    std::condition_variable m_changed;
    std::deque<Job*> m_queue;
    Job* m_running = nullptr;
    bool m_ending = false;
    std::thread m_worker; ///< from the first job on
};

} // namespace orbisk
