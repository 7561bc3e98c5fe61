// catalogsource.h: reads and writes the source of a message catalog.
//
// A source is made of lines, in the manner of gencat (POSIX):
//
//     $ comment                   also "$" alone; empty lines are skipped
//     $set N [comment]            the message set of what follows, 0 at first
//     $quote C                    texts may stand between two of this character; without C: none may
//     $name IDENTIFIER            the name of the next message, for programs
//     N TEXT                      message N of the set: "{e} The disk %S is full"
//     $reason TEXT                why that happened
//     $solution TEXT              what to do about it
//     $variant STYLE              another wording of the message, for users of a style; $problem, $reason and
//     $problem TEXT               $solution follow
//
// Numbers are decimal or, with 0x, hexadecimal. A text begins behind one blank or tab. In it \n \t \v \b \r \f
// \\ \" \' are characters as in C, \ with three octal digits is any byte, and a \ at the end of a line joins the
// next line to it. What a text says about itself (errorapi.h) stands at its front, as in a program's default text.
//
// Thread safety: unlocked.
#ifndef TVXCAT_CATALOGSOURCE_H
#define TVXCAT_CATALOGSOURCE_H

#include "../support/findings.h"
#include "catalogfile.h"

#include <cstddef>
#include <string>
#include <vector>

// A message of a source.
struct SourceMessageT : CatalogMessageT {
    std::string name;              // "" if it has none
    size_t offset;                 // of its number in the source
    std::vector<size_t> origins;   // for each byte of the text, where in the source it comes from
};

// What a program calls it: its name, or "s203m16".
std::string identifierOf(const SourceMessageT& message);

class CatalogSourceC {
public:
    // `file` is the name that findings show.
    CatalogSourceC(const std::string& file, const std::string& content);

    // Sources that cannot be understood as a whole have errors; the messages are those that can.
    const std::vector<SourceMessageT>& messages() const { return m_messages; }
    const std::vector<FindingT>& errors() const { return m_errors; }

    FindingT findingAt(size_t offset, const std::string& message) const;

private:
    friend class SourceParserC;

    std::string m_file;
    std::vector<size_t> m_lineStarts;
    std::vector<SourceMessageT> m_messages;
    std::vector<FindingT> m_errors;
};

// A source of these messages, in the same order.
std::string sourceOf(const std::vector<CatalogMessageT>& messages);

#endif   // TVXCAT_CATALOGSOURCE_H
