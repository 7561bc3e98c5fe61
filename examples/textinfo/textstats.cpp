#include "textstats.h"

#include "contemplate.h"
#include "hashmap.h"
#include "ucs4.h"
#include "utf8.h"

#include <algorithm>

namespace {

typedef StringMapM<long> WordCountsT;

// A word of a map of counts, where it stands.
struct WordCountT {
    const StringC* word;
    long count;
};

// True for what stands between words: white space, controls, and the punctuation of ASCII, Latin-1 and
// the two general blocks.
bool isBetweenWords(UCS4 ch)
{
    if (ch < 0x80) return !UCS4IsAlphabetic(ch) && !UCS4IsDecimal(ch);
    if (ch < 0xC0) return !UCS4IsAlphabetic(ch);
    return (ch >= 0x2000 && ch <= 0x206F) || (ch >= 0x3000 && ch <= 0x303F && ch != 0x3005 && ch != 0x3007) ||
           ch == 0xFEFF;
}

int compareFrequency(const WordCountT& a, const WordCountT& b)
{
    if (a.count != b.count) return a.count > b.count ? -1 : 1;
    return a.word->compare(*b.word);
}

std::vector<std::pair<StringC, long>> mostFrequent(const WordCountsT& counts, size_t limit)
{
    ArrayM<WordCountT> words;
    words.reserve(counts.size());
    WordCountsT::IteratorT it = counts.getIter();
    for (++it; it; ++it) words << WordCountT{&it->Key(), it->Value()};
    words.sort(compareFrequency);
    words.truncate(limit);

    std::vector<std::pair<StringC, long>> frequent;
    for (const WordCountT& entry : words) frequent.emplace_back(*entry.word, entry.count);
    return frequent;
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

// Counts the words of a text that is in lower case already, and returns how many there are.
long countWords(const StringC& lower, WordCountsT& counts)
{
    const UTF8T* p = reinterpret_cast<const UTF8T*>(lower.utf8());
    const UTF8T* const end = p + lower.utf8Bytes();
    const UTF8T* begin = p;
    long words = 0;
    const auto endWord = [&](const UTF8T* at) {
        if (at == begin) return;
        const StringC word(begin, static_cast<size_t>(at - begin), StringC::CC_VALID_UTF8);
        const WordCountsT::ResultT known = counts.get(word);
        known.found() ? void(++known.Value()) : counts.add(word, 1);
        ++words;
    };
    while (p < end) {
        const UTF8T* const at = p;
        if (!isBetweenWords(UTF8Get(p))) continue;
        endWord(at);
        begin = p;
    }
    endWord(end);
    return words;
}

}   // namespace

TextStatsT statsOf(const StringC& text, size_t frequent)
{
    CounterC counter;
    const UTF8T* p = reinterpret_cast<const UTF8T*>(text.utf8());
    const UTF8T* const end = p + text.utf8Bytes();
    while (p < end) counter.take(UTF8Get(p));
    counter.finish();

    WordCountsT counts;
    counter.stats.words = countWords(text.asLower(), counts);
    counter.stats.frequentWords = mostFrequent(counts, frequent);
    return counter.stats;
}
