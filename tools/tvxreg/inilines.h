// inilines.h: the lines of an INI file and what a load makes of each (prefs.h), with their places.
//
// Thread safety: pure functions, any thread.
#ifndef TVXREG_INILINES_H
#define TVXREG_INILINES_H

#include "../support/findings.h"

#include <string>
#include <string_view>
#include <vector>

// Without the white space around it.
std::string_view trimmed(std::string_view text);

// Without the UTF-8 mark in front.
std::string_view withoutMark(std::string_view content);

// Takes the next line, which ends with "\n", "\r\n" or "\r", out of `rest`. False when there is none left.
bool nextLine(std::string_view& rest, std::string_view& line);

class IniLinesC {
public:
    enum KindT { NOTHING, HEADER, VALUE, INVALID };   // NOTHING: a comment, or an empty line

    explicit IniLinesC(std::string_view content) : m_rest(withoutMark(content)) {}

    // Goes to the next line. False when there is none left.
    bool next();

    size_t number() const { return m_number; }
    KindT kind() const { return m_kind; }
    std::string_view text() const { return m_text; }   // as it stands there
    // The section that the line opens or stands in, and the key of a VALUE.
    const std::string& section() const { return m_section; }
    const std::string& key() const { return m_key; }
    // Of a HEADER: a merge takes it for that of another section.
    bool hasBlanksInBrackets() const { return m_hasBlanksInBrackets; }
    // Of an INVALID line: a header without a name. A load stays in the section, and a merge takes it for another one.
    bool isNameless() const { return m_isNameless; }
    // What is wrong with an INVALID line.
    const char* fault() const { return m_fault; }
    // Where, in bytes from 1; in another line, its first character that is not white.
    size_t column() const { return m_column; }

private:
    KindT readHeader(std::string_view line);
    KindT readValue(std::string_view line);
    KindT invalid(const char* fault, size_t behind);

    std::string_view m_rest;
    size_t m_number = 0;
    std::string_view m_text;
    KindT m_kind = NOTHING;
    std::string m_section;
    bool m_hasBlanksInBrackets = false;
    bool m_isNameless = false;
    std::string m_key;
    const char* m_fault = "";
    size_t m_column = 1;
};

// What a load would skip, what a merge would drop, and what is not UTF-8.
std::vector<FindingT> checkIni(const std::string& file, std::string_view content);

// The line that a value comes from; 0 when it is not there.
size_t lineOfValue(std::string_view content, const std::string& section, const std::string& key);

#endif   // TVXREG_INILINES_H
