#pragma once

#include <osg/Node>

#include <cstddef>
#include <optional>
#include <string>

namespace orbisk {

/// No path from a model's root to one of its leaves may have more nodes: everybody who walks a
/// model does so by recursion, and the smallest stack is of 1 MiB.
inline constexpr std::size_t deepestModel = 500;

/// A model may be met this often in one walk, counting each node once for each path that leads to
/// it. A few dozen nodes that share their children can otherwise keep a walk busy for years.
inline constexpr std::size_t mostVisits = 20'000'000;

/// Makes a model that was just read safe to draw, to measure and to pick. Readers believe the
/// numbers in a file, and so does whoever draws what they made of it.
///
/// - A primitive set that reaches beyond its vertices is left out, whole: which of its numbers is
///   the wrong one cannot be known.
/// - An array of normals, colours or the like that is too short for the primitives is left out.
/// - A coordinate of a vertex that is infinite, or so large that its square is, becomes NaN, which
///   drawing, bounds and picking leave out.
/// - What stands under a transform with such numbers is left out; such bounds are forgotten.
///
/// Changes the model without telling anybody: call it on the thread that read it, before anybody
/// else knows of it. Does not recurse, takes a few per cent of the time of reading.
/// @return nothing, or why the model cannot be used: it contains itself, is too deep, or too many
/// paths lead through it. It is then taken apart, so that it can be deleted.
std::optional<std::string> checkModel(osg::Node& model);

} // namespace orbisk
