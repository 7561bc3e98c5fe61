// ucs4_tables.h: the case tables, and the look-ups that loops over text use directly.
//
// The tables cover the Basic Multilingual Plane. A case mapping is a difference modulo 2^16, kept in
// blocks of 64 characters; equal blocks are kept once, so most of the plane shares the block of zeros.
// ucs4_tables.cpp is written by make_ucs4_tables.py from the Unicode character database.
#ifndef TVXCMN_STRING_UCS4_TABLES_H
#define TVXCMN_STRING_UCS4_TABLES_H

#include "basetypes.h"

namespace ucs4tables {

const unsigned BLOCK_BITS = 6;
const unsigned BLOCK_SIZE = 1u << BLOCK_BITS;
const unsigned BLOCKS = 0x10000 >> BLOCK_BITS;

extern const unsigned char LOWER_BLOCK[BLOCKS];
extern const UTF16T LOWER_DIFFERENCE[][BLOCK_SIZE];
extern const unsigned char UPPER_BLOCK[BLOCKS];
extern const UTF16T UPPER_DIFFERENCE[][BLOCK_SIZE];

// Characters whose title case is not their upper case.
struct TitleT {
    UTF16T ch;
    short difference;
};
const unsigned TITLES = 8;
extern const TitleT TITLE[TITLES];

// Letters of scripts with case that no mapping changes, ascending.
const unsigned CASELESS_LETTERS = 208;
extern const UTF16T CASELESS_LETTER[CASELESS_LETTERS];

inline UCS4 mapped(UCS4 ch, const unsigned char* block, const UTF16T (*difference)[BLOCK_SIZE])
{
    if (ch > 0xFFFF) return ch;
    return static_cast<UTF16T>(ch + difference[block[ch >> BLOCK_BITS]][ch & (BLOCK_SIZE - 1)]);
}
inline UCS4 toLower(UCS4 ch) { return mapped(ch, LOWER_BLOCK, LOWER_DIFFERENCE); }
inline UCS4 toUpper(UCS4 ch) { return mapped(ch, UPPER_BLOCK, UPPER_DIFFERENCE); }

}   // namespace ucs4tables

#endif   // TVXCMN_STRING_UCS4_TABLES_H
