#include "streamreader.h"

#include "assertfatal.h"
#include "errornumbers.h"
#include "fileservice.h"
#include "string/api/utfkernels.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>

namespace {

const UCS4 NO_CHAR = 0xFFFFFFFF;
const size_t LINE_CHUNK = 128;   // characters that are looked at together for the end of a line
const size_t FRONT_ROOM = 64;    // for texts that are pushed back
// What a decoder may have kept of the piece before becomes at most this, in bytes: six characters, each of
// which turns out to be malformed.
const size_t KEPT_LENGTH = 18;

bool isReturn(UTF8T byte) { return byte == '\r'; }

}   // namespace

TextReaderC::~TextReaderC() = default;

StreamReaderC::StreamReaderC(InputStreamC* source, bool detects, TextEncodingI* encoding, bool owns)
    : stream(source), ownsStream(owns), detectEncoding(detects)
{
    if (stream == nullptr) return;
    byteBuffer.reset(new U8BitT[byteBufferLen]);
    setEncoding(encoding != nullptr ? encoding : TextEncodingI::SYS8());
    size_t length = 0;
    mayHaveEncodingPreamble = getEncoding()->getPreamble(&length) != nullptr && length > 0;
}

StreamReaderC::~StreamReaderC() { StreamReaderC::close(); }

StreamReaderC* StreamReaderC::openFile(const FileNameC& filename, bool detectEncoding, TextEncodingI* encoding,
                                       FileStreamC::FileShareT sharing, bool wait_for_lock)
{
    IOStreamC* const file =
        FileService()->openFile(filename, FileStreamC::FMODE_OPEN, FileStreamC::FACCESS_READ, sharing, wait_for_lock);
    return file != nullptr ? new StreamReaderC(file, detectEncoding, encoding, true) : nullptr;
}

TextEncodingI* StreamReaderC::getEncoding() const { return decoder != nullptr ? decoder->fromEncoding() : nullptr; }

long StreamReaderC::close()
{
    long result = 0;
    if (stream != nullptr && ownsStream) {
        result = stream->close();
        delete stream;
    }
    stream = nullptr;
    decoder.reset();
    byteBuffer.reset();
    charBuffer.reset();
    m_charBufferSize = m_begin = m_end = 0;
    return result;
}

// ---- the text that is still to be handed out ----------------------------------------------------------

size_t StreamReaderC::sizeOfChars(unsigned long count, size_t skip) const
{
    const size_t size = unreturnedSize() - skip;
    return count >= size ? size : utfkernels::advance(unreturned() + skip, size, count, nullptr);
}

StringC StreamReaderC::take(size_t size)
{
    StringC text(reinterpret_cast<const char*>(unreturned()), size, StringC::CC_VALID_UTF8);
    m_begin += size;
    return text;
}

// Into a buffer of `bufferSize` bytes, or to another place in the same one.
void StreamReaderC::moveText(size_t bufferSize, size_t begin)
{
    const size_t size = unreturnedSize();
    if (bufferSize == m_charBufferSize) {
        std::memmove(charBuffer.get() + begin, unreturned(), size);
    } else {
        std::unique_ptr<UTF8T[]> larger(new UTF8T[bufferSize]);
        if (size > 0) std::memcpy(larger.get() + begin, unreturned(), size);
        charBuffer = std::move(larger);
        m_charBufferSize = bufferSize;
    }
    m_begin = begin;
    m_end = begin + size;
}

void StreamReaderC::makeRoomBehind(size_t size)
{
    if (m_charBufferSize - m_end >= size) return;
    const size_t needed = FRONT_ROOM + unreturnedSize() + size;
    const bool hasRoom = needed <= m_charBufferSize && m_begin >= unreturnedSize();
    moveText(hasRoom ? m_charBufferSize : std::max(2 * unreturnedSize(), FRONT_ROOM) + needed, FRONT_ROOM);
}

