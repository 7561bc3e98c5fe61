#include "catalogsource.h"

#include "../support/utf8text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <optional>

namespace {

// Bytes, each with its place in the source.
struct TextT {
    std::string bytes;
    std::vector<size_t> origins;

    void add(char byte, size_t origin)
    {
        bytes += byte;
        origins.push_back(origin);
    }
    void add(std::string_view text, size_t origin)
    {
        for (const char byte : text) add(byte, origin);
    }
    void add(const TextT& other)
    {
        bytes += other.bytes;
        origins.insert(origins.end(), other.origins.begin(), other.origins.end());
    }
};

struct VariantT {
    size_t offset;   // of what begins it
    TextT style;
    TextT problem;
    std::optional<TextT> reason;
    std::optional<TextT> solution;
};

bool isDigit(char ch) { return std::isdigit(static_cast<unsigned char>(ch)) != 0; }
bool isBlank(char ch) { return ch == ' ' || ch == '\t'; }
bool isOctal(char ch) { return ch >= '0' && ch <= '7'; }

// The keywords of C++20, which no header can declare.
bool isKeyword(std::string_view word)
{
    static const std::string_view KEYWORDS[] = {
        "alignas",     "alignof",   "and",        "and_eq",    "asm",      "auto",         "bitand",
        "bitor",       "bool",      "break",      "case",      "catch",    "char",         "char8_t",
        "char16_t",    "char32_t",  "class",      "compl",     "concept",  "const",        "consteval",
        "constexpr",   "constinit", "const_cast", "continue",  "co_await", "co_return",    "co_yield",
        "decltype",    "default",   "delete",     "do",        "double",   "dynamic_cast", "else",
        "enum",        "explicit",  "export",     "extern",    "false",    "float",        "for",
        "friend",      "goto",      "if",         "inline",    "int",      "long",         "mutable",
        "namespace",   "new",       "noexcept",   "not",       "not_eq",   "nullptr",      "operator",
        "or",          "or_eq",     "private",    "protected", "public",   "register",     "reinterpret_cast",
        "requires",    "return",    "short",      "signed",    "sizeof",   "static",       "static_assert",
        "static_cast", "struct",    "switch",     "template",  "this",     "thread_local", "throw",
        "true",        "try",       "typedef",    "typeid",    "typename", "union",        "unsigned",
        "using",       "virtual",   "void",       "volatile",  "wchar_t",  "while",        "xor",
        "xor_eq"};
    return std::find(std::begin(KEYWORDS), std::end(KEYWORDS), word) != std::end(KEYWORDS);
}

// How many bytes of a text are its severity mark; 0 when it has none.
size_t markSize(std::string_view text)
{
    if (text.empty() || text.front() != '{') return 0;
    const size_t close = text.find('}');
    return close == std::string_view::npos ? 0 : close + 1;
}

// As much of a text as reading it would skip: its mark, and a blank behind that.
size_t markAndBlankSize(std::string_view text)
{
    const size_t mark = markSize(text);
    return mark > 0 && mark < text.size() && isBlank(text[mark]) ? mark + 1 : mark;
}

void addField(TextT& to, const std::optional<TextT>& field, size_t origin)
{
    to.add('\1', origin);
    if (field) to.add(*field);
}

void addVariant(TextT& to, const VariantT& variant)
{
    const std::string_view problem = variant.problem.bytes;
    const size_t mark = markSize(problem), skipped = markAndBlankSize(problem);
    to.add('\1', variant.offset);
    to.add(variant.style);
    to.add('\1', variant.offset);
    to.add(mark > 0 ? problem.substr(0, mark) : "{e}", variant.offset);
    to.add('\1', variant.offset);
    for (size_t i = skipped; i < problem.size(); ++i) to.add(problem[i], variant.problem.origins[i]);
    addField(to, variant.reason, variant.offset);
    addField(to, variant.solution, variant.offset);
}

TextT textOf(const std::vector<VariantT>& variants)
{
    TextT text;
    if (variants.size() > 1) {
        for (const VariantT& variant : variants) addVariant(text, variant);
        return text;
    }
    const VariantT& only = variants.front();
    if (only.problem.bytes.empty() && (only.reason || only.solution)) text.add("{e}", only.offset);   // no variants
    text.add(only.problem);
    if (only.reason || only.solution) addField(text, only.reason, only.offset);
    if (only.solution) addField(text, only.solution, only.offset);
    return text;
}

}   // namespace

