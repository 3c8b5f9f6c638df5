#include "platform/MemoryLimit.h"

#include "platform/MemoryBlock.h"

#include <cstdlib>
#include <limits>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
#define ORBISK_LIMITS_MEMORY 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORBISK_LIMITS_MEMORY 0
#else
#define ORBISK_LIMITS_MEMORY 1
#endif
#else
#define ORBISK_LIMITS_MEMORY 1
#endif

// Each `delete` reads the budget, which takes a call where it belongs to a library, unless it
// stands among those of the executable.
#if ORBISK_LIMITS_MEMORY
#define ORBISK_NEAR __attribute__((tls_model("initial-exec")))
#else
#define ORBISK_NEAR
#endif

namespace orbisk {

namespace {

struct Budget {
    int depth = 0;
    std::size_t allowed = 0;
    std::size_t held = 0;
};

thread_local Budget budget ORBISK_NEAR;

std::size_t sum(std::size_t a, std::size_t b) {
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    return a > most - b ? most : a + b;
}

} // namespace

MemoryLimit::MemoryLimit(std::size_t bytes) {
    if (budget.depth++ == 0)
        budget = {1, 0, 0};
    budget.allowed = sum(budget.allowed, bytes);
}

MemoryLimit::~MemoryLimit() {
    --budget.depth;
}

bool MemoryLimit::isSupported() {
    return ORBISK_LIMITS_MEMORY != 0;
}

#if ORBISK_LIMITS_MEMORY

namespace {

void* take(std::size_t size) noexcept {
    const bool isCounted = size >= MemoryLimit::limitedBlock && budget.depth > 0;
    if (isCounted && sum(budget.held, size) > budget.allowed)
        return nullptr;
    void* block = std::malloc(size > 0 ? size : 1);
    if (isCounted && block)
        budget.held += usableBytes(block);
    return block;
}

void giveBack(void* block) noexcept {
    if (budget.depth > 0 && block) {
        const std::size_t bytes = usableBytes(block);
        if (bytes >= MemoryLimit::limitedBlock)
            budget.held -= bytes < budget.held ? bytes : budget.held;
    }
    std::free(block);
}

void* takeOrThrow(std::size_t size) {
    if (void* block = take(size))
        return block;
    throw std::bad_alloc();
}

} // namespace

bool MemoryLimit::isActive() {
    const MemoryLimit none(0);
    const std::size_t allowed = budget.allowed;
    budget.allowed = 0;
    void* block = ::operator new(limitedBlock, std::nothrow);
    const bool isRefused = !block;
    budget.allowed = allowed;
    ::operator delete(block);
    return isRefused;
}

#else

bool MemoryLimit::isActive() {
    return false;
}

#endif

} // namespace orbisk

#if ORBISK_LIMITS_MEMORY

// A program that brings its own, as some tests do, has these replaced.
#define ORBISK_REPLACEABLE __attribute__((weak))

ORBISK_REPLACEABLE void* operator new(std::size_t size) {
    return orbisk::takeOrThrow(size);
}

ORBISK_REPLACEABLE void* operator new[](std::size_t size) {
    return orbisk::takeOrThrow(size);
}

ORBISK_REPLACEABLE void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return orbisk::take(size);
}

ORBISK_REPLACEABLE void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return orbisk::take(size);
}

ORBISK_REPLACEABLE void operator delete(void* block) noexcept {
    orbisk::giveBack(block);
}

ORBISK_REPLACEABLE void operator delete[](void* block) noexcept {
    orbisk::giveBack(block);
}

ORBISK_REPLACEABLE void operator delete(void* block, std::size_t) noexcept {
    orbisk::giveBack(block);
}

ORBISK_REPLACEABLE void operator delete[](void* block, std::size_t) noexcept {
    orbisk::giveBack(block);
}

ORBISK_REPLACEABLE void operator delete(void* block, const std::nothrow_t&) noexcept {
    orbisk::giveBack(block);
}

ORBISK_REPLACEABLE void operator delete[](void* block, const std::nothrow_t&) noexcept {
    orbisk::giveBack(block);
}

#endif