// As much again as there is, so that many small texts are not moved again and again.
void StreamReaderC::makeRoomInFront(size_t size)
{
    if (m_begin >= size) return;
    const size_t front = size + unreturnedSize() + FRONT_ROOM;
    moveText(front + unreturnedSize() + charBufferLen, front);
}

void StreamReaderC::unRead(StringC text)
{
    const size_t size = text.utf8Bytes();
    if (stream == nullptr || size == 0) return;
    makeRoomInFront(size);
    m_begin -= size;
    std::memcpy(charBuffer.get() + m_begin, text.utf8(), size);
    m_hasReturns |= std::memchr(text.utf8(), '\r', size) != nullptr;
}

// ---- reading ------------------------------------------------------------------------------------------

// Characters of three bytes are taken as the most that there can be of them: fewer than `count` may come.
void StreamReaderC::fill(unsigned long count, size_t skip)
{
    while (2 * (unreturnedSize() - skip) / 3 < count && readPiece()) {
    }
}

// Reads behind what is held of a piece; returns how much came.
size_t StreamReaderC::readStream(size_t held)
{
    const long room = static_cast<long>(byteBufferLen - held);
    long n = stream->read(byteBuffer.get() + held, room);
    if (!TVX_CHECK(n <= room, "n <= room")) n = room;
    m_readFailed |= n < 0;
    return n > 0 ? static_cast<size_t>(n) : 0;
}

bool StreamReaderC::readPiece()
{
    if (stream == nullptr) return false;
    size_t held = readStream(0);
    if (held == 0) return false;
    const size_t skipped = skippedPreamble(held);
    makeRoomBehind(charBufferLen);
    UTF8T* const out = charBuffer.get() + m_end;
    const size_t size =
        decoder->decodeBytes(byteBuffer.get() + skipped, held - skipped, out, m_charBufferSize - m_end, nullptr);
    m_end += size;
    m_hasReturns = m_hasReturns || std::memchr(out, '\r', size) != nullptr;
    return true;
}

StringC* StreamReaderC::read(unsigned long count)
{
    fill(count, 0);
    return unreturnedSize() != 0 ? new StringC(take(sizeOfChars(count, 0))) : nullptr;
}

UCS4 StreamReaderC::getChar()
{
    fill(1, 0);
    if (unreturnedSize() == 0) return NO_CHAR;
    const UTF8T* next = unreturned();
    const UCS4 ch = UTF8Get(next);
    m_begin = std::min(static_cast<size_t>(next - charBuffer.get()), m_end);   // the last one may be cut short
    return ch;
}

StringC StreamReaderC::readToEnd()
{
    const unsigned long all = 0x7fffffff;
    StringC text;
    for (fill(all, 0); unreturnedSize() != 0; fill(all, 0)) text += take(sizeOfChars(all, 0));
    return text;
}

// ---- lines --------------------------------------------------------------------------------------------

// Where among the `size` bytes behind `skip` the first line feed or carriage return stands; `size` when
// there is none.
size_t StreamReaderC::findLineEnd(size_t skip, size_t size) const
{
    const UTF8T* const text = unreturned() + skip;
    const void* const feed = std::memchr(text, '\n', size);
    if (feed != nullptr) size = static_cast<size_t>(static_cast<const UTF8T*>(feed) - text);
    const void* const back = m_hasReturns ? std::memchr(text, '\r', size) : nullptr;
    return back != nullptr ? static_cast<size_t>(static_cast<const UTF8T*>(back) - text) : size;
}

