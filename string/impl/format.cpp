#include "string/impl/format.h"

// The format is walked as bytes: what stands between directives goes out in whole pieces. Numbers and
// dates are written into small buffers, so that nothing but the resulting body is allocated for them.

#include "assertfatal.h"
#include "gettime.h"
#include "ipc/localtime.h"
#include "string/api/formatdirective.h"
#include "string/api/utfkernels.h"
#include "string/impl/formatdigits.h"
#include "string/impl/formatoutput.h"
#include "string/impl/formatvalues.h"
#include "string/impl/stringim.h"
#include "string/impl/textview.h"
#include "stringc.h"
#include "utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

// A directive whose width and precision are known.
struct SpecT {
    long width;      // in characters; never negative
    int precision;   // -1 when unset
    char pad;
    char sign;
    bool left;
    bool alternate;
};

const SpecT PLAIN = {0, -1, ' ', 0, false, false};

enum TimePartsT { DATE_ONLY, TIME_ONLY, DATE_AND_TIME };

const UTF8T* bytesOf(const char* text) { return reinterpret_cast<const UTF8T*>(text); }

bool isUTF8(const char* text, size_t n) { return utfkernels::validPrefix(bytesOf(text), n, nullptr) == n; }

// Most formats are ASCII and short, where a look at their words is cheaper than a scan by vectors.
bool isASCII(const char* text, size_t n)
{
    unsigned long bits = 0;
    for (; n >= sizeof bits; text += sizeof bits, n -= sizeof bits) {
        unsigned long word;
        std::memcpy(&word, text, sizeof word);
        bits |= word;
    }
    for (; n > 0; --n) bits |= static_cast<UTF8T>(*text++);
    return (bits & 0x8080808080808080) == 0;
}

bool isPlain(const SpecT& spec) { return spec.width == 0 && spec.precision < 0; }

bool isModifier(UTF8T byte)
{
    return byte == 'l' || byte == 'h' || byte == 'j' || byte == 'z' || byte == 'q' || byte == 'L';
}

// The next '%', or the end. Most pieces between directives are shorter than a call is worth.
const UTF8T* findDirective(const UTF8T* p)
{
    for (int i = 0; i < 4; ++i, ++p) {
        if (*p == '%' || *p == 0) return p;
    }
    return bytesOf(strchrnul(reinterpret_cast<const char*>(p), '%'));
}

timeval now()
{
    timeval time = {0, 0};
    GetTimeOfDay(&time);
    return time;
}

class FormatterC {
public:
    // `error` is what errno was when formatting began.
    FormatterC(FormatOutputC& out, const ArgListC& args, int error) : m_out(out), m_values(args, out), m_error(error) {}

    // Formats up to the first zero byte.
    void run(const UTF8T* format);

private:
    SpecT settle(const FormatDirectiveT& directive);
    int starOf(const FormatFieldT& field);
    const UTF8T* putDirective(const UTF8T* p);
    const UTF8T* convert(const UTF8T* p, const SpecT& spec);
    const UTF8T* putInvalid(const UTF8T* p, const SpecT& spec);

    void putSigned(const SpecT& spec, long value);
    void putUnsigned(const SpecT& spec, const RadixT& radix);
    void putPointer(SpecT spec);
    void putDecimal(const SpecT& spec, unsigned long magnitude, char sign);
    void putNumber(const SpecT& spec, unsigned long magnitude, const RadixT& radix, char sign, const char* prefix);

    void putText(const SpecT& spec, const UTF8T* bytes, size_t n);
    void putText(const SpecT& spec, const StringC& text);
    void putSystemText(const SpecT& spec, const char* text);
    void putOneCharacter(const SpecT& spec, UCS4 ch);
    void putCharacter(SpecT spec, UCS4 ch);
    void putTextArg(const SpecT& spec);
    void putStringArg(const SpecT& spec);
    void putGuid(const SpecT& spec, const OSAGuidT& guid);
    void putError(const SpecT& spec);
    void putTime(const SpecT& spec, const timeval& time, TimePartsT parts);

    FormatOutputC& m_out;
    FormatValuesC m_values;
    const int m_error;
};

