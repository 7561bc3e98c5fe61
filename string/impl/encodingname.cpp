#include "string/impl/encodingname.h"

#include "string/impl/stringim.h"
#include "stringc.h"
#include "textencoding.h"

#include <iterator>

namespace {

struct EncodingT {
    const char* name;
    transcode::FormatT format;
    size_t codeUnitLength;
    TextEncodingI* (*object)();
};

using transcode::FormatT;
const EncodingT ENCODINGS[] = {
    {StringC::CC_ASCII, FormatT::ASCII, 1, TextEncodingI::ASCII},
    {StringC::CC_SYS8, FormatT::UTF8, 1, TextEncodingI::SYS8},
    {StringC::CC_LATIN1, FormatT::LATIN1, 1, TextEncodingI::LATIN1},
    {StringC::CC_UTF8, FormatT::UTF8, 1, TextEncodingI::UTF8},
    {StringC::CC_VALID_UTF8, FormatT::UTF8, 1, nullptr},
    {StringC::CC_UTF16, FormatT::UTF16, 2, TextEncodingI::UTF16},
    {StringC::CC_UTF16BE, FormatT::UTF16BE, 2, TextEncodingI::UTF16BE},
    {StringC::CC_UTF16LE, FormatT::UTF16LE, 2, TextEncodingI::UTF16LE},
    {StringC::CC_WCHART, FormatT::WIDE, 4, TextEncodingI::WCHAR},
};
static_assert(std::size(ENCODINGS) == ENCODING_UNKNOWN, "one row for each encoding, in their order");

}   // namespace

EncodingNameT encodingNamed(const char* name)
{
    if (isUTF8Name(name)) return ENCODING_UTF8;
    if (name != nullptr && *name == 'v' && isUTF8Name(name + 1)) return ENCODING_VALID_UTF8;
    int encoding = 0;
    while (encoding < ENCODING_UNKNOWN && !isSameEncoding(name, ENCODINGS[encoding].name)) ++encoding;
    return static_cast<EncodingNameT>(encoding);
}

transcode::FormatT formatOf(EncodingNameT encoding) { return ENCODINGS[encoding].format; }
size_t codeUnitLength(EncodingNameT encoding) { return ENCODINGS[encoding].codeUnitLength; }
TextEncodingI* encodingObject(EncodingNameT encoding) { return ENCODINGS[encoding].object(); }

bool StringImplC::IsEncoding(const char* a, const char* b) { return isSameEncoding(a, b); }

TextEncodingI* StringImplC::GetTextEncoding(const char* name)
{
    const EncodingNameT encoding = encodingNamed(name);
    return isConvertible(encoding) ? encodingObject(encoding) : nullptr;
}
