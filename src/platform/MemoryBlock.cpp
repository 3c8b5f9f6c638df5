#include "platform/MemoryBlock.h"

#include <malloc.h>

namespace orbisk {

std::size_t usableBytes(void* block) {
#ifdef _WIN32
    return _msize(block);
#else
    return malloc_usable_size(block);
#endif
}

} // namespace orbisk
