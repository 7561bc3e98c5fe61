// streamwriter.h: text into a stream of bytes, in any encoding.
//
// A writer does not buffer: each write, writeLine included, is one write of the stream. The encoding's
// byte-order mark, where it has one and it is asked for, goes before the first text that is not empty.
//
// Thread safety: a writer is unlocked.
// Ownership:     a writer that owns its stream closes and deletes it when it is closed. A failure of
//                that is told by close() alone.
#ifndef TVXCMN_STREAMWRITER_H
#define TVXCMN_STREAMWRITER_H

#include "filestream.h"
#include "textwriter.h"

#include <memory>

class StreamWriterC : public TextWriterC {
public:
    // A null encoding is TextEncodingI::SYS8(). A null stream is a closed writer.
    StreamWriterC(OutputStreamC* stream, TextEncodingI* encoding, bool writePreamble, bool ownsStream);
    ~StreamWriterC() override;   // closes

    // A new writer, which the caller deletes, of a file that is made if need be and emptied unless
    // `append`; null when it cannot be opened, with the reasons in the error buffer. A file that holds
    // something already gets no byte-order mark.
    [[nodiscard]] static StreamWriterC* openFile(const FileNameC& filename, bool append, TextEncodingI* encoding,
                                                 bool writePreamble, FileStreamC::FileShareT sharing,
                                                 bool wait_for_lock);

    TextEncodingI* getEncoding() override;   // null after close
    long close() override;
    long flush() override;
    // After close: 0xE0CB0008.
    long write(const StringC& text) override;
    using TextWriterC::write;

private:
    long writeBytes(const U8BitT* bytes, size_t size);
    long writePendingPreamble();

    OutputStreamC* stream;   // null when closed
    bool ownsStream;
    std::unique_ptr<TextEncoderI> encoder;
    bool writePreamble;   // it is still to be written
    size_t bufferLen;
    std::unique_ptr<U8BitT[]> buffer;   // encoded text
};

#endif   // TVXCMN_STREAMWRITER_H
