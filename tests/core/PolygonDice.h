#pragma once

#include "core/FlatPolygon.h"

#include <random>

namespace orbisk::test {

/// Draws numbers, places and polygons; the same ones in every run and on every machine.
class PolygonDice {
public:
    /// From `low` to `high`, both included.
    int number(int low, int high);

    bool one(int outOf) { return number(1, outOf) == 1; }

    /// Coordinates from `-size` to `size`.
    Exact::Place place(int size);
    Flat flat(int size);

    /// A plane that isn't parallel to an axis.
    Plane obliquePlane();

    FlatPolygon scattered(int count, int size);

    /// Simple, counterclockwise, in general concave, grown by pulling out one edge after the other.
    FlatPolygon simple(int count, int size);

    /// The corners of some places' convex hull, counterclockwise.
    FlatPolygon convex(int count, int size);

    /// A polygon of one of all kinds: convex, concave, crossing itself, nearly flat, scattered in
    /// space, with repeated and collinear vertices.
    Exact::Places polygon();

private:
    /// The same polygon, beginning anywhere.
    FlatPolygon turned(FlatPolygon polygon);

    /// Some places of the vertex list are repeated, or get a vertex in line with the last two.
    void spoil(Exact::Places& places);

    std::mt19937 m_bits{20260411};
};

} // namespace orbisk::test
