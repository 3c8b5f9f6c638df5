#pragma once

#include <cstddef>

namespace orbisk {

/// How many bytes may be used from `block` on, which `new` or `malloc` gave and nobody has taken
/// back; at least as many as were asked for. Any thread.
std::size_t usableBytes(const void* block);

} // namespace orbisk
