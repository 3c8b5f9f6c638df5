#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

namespace orbisk::test {

/// The rules of measuring a polygon once more, each written down the slow way. With 64-bit integers
/// as numbers they are exact; with long doubles they tell where a decision is so close that double
/// precision may take the other side.
template <class Number>
class PolygonReference {
public:
    using Place = std::array<Number, 3>;
    using Places = std::vector<Place>;

    struct Measured {
        long double area;
        std::optional<Places> triangles;
    };

    /// Whether any decision so far was too close to compare it with double precision.
    bool isDoubtful() const { return m_doubtful; }

    const Places& lastClean() const { return m_clean; }

    static Place minus(const Place& a, const Place& b) {
        return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    }

    static Place cross(const Place& a, const Place& b) {
        return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    }

    static Number dot(const Place& a, const Place& b) {
        return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    }

    int classify(const Place& p, const Place& q, const Place& r) {
        const Place d = minus(p, q);
        const Place e = minus(q, r);
        std::size_t axis = 0;
        while (axis < 3 && isNothing(d[axis]))
            ++axis;
        if (axis == 3)
            return isNothing(e[0]) && isNothing(e[1]) && isNothing(e[2]) ? 2 : 0;
        const Number k = wholeRatio(e[axis], d[axis]);
        for (std::size_t other = 0; other < 3; ++other)
            if (other != axis && !isNothing(e[other] - k * d[other]))
                return 5;
        if (k == 0)
            return 1;
        return k < 0 ? 3 : 4;
    }

    /// Cramer's rule in a projection, compared without dividing.
    bool meet(const Place& p1, const Place& p2, const Place& p3, const Place& p4) {
        static constexpr std::size_t kept[3][2] = {{0, 1}, {1, 2}, {0, 2}};
        for (const auto& [u, v] : kept) {
            const Number ax = p2[u] - p1[u];
            const Number ay = p2[v] - p1[v];
            const Number bx = p4[u] - p3[u];
            const Number by = p4[v] - p3[v];
            const Number wx = p3[u] - p1[u];
            const Number wy = p3[v] - p1[v];
            const Number determinant = ax * by - ay * bx;
            if (isNothing(determinant))
                continue;
            return isWithin(wx * by - wy * bx, determinant) &&
                   isWithin(wx * ay - wy * ax, determinant);
        }
        return true;
    }

    bool clean(Places& places) {
        std::size_t n = places.size();
        if (n < 3)
            return true;
        switch (classify(places[n - 3], places[n - 2], places[n - 1])) {
        case 0:
            places.erase(places.end() - 1);
            break;
        case 1:
        case 4:
            places.erase(places.end() - 2);
            break;
        case 2:
            places.erase(places.end() - 1);
            places.erase(places.end() - 2);
            break;
        case 3:
            places.erase(places.end() - 2);
            return false;
        default:
            break;
        }
        if (places.size() < 4)
            return true;
        switch (classify(places[places.size() - 1], places[0], places[1])) {
        case 0:
            places.erase(places.end() - 1);
            break;
        case 1:
            places.erase(places.begin());
            break;
        case 2:
            places.erase(places.end() - 1);
            places.erase(places.begin());
            break;
        case 3:
            return false;
        case 4:
            places.erase(places.end() - 2);
            break;
        default:
            break;
        }
        n = places.size();
        if (n < 4)
            return true;
        for (std::size_t i = 2; i <= n - 2; ++i)
            for (std::size_t j = 0; j <= i - 2; ++j)
                if (meet(places[i], places[i + 1], places[j], places[j + 1]))
                    return false;
        m_clean = places;
        return true;
    }

    bool closingEdgeCrosses(const Places& places) {
        const std::size_t n = places.size();
        if (n < 4)
            return false;
        for (std::size_t i = 1; i <= n - 3; ++i)
            if (meet(places[n - 1], places[0], places[i], places[i + 1]))
                return true;
        return false;
    }

