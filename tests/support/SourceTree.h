#pragma once

#include <map>
#include <string>
#include <vector>

namespace orbisk::test {

/// The program's sources as the source checks see them: text under the path relative to `src`.
using Sources = std::map<std::string, std::string>;

/// Every C++ file under `src` of this checkout.
Sources programSources();

struct SourceTarget {
    std::string name;
    std::vector<std::string> files;
};

/// The targets of a CMake list with the source files they name, in its order. A variable stands
/// for the values of all its `set` commands, whichever system they are for.
std::vector<SourceTarget> targetsOf(const std::string& cmakeList);

struct Include {
    std::string name;
    bool quoted = false;
};

/// What a source file includes, in its order.
std::vector<Include> includesOf(const std::string& source);

/// One line for every source that no target lists, or more than one.
std::vector<std::string> listingProblems(const std::vector<SourceTarget>& targets,
                                         const Sources& sources);

/// One line for every include against the order of `targets`: a file may use project headers of
/// its own target and of those before it; the first target (the core) may besides use the standard
/// library, jsoncpp and the value types of OpenSceneGraph, the second no window toolkit.
/// @param generated project headers that stand outside `src`, with the target they belong to
std::vector<std::string> includeProblems(const std::vector<SourceTarget>& targets,
                                         const Sources& sources,
                                         const std::map<std::string, std::string>& generated);

/// The lines of a source that tell operating systems or their window systems apart.
std::vector<std::string> systemDifferences(const std::string& source);

} // namespace orbisk::test
