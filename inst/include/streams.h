// streams.h: sources and destinations of bytes.
//
// An input stream is read, an output stream is written, an IOStreamC is both and has a position. None
// of them buffers: what is written has reached the stream when write returns. The order of the slots is
// fixed; programs may derive streams of their own.
//
// Operations that return a number of bytes or a position return -1 when they fail, the others 0 or an
// error number. A failure is recorded in the error buffer by the stream that fails.
//
// Thread safety: a stream is unlocked. Nothing here may be called from a signal handler.
// Ownership:     streams own nothing of their callers; whoever made a stream deletes it.
#ifndef TVXCMN_STREAMS_H
#define TVXCMN_STREAMS_H

#include "basetypes.h"

typedef int NativeFileDescT;   // the system's file descriptor

class InputStreamC {
public:
    virtual ~InputStreamC();

    virtual long close();
    // Reads at most `size` bytes and returns their number, which is 0 only at the end (or for size 0).
    virtual long read(unsigned char* buf, long size) = 0;
    // The size of the whole stream in bytes.
    virtual long long length() const = 0;

    long read(char* buf, long size) { return read(reinterpret_cast<unsigned char*>(buf), size); }
};

class OutputStreamC {
public:
    virtual ~OutputStreamC();

    virtual long close();
    // Writes all of the `size` bytes.
    virtual long write(const unsigned char* buf, long size) = 0;
    // Copies `count` bytes, or for a count below 1 everything up to the end, from `in`. A failing write
    // records 0xE0CB0015 besides and returns it; a failing read just ends the copy. A stream that is
    // copied into itself comes to an end: no more is copied than it held when the copy began.
    virtual long writeFrom(InputStreamC& in, long count);
    // Copies everything up to the end from `in`.
    virtual OutputStreamC& operator<<(InputStreamC& in);
    // Brings what was written to the medium.
    virtual long flush() = 0;
    // Cuts the stream, or extends it with zeros, to `len` bytes.
    virtual long setLength(long long len) = 0;

    long write(const char* buf, long size) { return write(reinterpret_cast<const unsigned char*>(buf), size); }
};

class IOStreamC : public InputStreamC, public OutputStreamC {
public:
    enum WhenceT : int { FROM_BEGINNING = 0, FROM_CURRENT = 1, FROM_END = 2 };

    long close() override;
    virtual bool canRead() const = 0;
    virtual bool canSeek() const = 0;
    virtual bool canWrite() const = 0;
    // The position of the next byte, counted from the beginning.
    virtual long long position() const;
    // Moves the position and returns it. It may stand behind the end, where a write leaves a gap.
    virtual long long seek(long long offset, WhenceT whence) = 0;

    using InputStreamC::read;
    using OutputStreamC::write;
};

#endif   // TVXCMN_STREAMS_H
