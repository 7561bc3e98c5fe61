// textbytes.h: the UTF-8 of a value, taken once and looked at without a call per character.
#ifndef TVXCMN_STRING_API_TEXTBYTES_H
#define TVXCMN_STRING_API_TEXTBYTES_H

#include "stringc.h"

#include <cstddef>

// Good until the value changes.
struct TextBytesT {
    explicit TextBytesT(const StringC& text)
        : begin(reinterpret_cast<const UTF8T*>(text.utf8())), end(begin + text.utf8Bytes())
    {
    }
    size_t size() const { return static_cast<size_t>(end - begin); }

    const UTF8T* begin;
    const UTF8T* end;
};

#endif   // TVXCMN_STRING_API_TEXTBYTES_H
