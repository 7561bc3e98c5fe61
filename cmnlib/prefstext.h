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
    explicit LinesC(std::string_view text) : m_text(text), m_hasReturns(text.find('\r') != std::string_view::npos) {}

    // False when there is none left. What belongs to `line` and its end is not looked at again.
    bool next(std::string_view& line)
    {
        if (m_at == m_text.size()) return false;
        if (m_at == m_feed + 1) m_feed = std::min(m_text.find('\n', m_at), m_text.size());
        line = m_text.substr(m_at, m_feed - m_at);
        const size_t back = m_hasReturns ? line.find('\r') : std::string_view::npos;
        line = line.substr(0, back);
        const size_t end = m_at + line.size();
        m_at = std::min((end + 1 == m_feed ? m_feed : end) + 1, m_text.size());
        return true;
    }
    // What has not been read yet.
    std::string_view rest() const { return m_text.substr(m_at); }

private:
    std::string_view m_text;
    bool m_hasReturns;
    size_t m_at = 0;
    size_t m_feed = std::string_view::npos;   // the next "\n", or the end; in front of m_at: not looked for yet
};

}   // namespace prefstext

#endif   // TVXCMN_CMNLIB_PREFSTEXT_H
