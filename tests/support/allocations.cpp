#include "support/allocations.h"

#include <cstddef>

namespace {

thread_local long allocations = 0;

}   // namespace

#if defined(__has_feature)
#define TVX_TESTS_FEATURE(name) __has_feature(name)
#else
#define TVX_TESTS_FEATURE(name) 0
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || TVX_TESTS_FEATURE(address_sanitizer) ||           \
    TVX_TESTS_FEATURE(thread_sanitizer)

bool countsAllocations() { return false; }

#else

bool countsAllocations() { return true; }

// The C library's own functions under their second names: these here take the place of the usual ones.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_calloc(size_t count, size_t size);

__attribute__((visibility("default"))) void* malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* realloc(void* block, size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}

__attribute__((visibility("default"))) void* calloc(size_t count, size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

}   // extern "C"

#endif

long allocationsOf(const std::function<void()>& body)
{
    const long before = allocations;
    body();
    return allocations - before;
}
