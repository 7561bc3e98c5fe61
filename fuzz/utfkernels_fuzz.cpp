// The scans over UTF-8 against loops that look at one byte after the other.

#include "string/api/utfkernels.h"

#include "fuzz.h"

namespace {

// The length of the shortest-form character at the front of `text`; 0 when none stands there.
size_t charLength(std::string_view text)
{
    const auto at = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = at(0);
    if (text.empty() || (first >= 0x80 && first < 0xC2) || first >= 0xF8) return 0;
    const size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) return 0;
    }
    if (first == 0xE0 && at(1) < 0xA0) return 0;
    if (first == 0xF0 && at(1) < 0x90) return 0;
    return length;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const size_t offset = input.below(64);   // how the text lies in memory
    const size_t wanted = input.byte();
    const std::string_view bytes = input.rest();
    const std::string memory = std::string(offset, 'x') + std::string(bytes);
    const std::string_view text = std::string_view(memory).substr(offset);
    const UTF8T* begin = reinterpret_cast<const UTF8T*>(text.data());

    size_t prefix = 0;
    size_t chars = 0;
    size_t offsetOfWanted = 0;
    while (const size_t length = charLength(text.substr(prefix))) {
        prefix += length;
        if (++chars == wanted) offsetOfWanted = prefix;
    }

    size_t counted = 0;
    FUZZ_REQUIRE(utfkernels::validPrefix(begin, text.size(), &counted) == prefix);
    FUZZ_REQUIRE(counted == chars);
    FUZZ_REQUIRE(utfkernels::countChars(begin, prefix) == chars);
    size_t missing = 0;
    const size_t reached = utfkernels::advance(begin, prefix, wanted, &missing);
    FUZZ_REQUIRE(reached == (wanted <= chars ? offsetOfWanted : prefix));
    FUZZ_REQUIRE(missing == (wanted <= chars ? 0 : wanted - chars));

    const auto isAscii = [](char byte) { return static_cast<signed char>(byte) >= 0; };
    const auto firstAbove = std::find_if_not(text.begin(), text.end(), isAscii);
    FUZZ_REQUIRE(utfkernels::asciiPrefix(begin, text.size()) == static_cast<size_t>(firstAbove - text.begin()));
    return 0;
}
