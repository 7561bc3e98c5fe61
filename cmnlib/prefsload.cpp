#include "cmnlib/prefsload.h"

#include "assertfatal.h"
#include "cmnlib/prefsfile.h"
#include "cmnlib/prefsstore.h"
#include "errorapi.h"

#include <cerrno>

namespace {

size_t countBackslashesAtEnd(std::string_view text)
{
    const size_t last = text.find_last_not_of('\\');
    return last == std::string_view::npos ? text.size() : text.size() - last - 1;
}

// Puts lines together that are continued, in place: what is joined never reaches what is still to be read.
class JoinedLinesC {
public:
    // Requires: `lines` is a part of a text that may be changed.
    JoinedLinesC(std::string_view lines, bool continuation) : m_lines(lines), m_continuation(continuation) {}

    // The next text that is not empty, trimmed; null when there is none. One byte behind it may be changed too.
    char* next(size_t& size)
    {
        bool isPending = false;
        char* joined = nullptr;
        size = 0;
        for (std::string_view line; m_lines.next(line);) {
            line = prefstext::trimmed(line);
            if (!isPending) {
                joined = const_cast<char*>(line.data());
                size = line.size();
            } else {
                std::memmove(joined + size, line.data(), line.size());
                size += line.size();
            }
            isPending = m_continuation && countBackslashesAtEnd(line) % 2 != 0;   // those in front of it are even
            if (isPending) {
                --size;
            } else if (size != 0) {
                return joined;
            }
        }
        return nullptr;
    }

private:
    prefstext::LinesC m_lines;
    const bool m_continuation;
};

// Cuts the text out of its line, so that what is stored can stay where it is.
char* terminated(char* line, std::string_view text)
{
    char* const begin = line + (text.data() - line);
    begin[text.size()] = '\0';
    return begin;
}

}   // namespace

// False when the line is invalid. `section` is the name of the section that it stands in, or opens.
bool PrefsC::storeLine(char* line, size_t size, const char*& section)
{
    if (*line == ';') return true;
    const std::string_view text(line, size);
    if (*line == '[') {
        const size_t close = text.find(']');
        if (close == std::string_view::npos) return false;
        const char* const name = terminated(line, prefstext::trimmed(prefstext::upToNul(text.substr(1, close - 1))));
        if (*name == '\0') return false;
        section = name;
        return FindSection(name) != nullptr || NewSection(name, true) != nullptr;
    }
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0) return false;
    const char* const value = terminated(line, prefstext::trimmed(text.substr(equals + 1)));
    const char* const key = terminated(line, prefstext::trimmedRight(prefstext::upToNul(text.substr(0, equals))));
    return SetAttr(section, key, value, false);
}

bool PrefsBytesC::load(PrefsC& prefs, std::string text, const char* filename, bool exit_on_parse_error,
                       bool continuation)
{
    const std::string name(filename);   // may be a part of what is cleared
    prefs.Clear();
    std::string& kept = prefs.m_store->beginLoading(std::move(text));
    std::string_view lines(kept);
    if (lines.starts_with(prefstext::UTF8_MARK)) lines.remove_prefix(prefstext::UTF8_MARK.size());

    JoinedLinesC joined(lines, continuation);
    const char* section = "";
    size_t size;
    for (char* line = joined.next(size); line != nullptr; line = joined.next(size)) {
        if (prefs.storeLine(line, size, section) || !exit_on_parse_error) continue;
        prefs.Clear();
        return false;
    }
    prefs.m_store->endLoading();
    prefs.CurrentFileName_p.reset(new char[name.size() + 1]);
    std::memcpy(prefs.CurrentFileName_p.get(), name.c_str(), name.size() + 1);
    return true;
}

bool PrefsC::Load(const char* filename_p, bool exit_on_parse_error, bool continuation)
{
    if (filename_p == nullptr || *filename_p == '\0') return false;
    if (!TVX_CHECK(filename_p != CurrentFileName_p.get(), "filename_p != CurrentFileName_p")) return false;
    std::string text;
    errno = readWholeFile(filename_p, text);
    if (errno != 0) return false;
    const AutoRollbackErrorCheckpointC checkpoint;   // of what an override of SetAttr meets
    return PrefsBytesC::load(*this, std::move(text), filename_p, exit_on_parse_error, continuation);
}
