#include "streamreader.h"

#include "errornumbers.h"
#include "file/filesupport.h"
#include "file/plainreader.h"
#include "support/helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>

using testing::ElementsAre;

namespace {

// Gives bytes in pieces of at most `piece`, then what `end` says, and counts how often it is asked.
class PiecesC : public InputStreamC {
public:
    PiecesC(std::string bytes, size_t piece, long end = 0) : m_bytes(std::move(bytes)), m_piece(piece), m_end(end) {}
    long read(unsigned char* buf, long size) override
    {
        ++reads;
        const size_t n = std::min({static_cast<size_t>(size), m_piece, m_bytes.size() - m_at});
        std::copy_n(m_bytes.data() + m_at, n, buf);
        m_at += n;
        return n > 0 ? static_cast<long>(n) : m_end;
    }
    long long length() const override { return static_cast<long long>(m_bytes.size()); }
    long close() override { return 42; }

    int reads = 0;

private:
    const std::string m_bytes;
    const size_t m_piece;
    const long m_end;
    size_t m_at = 0;
};

std::string taken(StringC* text)
{
    const std::unique_ptr<StringC> owned(text);
    return owned != nullptr ? str(*owned) : "(end)";
}

std::vector<std::string> linesOf(StreamReaderC& reader)
{
    std::vector<std::string> lines;
    for (StringC line; reader.readLine(line) == 0;) lines.push_back(str(line));
    return lines;
}

}   // namespace

TEST(StreamReader, doesWhatThePlainReaderDoesWithAsManyReads)
{
    TextSourceC source(/*seed=*/731);
    const std::vector<std::string> parts = {"\r",
                                            "\n",
                                            "\r\n",
                                            "a",
                                            "\xC3\xA9",
                                            "\xE4\xB8\xAD",
                                            std::string(1, '\0'),
                                            std::string(125, 'x'),
                                            "\xF0\x9F\x98\x80"};
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (uint32_t n = source.below(300); n > 0; --n)
            text += parts[source.below(static_cast<uint32_t>(parts.size()))];
        const size_t piece = round % 2 == 0 ? 1024 : 1 + source.below(1500);
        PiecesC ours(text, piece);
        PiecesC theirs(text, piece);
        StreamReaderC reader(&ours, false, nullptr, false);
        PlainReaderC plain(theirs, false, nullptr);
        for (int step = 0; step < 60; ++step) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", step " << step);
            const uint32_t kind = source.below(8);
            if (kind == 0) {
                const unsigned long count = 1 + source.below(300);
                const std::string expected = plain.read(count);
                const std::string got = taken(reader.read(count));
                ASSERT_EQ(got, expected.empty() ? "(end)" : expected);
            } else if (kind == 1) {
                const std::string expected = plain.read(1);
                const UCS4 ch = reader.getChar();
                ASSERT_EQ(ch == 0xFFFFFFFF ? "" : ch == 0 ? std::string(1, '\0') : utf8Of(ch), expected);
            } else if (kind == 2) {
                const std::string back(source.below(400), source.below(3) == 0 ? '\r' : 'b');
                plain.unRead(back);
                reader.unRead(textOf(back));
            } else {
                std::string expected;
                const bool isThere = plain.readLine(expected);
                StringC line("before");
                ASSERT_EQ(reader.readLine(line), isThere ? 0 : TVXERR_STREAM_END);
                ASSERT_EQ(str(line), expected);
            }
            ASSERT_EQ(ours.reads, theirs.reads);
        }
    }
}

TEST(StreamReader, readsEveryEncodingHoweverItIsCut)
{
    TextSourceC source(/*seed=*/732);
    struct RowT {
        TextEncodingI* encoding;
        const char* name;
    };
    const RowT rows[] = {
        {TextEncodingI::UTF8(), StringC::CC_UTF8},       {TextEncodingI::SYS8(), StringC::CC_UTF8},
        {TextEncodingI::UTF16LE(), StringC::CC_UTF16LE}, {TextEncodingI::UTF16BE(), StringC::CC_UTF16BE},
        {TextEncodingI::UTF16(), StringC::CC_UTF16LE},   {TextEncodingI::WCHAR(), StringC::CC_WCHART}};
    const std::string text = source.utf8(3000);
    for (const RowT& row : rows) {
        size_t size = 0;
        textOf(text).convertTo(nullptr, size, row.name);
        std::string bytes(size + 4, '\0');
        size = bytes.size();
        ASSERT_TRUE(textOf(text).convertTo(reinterpret_cast<U8BitT*>(bytes.data()), size, row.name));
        bytes.resize(size);
        for (const size_t piece : {1UL, 2UL, 3UL, 7UL, 1000UL, 5000UL}) {
            SCOPED_TRACE(testing::Message() << row.name << " in pieces of " << piece);
            PiecesC stream(bytes, piece);
            StreamReaderC reader(&stream, false, row.encoding, false);
            EXPECT_EQ(str(reader.readToEnd()), text);
        }
    }
}

