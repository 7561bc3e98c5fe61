// utf8text.h: texts that should be UTF-8 (RFC 3629) and may be any bytes.
#ifndef TOOLS_UTF8TEXT_H
#define TOOLS_UTF8TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

// The size of the well-formed character that a text begins with; 0 when it does not.
inline size_t firstCharacterSize(std::string_view text)
{
    if (text.empty()) return 0;
    const unsigned lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) return 1;
    const size_t size = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (size > text.size()) return 0;
    for (size_t i = 1; i < size; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 0;
    }
    const unsigned second = size > 2 ? static_cast<unsigned char>(text[1]) : 0;
    const bool isOverlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool isNoCharacter = (lead == 0xED && second >= 0xA0) || (lead == 0xF4 && second >= 0x90);
    return isOverlong || isNoCharacter ? 0 : size;
}

// How much of a text is well-formed.
inline size_t validUtf8(std::string_view text)
{
    size_t at = 0;
    while (const size_t size = firstCharacterSize(text.substr(at))) at += size;
    return at;
}

// The text with U+FFFD in the place of each byte that is not UTF-8.
inline std::string repaired(std::string_view text)
{
    std::string result;
    for (size_t valid = validUtf8(text); valid < text.size(); valid = validUtf8(text)) {
        result.append(text.substr(0, valid)).append("\xEF\xBF\xBD");
        text.remove_prefix(valid + 1);
    }
    return result.append(text);
}

#endif   // TOOLS_UTF8TEXT_H
