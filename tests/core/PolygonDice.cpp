#include "core/PolygonDice.h"

#include <algorithm>

namespace orbisk::test {

int PolygonDice::number(int low, int high) {
    return low + static_cast<int>(m_bits() % static_cast<unsigned>(high - low + 1));
}

Exact::Place PolygonDice::place(int size) {
    return {number(-size, size), number(-size, size), number(-size, size)};
}

Flat PolygonDice::flat(int size) {
    return {number(-size, size), number(-size, size)};
}

Plane PolygonDice::obliquePlane() {
    Plane plane;
    do
        plane = {place(9), place(2), place(2)};
    while (plane.sense() == 0);
    return plane;
}

FlatPolygon PolygonDice::scattered(int count, int size) {
    FlatPolygon polygon;
    for (int i = 0; i < count; ++i)
        polygon.push_back(flat(size));
    return polygon;
}

FlatPolygon PolygonDice::simple(int count, int size) {
    FlatPolygon polygon;
    do
        polygon = scattered(3, size);
    while (doubleArea(polygon) <= 0);
    for (int tries = 0; static_cast<int>(polygon.size()) < count && tries < 20 * count; ++tries) {
        FlatPolygon grown = polygon;
        grown.insert(grown.begin() + number(0, static_cast<int>(grown.size()) - 1), flat(size));
        if (isSimple(grown) && doubleArea(grown) > 0)
            polygon = grown;
    }
    return turned(polygon);
}

FlatPolygon PolygonDice::convex(int count, int size) {
    FlatPolygon places;
    do
        places = scattered(count, size);
    while (std::all_of(places.begin(), places.end(),
                       [&](const Flat& place) { return turn(places[0], places[1], place) == 0; }));
    FlatPolygon hull;
    Flat current =
        *std::min_element(places.begin(), places.end(), [](const Flat& a, const Flat& b) {
            return a.u != b.u ? a.u < b.u : a.v < b.v;
        });
    const Flat first = current;
    do {
        hull.push_back(current);
        Flat next = current;
        for (const Flat& place : places) {
            const int side = turn(current, next, place);
            if ((next.u == current.u && next.v == current.v) || side < 0 ||
                (side == 0 && isBetween(current, place, next)))
                next = place;
        }
        current = next;
    } while (current.u != first.u || current.v != first.v);
    return turned(hull);
}

FlatPolygon PolygonDice::turned(FlatPolygon polygon) {
    std::rotate(polygon.begin(), polygon.begin() + number(0, static_cast<int>(polygon.size()) - 1),
                polygon.end());
    return polygon;
}

void PolygonDice::spoil(Exact::Places& places) {
    const int count = number(1, 2);
    for (int i = 0; i < count; ++i) {
        // Mostly near the end, where it is looked for.
        const std::size_t n = places.size();
        const std::size_t where =
            one(2) ? n : static_cast<std::size_t>(number(2, static_cast<int>(n)));
        Exact::Place inserted = places[where - 1];
        const int steps = number(-2, 3);
        for (std::size_t axis = 0; axis < 3; ++axis)
            inserted[axis] += steps * (places[where - 1][axis] - places[where - 2][axis]);
        places.insert(places.begin() + static_cast<std::ptrdiff_t>(where), inserted);
    }
    if (one(3))
        places.push_back(places.front());
}

Exact::Places PolygonDice::polygon() {
    const int count = number(3, 9);
    const Plane plane = one(8) ? Plane{place(9), {1, 0, 0}, {0, 1, 0}} : obliquePlane();
    Exact::Places places;
    switch (number(0, 4)) {
    case 0:
        places = plane.at(convex(count, 6));
        break;
    case 1:
        places = plane.at(simple(count, 6));
        break;
    case 2:
        places = plane.at(scattered(count, number(2, 6)));
        break;
    case 3:
        places = plane.at(simple(count, 6));
        for (Exact::Place& each : places)
            each[2] += number(-1, 1);
        break;
    default:
        for (int i = 0; i < count; ++i)
            places.push_back(place(4));
    }
    if (one(2))
        std::reverse(places.begin(), places.end());
    if (one(3))
        spoil(places);
    return places;
}

} // namespace orbisk::test