void FormatterC::run(const UTF8T* format)
{
    for (;;) {
        const UTF8T* const p = findDirective(format);
        m_out.append(format, static_cast<size_t>(p - format));
        if (*p == 0) return;
        format = putDirective(p + 1);
    }
}

// Gets what follows the '%', and returns what follows the directive. Arguments know their own width, so
// length modifiers say nothing.
const UTF8T* FormatterC::putDirective(const UTF8T* p)
{
    if (*p >= 'A' && !isModifier(*p)) return convert(p, PLAIN);
    FormatDirectiveT directive;
    p = directive.parse(p);
    while (isModifier(*p)) ++p;
    return convert(p, settle(directive));
}

SpecT FormatterC::settle(const FormatDirectiveT& directive)
{
    if (directive.position.source != FormatFieldT::UNSET) m_values.setNext(directive.position.value);

    SpecT spec = {directive.width.value, -1, directive.pad, directive.sign, directive.left, directive.alternate};
    if (directive.width.source >= FormatFieldT::NEXT_ARG) {
        spec.width = starOf(directive.width);
        if (spec.width < 0) {
            spec.width = -spec.width;
            spec.left = true;
        }
    }
    if (directive.precision.source == FormatFieldT::NUMBER) {
        spec.precision = directive.precision.value;
    } else if (directive.precision.source != FormatFieldT::UNSET) {
        spec.precision = std::max(0, starOf(directive.precision));
    }
    return spec;
}

int FormatterC::starOf(const FormatFieldT& field)
{
    return m_values.starValue(field.source == FormatFieldT::NTH_ARG ? m_values.nth(field.value) : m_values.next());
}

// Puts out the conversion that stands at `p`. Returns what follows it.
const UTF8T* FormatterC::convert(const UTF8T* p, const SpecT& spec)
{
    switch (*p) {
    case 's': putTextArg(spec); break;
    case 'S': putStringArg(spec); break;
    case 'c':
    case 'C': putCharacter(spec, m_values.characterValue(m_values.next())); break;
    case 'd':
    case 'i': putSigned(spec, m_values.signedValue(m_values.next())); break;
    case 'u': putDecimal(spec, m_values.unsignedValue(m_values.next()), 0); break;
    case 'o': putUnsigned(spec, RADIX_OCTAL); break;
    case 'x': putUnsigned(spec, RADIX_HEX); break;
    case 'X': putUnsigned(spec, RADIX_UPPER_HEX); break;
    case 'b': putUnsigned(spec, RADIX_BINARY); break;
    case 'p': putPointer(spec); break;
    case 'D': putTime(spec, now(), DATE_ONLY); break;
    case 'T': putTime(spec, now(), TIME_ONLY); break;
    case 't': putTime(spec, m_values.timeValue(m_values.next()), DATE_AND_TIME); break;
    case '!': putError(spec); break;
    case '%': putText(spec, p, 1); break;
    default: return putInvalid(p, spec);
    }
    return p + 1;
}

// What is no conversion stands for itself, but the end of the format for nothing.
const UTF8T* FormatterC::putInvalid(const UTF8T* p, const SpecT& spec)
{
    m_out.flush();
    assertFatal("Invalid conversion specifier in StringImplC::format()!", __FILE_NAME__, __LINE__);
    if (*p == 0) return p;
    const UTF8T* after = p;
    UTF8Get(after);
    putText(spec, p, static_cast<size_t>(after - p));
    return after;
}

// ---- numbers ----------------------------------------------------------------------------------------

void FormatterC::putSigned(const SpecT& spec, long value)
{
    const bool isNegative = value < 0;
    const unsigned long bits = static_cast<unsigned long>(value);
    putDecimal(spec, isNegative ? 0 - bits : bits, isNegative ? '-' : spec.sign);
}

// Usually neither width nor precision is given: then the digits can go to their place at once.
void FormatterC::putDecimal(const SpecT& spec, unsigned long magnitude, char sign)
{
    if (!isPlain(spec)) return putNumber(spec, magnitude, RADIX_DECIMAL, sign, "");
    UTF8T* at = m_out.reserve(1 + MAX_DECIMAL_DIGITS);
    if (sign != 0) *at++ = static_cast<UTF8T>(sign);
    at += countDecimal(magnitude);
    writeDecimal(at, magnitude);
    m_out.commit(at);
}

