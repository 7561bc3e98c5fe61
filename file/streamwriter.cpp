#include "streamwriter.h"

#include "fileservice.h"

#include "file/streamerrors.h"

#include <utility>

StreamWriterC::StreamWriterC(OutputStreamC* destination, TextEncodingI* encoding, bool writesPreamble, bool owns)
    : stream(destination), ownsStream(owns), writePreamble(writesPreamble), bufferLen(0)
{
    if (encoding == nullptr) encoding = TextEncodingI::SYS8();
    if (stream != nullptr) encoder.reset(encoding->getEncoder());
}

StreamWriterC::~StreamWriterC() { StreamWriterC::close(); }

StreamWriterC* StreamWriterC::openFile(const FileNameC& filename, bool append, TextEncodingI* encoding,
                                       bool writePreamble, FileStreamC::FileShareT sharing, bool wait_for_lock)
{
    IOStreamC* const file =
        FileService()->openFile(filename, append ? FileStreamC::FMODE_APPEND : FileStreamC::FMODE_CREATE,
                                FileStreamC::FACCESS_WRITE, sharing, wait_for_lock);
    if (file == nullptr) return nullptr;
    const bool isAtFront = !append || file->position() == 0;
    return new StreamWriterC(file, encoding, writePreamble && isAtFront, true);
}

TextEncodingI* StreamWriterC::getEncoding() { return encoder != nullptr ? encoder->toEncoding() : nullptr; }

long StreamWriterC::close()
{
    long result = 0;
    if (stream != nullptr && ownsStream) {
        result = stream->close();
        delete stream;
    }
    stream = nullptr;
    encoder.reset();
    buffer.reset();
    bufferLen = 0;
    return result;
}

long StreamWriterC::flush() { return stream != nullptr ? stream->flush() : 0; }

long StreamWriterC::writeBytes(const U8BitT* bytes, size_t size)
{
    return stream->write(bytes, static_cast<long>(size));
}

long StreamWriterC::writePendingPreamble()
{
    if (!std::exchange(writePreamble, false)) return 0;
    size_t length = 0;
    const U8BitT* const preamble = getEncoding()->getPreamble(&length);
    return length > 0 ? writeBytes(preamble, length) : 0;
}

long StreamWriterC::write(const StringC& text)
{
    if (stream == nullptr) return reportNoWriting();
    const StringC lines = replaceLineBreaks(text);
    if (lines.isEmpty()) return 0;
    const long failure = writePendingPreamble();
    if (failure != 0) return failure;

    const UTF8T* const bytes = reinterpret_cast<const UTF8T*>(lines.utf8());
    const size_t size = lines.utf8Bytes();
    if (getEncoding() == TextEncodingI::UTF8() || getEncoding() == TextEncodingI::SYS8())
        return writeBytes(bytes, size);
    const size_t length = encoder->encodedLength(bytes, size);
    if (bufferLen < length) {
        buffer.reset(new U8BitT[length * 3 / 2]);
        bufferLen = length * 3 / 2;
    }
    return writeBytes(buffer.get(), encoder->encode(bytes, size, buffer.get(), length, nullptr));
}
