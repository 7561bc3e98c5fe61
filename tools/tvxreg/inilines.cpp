#include "inilines.h"

#include "../support/utf8text.h"
#include "names.h"

#include <algorithm>

namespace {

const char WHITE[] = " \t\r\n";
const std::string_view UTF8_MARK = "\xEF\xBB\xBF";

std::string_view upToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

std::string inLine(long number) { return "line " + std::to_string(number); }

// Finds what is wrong with one line after the other.
class IniCheckC {
public:
    IniCheckC(const std::string& file, std::string_view content) : m_file(file), m_lines(content) {}

    std::vector<FindingT> run()
    {
        while (m_lines.next()) {
            const std::string_view text = m_lines.text();
            switch (m_lines.kind()) {
            case IniLinesC::INVALID: find(m_lines.column(), m_lines.fault()); break;
            case IniLinesC::HEADER: checkHeader(text); break;
            case IniLinesC::VALUE: checkValue(); break;
            default: break;
            }
            checkBytes(text);
        }
        return std::move(m_findings);
    }

private:
    void find(size_t column, const std::string& message)
    {
        m_findings.push_back({m_file, m_lines.number(), column, message});
    }

    void checkHeader(std::string_view text)
    {
        const size_t open = m_lines.column();
        const size_t close = text.find(']') + 1;
        const bool hasBlanks = m_lines.hasBlanksInBrackets();
        const long first = m_numbers.get(m_lines.section(), "");
        if (open > 1) find(open, "the header is indented");
        if (hasBlanks) find(open + 1, "blanks around the name: changes will open another section");
        if (first != NameNumbersC::NONE) {
            find(open, "section \"" + m_lines.section() + "\" began in " + inLine(first) +
                           (hasBlanks ? "" : ": a change joins them, and drops this header"));
        } else if (!hasBlanks) {
            m_numbers.set(m_lines.section(), "", number());
        }
        const std::string_view behind = trimmed(text.substr(close));
        if (!behind.empty())
            find(static_cast<size_t>(behind.data() - text.data()) + 1, "not read: it is in the header's line");
    }

    void checkValue()
    {
        const long first = m_numbers.get(m_lines.section(), m_lines.key());
        if (first == NameNumbersC::NONE) return m_numbers.set(m_lines.section(), m_lines.key(), number());
        find(m_lines.column(), "\"" + m_lines.key() + "\" stands in " + inLine(first) +
                                   " too: this value is in force, until a change drops it");
    }

    void checkBytes(std::string_view text)
    {
        if (m_lines.kind() == IniLinesC::HEADER || m_lines.kind() == IniLinesC::VALUE) {
            const size_t zero = text.find('\0');
            if (zero != std::string_view::npos) find(zero + 1, "zero byte: what follows is not read");
        }
        const size_t valid = validUtf8(text);
        if (valid == text.size()) return;
        char byte[8];
        std::snprintf(byte, sizeof byte, "0x%02X", static_cast<unsigned>(static_cast<unsigned char>(text[valid])));
        find(valid + 1, std::string("byte ") + byte + " is not UTF-8");
    }

    long number() const { return static_cast<long>(m_lines.number()); }

    const std::string& m_file;
    IniLinesC m_lines;
    NameNumbersC m_numbers;   // the first lines of sections and keys
    std::vector<FindingT> m_findings;
};

}   // namespace

std::string_view trimmed(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(WHITE), text.size()));
    return text.substr(0, text.find_last_not_of(WHITE) + 1);
}

std::string_view withoutMark(std::string_view content)
{
    return content.substr(content.starts_with(UTF8_MARK) ? UTF8_MARK.size() : 0);
}

bool nextLine(std::string_view& rest, std::string_view& line)
{
    if (rest.empty()) return false;
    const size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    line = rest.substr(0, end);
    rest.remove_prefix(end);
    if (!rest.empty()) rest.remove_prefix(rest.substr(0, 2) == "\r\n" ? 2 : 1);
    return true;
}

// ---- lines --------------------------------------------------------------------------------------------

bool IniLinesC::next()
{
    if (!nextLine(m_rest, m_text)) return false;
    ++m_number;
    m_isNameless = false;
    const std::string_view line = trimmed(m_text);
    m_column = static_cast<size_t>(line.data() - m_text.data()) + 1;
    if (line.empty() || line[0] == ';') {
        m_kind = NOTHING;
    } else {
        m_kind = line[0] == '[' ? readHeader(line) : readValue(line);
    }
    return true;
}

IniLinesC::KindT IniLinesC::invalid(const char* fault, size_t behind)
{
    m_fault = fault;
    m_column += behind;
    return INVALID;
}

IniLinesC::KindT IniLinesC::readHeader(std::string_view line)
{
    const size_t close = line.find(']');
    if (close == std::string_view::npos) return invalid("the header has no ]", line.size());
    const std::string_view whole = upToNul(line.substr(1, close - 1));
    const std::string_view name = trimmed(whole);
    m_isNameless = name.empty();
    if (m_isNameless) return invalid("the header has no name", 0);
    m_hasBlanksInBrackets = name != whole;
    m_section = name;
    return HEADER;
}

IniLinesC::KindT IniLinesC::readValue(std::string_view line)
{
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) return invalid("the line has no =", line.size());
    const std::string_view key = trimmed(upToNul(line.substr(0, equals)));
    if (key.empty()) return invalid("nothing stands in front of the =", 0);
    if (m_section.empty()) return invalid("the line stands in front of the first header", 0);
    m_key = key;
    return VALUE;
}

// ---- whole files --------------------------------------------------------------------------------------

std::vector<FindingT> checkIni(const std::string& file, std::string_view content)
{
    return IniCheckC(file, content).run();
}

size_t lineOfValue(std::string_view content, const std::string& section, const std::string& key)
{
    NameNumbersC wanted;
    wanted.set(section, key, 0);
    size_t found = 0;
    for (IniLinesC lines(content); lines.next();) {
        if (lines.kind() != IniLinesC::VALUE) continue;
        if (wanted.get(lines.section(), lines.key()) == 0) found = lines.number();
    }
    return found;
}