    /// Half the normal's length is the triangle's area.
    long double signedArea(const Places& places) {
        long double sum = 0.0L;
        for (std::size_t i = 1; i + 1 < places.size(); ++i) {
            const Place normal =
                cross(minus(places[i], places[0]), minus(places[i + 1], places[0]));
            int s = signOfProduct(normal);
            for (std::size_t axis = 0; s == 0 && axis < 3; ++axis)
                if (!isNothing(normal[axis]))
                    s = sign(normal[axis]);
            if (s == 0)
                return sum;
            sum += s * std::sqrt(static_cast<long double>(dot(normal, normal))) / 2.0L;
        }
        return sum;
    }

    bool inside(const Place& p, const Place& a, const Place& b, const Place& c) {
        const std::array<const Place*, 5> corners = {&a, &b, &c, &a, &b};
        bool in = true;
        for (std::size_t i = 0; i < 3; ++i) {
            const Place edge = minus(*corners[i + 1], *corners[i]);
            const Place towardsPoint = cross(edge, minus(p, *corners[i]));
            const Place towardsThird = cross(edge, minus(*corners[i + 2], *corners[i]));
            in = sign(dot(towardsPoint, towardsThird)) >= 0 && in;
        }
        return in;
    }

    bool ear(const Places& left, std::size_t previous, std::size_t current, std::size_t next) {
        const Place& a = left[previous];
        const Place& b = left[current];
        const Place& c = left[next];
        if (signOfProduct(cross(minus(b, a), minus(c, a))) <= 0)
            return false;
        for (std::size_t j = 0; j < left.size(); ++j)
            if (j != previous && j != current && j != next && inside(left[j], a, b, c))
                return false;
        return true;
    }

    /// Looks at every corner anew after each ear.
    std::optional<Places> triangulate(const Places& places, bool positive) {
        if (places.size() < 3)
            return std::nullopt;
        if (places.size() == 3)
            return places;
        Places left = positive ? places : Places(places.rbegin(), places.rend());
        Places triangles;
        for (std::size_t m = left.size(); m > 2; --m) {
            std::size_t i = 0;
            while (i + 1 < m && !ear(left, i, i + 1, (i + 2) % m))
                ++i;
            if (i + 1 == m)
                return std::nullopt;
            triangles.insert(triangles.end(), {left[i], left[i + 1], left[(i + 2) % m]});
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(i + 1));
        }
        return triangles;
    }

    /// Everything after the projection.
    std::optional<Measured> measure(Places projected) {
        if (!clean(projected) || closingEdgeCrosses(m_clean))
            return std::nullopt;
        const long double area = signedArea(projected);
        if (area == 0.0L)
            return Measured{0.0L, std::nullopt};
        return Measured{std::abs(area), triangulate(projected, area > 0.0L)};
    }

private:
    static constexpr long double nothing = 1e-6L;
    /// How far double precision may be off in what is compared; about a thousandfold of what the
    /// coordinates of these tests bring.
    static constexpr long double margin = 1e-8L;

    void see(long double distance) {
        if (!std::is_integral_v<Number> && std::abs(distance) < margin)
            m_doubtful = true;
    }

    bool isNothing(Number value) {
        if constexpr (std::is_integral_v<Number>) {
            return value == 0;
        } else {
            see(std::abs(value) - nothing);
            return std::abs(value) < nothing;
        }
    }

    int sign(Number value) {
        see(value);
        return (value > 0) - (value < 0);
    }

    int signOfProduct(const Place& normal) {
        return sign(normal[0]) * sign(normal[1]) * sign(normal[2]);
    }

    /// Whether part / whole is from 0 to 1.
    bool isWithin(Number part, Number whole) {
        see(part);
        see(part - whole);
        return whole > 0 ? part >= 0 && part <= whole : part <= 0 && part >= whole;
    }

    Number wholeRatio(Number e, Number d) {
        if constexpr (std::is_integral_v<Number>) {
            return e / d;
        } else {
            const Number ratio = e / d;
            if (std::round(ratio) != 0)
                see(ratio - std::round(ratio));
            return std::trunc(ratio);
        }
    }

    bool m_doubtful = false;
    Places m_clean;
};

} // namespace orbisk::test
