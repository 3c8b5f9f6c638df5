#pragma once

namespace orbisk::platform {

/// Settles the process's environment and locale before the toolkit starts. A second call changes
/// nothing more.
void settleProcess();

/// Fixes the encoding of file names and texts after the C library's locale was set: numbers keep
/// the dot, and where the system leaves only ASCII for file names, UTF-8 takes its place.
void settleLocale();

} // namespace orbisk::platform
