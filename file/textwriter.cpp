#include "textwriter.h"

#include "cmnlib/neverdestroyed.h"

#include <cstring>
#include <string>
#include <string_view>

namespace {

// Before all other static objects of the image, which may write text.
__attribute__((init_priority(101))) NeverDestroyedM<StringC> dosNewLine("\r\n");
__attribute__((init_priority(101))) NeverDestroyedM<StringC> macNewLine("\r");
__attribute__((init_priority(101))) NeverDestroyedM<StringC> unixNewLine("\n");

}   // namespace

constinit const StringC& TextWriterC::DOSNewLine = *dosNewLine;
constinit const StringC& TextWriterC::MacNewLine = *macNewLine;
constinit const StringC& TextWriterC::UNIXNewLine = *unixNewLine;

TextWriterC::TextWriterC() : newLine(UNIXNewLine) {}
TextWriterC::~TextWriterC() = default;

long TextWriterC::close() { return 0; }

long TextWriterC::flush() { return 0; }

long TextWriterC::write(const StringC& format, ArgListC args)
{
    return write(StringC::format(format, std::move(args)));
}

long TextWriterC::writeLine(const StringC& text) { return write(text + UNIXNewLine); }

long TextWriterC::writeLine(const StringC& format, ArgListC args)
{
    return writeLine(StringC::format(format, std::move(args)));
}

StringC TextWriterC::replaceLineBreaks(const StringC& text) const
{
    std::string_view rest(text.utf8(), text.utf8Bytes());
    const std::string_view lineBreak(newLine.utf8(), newLine.utf8Bytes());
    if (rest.find('\r') == std::string_view::npos && (lineBreak == "\n" || rest.find('\n') == std::string_view::npos)) {
        return text;
    }
    std::string replaced;
    replaced.reserve(rest.size() + rest.size() / 16);
    for (size_t at; (at = rest.find_first_of("\r\n")) != std::string_view::npos;) {
        replaced.append(rest.substr(0, at)).append(lineBreak);
        rest.remove_prefix(at + (rest.substr(at, 2) == "\r\n" ? 2 : 1));
    }
    replaced.append(rest);
    return {replaced.data(), replaced.size(), StringC::CC_VALID_UTF8};
}
