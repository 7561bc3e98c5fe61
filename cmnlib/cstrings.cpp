#include "cstrings.h"

#include <cstdint>
#include <cstring>

namespace {

const char WHITE_SPACE[] = " \t\n\v\f\r";

int lower(char ch)
{
    const int value = static_cast<unsigned char>(ch);
    return value >= 'A' && value <= 'Z' ? value + ('a' - 'A') : value;
}

}   // namespace

char* StrDuplicate(const char* text)
{
    if (text == nullptr) return nullptr;
    const size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(new char[size], text, size));
}

int StrCompareCI(const char* a, const char* b) { return StrCompareCIN(a, b, SIZE_MAX); }

int StrCompareCIN(const char* a, const char* b, size_t n)
{
    if (a == nullptr) a = "";
    if (b == nullptr) b = "";
    for (; n > 0; --n, ++a, ++b) {
        const int difference = lower(*a) - lower(*b);
        if (difference != 0 || *a == 0) return difference;
    }
    return 0;
}

char* StrTrimLeft(char* text)
{
    if (text == nullptr) return nullptr;
    const size_t white = std::strspn(text, WHITE_SPACE);
    if (white != 0) std::memmove(text, text + white, std::strlen(text + white) + 1);
    return text;
}

char* StrTrimRight(char* text)
{
    if (text == nullptr) return nullptr;
    size_t size = std::strlen(text);
    while (size > 0 && std::strchr(WHITE_SPACE, text[size - 1]) != nullptr) --size;
    text[size] = 0;
    return text;
}

char* StrTrim(char* text) { return StrTrimLeft(StrTrimRight(text)); }