std::string identifierOf(const SourceMessageT& message)
{
    return message.name.empty() ? labelOf(message) : message.name;
}

// ---- reading ----------------------------------------------------------------------------------------

class SourceParserC {
public:
    SourceParserC(CatalogSourceC& source, std::string_view content) : m_source(source), m_content(content) {}

    void parse()
    {
        while (m_at < m_content.size()) parseLine();
        endMessage();
        if (!m_name.empty()) error(m_nameOffset, "no message follows this name");
    }

private:
    char peek(size_t ahead = 0) const { return m_at + ahead < m_content.size() ? m_content[m_at + ahead] : '\0'; }
    // What a line ends with: nothing more, \n or \r\n.
    bool atLineEnd() const
    {
        return m_at >= m_content.size() || peek() == '\n' ||
               (peek() == '\r' && (m_at + 1 == m_content.size() || peek(1) == '\n'));
    }
    void skipBlanks()
    {
        while (isBlank(peek())) ++m_at;
    }
    void skipLine() { m_at = std::min(m_content.find('\n', m_at), m_content.size() - 1) + 1; }
    void error(size_t offset, const std::string& message)
    {
        m_source.m_errors.push_back(m_source.findingAt(offset, message));
    }

    void parseLine();
    void parseDirective();
    void parseSet();
    void parseQuote();
    void parseName();
    void parseMessage();
    void parseField(const std::string& directive, size_t offset);
    bool readNumber(uint32_t limit, uint32_t& number);
    TextT readText();
    void readEscape(TextT& text);
    void endMessage();
    bool isWhole();

    CatalogSourceC& m_source;
    const std::string_view m_content;
    size_t m_at = 0;
    uint32_t m_set = 0;
    char m_quote = 0;
    std::string m_name;   // for the next message
    size_t m_nameOffset = 0;
    // The message that is being read, when it has variants.
    std::vector<VariantT> m_variants;
    SourceMessageT m_message;
};

void SourceParserC::parseLine()
{
    const size_t begin = m_at;
    if (peek() == '$') return parseDirective();
    if (isDigit(peek())) return parseMessage();
    skipBlanks();
    if (!atLineEnd()) error(begin, "a line begins with a number or with $");
    skipLine();
}

void SourceParserC::parseDirective()
{
    const size_t offset = m_at++;
    if (atLineEnd() || isBlank(peek())) return skipLine();
    const size_t begin = m_at;
    while (std::isalpha(static_cast<unsigned char>(peek())) != 0) ++m_at;
    const std::string word(m_content.substr(begin, m_at - begin));
    if (word == "set") return parseSet();
    if (word == "quote") return parseQuote();
    if (word == "name") return parseName();
    if (word == "problem" || word == "reason" || word == "solution" || word == "variant")
        return parseField(word, offset);
    error(offset, "unknown directive $" + word);
    skipLine();
}

void SourceParserC::parseSet()
{
    endMessage();
    const size_t behind = m_at;
    skipBlanks();
    if (m_at == behind) {
        error(behind, "a number follows behind a blank");
    } else if (readNumber(MAX_SET, m_set) && !atLineEnd() && !isBlank(peek())) {
        error(m_at, "a comment follows behind a blank");
    }
    skipLine();
}

void SourceParserC::parseQuote()
{
    skipBlanks();
    m_quote = 0;
    if (!atLineEnd()) m_quote = m_content[m_at++];
    skipBlanks();
    if (!atLineEnd()) error(m_at, "the quote is one character");
    skipLine();
}

void SourceParserC::parseName()
{
    endMessage();
    skipBlanks();
    const size_t begin = m_at;
    if (!m_name.empty()) error(m_nameOffset, "no message follows this name");
    while (std::isalnum(static_cast<unsigned char>(peek())) != 0 || peek() == '_') ++m_at;
    m_name = m_content.substr(begin, m_at - begin);
    m_nameOffset = begin;
    if (m_name.empty() || isDigit(m_name[0]) || isKeyword(m_name)) error(begin, "a name is an identifier of C++");
    skipBlanks();
    if (!atLineEnd()) error(m_at, "something follows the name");
    skipLine();
}

