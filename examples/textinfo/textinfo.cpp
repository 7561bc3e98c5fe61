// textinfo: what is in a text file, and the file in another encoding.
//
//   textinfo [--from ENCODING] [--to ENCODING] [--out FILE] FILE...
//
// Reads each FILE (- is standard input) in the encoding --from and prints what it counts. --to names the
// encoding that is written to --out, all files one after the other, when all are read; both are "utf8" unless given.
// Text comes and goes as the bytes of a stream: a reader would replace what is malformed instead of telling
// where it begins, and a writer would bring all line breaks into one form. The report is for a writer.
// Exit status: 0; 2 wrong use; 3 a file cannot be read, written or decoded.

#include "../support/wellformed.h"
#include "textstats.h"

#include "arglist.h"
#include "cstrings.h"
#include "errbuf.h"
#include "fileservice.h"
#include "streamwriter.h"
#include "tvxcmn.h"
#include "ucs4.h"
#include "utf8.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

const char USAGE[] = "usage: textinfo [--from ENCODING] [--to ENCODING] [--out FILE] FILE...\n";
const int STATUS_USAGE = 2;
const int STATUS_FILE = 3;

const char* const ENCODINGS[] = {StringC::CC_ASCII,   StringC::CC_SYS8,       StringC::CC_LATIN1,
                                 StringC::CC_UTF8,    StringC::CC_VALID_UTF8, StringC::CC_UTF16,
                                 StringC::CC_UTF16BE, StringC::CC_UTF16LE,    StringC::CC_WCHART};

struct OptionsT {
    const char* from = StringC::CC_UTF8;
    const char* to = StringC::CC_UTF8;
    const char* out = nullptr;
    std::vector<const char*> files;
};

[[noreturn]] __attribute__((format(printf, 2, 3))) void fail(int status, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::fputs("textinfo: ", stderr);
    std::vfprintf(stderr, format, args);
    std::fputs("\n", stderr);
    va_end(args);
    std::exit(status);
}

const char* encodingNamed(const char* name)
{
    for (const char* encoding : ENCODINGS) {
        if (StrCompareCI(name, encoding) == 0) return encoding;
    }
    fail(STATUS_USAGE, "unknown encoding \"%s\"", name);
}

OptionsT parse(int argc, char** argv)
{
    OptionsT options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const auto value = [&] {
            if (i + 1 == argc) fail(STATUS_USAGE, "%s needs a value", word.c_str());
            return argv[++i];
        };
        if (word == "--from") {
            options.from = encodingNamed(value());
        } else if (word == "--to") {
            options.to = encodingNamed(value());
        } else if (word == "--out") {
            options.out = value();
        } else if (word.size() > 1 && word[0] == '-') {
            fail(STATUS_USAGE, "unknown option \"%s\"", word.c_str());
        } else {
            options.files.push_back(argv[i]);
        }
    }
    if (StrCompareCI(options.to, StringC::CC_VALID_UTF8) == 0) fail(STATUS_USAGE, "\"vutf8\" is for input only");
    return options;
}

// Ends the program with what the system said first about the file.
[[noreturn]] void failOfFile(const char* path)
{
    const int reason = static_cast<int>(getErrBuf(2)->get(0)->error() & 0xFFFF);
    fail(STATUS_FILE, "%s: %s", path, std::strerror(reason));
}

// A path is bytes, which need not be UTF-8.
std::unique_ptr<IOStreamC> openFile(const char* path, FileStreamC::FileOpenModeT mode, FileStreamC::FileAccessT access)
{
    const FileNameC name(StringC(path, std::strlen(path), StringC::CC_VALID_UTF8));
    std::unique_ptr<IOStreamC> file(FileService()->openFile(name, mode, access, FileStreamC::SHARE_READWRITE, false));
    if (file == nullptr) failOfFile(path);
    return file;
}

std::string contentOf(const char* path, InputStreamC& stream)
{
    std::string content;
    char piece[65536];
    long count;
    while ((count = stream.read(piece, sizeof piece)) > 0) content.append(piece, static_cast<size_t>(count));
    if (count < 0) failOfFile(path);
    return content;
}

void write(const char* path, const std::string& content)
{
    const auto file = openFile(path, FileStreamC::FMODE_CREATE, FileStreamC::FACCESS_WRITE);
    const bool isWritten = file->write(content.data(), static_cast<long>(content.size())) == 0;
    if (file->close() != 0 || !isWritten) fail(STATUS_FILE, "%s: cannot be written", path);
}

