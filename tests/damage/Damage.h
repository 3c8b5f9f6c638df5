#pragma once

#include <cstdint>
#include <string>

namespace orbisk::test {

/// `bytes` damaged in one of several ways, chosen by `seed`: cut off, bytes or bits changed, a run
/// emptied, repeated or left out, a number of a binary file or of a text made absurd. The same seed
/// does the same damage everywhere.
std::string damaged(const std::string& bytes, std::uint64_t seed);

/// The same with damage that leaves the form of a file: some of its numbers and words, most of
/// which are counts, indices and names, are exchanged, or one more, one less or the double.
std::string damagedMeaning(const std::string& bytes, std::uint64_t seed);

/// The same several times over with smaller damages, and now and then cut off: for small files, of
/// which one large damage leaves little.
std::string damagedOften(const std::string& bytes, std::uint64_t seed);

} // namespace orbisk::test
