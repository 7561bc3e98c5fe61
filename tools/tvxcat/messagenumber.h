// messagenumber.h: the numbers of messages, as programs have them and as people write them.
#ifndef TVXCAT_MESSAGENUMBER_H
#define TVXCAT_MESSAGENUMBER_H

#include "errornumbers.h"

#include <charconv>
#include <cstdint>
#include <string_view>

// The error number whose text a message is.
constexpr ErrorT numberOf(uint32_t set, uint32_t message) { return 0xE0000000L | ErrorT{set} << 16 | message; }

// Takes a whole number off the front of `text`.
inline bool takeNumber(std::string_view& text, int base, uint32_t& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number, base);
    text.remove_prefix(static_cast<size_t>(read.ptr - text.data()));
    return read.ec == std::errc();
}

// Reads "0xE0CB0010", the number of an error that has a catalog text, or "s203m16".
inline bool parseNumber(std::string_view text, uint32_t& set, uint32_t& message)
{
    if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
        text.remove_prefix(2);
        uint32_t number = 0;
        if (!takeNumber(text, 16, number) || !text.empty() || !ErrorHasCatalogText(number)) return false;
        set = ErrorSetOf(number);
        message = ErrorMessageOf(number);
        return true;
    }
    if (text.substr(0, 1) != "s") return false;
    text.remove_prefix(1);
    if (!takeNumber(text, 10, set) || text.substr(0, 1) != "m") return false;
    text.remove_prefix(1);
    return takeNumber(text, 10, message) && text.empty();
}

#endif   // TVXCAT_MESSAGENUMBER_H
