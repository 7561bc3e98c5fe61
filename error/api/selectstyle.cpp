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
ErrSevT extractSeverity(std::string_view& text)
{
    const size_t close = text.find('}');
    const std::string_view letters = text.substr(1, close - 1);
    text.remove_prefix(close < text.size() ? close + 1 : text.size());
    if (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    return severityOf(letters);
}

// Lists of variants come from catalogs, and what is wrong with them is reported from there.
const char CATALOG_FILE[] = "catalog.cpp";

struct VariantT {
    std::string_view style;
    std::string_view mark;
    std::string_view problem;
    std::string_view reason;
    std::string_view solution;
};

// Takes the first field and its separator off the front of `list`.
std::string_view takeField(std::string_view& list)
{
    const size_t end = list.find_first_of(std::string_view("\x01\0", 2));
    const std::string_view field = list.substr(0, end);
    const bool isCut = end != std::string_view::npos && list[end] != SEPARATOR;
    if (isCut) assertFatal("(buf == ep && *buf == '\\0') || buf[-1] == '\\x01'", CATALOG_FILE, __LINE__);
    const bool hasMore = end != std::string_view::npos && !isCut;
    list.remove_prefix(hasMore ? end + 1 : list.size());
    return field;
}

std::string_view selectVariant(std::string_view list, ErrSevT& sev, std::string& room)
{
    while (!list.empty()) {
        const VariantT variant = {takeField(list), takeField(list), takeField(list), takeField(list), takeField(list)};
        if (!variant.style.empty()) continue;
        std::string_view mark = variant.mark;
        sev = mark.starts_with('{') ? extractSeverity(mark) : ERR_SEV_ERROR;
        room.assign(variant.problem).append(1, SEPARATOR).append(variant.reason);
        room.append(1, SEPARATOR).append(variant.solution);
    }
    return room;
}

}   // namespace

std::string_view selectStyle(std::string_view text, ErrSevT& sev, std::string& room)
{
    sev = ERR_SEV_ERROR;
    if (text.empty()) return text;
    if (text.front() == SEPARATOR) return selectVariant(text.substr(1), sev, room);
    if (text.front() == '{') sev = extractSeverity(text);
    return text;
}
