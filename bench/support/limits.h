// limits.h: what the machine needs at least, for rows named "limit". Passes over memory use the vectors
// of the processor that runs them.
#ifndef TVXCMN_BENCH_LIMITS_H
#define TVXCMN_BENCH_LIMITS_H

#include <cstddef>
#include <cstdint>

namespace limits {

// The bytes of a text that begin a character: the least work that counts characters.
size_t firstBytes(const char* text, size_t size);

// ASCII to lower case: one load, compare, or and store.
void asciiLower(const char* in, char* out, size_t size);

// The sum of all characters, decoded without a check: the least work that yields every character.
uint64_t sumOfCharacters(const char* text, size_t size);

}   // namespace limits

#endif   // TVXCMN_BENCH_LIMITS_H
