#pragma once

#if defined(__SSE2__) || defined(_M_X64)
#include <xmmintrin.h>
#endif

namespace orbisk {

/// Has the processor fetch the line of cache at an address, of which nothing else is known, while
/// it goes on. Does nothing where the compiler has no way to say so.
inline void prefetch(const void* address) {
#if defined(__SSE2__) || defined(_M_X64)
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#elif defined(__GNUC__)
    __builtin_prefetch(address);
#else
    static_cast<void>(address);
#endif
}

} // namespace orbisk
