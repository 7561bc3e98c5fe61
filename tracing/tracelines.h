// tracelines.h: lines of text on their way to a trace file.
//
// Lines are collected and written with one call, so that those of several processes that append to one file
// stay whole.
//
// Thread safety: unlocked.
#ifndef TVXCMN_TRACING_TRACELINES_H
#define TVXCMN_TRACING_TRACELINES_H

#include "string/impl/formatoutput.h"

#include <cstddef>
#include <string>

class TraceLinesC final : public FormatOutputC {
public:
    // A line that was begun and never ended, because an assertion in the middle of it ends the process, gets
    // its end now.
    void beginLine();
    void endLine();
    // Of the lines that have not been written yet.
    size_t bytes() const noexcept { return m_bytes.size() + collectedBytes(); }
    // Writes the lines, and forgets them whether that works or not. A line that was cut, because there was no more room
    // for it, is ended before the next ones.
    void write(int fd);
    void drop();
    // What is written from now on goes to another file.
    void beginFile() { m_isCut = false; }

private:
    void drain(const UTF8T* bytes, size_t n) override;

    bool m_isLineOpen = false;
    bool m_isCut = false;   // the last line in the file has no end
    std::string m_bytes;    // what has not found room in the output's own buffer
};

#endif   // TVXCMN_TRACING_TRACELINES_H