void FormatterC::putUnsigned(const SpecT& spec, const RadixT& radix)
{
    const unsigned long value = m_values.unsignedValue(m_values.next());
    putNumber(spec, value, radix, 0, spec.alternate && value != 0 ? radix.prefix : "");
}

void FormatterC::putPointer(SpecT spec)
{
    spec.precision = 16;
    const void* const pointer = m_values.pointerValue(m_values.next());
    putNumber(spec, reinterpret_cast<unsigned long>(pointer), RADIX_UPPER_HEX, spec.sign, "0x");
}

// A pad character 0 gives digits, not padding, and only while no precision asks for a number of them.
void FormatterC::putNumber(const SpecT& spec, unsigned long magnitude, const RadixT& radix, char sign,
                           const char* prefix)
{
    UTF8T text[1 + 2 + MAX_DIGITS];   // sign, prefix, digits
    UTF8T* const end = text + sizeof text;
    UTF8T* begin = writeDigits(end, magnitude, radix);

    long digits = spec.precision;
    if (spec.pad == '0' && spec.width >= 1 && digits <= 0) {
        digits = spec.width - (sign != 0 ? 1 : 0) - static_cast<long>(std::strlen(prefix));
    }
    if (digits > MAX_DIGITS) digits = MAX_DIGITS;
    while (end - begin < digits) *--begin = '0';
    if (prefix[0] != 0) {
        if (prefix[1] != 0) *--begin = static_cast<UTF8T>(prefix[1]);
        *--begin = static_cast<UTF8T>(prefix[0]);
    }
    if (sign != 0) *--begin = static_cast<UTF8T>(sign);

    const long padding = spec.width - (end - begin);
    if (!spec.left) m_out.fill(' ', padding);
    m_out.append(begin, static_cast<size_t>(end - begin));
    if (spec.left) m_out.fill(' ', padding);
}

// ---- texts ------------------------------------------------------------------------------------------

void FormatterC::putText(const SpecT& spec, const UTF8T* bytes, size_t n)
{
    if (isPlain(spec)) return m_out.append(bytes, n);

    long chars = static_cast<long>(utfkernels::countChars(bytes, n));
    if (spec.precision >= 0 && spec.precision < chars) {
        chars = spec.precision;
        n = utfkernels::advance(bytes, n, static_cast<size_t>(chars), nullptr);
    }
    if (!spec.left) m_out.fill(spec.pad, spec.width - chars);
    m_out.append(bytes, n);
    if (spec.left) m_out.fill(spec.pad, spec.width - chars);
}

void FormatterC::putText(const SpecT& spec, const StringC& text)
{
    const TextViewT view(text.impl());
    putText(spec, view.begin, view.size);
}

// Text in the system's encoding, UTF-8 that nobody has checked. What is malformed fails, and is repaired,
// where StringC reads it.
void FormatterC::putSystemText(const SpecT& spec, const char* text)
{
    const size_t n = std::strlen(text);
    if (isPlain(spec) && m_out.appendShortASCII(bytesOf(text), n)) return;
    if (isUTF8(text, n)) return putText(spec, bytesOf(text), n);
    m_out.flush();
    putText(spec, StringC(text, n, StringC::CC_SYS8));
}

// A character without a form in UTF-8 ("ch <= 0x7FFFFFFF") is an empty text.
void FormatterC::putOneCharacter(const SpecT& spec, UCS4 ch)
{
    UTF8T bytes[6];
    UTF8T* end = bytes;
    if (ch > 0x7FFFFFFF) m_out.flush();
    if (UTF8Len(ch) != 0) UTF8Put(end, ch);
    putText(spec, bytes, static_cast<size_t>(end - bytes));
}

void FormatterC::putCharacter(SpecT spec, UCS4 ch)
{
    spec.precision = -1;
    putOneCharacter(spec, ch);
}

