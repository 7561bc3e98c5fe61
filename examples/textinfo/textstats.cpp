#include "textstats.h"

#include "ucs4.h"
#include "utf8.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace {

typedef std::unordered_map<std::string_view, long> WordCountsT;

// True for what stands between words: white space, controls, and the punctuation of ASCII, Latin-1 and
// the two general blocks.
bool isBetweenWords(UCS4 ch)
{
    if (ch < 0x80) return !UCS4IsAlphabetic(ch) && !UCS4IsDecimal(ch);
    if (ch < 0xC0) return !UCS4IsAlphabetic(ch);
    return (ch >= 0x2000 && ch <= 0x206F) || (ch >= 0x3000 && ch <= 0x303F && ch != 0x3005 && ch != 0x3007) ||
           ch == 0xFEFF;
}

std::vector<std::pair<std::string, long>> mostFrequent(const WordCountsT& counts, size_t limit)
{
    std::vector<std::pair<std::string, long>> words(counts.begin(), counts.end());
    const auto comesFirst = [](const auto& a, const auto& b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    };
    const size_t kept = std::min(limit, words.size());
    std::partial_sort(words.begin(), words.begin() + static_cast<long>(kept), words.end(), comesFirst);
    words.resize(kept);
    return words;
}

// Takes one character after the other.
class CounterC {
public:
    TextStatsT stats;

    void take(UCS4 ch)
    {
        ++stats.characters;
        if (UCS4IsAlphabetic(ch)) ++stats.letters;
        if (UCS4IsDecimal(ch)) ++stats.digits;
        if (UCS4IsIdeographic(ch)) ++stats.ideographs;
        takeInLine(ch);
    }
    void finish()
    {
        if (m_lineLength > 0) endLine();
    }

private:
    void takeInLine(UCS4 ch)
    {
        ++m_lineLength;
        if (ch == '\n') {
            m_lineLength -= m_previous == '\r' ? 2 : 1;
            endLine();
        }
        m_previous = ch;
    }
    void endLine()
    {
        ++stats.lines;
        stats.longestLine = std::max(stats.longestLine, m_lineLength);
        m_lineLength = 0;
    }

    long m_lineLength = 0;
    UCS4 m_previous = 0;
};

// Counts the words of a text that is in lower case already, by their bytes in it.
WordCountsT countWords(const StringC& lower)
{
    WordCountsT counts;
    const char* const begin = lower.utf8();
    const UTF8T* p = reinterpret_cast<const UTF8T*>(begin);
    const UTF8T* const end = p + lower.utf8Bytes();
    const UTF8T* word = p;
    const auto endWord = [&](const UTF8T* at) {
        if (at > word) ++counts[{reinterpret_cast<const char*>(word), static_cast<size_t>(at - word)}];
    };
    while (p < end) {
        const UTF8T* const at = p;
        if (!isBetweenWords(UTF8Get(p))) continue;
        endWord(at);
        word = p;
    }
    endWord(end);
    return counts;
}

}   // namespace

TextStatsT statsOf(const StringC& text, size_t frequent)
{
    CounterC counter;
    const UTF8T* p = reinterpret_cast<const UTF8T*>(text.utf8());
    const UTF8T* const end = p + text.utf8Bytes();
    while (p < end) counter.take(UTF8Get(p));
    counter.finish();

    const StringC lower = text.asLower();   // alive as long as the counts, which point into it
    const WordCountsT counts = countWords(lower);
    for (const auto& [word, count] : counts) counter.stats.words += count;
    counter.stats.frequentWords = mostFrequent(counts, frequent);
    return counter.stats;
}
