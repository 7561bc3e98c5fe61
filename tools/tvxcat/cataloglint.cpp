#include "cataloglint.h"

#include "../support/utf8text.h"
#include "catalogformat.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>

namespace {

std::string placeOf(const FindingT& finding) { return finding.file + ":" + std::to_string(finding.line); }

// The messages of all sources by something that no two of them may share.
template <class KeyT>
class UniqueM {
public:
    explicit UniqueM(std::vector<FindingT>& findings) : m_findings(findings) {}

    void add(const KeyT& key, const CatalogSourceC& source, size_t offset, const std::string& what)
    {
        const FindingT finding = source.findingAt(offset, "");
        const auto [first, isNew] = m_places.emplace(key, placeOf(finding));
        if (!isNew) m_findings.push_back(source.findingAt(offset, what + " stands in " + first->second + " too"));
    }

private:
    std::vector<FindingT>& m_findings;
    std::map<KeyT, std::string> m_places;
};

// Where byte number `index` of a text comes from; behind the text, where its message begins.
size_t originOf(const SourceMessageT& message, size_t index)
{
    return index < message.origins.size() ? message.origins[index] : message.offset;
}

// ---- severity marks ---------------------------------------------------------------------------------

// A field of a text, and where it begins.
struct FieldT {
    size_t begin;
    std::string text;
};

std::vector<FieldT> placedFields(const SourceMessageT& message)
{
    std::vector<FieldT> fields;
    size_t begin = 0;
    for (std::string& text : fieldsOf(message.text)) {
        const size_t size = text.size();
        fields.push_back({begin, std::move(text)});
        begin += size + 1;
    }
    return fields;
}

void lintMark(const CatalogSourceC& source, const SourceMessageT& message, const FieldT& field,
              std::vector<FindingT>& findings)
{
    if (field.text.substr(0, 1) != "{") return;
    const size_t close = field.text.find('}');
    if (close == std::string::npos) {
        findings.push_back(source.findingAt(originOf(message, field.begin), "the severity mark has no }"));
        return;
    }
    for (size_t i = 1; i < close; ++i) {
        const char letter = field.text[i];
        if (std::string_view("ewimf#").find(letter) != std::string_view::npos || (letter >= 'A' && letter <= 'Z'))
            continue;
        findings.push_back(source.findingAt(originOf(message, field.begin + i),
                                            std::string("unknown severity letter '") + letter + "'"));
    }
}

void lintMarks(const CatalogSourceC& source, const SourceMessageT& message, std::vector<FindingT>& findings)
{
    const std::vector<FieldT> fields = placedFields(message);
    if (!hasVariants(message.text)) return lintMark(source, message, fields[0], findings);
    for (size_t i = 2; i < fields.size(); i += VARIANT_FIELDS) lintMark(source, message, fields[i], findings);
}

// ---- directives -------------------------------------------------------------------------------------

// What a directive wants for an argument.
struct WantedT {
    std::string kind;
    size_t at;   // the directive's place in the text
};
typedef std::multimap<long, WantedT> WantedByPositionT;

// Reads the directives of a format (stringc.h).
class DirectivesC {
public:
    explicit DirectivesC(std::string_view text, size_t begin) : m_text(text), m_begin(begin)
    {
        while ((m_at = m_text.find('%', m_at)) != std::string_view::npos) readDirective();
    }

    WantedByPositionT wanted;

private:
    char peek() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    void skipAny(const char* characters) { m_at = std::min(m_text.find_first_not_of(characters, m_at), m_text.size()); }
    void want(long position, const char* kind) { wanted.emplace(position, WantedT{kind, m_begin + m_percent}); }
    long readNumber()
    {
        long number = 0;
        for (; std::isdigit(static_cast<unsigned char>(peek())) != 0; ++m_at) {
            number = std::min(number * 10 + (peek() - '0'), 1000000L);
        }
        return number;
    }
    // N$ with at most so many digits, or 0 and nothing is read.
    long readPosition(size_t maxDigits)
    {
        const size_t before = m_at;
        const long number = readNumber();
        if (peek() == '$' && m_at - before <= maxDigits) return ++m_at, number;
        m_at = before;
        return 0;
    }
    void readWidth()
    {
        if (peek() != '*') {
            readNumber();
            return;
        }
        ++m_at;
        const long position = readPosition(1);
        want(position != 0 ? position : m_next++, "number");
    }
    void readDirective();

