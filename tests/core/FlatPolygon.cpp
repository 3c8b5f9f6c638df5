#include "core/FlatPolygon.h"

#include <algorithm>
#include <sstream>

namespace orbisk::test {

namespace {

/// Whether two segments have a point in common; parallel ones need not.
bool touch(const Flat& a, const Flat& b, const Flat& c, const Flat& d) {
    const auto side = [](int value) { return (value > 0) - (value < 0); };
    const int abc = side(turn(a, b, c));
    const int abd = side(turn(a, b, d));
    const int cda = side(turn(c, d, a));
    const int cdb = side(turn(c, d, b));
    if (abc * abd < 0 && cda * cdb < 0)
        return true;
    return (abc == 0 && isBetween(a, b, c)) || (abd == 0 && isBetween(a, b, d)) ||
           (cda == 0 && isBetween(c, d, a)) || (cdb == 0 && isBetween(c, d, b));
}

} // namespace

int turn(const Flat& a, const Flat& b, const Flat& c) {
    return (b.u - a.u) * (c.v - a.v) - (b.v - a.v) * (c.u - a.u);
}

int doubleArea(const FlatPolygon& polygon) {
    int sum = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Flat& a = polygon[i];
        const Flat& b = polygon[(i + 1) % polygon.size()];
        sum += a.u * b.v - a.v * b.u;
    }
    return sum;
}

bool isBetween(const Flat& a, const Flat& b, const Flat& c) {
    return std::min(a.u, b.u) <= c.u && c.u <= std::max(a.u, b.u) && std::min(a.v, b.v) <= c.v &&
           c.v <= std::max(a.v, b.v);
}

bool isSimple(const FlatPolygon& polygon) {
    const std::size_t n = polygon.size();
    const auto vertex = [&](std::size_t i) { return polygon[i % n]; };
    for (std::size_t i = 0; i < n; ++i) {
        if (isBetween(vertex(i), vertex(i + 1), vertex(i + 2)) &&
            turn(vertex(i), vertex(i + 1), vertex(i + 2)) == 0)
            return false;
        for (std::size_t j = i + 2; j < n; ++j)
            if ((j + 1) % n != i && touch(vertex(i), vertex(i + 1), vertex(j), vertex(j + 1)))
                return false;
    }
    return true;
}

Exact::Place Plane::at(const Flat& flat) const {
    Exact::Place place = origin;
    for (std::size_t axis = 0; axis < 3; ++axis)
        place[axis] += flat.u * u[axis] + flat.v * v[axis];
    return place;
}

Exact::Places Plane::at(const FlatPolygon& polygon) const {
    Exact::Places places;
    for (const Flat& flat : polygon)
        places.push_back(at(flat));
    return places;
}

int Plane::sense() const {
    int sign = 1;
    for (const std::int64_t component : normal())
        sign *= (component > 0) - (component < 0);
    return sign;
}

osg::Vec3d vectorOf(const Exact::Place& place) {
    return osg::Vec3d(static_cast<double>(place[0]), static_cast<double>(place[1]),
                      static_cast<double>(place[2]));
}

std::vector<osg::Vec3d> vectorsOf(const Exact::Places& places) {
    std::vector<osg::Vec3d> vectors;
    for (const Exact::Place& place : places)
        vectors.push_back(vectorOf(place));
    return vectors;
}

std::string described(const Exact::Places& places) {
    std::ostringstream text;
    for (const Exact::Place& place : places)
        text << '(' << place[0] << ", " << place[1] << ", " << place[2] << ") ";
    return text.str();
}

} // namespace orbisk::test
