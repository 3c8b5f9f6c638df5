#pragma once

#include <initializer_list>
#include <string>

namespace orbisk {

/// Path of a file the program needs at run time, relative to the working directory, its parts
/// joined with the system's own separator.
std::string runTimePath(std::initializer_list<const char*> parts);

} // namespace orbisk
