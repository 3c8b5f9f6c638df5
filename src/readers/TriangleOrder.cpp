#include "readers/TriangleOrder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace orbisk {

namespace {

constexpr std::uint32_t none = ~std::uint32_t{0};
constexpr std::size_t corners = 3;

/// Common meshes need about a hundred. Where thousands of triangles meet at one vertex the method
/// looks at all of them for each one it takes.
constexpr std::size_t looksPerTriangle = 512;

/// What a vertex adds to the worth of its triangles, by its place in the cache and by how many
/// triangles still wait for it. The constants are those of the method's paper.
class VertexScores {
public:
    static constexpr std::size_t cacheSize = 32;

    VertexScores() {
        constexpr float lastTriangle = 0.75f;
        constexpr float decay = 1.5f;
        constexpr float scaler = 1.0f / (cacheSize - corners);
        for (std::size_t place = 0; place < cacheSize; ++place)
            m_ofPlace[place] =
                place < corners
                    ? lastTriangle
                    : std::pow(1.0f - static_cast<float>(place - corners) * scaler, decay);
        for (std::size_t count = 1; count < m_ofWaiting.size(); ++count)
            m_ofWaiting[count] = ofWaiting(count);
    }

    /// @param place in the cache, or any number from `cacheSize` on outside of it.
    float score(std::uint32_t place, std::uint32_t waiting) const {
        if (waiting == 0)
            return -1.0f;
        const float cached = place < cacheSize ? m_ofPlace[place] : 0.0f;
        return cached + (waiting < m_ofWaiting.size() ? m_ofWaiting[waiting] : ofWaiting(waiting));
    }

private:
    static float ofWaiting(std::size_t count) {
        constexpr float scale = 2.0f;
        constexpr float power = -0.5f;
        return scale * std::pow(static_cast<float>(count), power);
    }

    static constexpr std::size_t usual = 64;

    std::array<float, cacheSize> m_ofPlace{};
    std::array<float, usual> m_ofWaiting{};
};

/// Finds the first of the triangles with the highest score. The scores belong to somebody else, who
/// tells which ones have changed; what stands in between is looked at again only when asked.
class BestTriangle {
public:
    explicit BestTriangle(const std::vector<float>& scores) : m_scores(scores) {
        const std::size_t blocks = (scores.size() + blockSize - 1) / blockSize;
        while (m_leaves < blocks)
            m_leaves *= 2;
        m_best.assign(2 * m_leaves, none);
        m_isChanged.assign(blocks, 0);
        for (std::uint32_t block = 0; block < blocks; ++block)
            tellOfBlock(block);
    }

    void tell(std::uint32_t triangle) { tellOfBlock(triangle / blockSize); }

    std::uint32_t find() {
        for (const std::uint32_t block : m_changed) {
            m_isChanged[block] = 0;
            m_best[m_leaves + block] = bestOfBlock(block);
            for (std::size_t node = (m_leaves + block) / 2; node > 0; node /= 2)
                m_best[node] = better(m_best[2 * node], m_best[2 * node + 1]);
        }
        m_changed.clear();
        return m_best[1];
    }

private:
    static constexpr std::uint32_t blockSize = 64;

    void tellOfBlock(std::uint32_t block) {
        if (m_isChanged[block])
            return;
        m_isChanged[block] = 1;
        m_changed.push_back(block);
    }

    std::uint32_t bestOfBlock(std::uint32_t block) const {
        const auto begin = m_scores.begin() + static_cast<std::ptrdiff_t>(block) * blockSize;
        const auto left = m_scores.end() - begin;
        const auto end = begin + std::min<std::ptrdiff_t>(left, blockSize);
        return static_cast<std::uint32_t>(std::max_element(begin, end) - m_scores.begin());
    }

    std::uint32_t better(std::uint32_t first, std::uint32_t second) const {
        if (first == none || second == none)
            return first == none ? second : first;
        return m_scores[second] > m_scores[first] ? second : first;
    }

    const std::vector<float>& m_scores;
    std::size_t m_leaves = 1;
    std::vector<std::uint32_t> m_best; ///< a binary tree, its root at 1
    std::vector<std::uint32_t> m_changed;
    std::vector<char> m_isChanged;
};

/// The order in the making.
class Ordering {
public:
    Ordering(const std::vector<std::uint32_t>& triangles, std::uint32_t vertexCount);

    std::vector<std::uint32_t> run();

private:
    struct Vertex {
        std::uint32_t first = 0;   ///< of its triangles in m_trianglesOfVertices
        std::uint32_t waiting = 0; ///< so many of them, which come first
        std::uint32_t place = none;
        float score = 0.0f;
    };
    using Triangle = std::array<std::uint32_t, corners>;

    void scoreTriangle(std::uint32_t triangle);
    std::uint32_t bestOfCached();
    void take(std::uint32_t triangle, BestTriangle& best);
    void forgetOldest(BestTriangle& best);
    void remember(const Triangle& triangle);

    static const VertexScores& scores() {
        static const VertexScores table;
        return table;
    }