TEST(StreamReader, marksAtTheFrontChooseTheEncodingAndAreNoText)
{
    struct RowT {
        std::string bytes;
        TextEncodingI* given;
        bool detects;
        TextEncodingI* used;
        const char* text;
    };
    const RowT rows[] = {
        {"\xEF\xBB\xBFx", nullptr, true, TextEncodingI::UTF8(), "x"},
        {"\xEF\xBB\xBFx", TextEncodingI::UTF8(), false, TextEncodingI::UTF8(), "x"},
        {"\xEF\xBB\xBFx", nullptr, false, TextEncodingI::SYS8(), "\xEF\xBB\xBFx"},
        {std::string("\xFF\xFEx\0", 4), nullptr, true, TextEncodingI::UTF16LE(), "x"},
        {std::string("\xFE\xFF\0x", 4), nullptr, true, TextEncodingI::UTF16BE(), "x"},
        {std::string("\xFE\xFF\0x", 4), TextEncodingI::UTF16BE(), false, TextEncodingI::UTF16BE(), "x"},
        {"x", TextEncodingI::LATIN1(), true, TextEncodingI::LATIN1(), "x"},
        {"\xE9t\xE9", TextEncodingI::LATIN1(), true, TextEncodingI::LATIN1(), "\xC3\xA9t\xC3\xA9"},
        {"", TextEncodingI::UTF8(), true, TextEncodingI::UTF8(), ""},
        {"\xEF\xBB\xBF\xEF\xBB\xBFx", nullptr, true, TextEncodingI::UTF8(), "\xEF\xBB\xBFx"},
    };
    for (const RowT& row : rows) {
        for (const size_t piece : {1UL, 1024UL}) {
            SCOPED_TRACE(hexOf(row.bytes));
            PiecesC stream(row.bytes, piece);
            StreamReaderC reader(&stream, row.detects, row.given, false);
            EXPECT_EQ(str(reader.readToEnd()), row.text);
            EXPECT_EQ(reader.getEncoding(), row.used);
        }
    }
}

TEST(StreamReader, linesAndMarksAreTheSameWhereverTheBytesAreCut)
{
    struct RowT {
        TextEncodingI* encoding;
        const char* name;
    };
    const RowT rows[] = {{TextEncodingI::UTF8(), StringC::CC_UTF8},
                         {TextEncodingI::UTF16LE(), StringC::CC_UTF16LE},
                         {TextEncodingI::UTF16BE(), StringC::CC_UTF16BE}};
    for (const RowT& row : rows) {
        for (const size_t before : {0UL, 126UL, 127UL, 128UL}) {   // a line is looked for in chunks of 128
            const std::string first(before, 'x');
            const StringC text = textOf(first + "\r\n\xE4\xB8\xAD\r\xF0\x9F\x98\x80\n\n\r\r\nlast");
            size_t length = 0;
            const U8BitT* const mark = row.encoding->getPreamble(&length);
            std::string bytes(mark, mark + length);
            bytes.resize(length + 4 * text.utf8Bytes());
            size_t size = bytes.size() - length;
            ASSERT_TRUE(text.convertTo(reinterpret_cast<U8BitT*>(bytes.data()) + length, size, row.name));
            bytes.resize(length + size);
            for (size_t cut = 1; cut < bytes.size(); ++cut) {
                SCOPED_TRACE(testing::Message() << row.name << ", " << before << " before, cut at " << cut);
                PiecesC stream(bytes, cut);
                StreamReaderC reader(&stream, true, nullptr, false);
                ASSERT_THAT(linesOf(reader),
                            ElementsAre(first, "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "", "", "", "last"));
                ASSERT_EQ(reader.getEncoding(), row.encoding);
            }
        }
    }
}

TEST(StreamReader, linesEndWithAnyBreak)
{
    std::ofstream("file", std::ios::binary) << "a\r\nb\rc\n\n\rd" << '\0' << "e\nlast";
    const std::unique_ptr<StreamReaderC> reader(
        StreamReaderC::openFile(named("file"), true, nullptr, FileStreamC::SHARE_READ, false));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(taken(reader->readLine()), "a");
    EXPECT_THAT(linesOf(*reader), ElementsAre("b", "c", "", "", std::string("d\0e", 3), "last"));
    EXPECT_EQ(taken(reader->readLine()), "(end)");
    reader->unRead(StringC("again\r"));
    EXPECT_THAT(linesOf(*reader), ElementsAre("again"));
    EXPECT_TRUE(recordedErrors().empty());
    EXPECT_EQ(StreamReaderC::openFile(named("missing"), true, nullptr, FileStreamC::SHARE_READ, false), nullptr);
    EXPECT_THAT(recordedErrors(), ElementsAre(ErrorOfErrno(ENOENT), TVXERR_FILE_OPEN));
}

TEST(StreamReader, aClosedReaderIsAtItsEndAndAFailedStreamCanBeToldFromOne)
{
    PiecesC stream("text", 1024, -1);
    StreamReaderC reader(&stream, false, nullptr, false);
    EXPECT_EQ(str(reader.readToEnd()), "text");
    EXPECT_TRUE(reader.readFailed());
    EXPECT_EQ(reader.close(), 0);   // not the reader's to close
    EXPECT_EQ(reader.close(), 0);
    EXPECT_TRUE(reader.readFailed());
    reader.unRead(StringC("late"));
    StreamReaderC none(nullptr, true, nullptr, true);
    for (StreamReaderC* closed : {&reader, &none}) {
        EXPECT_EQ(closed->getBaseStream(), nullptr);
        EXPECT_EQ(closed->getEncoding(), nullptr);
        EXPECT_EQ(closed->getChar(), 0xFFFFFFFF);
        EXPECT_EQ(taken(closed->read(5)), "(end)");
        EXPECT_EQ(taken(closed->readLine()), "(end)");
        EXPECT_EQ(str(closed->readToEnd()), "");
    }
    StreamReaderC owner(new PiecesC("", 1), false, nullptr, true);
    EXPECT_EQ(owner.close(), 42);
}
