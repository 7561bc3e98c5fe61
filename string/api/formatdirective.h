// formatdirective.h: the grammar of a format's directives, which the engine and StringC::formatArgs share.
//
//     %[0][N$][-+# ...][0][width][.precision][modifiers]conversion
//     %[0]width[.precision][modifiers]conversion
//
// A width is a number, * for the next argument or *N$ for the N-th; a precision is the same or nothing,
// which is 0. A width in the first place ends the flags: what follows it is the precision.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_STRING_FORMATDIRECTIVE_H
#define TVXCMN_STRING_FORMATDIRECTIVE_H

#include "basetypes.h"

// A number of a directive and where it comes from. A number in the text saturates at the largest int.
struct FormatFieldT {
    enum SourceT : unsigned char { UNSET, NUMBER, NEXT_ARG, NTH_ARG };

    SourceT source = UNSET;
    int value = 0;   // of NUMBER the number, of NTH_ARG the argument's index: -1 when the text says 0$
};

// A directive as it is written; no argument is looked at.
struct FormatDirectiveT {
    // Reads what follows the '%' up to the length modifiers, and returns where they begin. The text must
    // be terminated; the terminator is never passed.
    const UTF8T* parse(const UTF8T* p);

    FormatFieldT position;   // NTH_ARG or UNSET
    FormatFieldT width;      // a number is never negative
    FormatFieldT precision;
    char pad = ' ';   // or '0'
    char sign = 0;    // of a number that is not negative: 0 for none, '+' or ' '
    bool left = false;
    bool alternate = false;

private:
    const UTF8T* parseFlags(const UTF8T* p);
    const UTF8T* parseWidth(const UTF8T* p);
    const UTF8T* parsePrecision(const UTF8T* p);
};

#endif   // TVXCMN_STRING_FORMATDIRECTIVE_H
