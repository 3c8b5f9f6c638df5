#include "support/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long allocations = 0;

} // namespace

namespace orbisk::test {

long allocationCount() {
    return allocations;
}

} // namespace orbisk::test

// A sanitizer brings forms of its own: those that may meet in one piece of memory are replaced
// together. The array forms of either kind stay among themselves.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size ? size : 1);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

// With the address sanitizer too, memory that is not to be had is std::bad_alloc, not the end.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier)
    return "allocator_may_return_null=1";
}
