#include "streamwriter.h"

#include "errornumbers.h"
#include "file/filesupport.h"
#include "support/helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::ElementsAre;

namespace {

// Notes what is written, one text a write; fails once it has `room` bytes no more.
class NotedC : public OutputStreamC {
public:
    explicit NotedC(size_t room = 1000) : m_room(room) {}
    long write(const unsigned char* buf, long size) override
    {
        if (static_cast<size_t>(size) > m_room) return 99;
        m_room -= static_cast<size_t>(size);
        writes.emplace_back(reinterpret_cast<const char*>(buf), static_cast<size_t>(size));
        return 0;
    }
    using OutputStreamC::write;
    long flush() override { return 7; }
    long setLength(long long) override { return 0; }
    long close() override { return 42; }

    std::vector<std::string> writes;

private:
    size_t m_room;
};

// A static object that writes before anything else of this file could have been made ready.
const std::string earlyBreak = str(TextWriterC::DOSNewLine);

}   // namespace

TEST(StreamWriter, bringsLineBreaksIntoOneForm)
{
    EXPECT_EQ(earlyBreak, "\r\n");
    NotedC stream;
    StreamWriterC writer(&stream, TextEncodingI::UTF8(), false, false);
    EXPECT_EQ(writer.write(StringC("a\r\nb\rc\n\r")), 0);
    writer.setNewLine(TextWriterC::DOSNewLine);
    EXPECT_EQ(writer.write(StringC("a\r\nb\rc")), 0);
    EXPECT_EQ(writer.writeLine(StringC("line")), 0);
    EXPECT_EQ(writer.writeLine(StringC("%d%%"), ArgListC() << 50), 0);
    EXPECT_EQ(writer.write(StringC("%s"), ArgListC() << "\n"), 0);
    writer.setNewLine(TextWriterC::MacNewLine);
    EXPECT_EQ(writer.writeLine(StringC()), 0);
    writer.setNewLine(StringC());
    EXPECT_EQ(writer.writeLine(StringC()), 0);   // nothing is left to write
    EXPECT_THAT(stream.writes, ElementsAre("a\nb\nc\n\n", "a\r\nb\r\nc", "line\r\n", "50%\r\n", "\r\n", "\r"));
}

TEST(StreamWriter, putsTheMarkBeforeTheFirstText)
{
    struct RowT {
        TextEncodingI* encoding;
        std::vector<std::string> writes;   // of "xé" and "y"
    };
    const RowT rows[] = {
        {TextEncodingI::UTF8(), {"\xEF\xBB\xBF", "x\xC3\xA9", "y"}},
        {TextEncodingI::UTF16LE(), {"\xFF\xFE", std::string("x\0\xE9\0", 4), std::string("y\0", 2)}},
        {TextEncodingI::UTF16BE(), {"\xFE\xFF", std::string("\0x\0\xE9", 4), std::string("\0y", 2)}},
        {TextEncodingI::LATIN1(), {"x\xE9", "y"}},
        {nullptr, {"x\xC3\xA9", "y"}},
    };
    for (const RowT& row : rows) {
        NotedC stream;
        StreamWriterC writer(&stream, row.encoding, true, false);
        EXPECT_EQ(writer.write(StringC()), 0);
        EXPECT_EQ(writer.write(textOf("x\xC3\xA9")), 0);
        EXPECT_EQ(writer.write(StringC("y")), 0);
        EXPECT_EQ(stream.writes, row.writes);
    }
    NotedC full(0);
    StreamWriterC writer(&full, TextEncodingI::UTF8(), true, false);
    EXPECT_EQ(writer.write(StringC("x")), 99);
}

TEST(StreamWriter, filesGetAMarkOnlyWhenTheyWereEmpty)
{
    const auto written = [](bool append, const char* text) {
        const std::unique_ptr<StreamWriterC> writer(StreamWriterC::openFile(
            named("file"), append, TextEncodingI::UTF8(), true, FileStreamC::SHARE_NONE, false));
        EXPECT_EQ(writer->write(StringC(text)), 0);
        EXPECT_EQ(writer->flush(), 0);
        EXPECT_EQ(writer->close(), 0);
        return fileText("file");
    };
    EXPECT_EQ(written(true, "one"), "\xEF\xBB\xBFone");
    EXPECT_EQ(written(true, "two"), "\xEF\xBB\xBFonetwo");
    EXPECT_EQ(written(false, "three"), "\xEF\xBB\xBFthree");
    EXPECT_EQ(StreamWriterC::openFile(named("none/file"), false, nullptr, false, FileStreamC::SHARE_NONE, false),
              nullptr);
    EXPECT_THAT(recordedErrors(), ElementsAre(ErrorOfErrno(ENOENT), TVXERR_FILE_OPEN));
}

TEST(StreamWriter, aClosedWriterWritesNothing)
{
    NotedC stream;
    StreamWriterC writer(&stream, nullptr, false, false);
    EXPECT_EQ(writer.flush(), 7);
    EXPECT_EQ(writer.close(), 0);
    StreamWriterC owner(new NotedC, nullptr, false, true);
    EXPECT_EQ(owner.close(), 42);
    StreamWriterC none(nullptr, nullptr, true, true);
    for (StreamWriterC* closed : {&writer, &owner, &none}) {
        EXPECT_EQ(closed->close(), 0);
        EXPECT_EQ(closed->flush(), 0);
        EXPECT_EQ(closed->getEncoding(), nullptr);
        EXPECT_EQ(closed->write(StringC("x")), TVXERR_STREAM_CANNOT_WRITE);
        EXPECT_THAT(recordedErrors(), ElementsAre(TVXERR_STREAM_CANNOT_WRITE));
    }
}
