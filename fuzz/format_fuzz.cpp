// The formatting engine with any format and any list: the string and the callback get the same text, and a
// list that is not what the format asks for does no harm.

#include "arglist.h"

#include "fuzz.h"
#include "utf8.h"

namespace {

ArgBoolC theBool(true);
ArgUserC theUser;

// One argument of any kind. Numbers are small: they may be widths.
void addArgument(ArgListC& list, FuzzInputC& input)
{
    const unsigned kind = input.below(20);
    const short number = static_cast<short>(input.byte() << 8 | input.byte());
    const std::string text(input.bytes(kind == ArgC::CharStar || kind == ArgC::String ? number & 63 : 0));
    switch (kind) {
    case ArgC::Bool: list.add(&theBool); break;
    case ArgC::Int16: list << number; break;
    case ArgC::Int32: list << int{number}; break;
    case ArgC::Int64: list << number * 0x100000001L; break;
    case ArgC::Unsigned16: list << static_cast<unsigned short>(number); break;
    case ArgC::Unsigned32: list << static_cast<unsigned>(number & 0x7FFF); break;
    case ArgC::Unsigned64: list << static_cast<unsigned long>(number & 0x7FFF); break;
    case ArgC::Real: list.add(new ArgRealC(number / 3.0)); break;
    case ArgC::UCS4: list << ArgUCS4C(static_cast<UCS4>(number & 0x7FFF)); break;
    case ArgC::String: list << StringC(text.data(), text.size(), StringC::CC_UTF8); break;
    case ArgC::DateTime: list.add(new ArgDateTimeC(0x30000000000UL * static_cast<unsigned short>(number))); break;
    case ArgC::Guid: list.add(new ArgGuidC(OSAGuidT{1, 2, static_cast<unsigned short>(number), {3}})); break;
    case ArgC::ArgList: list.add(new ArgArgListC(ArgList << number)); break;
    case ArgC::CharStar: list << text.c_str(); break;
    case ArgC::TimeVal: list << timeval{0x7FFFFFFFFFL * number, number}; break;
    case ArgC::User: list.add(&theUser); break;
    case ArgC::NullArg: list.add(new ArgNullC); break;
    default: list << ArgObjRefC(&theUser); break;
    }
}

// Widths of more than four digits cost memory and find nothing.
bool hasLongNumber(std::string_view format)
{
    size_t digits = 0;
    for (const char ch : format) {
        digits = ch >= '0' && ch <= '9' ? digits + 1 : 0;
        if (digits > 4) return true;
    }
    return false;
}

struct EmittedT {
    std::string bytes;
    long chars = 0;
};

void appendTo(void* to, UCS4 ch)
{
    UTF8T bytes[6];
    UTF8T* end = bytes;
    UTF8Put(end, ch);
    static_cast<EmittedT*>(to)->bytes.append(bytes, end);
    ++static_cast<EmittedT*>(to)->chars;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    ArgListC list;
    for (unsigned n = input.below(20); n > 0; --n) addArgument(list, input);
    const std::string_view bytes = input.rest();
    if (hasLongNumber(bytes)) return 0;

    const StringC format(bytes.data(), bytes.size(), StringC::CC_UTF8);
    const StringC text = format % list;
    EmittedT emitted;
    StringC::format(appendTo, &emitted, format, list);
    FUZZ_REQUIRE(text.length() == emitted.chars);
    const bool tellsTime = bytes.find_first_of("TD") != std::string_view::npos;
    FUZZ_REQUIRE(tellsTime || std::string(text.utf8(), text.utf8Bytes()) == emitted.bytes);
    return 0;
}
