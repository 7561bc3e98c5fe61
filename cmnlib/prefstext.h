// prefstext.h: the text of preference files: its lines, and its names, compared without regard to case.
//
// Where a name is UTF-8 two names are equal when StringC::equalCI says so; a byte that belongs to no character is
// equal to itself. Equal names have the same size and the same hash.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_CMNLIB_PREFSTEXT_H
#define TVXCMN_CMNLIB_PREFSTEXT_H

#include "basetypes.h"

#include <algorithm>
#include <string_view>

namespace prefstext {

HashValT hash(std::string_view name);
bool areEqual(std::string_view a, std::string_view b);

// What belongs to a line or a name, without the white space around it.
inline bool isWhite(char ch) { return ch == ' ' || ch == '\t' || ch == '\n' || ch == '\r'; }
inline std::string_view trimmedRight(std::string_view text)
{
    while (!text.empty() && isWhite(text.back())) text.remove_suffix(1);
    return text;
}
inline std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isWhite(text.front())) text.remove_prefix(1);
    return trimmedRight(text);
}

// What a C string holds of `text`.
inline std::string_view upToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

// Marks that a text may begin with. Lines of bytes are none in UTF-16.
const std::string_view UTF8_MARK = "\xEF\xBB\xBF";
inline bool hasUTF16Mark(std::string_view text) { return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"); }
inline bool hasMark(std::string_view text) { return text.starts_with(UTF8_MARK) || hasUTF16Mark(text); }

// The lines of a text without their ends, which are "\n", "\r\n" or "\r"; the last line needs none.
class LinesC {
public:
    explicit LinesC(std::string_view text)
        : m_rest(text), m_hasReturns(text.find('\r') != std::string_view::npos), m_feed(text.data())
    {
    }

    // False when there is none left. What belongs to `line` and its end is not looked at again.
    bool next(std::string_view& line)
    {
        if (m_rest.empty()) return false;
        if (!m_hasReturns || m_feed <= m_rest.data())
            m_feed = m_rest.data() + std::min(m_rest.find('\n'), m_rest.size());
        size_t size = static_cast<size_t>(m_feed - m_rest.data());
        size_t end = 1;
        const size_t back = m_hasReturns ? m_rest.substr(0, size).find('\r') : std::string_view::npos;
        if (back != std::string_view::npos) {
            end = back + 1 == size ? 2 : 1;
            size = back;
        }
        line = m_rest.substr(0, size);
        m_rest.remove_prefix(std::min(size + end, m_rest.size()));
        return true;
    }
    // What has not been read yet.
    std::string_view rest() const { return m_rest; }

private:
    std::string_view m_rest;
    bool m_hasReturns;
    const char* m_feed;   // the next "\n", or the end, when it stands behind the front of m_rest
};

}   // namespace prefstext

#endif   // TVXCMN_CMNLIB_PREFSTEXT_H
