// allocations.h: counts what the heap is asked for.
#ifndef TVXCMN_TESTS_ALLOCATIONS_H
#define TVXCMN_TESTS_ALLOCATIONS_H

#include <functional>

// How many blocks `body` asks for on the calling thread, by malloc, realloc, calloc or new. 0 for every
// body in builds with a sanitizer that has a heap of its own (see countsAllocations).
long allocationsOf(const std::function<void()>& body);
bool countsAllocations();

#endif   // TVXCMN_TESTS_ALLOCATIONS_H
