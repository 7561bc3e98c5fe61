// jsontext.h: texts of any bytes as strings of JSON (RFC 8259).
#ifndef TOOLS_JSONTEXT_H
#define TOOLS_JSONTEXT_H

#include "utf8text.h"

#include <cstdio>
#include <string>
#include <string_view>

// The text in quotes, with U+FFFD in the place of each byte that is not UTF-8.
inline std::string jsonOf(std::string_view text)
{
    std::string quoted = "\"";
    for (const char ch : repaired(text)) {
        const unsigned byte = static_cast<unsigned char>(ch);
        char escaped[8];
        if (ch == '"' || ch == '\\') {
            (quoted += '\\') += ch;
        } else if (byte >= 0x20 && byte != 0x7F) {
            quoted += ch;
        } else {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
            quoted += escaped;
        }
    }
    return quoted += '"';
}

#endif   // TOOLS_JSONTEXT_H
