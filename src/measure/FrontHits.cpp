#include "measure/FrontHits.h"

#include <algorithm>
#include <limits>

namespace orbisk {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double roundoff = std::numeric_limits<double>::epsilon() / 2;

/// The distance of the front, taken from its coordinates, and that of a hit, from its parameter,
/// are off by less than that, times how far the origin and the hit are off, together.
constexpr double tiePart = 32 * roundoff;
/// Hits that lie so many ties farther than the nearest are looked for.
constexpr double tiesToLimit = 8.0;

} // namespace

FrontHits::FrontHits(const PickRay& ray, std::optional<double> front)
    : m_originLength(ray.origin.length()), m_front(front), m_limit(infinity), m_nearest(infinity) {
    if (front)
        lower(*front);
}

void FrontHits::add(const Hit& hit) {
    m_hits.push_back(hit);
    if (m_takesAll)
        return;
    const bool isAhead = hit.distance >= 0.0;
    if (!isAhead) {
        m_hasOneBehind = true;
        m_limit = -infinity;
    } else if (!m_hasOneBehind) {
        lower(hit.distance);
    }
}

bool FrontHits::areEnough() const {
    if (m_takesAll || m_hasOneBehind)
        return m_takesAll;
    double last = m_nearest;
    while (true) {
        const double reach = farthestUpTo(last + tieAt(last));
        const bool isGapBeforeLimit = !(m_limit - reach <= tieAt(m_limit));
        if (reach <= last || !isGapBeforeLimit)
            return isGapBeforeLimit;
        last = reach;
    }
}

void FrontHits::takeAll() {
    m_takesAll = true;
    m_limit = infinity;
    m_hits.clear();
}

const std::vector<FrontHits::Hit>& FrontHits::inOrder() {
    std::sort(m_hits.begin(), m_hits.end(),
              [](const Hit& one, const Hit& other) { return one.number < other.number; });
    return m_hits;
}

double FrontHits::tieAt(double distance) const {
    return tiePart * (m_originLength + distance);
}

/// How far off the farthest hit is among those up to `most`.
double FrontHits::farthestUpTo(double most) const {
    double farthest = m_nearest;
    if (m_front && *m_front <= most)
        farthest = std::max(farthest, *m_front);
    for (const Hit& hit : m_hits)
        if (hit.distance <= most)
            farthest = std::max(farthest, hit.distance);
    return farthest;
}

void FrontHits::lower(double nearest) {
    if (nearest >= m_nearest)
        return;
    m_nearest = nearest;
    m_limit = nearest + tiesToLimit * tieAt(nearest);
}

} // namespace orbisk
