// streamreader.h: the text behind a stream of bytes.
//
// A reader decodes the bytes in the encoding it is given, or in the one that a byte-order mark at the
// front tells when it is asked to detect it: UTF-8, or UTF-16 in either byte order. A mark of the
// encoding in use is no part of the text. Everything else is text, a zero byte included.
//
// The stream is read ahead, 1024 bytes at a time, so its position says little about the text. At least two
// bytes, and for a line 192, are wanted beyond what is handed out: at a terminal or pipe a reader waits
// until they have come, or the end.
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
    // bytes from m_begin; what lies before one named `skip` is as good as handed out already.
    size_t unreturnedSize() const { return m_end - m_begin; }
    const UTF8T* unreturned() const { return charBuffer.get() + m_begin; }
    size_t sizeOfChars(unsigned long count, size_t skip) const;
    StringC take(size_t size);
    void makeRoomBehind(size_t size);
    void makeRoomInFront(size_t size);
    void moveText(size_t bufferSize, size_t begin);

    void fill(unsigned long count, size_t skip);
    bool readPiece();
    size_t readStream(size_t held);
    size_t findLineEnd(size_t skip, size_t size) const;
    bool findLine(size_t& size, size_t& endSize);

    size_t skippedPreamble(size_t& held);
    void populateByteBuffer(size_t& held, size_t to);
    size_t detectEncodingFromStream(size_t& held);
    size_t checkForEncodingPreamble(size_t& held);
    bool beginsWith(TextEncodingI* encoding, size_t held, size_t* length) const;
    void setEncoding(TextEncodingI* encoding);

    InputStreamC* stream;   // null when closed
    bool ownsStream;
    bool detectEncoding;                    // look for a mark at the first read, and take its encoding
    bool mayHaveEncodingPreamble = false;   // a mark of the encoding in use may come first
    std::unique_ptr<TextDecoderI> decoder;
    static constexpr size_t byteBufferLen = 1024;
    std::unique_ptr<U8BitT[]> byteBuffer;
    size_t charBufferLen = 0;   // the most that one piece becomes
    std::unique_ptr<UTF8T[]> charBuffer;
    size_t m_charBufferSize = 0;
    size_t m_begin = 0;
    size_t m_end = 0;
    bool m_hasReturns = false;   // a carriage return was seen; while false there is none in charBuffer
    bool m_readFailed = false;
};

#endif   // TVXCMN_STREAMREADER_H
