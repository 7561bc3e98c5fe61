// jsontext.h: texts of any bytes as strings of JSON (RFC 8259).
#ifndef TOOLS_JSONTEXT_H
#define TOOLS_JSONTEXT_H

#include <cstdio>
#include <string>

// The text in quotes. JSON is UTF-8; bytes beyond ASCII, which may be anything, are shown as the character of
// their number.
inline std::string jsonOf(const std::string& text)
{
    std::string quoted = "\"";
    for (const char ch : text) {
        const unsigned byte = static_cast<unsigned char>(ch);
        char escaped[8];
        if (byte >= 0x20 && byte < 0x7F && ch != '"' && ch != '\\') {
            quoted += ch;
        } else {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
            quoted += escaped;
        }
    }
    return quoted += '"';
}

#endif   // TOOLS_JSONTEXT_H
