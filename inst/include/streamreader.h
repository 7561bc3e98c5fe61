// streamreader.h: the text behind a stream of bytes.
//
// A reader decodes the bytes in the encoding it is given, or in the one that a byte-order mark at the
// front tells when it is asked to detect it: UTF-8, or UTF-16 in either byte order. A mark of the
// encoding in use is no part of the text. Everything else is text, a zero byte included.
//
// The stream is read ahead, so its position says little about the text. At least two bytes, and for a
// line 192, are wanted beyond what is handed out: at a terminal or pipe a reader waits until they have
// come, or the end. The decoder is given pieces of 1024 bytes (fewer where the stream gives fewer). A
// stream is asked for 1024 bytes at a time; only a file that the reader owns for more.
//
// A stream that fails looks as if it were at its end. Who must not mistake half a text for the whole
// asks readFailed().
//
// Thread safety: a reader is unlocked.
// Ownership:     a reader that owns its stream closes and deletes it when it is closed.
#ifndef TVXCMN_STREAMREADER_H
#define TVXCMN_STREAMREADER_H

#include "filestream.h"
#include "textencoding.h"
#include "textreader.h"

#include <memory>

class StreamReaderC : public TextReaderC {
public:
    // A null encoding is TextEncodingI::SYS8(). A null stream is a closed reader.
    StreamReaderC(InputStreamC* stream, bool detectEncoding, TextEncodingI* encoding, bool ownsStream);
    ~StreamReaderC() override;   // closes
    StreamReaderC(const StreamReaderC&) = delete;
    StreamReaderC& operator=(const StreamReaderC&) = delete;

    // A new reader, which the caller deletes, of a file that is there; null when it cannot be opened,
    // with the reasons in the error buffer.
    [[nodiscard]] static StreamReaderC* openFile(const FileNameC& filename, bool detectEncoding,
                                                 TextEncodingI* encoding, FileStreamC::FileShareT sharing,
                                                 bool wait_for_lock);

    // The stream, and the encoding that is being decoded; null after close.
    InputStreamC* getBaseStream() const { return stream; }
    TextEncodingI* getEncoding() const;
    // Whether the stream gave an error, also after close.
    bool readFailed() const { return m_readFailed; }

    long close() override;
    UCS4 getChar() override;
    [[nodiscard]] StringC* read(unsigned long count) override;
    void unRead(StringC text) override;
    [[nodiscard]] StringC* readLine() override;
    long readLine(StringC& line) override;
    StringC readToEnd() override;

private:
    // Text that is still to be handed out stands in charBuffer from m_begin to m_end. Offsets count its
    // bytes; what lies before one named `skip` is as good as handed out already.
    size_t numUnreturned() const { return m_end - m_begin; }
    UTF8T* unreturned() const { return charBuffer.get() + m_begin; }
    size_t bytesOfChars(size_t count) const;
    StringC take(size_t size);
    void resizeCharBuffer(size_t size, size_t begin);
    UTF8T* makeRoom(size_t size);

    void fill(unsigned long count, size_t skip);
    bool decodePiece();
    bool nextPiece();
    size_t readStream(size_t held, size_t size);
    size_t chooseReadSize() const;
    void noteReturns(const UTF8T* text, size_t size);
    size_t findLineEnd(const UTF8T* text, size_t size) const;
    size_t scanLine(size_t skip, bool& isFound) const;
    size_t lineEndSize(size_t skip, size_t at);

    void skipPreamble();
    void populateByteBuffer(size_t to);
    size_t detectEncodingFromStream();
    size_t checkForEncodingPreamble();
    bool startsWith(const U8BitT* preamble, size_t length) const;
    void setEncoding(TextEncodingI* encoding);

    InputStreamC* stream;   // null when closed
    bool ownsStream;
    bool detectEncoding;            // look for a mark at the first read, and take its encoding
    bool mayHaveEncodingPreamble;   // a mark of the encoding in use may come first
    std::unique_ptr<TextDecoderI> decoder;
    static constexpr size_t byteBufferLen = 1024;   // the size of a piece
    std::unique_ptr<U8BitT[]> byteBuffer;
    size_t charBufferLen;   // the most that a piece becomes, with 4 bytes for a character that was cut before it
    std::unique_ptr<UTF8T[]> charBuffer;
    size_t m_charBufferSize;
    size_t m_begin;
    size_t m_end;
    size_t m_readSize;         // the size of byteBuffer, which is what the stream is asked for; 0 before the first read
    size_t m_undecodedBegin;   // in byteBuffer
    size_t m_undecodedEnd;
    bool m_mayHaveReturns;   // a carriage return was seen; while false there is none in charBuffer
    bool m_readFailed;
};

#endif   // TVXCMN_STREAMREADER_H