void SourceParserC::parseMessage()
{
    endMessage();
    m_message = {};
    m_message.set = m_set;
    m_message.offset = m_at;
    m_message.name.swap(m_name);
    const bool isNumber = readNumber(UINT32_MAX, m_message.number);
    if (isNumber && !isBlank(peek())) error(m_at, "a text follows behind one blank");
    VariantT variant = {m_message.offset, {}, readText(), {}, {}};
    if (isNumber) m_variants.push_back(std::move(variant));
}

// A part of the latest message.
void SourceParserC::parseField(const std::string& directive, size_t offset)
{
    TextT text = readText();
    if (m_variants.empty()) return error(offset, "$" + directive + " without a message");
    VariantT& variant = m_variants.back();
    if (directive == "variant") {
        m_variants.push_back({offset, std::move(text), {}, {}, {}});
        return;
    }
    if (directive == "problem") {
        if (m_variants.size() == 1 || !variant.problem.bytes.empty())
            return error(offset, "the problem has been given before");
        variant.problem = std::move(text);
        return;
    }
    std::optional<TextT>& field = directive == "reason" ? variant.reason : variant.solution;
    if (field) error(offset, "the " + directive + " has been given before");
    field = std::move(text);
}

bool SourceParserC::readNumber(uint32_t limit, uint32_t& number)
{
    const size_t begin = m_at;
    const bool isHex = peek() == '0' && (peek(1) == 'x' || peek(1) == 'X');
    if (isHex) m_at += 2;
    uint64_t value = 0;
    bool isAny = false;
    while (isHex ? std::isxdigit(static_cast<unsigned char>(peek())) != 0 : isDigit(peek())) {
        const char digit = m_content[m_at++];
        value = value * (isHex ? 16 : 10) +
                static_cast<unsigned>(isDigit(digit) ? digit - '0' : std::tolower(digit) - 'a' + 10);
        value = std::min<uint64_t>(value, uint64_t{UINT32_MAX} + 1);
        isAny = true;
    }
    if (!isAny) return error(begin, "a number is missing here"), false;
    if (value > limit) return error(begin, "the number is above " + std::to_string(limit)), false;
    number = static_cast<uint32_t>(value);
    return true;
}

TextT SourceParserC::readText()
{
    TextT text;
    if (isBlank(peek())) ++m_at;
    const size_t begin = m_at;
    const bool isQuoted = m_quote != 0 && peek() == m_quote;
    if (isQuoted) ++m_at;
    while (!atLineEnd() && !(isQuoted && peek() == m_quote)) {
        if (peek() == '\\') {
            readEscape(text);
        } else {
            text.add(peek(), m_at);
            ++m_at;
        }
    }
    if (isQuoted) {
        if (atLineEnd()) {
            error(begin, "the quoted text has no end");
        } else {
            ++m_at;
            skipBlanks();
            if (!atLineEnd()) error(m_at, "something follows the quoted text");
        }
    }
    skipLine();
    return text;
}

void SourceParserC::readEscape(TextT& text)
{
    static const char NAMES[] = "ntvbrf\\\"'";
    static const char CHARACTERS[] = "\n\t\v\b\r\f\\\"'";
    const size_t begin = m_at++;
    if (atLineEnd()) return skipLine();
    const char name = m_content[m_at];
    if (const char* const known = std::strchr(NAMES, name); known != nullptr && name != 0) {
        ++m_at;
        text.add(CHARACTERS[known - NAMES], begin);
    } else if (m_quote != 0 && name == m_quote) {
        ++m_at;
        text.add(name, begin);
    } else if (isOctal(name)) {
        int value = 0;
        for (int i = 0; i < 3 && isOctal(peek()); ++i) value = value * 8 + (m_content[m_at++] - '0');
        if (value > 0xFF) error(begin, "the octal number is no byte");
        text.add(static_cast<char>(value), begin);
    } else {
        error(begin, "unknown escape");
    }
}

