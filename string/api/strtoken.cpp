#include "strtoken.h"

#include "string/api/charset.h"
#include "string/api/textbytes.h"
#include "utf8.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace {

const UCS4 NO_ESCAPE = 0xFFFFFFFF;   // no character

bool isBlank(UTF8T byte) { return byte == ' ' || byte == '\t'; }

// Collects the parts of one text, which is walked as bytes. A part is cut out of it once, already stripped.
class PartsC {
public:
    PartsC(const StringC& text, bool stripWhite, bool allowEmpty)
        : m_text(text), m_bytes(text), m_stripWhite(stripWhite), m_allowEmpty(allowEmpty)
    {
    }

    // Divides at every delimiter, but not right behind an `escape` character.
    void divide(const CharSetC& delimiters, UCS4 escape);
    std::unique_ptr<StringArrayC> take() { return std::move(m_parts); }

private:
    bool isBehind(const UTF8T* at, UCS4 ch) const;
    void add(const UTF8T* begin, const UTF8T* end);

    const StringC& m_text;
    const TextBytesT m_bytes;
    const bool m_stripWhite;
    const bool m_allowEmpty;
    std::unique_ptr<StringArrayC> m_parts = std::make_unique<StringArrayC>();
};

void PartsC::divide(const CharSetC& delimiters, UCS4 escape)
{
    const UTF8T* part = m_bytes.begin;
    const UTF8T* at = delimiters.findIn(part, m_bytes.end);
    while (at < m_bytes.end) {
        const UTF8T* after = at;
        UTF8Get(after);
        if (!isBehind(at, escape)) {
            add(part, at);
            part = after;
        }
        at = delimiters.findIn(after, m_bytes.end);
    }
    add(part, m_bytes.end);
}

// Whether the character in front of `at` is this one.
bool PartsC::isBehind(const UTF8T* at, UCS4 ch) const
{
    if (at == m_bytes.begin) return false;
    do --at;
    while (at > m_bytes.begin && !UTF8Is1st(*at));
    return UTF8Get(at) == ch;
}

void PartsC::add(const UTF8T* begin, const UTF8T* end)
{
    if (m_stripWhite) {
        while (begin < end && isBlank(*begin)) ++begin;
        while (begin < end && isBlank(end[-1])) --end;
    }
    if (begin == m_bytes.begin && end == m_bytes.end) {
        m_parts->add(m_text);
    } else if (begin < end) {
        m_parts->add(StringC(begin, static_cast<size_t>(end - begin), StringC::CC_VALID_UTF8));
    } else if (m_allowEmpty) {
        m_parts->add(StringC());
    }
}

StringArrayC* tokenize(const StringC& text, const StringC& delimiters, bool stripWhite, bool allowEmpty, UCS4 escape)
{
    PartsC parts(text, stripWhite, allowEmpty);
    if (!text.isEmpty()) parts.divide(CharSetC(delimiters), escape);
    return parts.take().release();
}

void append(std::string& to, const StringC& text) { to.append(text.utf8(), text.utf8Bytes()); }

}   // namespace

const StringTokenizerC::WhiteSpaceC StringTokenizerC::m_whiteSpace{};

// Never destroyed: whoever tokenizes in an exit handler still finds it.
StringTokenizerC::WhiteSpaceC::operator const StringC&() const
{
    static const StringC& text = *new StringC(" \t", StringC::CC_SYS8);
    return text;
}

StringArrayC* StringTokenizerC::Tokenize(const StringC& text, const StringC& delimiters, bool stripWhite,
                                         bool allowEmpty)
{
    return tokenize(text, delimiters, stripWhite, allowEmpty, NO_ESCAPE);
}

StringArrayC* StringTokenizerC::PrefixEscapeTokenize(const StringC& text, const StringC& delimiters, bool stripWhite,
                                                     bool allowEmpty, UCS4 escapeCharacter)
{
    return tokenize(text, delimiters, stripWhite, allowEmpty, escapeCharacter);
}

StringC StringTokenizerC::Compose(const StringArrayC& tokens, const StringC& delimitor)
{
    std::string text;
    for (size_t n = 0; n < tokens.size(); ++n) {
        if (n > 0) append(text, delimitor);
        append(text, tokens[n]);
    }
    return StringC(text.data(), text.size(), StringC::CC_VALID_UTF8);
}

StringC StringTokenizerC::PrefixEscapeCompose(const StringArrayC& tokens, const StringC& delimitor,
                                              UCS4 escapeCharacter)
{
    StringArrayC escaped;
    for (size_t n = 0; n < tokens.size(); ++n) escaped.add(tokens[n].PrefixEscape(StringC(escapeCharacter), '\\'));
    return Compose(escaped, delimitor);
}

StringC StringTokenizerC::StripWhite(const StringC& text, const StringC& white)
{
    StringC stripped(text);
    stripped.ltrim(white).rtrim(white);
    return stripped;
}

StringArrayC* StringC::split(const StringC& delimiters, bool stripWhite, bool allowEmpty, UCS4 escapeCharacter) const
{
    if (escapeCharacter == 0xFFFE || escapeCharacter == 0xFFFF) {
        return StringTokenizerC::Tokenize(*this, delimiters, stripWhite, allowEmpty);
    }
    return StringTokenizerC::PrefixEscapeTokenize(*this, delimiters, stripWhite, allowEmpty, escapeCharacter);
}
