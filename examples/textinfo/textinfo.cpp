// textinfo: what is in a text file, and the file in another encoding.
//
//   textinfo [--from ENCODING] [--to ENCODING] [--out FILE] FILE...
//
// Reads each FILE (- is standard input) in the encoding --from and prints what it counts. --to names the
// encoding that is written to --out, all files one after the other; both are "utf8" unless given.
// Exit status: 0; 2 wrong use; 3 a file cannot be read, written or decoded.

#include "../support/wellformed.h"
#include "textstats.h"

#include "arglist.h"
#include "cstrings.h"
#include "stringc.h"
#include "ucs4.h"
#include "utf8.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

std::string contentOf(const char* path)
{
    FILE* const file = std::strcmp(path, "-") == 0 ? stdin : std::fopen(path, "rbe");
    if (file == nullptr) fail(STATUS_FILE, "%s: %s", path, std::strerror(errno));
    std::string content;
    char piece[65536];
    while (const size_t count = std::fread(piece, 1, sizeof piece, file)) content.append(piece, count);
    if (std::ferror(file)) fail(STATUS_FILE, "%s: %s", path, std::strerror(errno));
    if (file != stdin) std::fclose(file);
    return content;
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

void put(const StringC& text) { std::fwrite(text.utf8(), 1, text.utf8Bytes(), stdout); }

// A path is bytes, which need not be UTF-8, so it does not go through a format.
void print(const char* path, const OptionsT& options, size_t bytes, const TextStatsT& stats)
{
    const StringC report("  bytes          %u (%s)\n"
                         "  characters     %d: %d letters, %d digits, %d ideographs\n"
                         "  words          %d\n"
                         "  lines          %d, the longest has %d characters\n"
                         "  frequent words");
    std::printf("%s\n", std::strcmp(path, "-") == 0 ? "standard input" : path);
    put(StringC::format(report, ArgList << bytes << options.from << stats.characters << stats.letters << stats.digits
                                        << stats.ideographs << stats.words << stats.lines << stats.longestLine));
    const char* separator = " ";
    for (const auto& [word, count] : stats.frequentWords) {
        put(StringC::format("%s%S %d", ArgList << separator << word << count));
        separator = ", ";
    }
    put("\n");
}

void printEncoded(const OptionsT& options, size_t bytes, long lost)
{
    put(StringC::format("  encoded        %u bytes (%s), ", ArgList << bytes << options.to));
    put(lost == 0 ? StringC("nothing lost\n") : StringC::format("%d characters lost\n", ArgList << lost));
}

FILE* openOutput(const char* path)
{
    if (path == nullptr) return nullptr;
    FILE* const out = std::fopen(path, "wbe");
    if (out == nullptr) fail(STATUS_FILE, "%s: %s", path, std::strerror(errno));
    return out;
}

}   // namespace

int main(int argc, char** argv)
{
    const OptionsT options = parse(argc, argv);
    if (options.files.empty()) {
        std::fputs(USAGE, stderr);
        return STATUS_USAGE;
    }
    FILE* const out = openOutput(options.out);
    for (const char* path : options.files) {
        const std::string content = contentOf(path);
        const StringC text = textOf(path, content, options.from);
        print(path, options, content.size(), statsOf(text, 10));

        long lost = 0;
        const std::string encoded = encodedText(fittingText(text, options.to, lost), options.to);
        printEncoded(options, encoded.size(), lost);
        if (out != nullptr) std::fwrite(encoded.data(), 1, encoded.size(), out);
    }
    if (out != nullptr && (std::ferror(out) | std::fclose(out)) != 0)
        fail(STATUS_FILE, "%s: cannot be written", options.out);
    return 0;
}
