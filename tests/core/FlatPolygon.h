#pragma once

#include "core/PolygonReference.h"

#include <osg/Vec3d>

#include <cstdint>
#include <string>
#include <vector>

namespace orbisk::test {

using Exact = PolygonReference<std::int64_t>;

/// A place in a plane's own coordinates.
struct Flat {
    int u;
    int v;
};
using FlatPolygon = std::vector<Flat>;

/// Twice the area of a triangle, positive counterclockwise.
int turn(const Flat& a, const Flat& b, const Flat& c);

/// Twice the area, positive counterclockwise.
int doubleArea(const FlatPolygon& polygon);

/// Whether `c` is in the box around `a` and `b`; of three in line it is between them then.
bool isBetween(const Flat& a, const Flat& b, const Flat& c);

/// Whether no edge touches another but its neighbours, and none turns back.
bool isSimple(const FlatPolygon& polygon);

/// A plane in space: where its coordinates begin, and its two axes.
struct Plane {
    Exact::Place origin;
    Exact::Place u;
    Exact::Place v;

    Exact::Place at(const Flat& flat) const;
    Exact::Places at(const FlatPolygon& polygon) const;

    Exact::Place normal() const { return Exact::cross(u, v); }

    /// How a counterclockwise polygon on it is taken: 1 adds, -1 subtracts, 0 needs a closer look.
    int sense() const;
};

/// Integer places as the program takes them.
osg::Vec3d vectorOf(const Exact::Place& place);
std::vector<osg::Vec3d> vectorsOf(const Exact::Places& places);

/// The same for a message.
std::string described(const Exact::Places& places);

} // namespace orbisk::test
