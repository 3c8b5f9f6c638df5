#pragma once

#include "measure/PickRay.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace orbisk {

/// The hits on one geometry that decide which hit comes to the front. They can be told in any
/// order; those beyond `limit` need not be told.
///
/// A hit comes to the front when that lies farther off, as rounding has it: so of two that are
/// nearly as far the order decides. But rounding never mistakes two that are farther apart than a
/// bound, the tie. Let no hit be behind the origin, and let there be a gap wider than a tie above
/// some of them, the cluster of the nearest. The first of the cluster takes the front from whatever
/// lies beyond the gap, and nothing beyond the gap takes it from one of the cluster: what lies
/// there changes nothing, and may be left out. The same holds with a front from earlier geometries,
/// which is one more hit, met first.
///
/// A hit behind the origin always comes to the front, and what comes after depends on how far
/// behind it is: then no hit can be left out. Nor where there is no such gap before the limit.
class FrontHits {
public:
    /// A hit on a triangle of this number.
    struct Hit {
        std::uint32_t number;
        double distance; ///< in lengths of the direction
    };

    /// @param front is how far off the front is that earlier geometries left, in lengths of the
    /// direction, if there is one. A number.
    FrontHits(const PickRay& ray, std::optional<double> front);

    /// Hits beyond that distance change nothing. Where it is found out that all count, and not all
    /// may have been told, it becomes less than any.
    double limit() const { return m_limit; }

    void add(const Hit& hit);

    /// Whether the hits told so far are enough. If not, all that there are have to be told again,
    /// after `takeAll`.
    bool areEnough() const;

    /// Forgets the hits; from now on all count.
    void takeAll();

    /// The hits in the order of their numbers.
    const std::vector<Hit>& inOrder();

private:
    double tieAt(double distance) const;
    double farthestUpTo(double most) const;
    void lower(double nearest);

    double m_originLength;
    std::optional<double> m_front;
    double m_limit;
    double m_nearest;
    bool m_takesAll = false;
    bool m_hasOneBehind = false;
    std::vector<Hit> m_hits;
};

} // namespace orbisk
