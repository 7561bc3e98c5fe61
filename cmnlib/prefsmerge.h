// prefsmerge.h: the changes of preferences put into the text of a file, line by line.
//
// Whoever saves under a lock of its own reads the file (prefsfile.h), merges here, writes, and loads the result
// again (prefsload.h) without reading the file once more.
//
// Thread safety: unlocked, as the preferences are.
#ifndef TVXCMN_CMNLIB_PREFSMERGE_H
#define TVXCMN_CMNLIB_PREFSMERGE_H

#include "prefs.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class PrefsMergeC {
public:
    // The new text of a file that holds `source` now, as PrefsC::Save describes it.
    static std::string merge(PrefsC& prefs, std::string_view source);
    // The text of a file that holds the preferences and nothing else.
    static std::string whole(const PrefsC& prefs);

private:
    // Lines under a header that comes again.
    struct BlockT {
        const PrefsSectionElem* section;
        std::string_view lines;
    };
    static bool isInFront(const BlockT& a, const BlockT& b) { return std::less<>()(a.section, b.section); }

    PrefsMergeC(PrefsC& prefs, std::string_view source) : m_prefs(prefs), m_source(source) {}
    std::string run();
    void findLaterBlocks();
    PrefsSectionElem* findSection(std::string_view header) const;
    PrefsKeyElem* findKey(std::string_view name) const;
    static PrefsKeyElem* firstKey(const PrefsSectionElem& section);

    void mergeLine(std::string_view line);
    void mergeHeader(std::string_view line, std::string_view header);
    void mergeContent(std::string_view line);
    void mergeKeyLine(std::string_view line, std::string_view name);
    void mergeOtherLine(std::string_view line);
    void copyLine(std::string_view line);
    void finishSection();
    void appendUnvisitedSections();

    PrefsC& m_prefs;
    std::string_view m_source;
    std::string m_out;
    std::vector<BlockT> m_laterBlocks;   // section by section, in the order of the file
    bool m_isBlankAllowed = true;
    bool m_isRepeated = false;               // the block's header has come before
    PrefsSectionElem* m_section = nullptr;   // whose lines these are; null when it is not in memory
};

#endif   // TVXCMN_CMNLIB_PREFSMERGE_H
