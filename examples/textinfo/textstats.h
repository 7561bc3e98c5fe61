// textstats.h: what textinfo counts in one text.
#ifndef TEXTINFO_TEXTSTATS_H
#define TEXTINFO_TEXTSTATS_H

#include "stringc.h"

#include <utility>
#include <vector>

struct TextStatsT {
    long characters = 0;
    long letters = 0;   // of scripts that know case
    long digits = 0;
    long ideographs = 0;
    long words = 0;         // runs of characters that are neither white space nor punctuation
    long lines = 0;         // an unfinished last line counts
    long longestLine = 0;   // in characters, without its line end
    std::vector<std::pair<StringC, long>> frequentWords;   // lower case, the most frequent first
};

// Counts in one pass over the text, and keeps the `frequent` most frequent words.
TextStatsT statsOf(const StringC& text, size_t frequent);

#endif   // TEXTINFO_TEXTSTATS_H
