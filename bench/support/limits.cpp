#include "support/limits.h"

// One clone for each kind of vectors; the loader picks.
#if defined(__x86_64__)
#define BENCH_CLONES __attribute__((target_clones("default", "avx2", "arch=skylake-avx512"), optimize("O3")))
#else
#define BENCH_CLONES
#endif

namespace limits {

BENCH_CLONES size_t firstBytes(const char* text, size_t size)
{
    size_t total = 0;
    while (size > 0) {
        const size_t block = size < 255 ? size : 255;   // as many as a byte-wide sum can hold
        uint8_t count = 0;
        for (size_t i = 0; i < block; ++i) {
            count = static_cast<uint8_t>(count + (static_cast<signed char>(text[i]) > -65));
        }
        total += count;
        text += block;
        size -= block;
    }
    return total;
}

BENCH_CLONES void asciiLower(const char* in, char* out, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        const unsigned char ch = static_cast<unsigned char>(in[i]);
        out[i] = static_cast<char>(ch | ((static_cast<unsigned char>(ch - 'A') < 26) << 5));
    }
}

uint64_t sumOfCharacters(const char* text, size_t size)
{
    const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* const end = p + size;
    const auto tail = [&](int i) { return p[i] & 0x3Fu; };
    uint64_t sum = 0;
    while (p < end) {
        if (*p < 0x80) {
            sum += *p;
            p += 1;
        } else if (*p < 0xE0) {
            sum += (*p & 0x1Fu) << 6 | tail(1);
            p += 2;
        } else if (*p < 0xF0) {
            sum += (*p & 0x0Fu) << 12 | tail(1) << 6 | tail(2);
            p += 3;
        } else {
            sum += (*p & 0x07u) << 18 | tail(1) << 12 | tail(2) << 6 | tail(3);
            p += 4;
        }
    }
    return sum;
}

}   // namespace limits