void FormatterC::putTextArg(const SpecT& spec)
{
    const ArgC* const a = m_values.next();
    if (a != nullptr && a->type() == ArgC::String) return putText(spec, a->asString());

    const char* text = "";
    if (a != nullptr && a->type() == ArgC::CharStar) {
        text = a->asCharStar();
    } else {
        m_values.refuse(a);
    }
    putSystemText(spec, text != nullptr ? text : "<null pointer>");
}

void FormatterC::putStringArg(const SpecT& spec)
{
    const ArgC* const a = m_values.next();
    switch (a != nullptr ? a->type() : ArgC::NullArg) {
    case ArgC::String: return putText(spec, a->asString());
    case ArgC::CharStar: return putSystemText(spec, a->asCharStar());
    case ArgC::Guid: return putGuid(spec, a->asGuid());
    case ArgC::UCS4: return putOneCharacter(spec, a->asUCS4());
    default: m_values.refuse(a); return putText(spec, nullptr, 0);
    }
}

void FormatterC::putGuid(const SpecT& spec, const OSAGuidT& guid)
{
    char text[40];
    const unsigned char* const d = guid.Data4;
    const int n = std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1,
                                guid.Data2, guid.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
    putText(spec, bytesOf(text), static_cast<size_t>(n));
}

// The system's texts follow its locale, which need not be a UTF-8 one; Latin-1 can be read from any bytes.
void FormatterC::putError(const SpecT& spec)
{
    char buffer[256];
    const char* const text = strerror_r(m_error, buffer, sizeof buffer);
    if (text == nullptr || *text == 0) return putSigned(spec, m_error);
    const size_t n = std::strlen(text);
    if (isUTF8(text, n)) return putText(spec, bytesOf(text), n);
    putText(spec, StringC(text, n, StringC::CC_LATIN1));
}

// ---- dates and times --------------------------------------------------------------------------------

// The precision says how much of "2001/02/28 23:59:59.123456" is shown; by default nothing of the fraction.
void FormatterC::putTime(const SpecT& spec, const timeval& time, TimePartsT parts)
{
    const int DEFAULT_PRECISIONS[] = {10, 8, 19};
    std::tm local;
    if (!localTimeOf(time.tv_sec, local)) return putText(spec, nullptr, 0);

    UTF8T text[MAX_DATE + 1 + MAX_TIME];
    UTF8T* end = text;
    if (parts != TIME_ONLY) end = writeDate(end, local);
    if (parts == DATE_AND_TIME) *end++ = ' ';
    if (parts != DATE_ONLY) end = writeTime(end, local, time.tv_usec);

    int precision = spec.precision >= 0 ? spec.precision : DEFAULT_PRECISIONS[parts];
    if (parts == DATE_ONLY) precision = std::min(precision, DEFAULT_PRECISIONS[DATE_ONLY]);
    putText(spec, text, std::min(static_cast<size_t>(precision), static_cast<size_t>(end - text)));
}

// A body of another make.
void appendTo(void* body, UCS4 ch) { *static_cast<StringImplI*>(body) += ch; }

}   // namespace

StringImplI* StringImplC::format(const StringImplI& fmt, const ArgListC& args)
{
    const int error = errno;
    if (fmt.getFactory() == factory()) {
        BodyOutputC out;
        FormatterC(out, args, error).run(TextViewT(fmt).begin);
        return out.finish();
    }
    StringImplI* const out = fmt.getFactory()->Create(nullptr, 0, StringC::CC_UTF8);
    (void)TVX_CHECK(!out->isShared(), "!out->isShared()");
    errno = error;
    format(appendTo, out, fmt, args);
    return out;
}

void StringImplC::format(void (*emit)(void* ctx, UCS4 ch), void* ctx, const StringImplI& fmt, const ArgListC& args)
{
    const int error = errno;
    CallbackOutputC out(emit, ctx);
    FormatterC(out, args, error).run(TextViewT(fmt).begin);
    out.flush();
}

void formatTo(FormatOutputC& out, const char* format, const ArgListC& args, int error)
{
    FormatterC formatter(out, args, error);
    const size_t n = std::strlen(format);
    if (isASCII(format, n) || isUTF8(format, n)) return formatter.run(bytesOf(format));
    out.flush();   // reading it fails
    formatter.run(TextViewT(StringC(format, n, StringC::CC_SYS8).impl()).begin);
}