    const std::string_view m_text;
    const size_t m_begin;
    size_t m_at = 0;
    size_t m_percent = 0;
    long m_next = 1;
};

// Any argument of a kind will do for its directives. A string may be more than a text: a character, say.
const char* kindOf(char conversion)
{
    static const struct {
        const char* conversions;
        const char* kind;
    } KINDS[] = {{"diuoxXb", "number"}, {"cC", "character"}, {"s", "text"},
                 {"S", "string"},       {"p", "pointer"},    {"t", "time"}};
    for (const auto& row : KINDS) {
        if (conversion != 0 && std::string_view(row.conversions).find(conversion) != std::string_view::npos)
            return row.kind;
    }
    return nullptr;   // takes no argument
}

void DirectivesC::readDirective()
{
    m_percent = m_at++;
    const long position = readPosition(std::string_view::npos);
    if (position != 0) m_next = position;
    skipAny("-+# 0");
    readWidth();
    if (peek() == '.') {
        ++m_at;
        readWidth();
    }
    skipAny("hljzqL");
    const char* const kind = kindOf(peek());
    if (m_at < m_text.size()) ++m_at;
    if (kind == nullptr) return;
    want(m_next++, kind);
}

// The texts of a message that are shown, each of which is one format.
std::vector<FieldT> formatsOf(const SourceMessageT& message)
{
    if (!hasVariants(message.text)) return {{0, message.text}};
    std::vector<FieldT> formats;
    const std::vector<FieldT> fields = placedFields(message);
    for (size_t i = 1; i + VARIANT_FIELDS <= fields.size(); i += VARIANT_FIELDS) {
        const FieldT& last = fields[i + 4];
        const size_t begin = fields[i + 2].begin;
        formats.push_back({begin, message.text.substr(begin, last.begin + last.text.size() - begin)});
    }
    return formats;
}

void compareDirectives(const CatalogSourceC& source, const SourceMessageT& message, const std::string& where,
                       const WantedByPositionT& expected, std::vector<FindingT>& findings)
{
    for (const FieldT& format : formatsOf(message)) {
        const WantedByPositionT found = DirectivesC(format.text, format.begin).wanted;
        for (const auto& [position, wanted] : found) {
            const auto [first, last] = expected.equal_range(position);
            if (std::any_of(first, last,
                            [&kind = wanted.kind](const auto& other) { return other.second.kind == kind; }))
                continue;
            findings.push_back(
                source.findingAt(originOf(message, wanted.at),
                                 "argument " + std::to_string(position) + " is a " + wanted.kind + " here, but " +
                                     (first != last ? "a " + first->second.kind : "not used") + " in " + where));
        }
        for (auto at = expected.begin(); at != expected.end(); at = expected.upper_bound(at->first)) {
            const auto& [position, wanted] = *at;
            if (found.count(position) != 0) continue;
            findings.push_back(source.findingAt(originOf(message, format.begin),
                                                "argument " + std::to_string(position) + ", a " + wanted.kind + " in " +
                                                    where + ", is not used here"));
        }
    }
}

void lintAgainst(const CatalogSourceC& source, const CatalogSourceC& reference, std::vector<FindingT>& findings)
{
    std::map<unsigned long, const SourceMessageT*> known;
    for (const SourceMessageT& message : reference.messages()) known.emplace(keyOf(message), &message);
    for (const SourceMessageT& message : source.messages()) {
        const auto found = known.find(keyOf(message));
        if (found == known.end()) continue;
        const std::vector<FieldT> formats = formatsOf(*found->second);
        if (formats.empty()) continue;
        compareDirectives(source, message, placeOf(reference.findingAt(found->second->offset, "")),
                          DirectivesC(formats[0].text, 0).wanted, findings);
    }
}

// ---- texts ------------------------------------------------------------------------------------------

void lintNumber(const CatalogSourceC& source, const SourceMessageT& message, std::vector<FindingT>& findings)
{
    if (message.set > 0xFFF)
        findings.push_back(source.findingAt(message.offset, "no error number has a set above 0xFFF"));
    if (message.number > 0xFFFF)
        findings.push_back(source.findingAt(message.offset, "no error number has a message above 0xFFFF"));
}

void lintMessage(const CatalogSourceC& source, const SourceMessageT& message, std::vector<FindingT>& findings)
{
    lintNumber(source, message, findings);
    const size_t valid = validUtf8(message.text);
    if (valid < message.text.size()) findings.push_back(source.findingAt(originOf(message, valid), "invalid UTF-8"));
    const size_t zero = message.text.find('\0');
    if (zero != std::string::npos)
        findings.push_back(source.findingAt(originOf(message, zero), "the text is read up to this zero byte only"));
    lintMarks(source, message, findings);
}

}   // namespace

std::vector<FindingT> buildFaults(const std::vector<CatalogSourceC>& sources)
{
    std::vector<FindingT> findings;
    UniqueM<unsigned long> numbers(findings);
    UniqueM<std::string> names(findings);
    for (const CatalogSourceC& source : sources) {
        findings.insert(findings.end(), source.errors().begin(), source.errors().end());
        for (const SourceMessageT& message : source.messages()) {
            numbers.add(keyOf(message), source, message.offset, labelOf(message));
            if (!message.name.empty()) names.add(message.name, source, message.offset, message.name);
            if (message.text.size() <= ERR_CATALOG_MAX_TEXT) continue;
            findings.push_back(source.findingAt(originOf(message, ERR_CATALOG_MAX_TEXT),
                                                "the text of " + labelOf(message) + " is longer than 65535 bytes"));
        }
    }
    return findings;
}

std::vector<FindingT> headerFaults(const CatalogSourceC& source)
{
    std::vector<FindingT> findings;
    UniqueM<std::string> names(findings);
    for (const SourceMessageT& message : source.messages()) {
        lintNumber(source, message, findings);
        names.add(identifierOf(message), source, message.offset, identifierOf(message));
    }
    return findings;
}

std::vector<FindingT> lintFaults(const std::vector<CatalogSourceC>& sources, const CatalogSourceC* reference)
{
    std::vector<FindingT> findings;
    for (const CatalogSourceC& source : sources) {
        unsigned long previous = 0;
        for (const SourceMessageT& message : source.messages()) {
            const unsigned long key = keyOf(message);
            if (key < previous)
                findings.push_back(
                    source.findingAt(message.offset, labelOf(message) + " stands behind a higher number"));
            previous = std::max(previous, key);
            lintMessage(source, message, findings);
        }
        if (reference != nullptr) lintAgainst(source, *reference, findings);
    }
    return findings;
}