// Looks at one chunk after the other, reading on whenever too little for one is left. The size of the line
// and of its end, 0 for a last line without; false when there is no line any more.
bool StreamReaderC::findLine(size_t& size, size_t& endSize)
{
    size = endSize = 0;
    for (;;) {
        fill(LINE_CHUNK, size);
        if (size == unreturnedSize()) return size != 0;
        const size_t sure = std::min(unreturnedSize() - size, LINE_CHUNK);   // no character has less than a byte
        size_t at = findLineEnd(size, sure);
        const size_t chunk = at < sure && !isReturn(unreturned()[size + at]) ? sure : sizeOfChars(LINE_CHUNK, size);
        if (at == sure) at += findLineEnd(size + sure, chunk - sure);
        size += at;
        if (at == chunk) continue;

        endSize = 1;
        if (!isReturn(unreturned()[size])) return true;
        if (at + 1 == chunk) fill(1, size + 1);
        if (size + 1 < unreturnedSize() && unreturned()[size + 1] == '\n') endSize = 2;
        return true;
    }
}

long StreamReaderC::readLine(StringC& line)
{
    size_t size;
    size_t endSize;
    if (!findLine(size, endSize)) {
        line = StringC();
        return TVXERR_STREAM_END;
    }
    take(size).swap(line);
    m_begin += endSize;
    return 0;
}

StringC* StreamReaderC::readLine()
{
    StringC line;
    return readLine(line) == 0 ? new StringC(line) : nullptr;
}

// ---- encodings ----------------------------------------------------------------------------------------

// Of the first piece, what is a byte-order mark and not text.
size_t StreamReaderC::skippedPreamble(size_t& held)
{
    if (detectEncoding) return detectEncodingFromStream(held);
    return mayHaveEncodingPreamble ? checkForEncodingPreamble(held) : 0;
}

void StreamReaderC::populateByteBuffer(size_t& held, size_t to)
{
    while (held < to) {
        const size_t more = readStream(held);
        if (more == 0) return;
        held += more;
    }
}

// Whether the piece begins with the mark of `encoding`, which is *length bytes long.
bool StreamReaderC::beginsWith(TextEncodingI* encoding, size_t held, size_t* length) const
{
    const U8BitT* const preamble = encoding->getPreamble(length);
    return *length <= held && std::memcmp(byteBuffer.get(), preamble, *length) == 0;
}

size_t StreamReaderC::detectEncodingFromStream(size_t& held)
{
    if (!TVX_CHECK(detectEncoding, "detectEncoding")) return 0;
    detectEncoding = mayHaveEncodingPreamble = false;
    populateByteBuffer(held, 3);
    size_t pLen = 0;
    TextEncodingI* found = nullptr;
    if (beginsWith(TextEncodingI::UTF8(), held, &pLen)) {
        (void)TVX_CHECK(pLen == 3, "pLen == 3");
        found = TextEncodingI::UTF8();
    } else if (beginsWith(TextEncodingI::UTF16LE(), held, &pLen)) {
        (void)TVX_CHECK(pLen == 2, "pLen == 2");
        found = TextEncodingI::UTF16LE();
    } else if (beginsWith(TextEncodingI::UTF16BE(), held, &pLen)) {
        (void)TVX_CHECK(pLen == 2, "pLen == 2");
        found = TextEncodingI::UTF16BE();
    }
    if (found == nullptr) return 0;
    setEncoding(found);
    return pLen;
}

size_t StreamReaderC::checkForEncodingPreamble(size_t& held)
{
    if (!TVX_CHECK(!detectEncoding, "!detectEncoding")) return 0;
    if (!TVX_CHECK(mayHaveEncodingPreamble, "mayHaveEncodingPreamble")) return 0;
    mayHaveEncodingPreamble = false;
    size_t pLen = 0;
    getEncoding()->getPreamble(&pLen);
    if (!TVX_CHECK(pLen > 0, "pLen > 0")) return 0;
    populateByteBuffer(held, pLen);
    return beginsWith(getEncoding(), held, &pLen) ? pLen : 0;
}

void StreamReaderC::setEncoding(TextEncodingI* encoding)
{
    if (!TVX_CHECK(encoding != nullptr, "encoding") || getEncoding() == encoding) return;
    decoder.reset(encoding->getDecoder());
    charBufferLen = decoder->maxDecodedLength(byteBufferLen) + KEPT_LENGTH;
}
