// textwriter.h: writing text, wherever it goes.
//
// A writer brings every line break in what it is given, "\r\n", "\r" or "\n", into one form. Operations
// return 0 or an error number.
//
// Thread safety: a writer is unlocked. The three line breaks may be used by any thread at any time,
// also before the constructors and after the destructors of other static objects.
#ifndef TVXCMN_TEXTWRITER_H
#define TVXCMN_TEXTWRITER_H

#include "arglist.h"
#include "stringc.h"
#include "textencoding.h"

class TextWriterC {
public:
    static const StringC& DOSNewLine;    // "\r\n"
    static const StringC& MacNewLine;    // "\r"
    static const StringC& UNIXNewLine;   // "\n"

    TextWriterC();   // with UNIXNewLine
    virtual ~TextWriterC();
    TextWriterC(const TextWriterC&) = delete;
    TextWriterC& operator=(const TextWriterC&) = delete;

    virtual TextEncodingI* getEncoding() = 0;
    virtual long close();
    virtual long flush();
    virtual long write(const StringC& text) = 0;

    // The arguments put into the format.
    long write(const StringC& format, ArgListC args);
    // The text and a line break, in one write.
    long writeLine(const StringC& text);
    long writeLine(const StringC& format, ArgListC args);

    // What every line break becomes; may be any text.
    StringC getNewLine() const { return newLine; }
    void setNewLine(const StringC& lineBreak) { newLine = lineBreak; }
    StringC replaceLineBreaks(const StringC& text) const;

protected:
    StringC newLine;
};

#endif   // TVXCMN_TEXTWRITER_H
