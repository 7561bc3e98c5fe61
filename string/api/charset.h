// charset.h: a set of characters that is asked once for each character of a text.
#ifndef TVXCMN_STRING_API_CHARSET_H
#define TVXCMN_STRING_API_CHARSET_H

#include "basetypes.h"
#include "string/api/textbytes.h"
#include "utf8.h"

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <vector>

class CharSetC {
public:
    explicit CharSetC(const StringC& text) : CharSetC(TextBytesT(text)) {}
    explicit CharSetC(const TextBytesT& text) : CharSetC(text.begin, text.size()) {}
    // The characters of `size` bytes of UTF-8.
    CharSetC(const UTF8T* text, size_t size)
    {
        for (const UTF8T *p = text, *const end = text + size; p < end;) {
            const UCS4 ch = UTF8Get(p);
            if (ch < m_ascii.size()) {
                m_ascii.set(ch);
            } else {
                m_others.push_back(ch);
            }
        }
        std::sort(m_others.begin(), m_others.end());
    }

    bool contains(UCS4 ch) const
    {
        if (ch < m_ascii.size()) return m_ascii[ch];
        return std::binary_search(m_others.begin(), m_others.end(), ch);
    }
    // The first member in [begin, end), which holds whole characters; `end` when there is none.
    const UTF8T* findIn(const UTF8T* begin, const UTF8T* end) const
    {
        for (const UTF8T* p = begin; p < end;) {
            const UTF8T* const at = p;
            const bool isMember = *p < m_ascii.size() ? m_ascii[*p++] : containsNext(p);
            if (isMember) return at;
        }
        return end;
    }

private:
    // Passes what is not ASCII: a whole character, or just a byte of one when nobody is looking for those.
    bool containsNext(const UTF8T*& p) const
    {
        if (!m_others.empty()) return contains(UTF8Get(p));
        ++p;
        return false;
    }

    std::bitset<128> m_ascii;
    std::vector<UCS4> m_others;   // sorted
};

#endif   // TVXCMN_STRING_API_CHARSET_H
