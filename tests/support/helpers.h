// helpers.h: what several test files share.
#ifndef TVXCMN_TESTS_HELPERS_H
#define TVXCMN_TESTS_HELPERS_H

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// How many entries "assert.log" in the current directory holds whose expression is `expr`; every entry
// when `expr` is null. And its whole text, empty when there is no file.
size_t assertCount(const char* expr = nullptr);
std::string assertLog();

// The whole content of a file; empty when it cannot be read.
std::string fileText(const std::string& path);

// "61 C3 A9": for messages of failing rows.
std::string hexOf(std::string_view bytes);

// Runs `body(i)` in `count` threads that start together, and joins them.
void inThreads(int count, const std::function<void(int)>& body);

// Random text from a fixed seed, which a failing test prints.
class TextSourceC {
public:
    explicit TextSourceC(unsigned seed) : m_random(seed) {}

    // Uniform in [0, below).
    uint32_t below(uint32_t limit) { return std::uniform_int_distribution<uint32_t>(0, limit - 1)(m_random); }
    // A code point: ASCII, Latin-1, two-byte, BMP or beyond in equal shares; never 0 or a surrogate.
    uint32_t codePoint();
    std::vector<uint32_t> codePoints(size_t maxCount);
    // Well-formed UTF-8 of at most `maxChars` characters.
    std::string utf8(size_t maxChars);
    // Any bytes.
    std::string bytes(size_t maxBytes);
    // `text` with up to `flips` of its bits turned.
    std::string damaged(std::string text, int flips);

private:
    std::mt19937 m_random;
};

// The UTF-8 form (RFC 3629) of code points, written independently of the library.
std::string utf8Of(uint32_t codePoint);
std::string utf8Of(const std::vector<uint32_t>& codePoints);

// `input` converted by the C library's iconv; `complete` (if given) tells whether all of it was valid.
std::string iconvText(std::string_view input, const char* from, const char* to, bool* complete = nullptr);

#endif   // TVXCMN_TESTS_HELPERS_H
