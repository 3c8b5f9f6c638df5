#include "platform/MemoryBlock.h"

#include <malloc.h>

namespace orbisk {

std::size_t usableBytes(const void* block) {
#ifdef _WIN32
    return _msize(const_cast<void*>(block));
#else
    return malloc_usable_size(const_cast<void*>(block));
#endif
}

} // namespace orbisk
