#pragma once

#include <cstddef>

namespace orbisk {

/// How many bytes may be used from `block` on, which `new` or `malloc` gave and nobody has taken
/// back; at least as many as were asked for. Any thread. The bytes themselves are not looked at:
/// they may be without values yet, which compilers wouldn't believe of a pointer to constant ones.
std::size_t usableBytes(void* block);

} // namespace orbisk
