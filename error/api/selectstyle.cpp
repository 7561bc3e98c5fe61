#include "error/api/selectstyle.h"

#include "assertfatal.h"

namespace {

const char SEPARATOR = static_cast<char>(ERR_TEXT_SEPARATOR);

// The place of a letter is the severity that it stands for.
const std::string_view SEVERITY_LETTERS = "#miwef";

// A capital puts a condition on the next letter: it counts for users of that level only. Texts are read for
// no level, so such a letter never counts.
ErrSevT severityOf(std::string_view letters)
{
    ErrSevT sev = ERR_SEV_ERROR;
    bool isConditional = false;
    for (const char letter : letters) {
        const size_t severity = SEVERITY_LETTERS.find(letter);
        if (severity != std::string_view::npos && !isConditional) sev = static_cast<ErrSevT>(severity);
        isConditional = letter >= 'A' && letter <= 'Z';
    }
    return sev;
}

// Takes the mark off the front of `text`; one without its closing brace is all of the text.
ErrSevT takeMark(std::string_view& text)
{
    const size_t close = text.find('}');
    const std::string_view letters = text.substr(1, close - 1);
    text.remove_prefix(close < text.size() ? close + 1 : text.size());
    if (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    return severityOf(letters);
}

// Reads a list of variants field by field.
class VariantReaderC {
public:
    explicit VariantReaderC(std::string_view list) : m_rest(list) {}

    // False when the list does not hold a whole variant any more.
    bool next();

    bool isForEverybody() const { return m_style.empty(); }
    ErrSevT severity() const
    {
        std::string_view mark = m_severity;
        return !mark.empty() && mark.front() == '{' ? takeMark(mark) : ERR_SEV_ERROR;
    }
    std::string_view message() const { return m_message; }

private:
    bool nextField(std::string_view& field);

    std::string_view m_rest;
    bool m_hasMore = true;   // a field begins at m_rest, if only an empty one
    std::string_view m_style;
    std::string_view m_severity;
    std::string_view m_message;
};

bool VariantReaderC::nextField(std::string_view& field)
{
    if (!m_hasMore) return false;
    const size_t end = m_rest.find_first_of(std::string_view("\x01\0", 2));
    field = m_rest.substr(0, end);
    m_hasMore = end != std::string_view::npos &&
                TVX_CHECK(m_rest[end] == SEPARATOR, "(buf == ep && *buf == '\\0') || buf[-1] == '\\x01'");
    if (m_hasMore) m_rest.remove_prefix(end + 1);
    return true;
}

bool VariantReaderC::next()
{
    std::string_view problem;
    std::string_view reason;
    std::string_view solution;
    const bool isWhole =
        nextField(m_style) && nextField(m_severity) && nextField(problem) && nextField(reason) && nextField(solution);
    if (isWhole) m_message = {problem.data(), static_cast<size_t>(solution.data() - problem.data()) + solution.size()};
    return isWhole;
}

std::string_view selectVariant(std::string_view list, ErrSevT& sev)
{
    std::string_view selected;
    for (VariantReaderC variant(list); variant.next();) {
        if (!variant.isForEverybody()) continue;
        sev = variant.severity();
        selected = variant.message();
    }
    return selected;
}

}   // namespace

std::string_view selectStyle(std::string_view text, ErrSevT& sev)
{
    sev = ERR_SEV_ERROR;
    if (text.empty()) return text;
    if (text.front() == SEPARATOR) return selectVariant(text.substr(1), sev);
    if (text.front() == '{') sev = takeMark(text);
    return text;
}