std::string contentOf(const char* path)
{
    static FileStreamC standardInput(FileStreamC::NativeStdIn(), FileStreamC::FMODE_OPEN, FileStreamC::FACCESS_READ,
                                     FileStreamC::SHARE_READWRITE);
    if (std::strcmp(path, "-") == 0) return contentOf(path, standardInput);
    return contentOf(path, *openFile(path, FileStreamC::FMODE_OPEN, FileStreamC::FACCESS_READ));
}

StringC textOf(const char* path, const std::string& content, const char* encoding)
{
    const size_t good = wellFormedPrefix(content, encoding);
    if (good < content.size()) fail(STATUS_FILE, "%s: byte %zu is not valid %s", path, good, encoding);
    return StringC(content.data(), content.size(), encoding);
}

// The last character that an encoding has.
UCS4 lastOf(const char* encoding)
{
    if (encoding == StringC::CC_ASCII) return 0x7F;
    if (encoding == StringC::CC_LATIN1) return 0xFF;
    if (encoding == StringC::CC_UTF16 || encoding == StringC::CC_UTF16BE || encoding == StringC::CC_UTF16LE)
        return 0x10FFFF;
    return 0x7FFFFFFF;
}

// The text with "~" for each character that `encoding` does not have, as the library would write it; a
// character that does not fit is a broken promise, so the program sees to it first.
StringC fittingText(const StringC& text, const char* encoding, long& lost)
{
    const UCS4 last = lastOf(encoding);
    StringC fitting;
    const UTF8T* p = reinterpret_cast<const UTF8T*>(text.utf8());
    const UTF8T* const end = p + text.utf8Bytes();
    lost = 0;
    for (const UTF8T* q = p; q < end;) lost += UTF8Get(q) > last;
    if (lost == 0) return text;
    while (p < end) {
        const UCS4 ch = UTF8Get(p);
        fitting += ch > last ? UCS4{'~'} : ch;
    }
    return fitting;
}

std::string encodedText(const StringC& text, const char* encoding)
{
    size_t size = 0;
    text.convertTo(nullptr, size, encoding);
    std::string encoded(size + sizeof(UCS4), '\0');   // room for the widest terminator
    size = encoded.size();
    text.convertTo(reinterpret_cast<U8BitT*>(encoded.data()), size, encoding);
    encoded.resize(size);
    return encoded;
}

void print(TextWriterC& report, const char* from, size_t bytes, const TextStatsT& stats)
{
    const StringC counts("  bytes          %u (%s)\n"
                         "  characters     %d: %d letters, %d digits, %d ideographs\n"
                         "  words          %d\n"
                         "  lines          %d, the longest has %d characters\n"
                         "  frequent words");
    report.write(counts, ArgList << bytes << from << stats.characters << stats.letters << stats.digits
                                 << stats.ideographs << stats.words << stats.lines << stats.longestLine);
    const char* separator = " ";
    for (const auto& [word, count] : stats.frequentWords) {
        report.write("%s%S %d", ArgList << separator << word << count);
        separator = ", ";
    }
    report.writeLine(StringC());
}

void printEncoded(TextWriterC& report, const char* to, size_t bytes, long lost)
{
    report.write("  encoded        %u bytes (%s), ", ArgList << bytes << to);
    if (lost == 0) {
        report.writeLine("nothing lost");
    } else {
        report.writeLine("%d characters lost", ArgList << lost);
    }
}

}   // namespace

int main(int argc, char** argv)
{
    const OptionsT options = parse(argc, argv);
    if (options.files.empty()) {
        std::fputs(USAGE, stderr);
        return STATUS_USAGE;
    }
    std::string output;   // written when all is read, for FILE may be one of those
    FileStreamC console(FileStreamC::NativeStdOut(), FileStreamC::FMODE_OPEN, FileStreamC::FACCESS_WRITE,
                        FileStreamC::SHARE_READWRITE);
    StreamWriterC report(&console, TextEncodingI::SYS8(), false, false);
    for (const char* path : options.files) {
        getErrBuf(2)->reset();   // a report that nobody can read is no failure
        const std::string content = contentOf(path);
        const StringC text = textOf(path, content, options.from);
        const std::string heading = std::string(std::strcmp(path, "-") == 0 ? "standard input" : path) + "\n";
        console.write(heading.data(), static_cast<long>(heading.size()));   // with the bytes that the path has
        print(report, options.from, content.size(), statsOf(text, 10));

        long lost = 0;
        const std::string encoded = encodedText(fittingText(text, options.to, lost), options.to);
        printEncoded(report, options.to, encoded.size(), lost);
        output += encoded;
    }
    if (options.out != nullptr) write(options.out, output);
    return 0;
}
