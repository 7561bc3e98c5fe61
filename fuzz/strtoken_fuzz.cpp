// Tokenizing and composing undo each other.

#include "strtoken.h"

#include "fuzz.h"

#include <memory>

namespace {

// Without zeros: the count of a text that holds one depends on how it was made, and with it equality.
StringC textOf(std::string_view bytes)
{
    const StringC repaired(bytes.data(), bytes.size(), StringC::CC_UTF8);
    std::string text(repaired.utf8(), repaired.utf8Bytes());
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    return StringC(text.data(), text.size(), StringC::CC_UTF8);
}

// Without backslashes, in front of which a delimiter would be hidden.
StringC withoutBackslashes(const StringC& text) { return text.substitute("\\", StringC()); }

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const bool stripWhite = input.below(2) != 0;
    const StringC delimiters = textOf(input.bytes(input.below(8)));
    const StringC text = textOf(input.rest());
    const StringC delimiter = delimiters.isEmpty() ? StringC(",") : delimiters.substr(0, 1);

    // One delimiter: the parts with it between them are the text.
    const std::unique_ptr<StringArrayC> parts(StringTokenizerC::Tokenize(text, delimiter, false, true));
    FUZZ_REQUIRE(StringTokenizerC::Compose(*parts, delimiter) == text);
    for (size_t n = 0; n < parts->size(); ++n) FUZZ_REQUIRE((*parts)[n].find(delimiter) < 0);

    // Several: no part holds one, and parts without white space around them are strips of those with it.
    const std::unique_ptr<StringArrayC> raw(StringTokenizerC::Tokenize(text, delimiters, false, true));
    const std::unique_ptr<StringArrayC> kept(StringTokenizerC::Tokenize(text, delimiters, stripWhite, false));
    size_t next = 0;
    for (size_t n = 0; n < raw->size(); ++n) {
        FUZZ_REQUIRE((*raw)[n].findAny(delimiters) < 0);
        const StringC part =
            stripWhite ? StringTokenizerC::StripWhite((*raw)[n], StringTokenizerC::m_whiteSpace) : (*raw)[n];
        if (!part.isEmpty()) FUZZ_REQUIRE((*kept)[next++] == part);
    }
    FUZZ_REQUIRE(next == kept->size());

    // Escaped delimiters come back.
    if (delimiter == StringC("\\")) return 0;
    StringArrayC plain;
    for (size_t n = 0; n < raw->size(); ++n) plain.add(withoutBackslashes((*raw)[n]));
    plain.add(delimiter);
    const StringC escaped = StringTokenizerC::PrefixEscapeCompose(plain, delimiter, delimiter[0]);
    const std::unique_ptr<StringArrayC> again(
        StringTokenizerC::PrefixEscapeTokenize(escaped, delimiter, false, true, '\\'));
    FUZZ_REQUIRE(again->size() == plain.size());
    for (size_t n = 0; n < plain.size(); ++n) FUZZ_REQUIRE((*again)[n].PrefixUnescape('\\') == plain[n]);
    return 0;
}
