// fuzz.h: what the fuzz targets share. A target states properties, not only that nothing crashes.
#ifndef TVXCMN_FUZZ_FUZZ_H
#define TVXCMN_FUZZ_FUZZ_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// The one entry of a target; called for each input, always in the same process.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Ends the process, and so reports the input, when a property does not hold.
#define FUZZ_REQUIRE(cond)                                                                                             \
    do {                                                                                                               \
        if (!(cond)) {                                                                                                 \
            std::fprintf(stderr, "%s:%d: %s does not hold\n", __FILE_NAME__, __LINE__, #cond);                         \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (0)

// Takes an input apart from its front. What is asked for beyond its end is zero, or empty.
class FuzzInputC {
public:
    FuzzInputC(const uint8_t* data, size_t size) : m_left(reinterpret_cast<const char*>(data), size) {}

    bool isEmpty() const { return m_left.empty(); }

    uint8_t byte()
    {
        const std::string_view one = bytes(1);
        return one.empty() ? uint8_t{0} : static_cast<uint8_t>(one[0]);
    }

    // Uniform in [0, limit) over one byte; `limit` is at most 256.
    unsigned below(unsigned limit) { return byte() % limit; }

    // The next `count` bytes, or as many as are left.
    std::string_view bytes(size_t count)
    {
        const std::string_view taken = m_left.substr(0, count);
        m_left.remove_prefix(taken.size());
        return taken;
    }
    std::string_view rest() { return bytes(m_left.size()); }

private:
    std::string_view m_left;
};

#endif   // TVXCMN_FUZZ_FUZZ_H