// A separator within a text is allowed in one that stands for all of the message.
bool SourceParserC::isWhole()
{
    const VariantT& first = m_variants.front();
    if (m_variants.size() == 1 && !first.reason && !first.solution) return true;
    for (const VariantT& variant : m_variants) {
        for (const TextT* const text : {&variant.style, &variant.problem, variant.reason ? &*variant.reason : nullptr,
                                        variant.solution ? &*variant.solution : nullptr}) {
            const size_t at = text != nullptr ? text->bytes.find('\1') : std::string::npos;
            if (at == std::string::npos) continue;
            error(text->origins[at], "\\001 in a text whose other parts are given too");
            return false;
        }
    }
    return true;
}

void SourceParserC::endMessage()
{
    if (m_variants.empty()) return;
    if (isWhole()) {
        TextT text = textOf(m_variants);
        m_message.text = std::move(text.bytes);
        m_message.origins = std::move(text.origins);
        m_source.m_messages.push_back(std::move(m_message));
    }
    m_variants.clear();
}

CatalogSourceC::CatalogSourceC(const std::string& file, const std::string& content) : m_file(file), m_lineStarts{0}
{
    for (size_t i = 0; i < content.size(); ++i) {
        if (content[i] == '\n') m_lineStarts.push_back(i + 1);
    }
    SourceParserC(*this, content).parse();
}

FindingT CatalogSourceC::findingAt(size_t offset, const std::string& message) const
{
    const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
    return {m_file, static_cast<size_t>(next - m_lineStarts.begin()), offset - *(next - 1) + 1, message};
}

// ---- writing ----------------------------------------------------------------------------------------

namespace {

// A quoted text. Bytes that are not UTF-8 are written as numbers, so that the source always is.
std::string quoted(std::string_view text)
{
    std::string result = "\"";
    while (!text.empty()) {
        const size_t size = std::max<size_t>(firstCharacterSize(text), 1);
        const unsigned byte = static_cast<unsigned char>(text[0]);
        if (text[0] == '"' || text[0] == '\\') {
            result += std::string("\\") + text[0];
        } else if (text[0] == '\n') {
            result += "\\n";
        } else if (byte < 0x20 || byte == 0x7F || firstCharacterSize(text) == 0) {
            char number[8];
            std::snprintf(number, sizeof number, "\\%03o", byte);
            result += number;
        } else {
            result += text.substr(0, size);
        }
        text.remove_prefix(size);
    }
    return result + "\"";
}

std::string lineOf(const std::string& what, std::string_view text) { return what + " " + quoted(text) + "\n"; }

// Reason and solution, as many as there are.
std::string partLines(const std::vector<std::string>& fields, size_t first)
{
    std::string lines;
    if (first < fields.size()) lines += lineOf("$reason", fields[first]);
    if (first + 1 < fields.size()) lines += lineOf("$solution", fields[first + 1]);
    return lines;
}

// A message with its parts on lines of their own.
std::string spreadOut(const CatalogMessageT& message)
{
    const std::string number = std::to_string(message.number);
    const std::vector<std::string> fields = fieldsOf(message.text);
    if (!hasVariants(message.text)) return lineOf(number, fields[0]) + partLines(fields, 1);
    std::string lines;
    for (size_t i = 1; i + VARIANT_FIELDS <= fields.size(); i += VARIANT_FIELDS) {
        const std::string problem = fields[i + 1] + " " + fields[i + 2];
        if (i > 1) lines += lineOf("$variant", fields[i]);
        lines += lineOf(i > 1 ? "$problem" : number, problem);
        lines += partLines(
            {fields.begin() + static_cast<long>(i), fields.begin() + static_cast<long>(i + VARIANT_FIELDS)}, 3);
    }
    return lines;
}

}   // namespace

std::string sourceOf(const std::vector<CatalogMessageT>& messages)
{
    std::string source = "$quote \"\n";
    uint32_t set = 0;
    for (const CatalogMessageT& message : messages) {
        if (message.set != set) source += "\n$set " + std::to_string(message.set) + "\n";
        set = message.set;
        // Spread out if that reads back as the same bytes.
        const std::string lines = spreadOut(message);
        const CatalogSourceC back("", "$quote \"\n" + lines);
        const bool isSame =
            back.errors().empty() && back.messages().size() == 1 && back.messages().front().text == message.text;
        source += isSame ? lines : lineOf(std::to_string(message.number), message.text);
    }
    return source;
}
