// A reader over any bytes, in any encoding and in any pieces, against one that keeps a plain string.

#include "streamreader.h"

#include "errornumbers.h"
#include "tests/file/plainreader.h"
#include "utf8.h"

#include "fuzz.h"

#include <memory>
#include <vector>

namespace {

const UCS4 NO_CHAR = 0xFFFFFFFF;

StringC textOf(const std::string& bytes)
{
    return bytes.empty() ? StringC() : StringC(bytes.data(), bytes.size(), StringC::CC_VALID_UTF8);
}
std::string str(const StringC& text) { return std::string(text.utf8(), text.utf8Bytes()); }
std::string taken(StringC* text)
{
    const std::unique_ptr<StringC> owned(text);
    FUZZ_REQUIRE(owned == nullptr || !owned->isEmpty());
    return owned != nullptr ? str(*owned) : std::string();
}

// Gives the bytes in pieces of the given sizes, taken in turn. It is at its end for a while where a size is
// 0, and fails where it is negative.
class PiecesC : public InputStreamC {
public:
    PiecesC(std::string_view bytes, const std::vector<long>& sizes) : m_left(bytes), m_sizes(sizes) {}
    long read(unsigned char* buf, long size) override
    {
        const long wanted = m_sizes[reads++ % m_sizes.size()];
        if (wanted < 1) return wanted;
        const std::string_view piece = m_left.substr(0, static_cast<size_t>(std::min(wanted, size)));
        m_left.remove_prefix(piece.size());
        std::copy(piece.begin(), piece.end(), buf);
        return static_cast<long>(piece.size());
    }
    long long length() const override { return -1; }

    size_t reads = 0;

private:
    std::string_view m_left;
    const std::vector<long>& m_sizes;
};

std::vector<long> sizesOf(FuzzInputC& input)
{
    std::vector<long> sizes;
    for (unsigned count = input.below(6); count > 0; --count) {
        const long size = input.byte();
        sizes.push_back(size == 255 ? -1 : size < 128 ? size : (size - 127) * 10);
    }
    sizes.push_back(1024);   // so that every text comes to its end
    return sizes;
}

// Whether there was a line.
bool takeLine(StreamReaderC& reader, PlainReaderC& plain)
{
    std::string expected;
    const bool isThere = plain.readLine(expected);
    StringC line("before");
    FUZZ_REQUIRE(reader.readLine(line) == (isThere ? 0 : TVXERR_STREAM_END));
    FUZZ_REQUIRE(str(line) == expected);
    return isThere;
}

void step(FuzzInputC& commands, StreamReaderC& reader, PlainReaderC& plain)
{
    const unsigned kind = commands.below(8);
    if (kind == 0) {
        const unsigned long count = 1UL + commands.byte();
        FUZZ_REQUIRE(taken(reader.read(count)) == plain.read(count));
    } else if (kind == 1 || kind == 2) {
        const std::string expected = plain.read(1);
        const UTF8T* next = reinterpret_cast<const UTF8T*>(expected.c_str());
        FUZZ_REQUIRE(reader.getChar() == (expected.empty() ? NO_CHAR : UTF8Get(next)));
    } else if (kind == 3) {
        static const char* const parts[] = {"\r", "\n", "b", "\r\n", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80"};
        const char* const part = parts[commands.below(6)];
        std::string back;
        for (unsigned count = commands.byte(); count > 0; --count) back += part;
        reader.unRead(textOf(back));
        plain.unRead(back);
    } else if (kind == 4) {
        FUZZ_REQUIRE(str(reader.readToEnd()) == plain.readToEnd());
    } else {
        takeLine(reader, plain);
    }
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    TextEncodingI* const encodings[] = {nullptr,
                                        TextEncodingI::ASCII(),
                                        TextEncodingI::SYS8(),
                                        TextEncodingI::LATIN1(),
                                        TextEncodingI::UTF8(),
                                        TextEncodingI::UTF16(),
                                        TextEncodingI::UTF16BE(),
                                        TextEncodingI::UTF16LE(),
                                        TextEncodingI::WCHAR()};
    FuzzInputC input(data, size);
    TextEncodingI* const encoding = encodings[input.below(9)];
    const bool detects = input.below(2) != 0;
    const std::vector<long> sizes = sizesOf(input);
    const std::string_view commandBytes = input.bytes(input.below(64));
    FuzzInputC commands(reinterpret_cast<const uint8_t*>(commandBytes.data()), commandBytes.size());
    const std::string_view bytes = input.rest();

    PiecesC ours(bytes, sizes);
    PiecesC theirs(bytes, sizes);
    StreamReaderC reader(&ours, detects, encoding, false);
    PlainReaderC plain(theirs, detects, encoding);
    const auto isSame = [&] {
        return ours.reads == theirs.reads && reader.getEncoding() == plain.encoding() &&
               reader.readFailed() == plain.hasFailed();
    };
    while (!commands.isEmpty()) {
        step(commands, reader, plain);
        FUZZ_REQUIRE(isSame());
    }
    while (takeLine(reader, plain)) FUZZ_REQUIRE(isSame());
    FUZZ_REQUIRE(str(reader.readToEnd()) == plain.readToEnd());
    FUZZ_REQUIRE(isSame());
    return 0;
}