    std::vector<Triangle> m_triangles;
    std::vector<float> m_scores; ///< of the triangles
    std::vector<Vertex> m_vertices;
    std::vector<std::uint32_t> m_trianglesOfVertices;
    std::array<std::uint32_t, VertexScores::cacheSize + corners> m_cache{}; ///< newest first
    std::size_t m_cached = 0;
    std::vector<std::uint32_t> m_result;
    std::size_t m_looks = 0; ///< at triangles, to find the best one
};

Ordering::Ordering(const std::vector<std::uint32_t>& triangles, std::uint32_t vertexCount)
    : m_vertices(vertexCount) {
    m_triangles.reserve(triangles.size() / corners);
    for (std::size_t i = 0; i + corners <= triangles.size(); i += corners) {
        const Triangle triangle{triangles[i], triangles[i + 1], triangles[i + 2]};
        if (triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[0] == triangle[2])
            continue;
        m_triangles.push_back(triangle);
        for (const std::uint32_t vertex : triangle)
            ++m_vertices[vertex].waiting;
    }
    std::uint32_t first = 0;
    for (Vertex& vertex : m_vertices) {
        vertex.first = first;
        first += vertex.waiting;
        vertex.score = scores().score(none, vertex.waiting);
        vertex.waiting = 0;
    }
    m_trianglesOfVertices.resize(first);
    m_scores.resize(m_triangles.size());
    for (std::uint32_t i = 0; i < m_triangles.size(); ++i) {
        for (const std::uint32_t vertex : m_triangles[i])
            m_trianglesOfVertices[m_vertices[vertex].first + m_vertices[vertex].waiting++] = i;
        scoreTriangle(i);
    }
}

void Ordering::scoreTriangle(std::uint32_t triangle) {
    const Triangle& t = m_triangles[triangle];
    m_scores[triangle] = m_vertices[t[0]].score + m_vertices[t[1]].score + m_vertices[t[2]].score;
}

/// The best triangle with a vertex in the cache; none when no such triangle waits.
std::uint32_t Ordering::bestOfCached() {
    std::uint32_t best = none;
    float bestScore = 0.0f;
    for (std::size_t place = 0; place < m_cached; ++place) {
        const Vertex& vertex = m_vertices[m_cache[place]];
        m_looks += vertex.waiting;
        for (std::uint32_t i = vertex.first; i < vertex.first + vertex.waiting; ++i) {
            const std::uint32_t triangle = m_trianglesOfVertices[i];
            scoreTriangle(triangle);
            if (m_scores[triangle] > bestScore) {
                bestScore = m_scores[triangle];
                best = triangle;
            }
        }
    }
    return best;
}

void Ordering::take(std::uint32_t triangle, BestTriangle& best) {
    m_scores[triangle] = -1.0f;
    best.tell(triangle);
    for (const std::uint32_t number : m_triangles[triangle]) {
        m_result.push_back(number);
        Vertex& vertex = m_vertices[number];
        const auto begin =
            m_trianglesOfVertices.begin() + static_cast<std::ptrdiff_t>(vertex.first);
        // The others keep their order: the first of equal ones is taken.
        static_cast<void>(
            std::remove(begin, begin + static_cast<std::ptrdiff_t>(vertex.waiting), triangle));
        --vertex.waiting;
    }
}

/// The last three are scored as if they had left the cache, before some of them do: afterwards
/// nobody would look at their triangles.
void Ordering::forgetOldest(BestTriangle& best) {
    if (m_cached + corners <= VertexScores::cacheSize)
        return;
    for (std::size_t place = m_cached - corners; place < m_cached; ++place) {
        Vertex& vertex = m_vertices[m_cache[place]];
        vertex.place = none;
        vertex.score = scores().score(none, vertex.waiting);
    }
    for (std::size_t place = m_cached - corners; place < m_cached; ++place) {
        const Vertex& vertex = m_vertices[m_cache[place]];
        for (std::uint32_t i = vertex.first; i < vertex.first + vertex.waiting; ++i) {
            scoreTriangle(m_trianglesOfVertices[i]);
            best.tell(m_trianglesOfVertices[i]);
        }
    }
}

void Ordering::remember(const Triangle& triangle) {
    std::array<std::uint32_t, VertexScores::cacheSize + corners> cache{};
    std::copy(triangle.begin(), triangle.end(), cache.begin());
    std::size_t cached = corners;
    for (std::size_t place = 0; place < m_cached; ++place)
        if (std::find(triangle.begin(), triangle.end(), m_cache[place]) == triangle.end())
            cache[cached++] = m_cache[place];
    m_cache = cache;
    m_cached = std::min(cached, VertexScores::cacheSize);
    for (std::size_t place = 0; place < m_cached; ++place) {
        Vertex& vertex = m_vertices[m_cache[place]];
        vertex.place = static_cast<std::uint32_t>(place);
        vertex.score = scores().score(vertex.place, vertex.waiting);
    }
}

std::vector<std::uint32_t> Ordering::run() {
    const std::size_t mostLooks = m_triangles.size() * looksPerTriangle;
    BestTriangle best(m_scores);
    m_result.reserve(m_triangles.size() * corners);
    std::size_t left = m_triangles.size();
    for (; left > 0 && m_looks <= mostLooks; --left) {
        std::uint32_t triangle = bestOfCached();
        if (triangle == none)
            triangle = best.find();
        take(triangle, best);
        forgetOldest(best);
        remember(m_triangles[triangle]);
    }
    if (left > 0)
        for (std::uint32_t i = 0; i < m_triangles.size(); ++i)
            if (m_scores[i] >= 0.0f)
                m_result.insert(m_result.end(), m_triangles[i].begin(), m_triangles[i].end());
    return std::move(m_result);
}

} // namespace

std::vector<std::uint32_t> cacheFriendlyOrder(const std::vector<std::uint32_t>& triangles,
                                              std::uint32_t vertexCount) {
    return Ordering(triangles, vertexCount).run();
}

} // namespace orbisk
