// textreader.h: reading text, whatever it comes from.
//
// Positions in a text are characters. What was read may be pushed back and is read again.
//
// Thread safety: a reader is unlocked.
// Ownership:     strings that are returned by pointer belong to the caller, who deletes them.
#ifndef TVXCMN_TEXTREADER_H
#define TVXCMN_TEXTREADER_H

#include "basetypes.h"
#include "stringc.h"

class TextReaderC {
public:
    virtual ~TextReaderC();

    // 0 or an error number. A closed reader is at its end.
    virtual long close() = 0;
    // The next character; 0xFFFFFFFF at the end.
    virtual UCS4 getChar() = 0;
    // A new string of at least one character and at most `count`; null at the end.
    [[nodiscard]] virtual StringC* read(unsigned long count) = 0;
    // Puts `text` before everything that is still to be read.
    virtual void unRead(StringC text) = 0;
    // The next line, without its line end: "\n", "\r" or "\r\n". The last line needs none. At the end:
    // null, or 0xE0CB001A with an empty line; nothing is recorded.
    [[nodiscard]] virtual StringC* readLine() = 0;
    virtual long readLine(StringC& line) = 0;
    // Everything up to the end.
    virtual StringC readToEnd() = 0;
};

#endif   // TVXCMN_TEXTREADER_H
