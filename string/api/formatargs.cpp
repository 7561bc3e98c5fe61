// The members of StringC that format: they hand over to the factory of the format's body, and build the
// argument list that a C variable argument list stands for.

#include "arglist.h"
#include "assertfatal.h"
#include "string/api/formatdirective.h"
#include "stringc.h"

#include <cstdarg>
#include <cstring>
#include <utility>

namespace {

// What a parameter is read as.
enum ParameterT : unsigned char {
    PARAMETER_MISSING,   // nothing in the format names this position
    PARAMETER_INT,
    PARAMETER_CHAR,
    PARAMETER_UCHAR,
    PARAMETER_SHORT,
    PARAMETER_USHORT,
    PARAMETER_UINT,
    PARAMETER_LONG,
    PARAMETER_ULONG,
    PARAMETER_LONGLONG,
    PARAMETER_ULONGLONG,
    PARAMETER_POINTER,
    PARAMETER_UCS4,
    PARAMETER_TEXT,
    PARAMETER_STRING,
    PARAMETER_TIME,
    PARAMETER_NONE,     // the conversion takes no argument
    PARAMETER_ILLEGAL   // no such conversion
};

// Length modifiers: an index into the tables below.
enum ModifierT { MODIFIER_NONE, MODIFIER_HH, MODIFIER_H, MODIFIER_L, MODIFIER_LL, MODIFIER_OTHER };

const ParameterT SIGNED_PARAMETERS[] = {PARAMETER_INT,  PARAMETER_CHAR,     PARAMETER_SHORT,
                                        PARAMETER_LONG, PARAMETER_LONGLONG, PARAMETER_ILLEGAL};
const ParameterT UNSIGNED_PARAMETERS[] = {PARAMETER_UINT,  PARAMETER_UCHAR,     PARAMETER_USHORT,
                                          PARAMETER_ULONG, PARAMETER_ULONGLONG, PARAMETER_ILLEGAL};

ModifierT parseModifier(const UTF8T*& p)
{
    const UTF8T letter = *p;
    if (letter != 'h' && letter != 'l') return MODIFIER_NONE;
    const UTF8T* const begin = p;
    while (*p == letter) ++p;
    switch (p - begin) {
    case 1: return letter == 'h' ? MODIFIER_H : MODIFIER_L;
    case 2: return letter == 'h' ? MODIFIER_HH : MODIFIER_LL;
    default: return MODIFIER_OTHER;
    }
}

ParameterT plainParameter(UTF8T conversion)
{
    switch (conversion) {
    case 'c': return PARAMETER_INT;
    case 'C': return PARAMETER_UCS4;
    case 's': return PARAMETER_TEXT;
    case 'S': return PARAMETER_STRING;
    case 't': return PARAMETER_TIME;
    case '%':
    case '!':
    case 'D':
    case 'T': return PARAMETER_NONE;
    default: return PARAMETER_ILLEGAL;
    }
}

ParameterT parameterOf(ModifierT modifier, UTF8T conversion)
{
    switch (conversion) {
    case 'd':
    case 'i': return SIGNED_PARAMETERS[modifier];
    case 'u':
    case 'o':
    case 'x':
    case 'X':
    case 'b': return UNSIGNED_PARAMETERS[modifier];
    case 'p':
        return modifier == MODIFIER_NONE || modifier == MODIFIER_L || modifier == MODIFIER_LL ? PARAMETER_POINTER
                                                                                              : PARAMETER_ILLEGAL;
    default: return modifier == MODIFIER_NONE ? plainParameter(conversion) : PARAMETER_ILLEGAL;
    }
}

// The parameters that a format needs, by position.
class ParametersC {
public:
    explicit ParametersC(const UTF8T* format);

    // One more than the highest position that the format names.
    int count() const { return m_count; }
    ParameterT operator[](int position) const { return m_parameters[position]; }

private:
    static const int CAPACITY = 128;

    const UTF8T* scanDirective(const UTF8T* p);
    void recordField(const FormatFieldT& field);
    void recordNext(ParameterT parameter);
    void record(int position, ParameterT parameter);

    ParameterT m_parameters[CAPACITY] = {};
    int m_count = 0;
    int m_next = 0;        // the position that the next conversion takes
    bool m_full = false;   // a position beyond the table was named
};

ParametersC::ParametersC(const UTF8T* format)
{
    const char* p = reinterpret_cast<const char*>(format);
    while (!m_full && (p = std::strchr(p, '%')) != nullptr) {
        p = reinterpret_cast<const char*>(scanDirective(reinterpret_cast<const UTF8T*>(p) + 1));
    }
}

const UTF8T* ParametersC::scanDirective(const UTF8T* p)
{
    FormatDirectiveT directive;
    p = directive.parse(p);
    const ModifierT modifier = parseModifier(p);

    if (directive.position.source == FormatFieldT::NTH_ARG) m_next = directive.position.value;
    recordField(directive.width);
    recordField(directive.precision);
    const ParameterT parameter = parameterOf(modifier, *p);
    if (!TVX_CHECK(parameter != PARAMETER_ILLEGAL, "Illegal formatting character in formatArgs()")) {
        return *p != 0 ? p + 1 : p;
    }
    if (parameter != PARAMETER_NONE) recordNext(parameter);
    return p + 1;
}

void ParametersC::recordField(const FormatFieldT& field)
{
    if (field.source == FormatFieldT::NEXT_ARG) {
        recordNext(PARAMETER_INT);
    } else if (field.source == FormatFieldT::NTH_ARG) {
        record(field.value, PARAMETER_INT);
    }
}

void ParametersC::recordNext(ParameterT parameter)
{
    record(m_next, parameter);
    if (!m_full) ++m_next;
}

void ParametersC::record(int position, ParameterT parameter)
{
    if (position >= CAPACITY) m_full = true;
    if (m_full || position < 0) return;
    m_parameters[position] = parameter;
    if (position >= m_count) m_count = position + 1;
}

// A variable argument list that can be passed on by reference, whatever kind of type va_list is.
struct VaListT {
    std::va_list ap;
};

void appendNext(ArgListC& list, ParameterT parameter, VaListT& from)
{
    switch (parameter) {
    case PARAMETER_INT: list << va_arg(from.ap, int); break;
    case PARAMETER_CHAR: list << static_cast<int>(static_cast<signed char>(va_arg(from.ap, int))); break;
    case PARAMETER_UCHAR: list << static_cast<int>(static_cast<unsigned char>(va_arg(from.ap, int))); break;
    case PARAMETER_SHORT: list << static_cast<short>(va_arg(from.ap, int)); break;
    case PARAMETER_USHORT: list << static_cast<unsigned short>(va_arg(from.ap, int)); break;
    case PARAMETER_UINT: list << va_arg(from.ap, unsigned); break;
    case PARAMETER_LONG: list << va_arg(from.ap, long); break;
    case PARAMETER_ULONG: list << va_arg(from.ap, unsigned long); break;
    case PARAMETER_LONGLONG: list << va_arg(from.ap, long long); break;
    case PARAMETER_ULONGLONG: list << va_arg(from.ap, unsigned long long); break;
    case PARAMETER_POINTER: list << ArgObjRefC(va_arg(from.ap, const void*)); break;
    case PARAMETER_UCS4: list << ArgUCS4C(va_arg(from.ap, unsigned)); break;
    case PARAMETER_TEXT: list << va_arg(from.ap, const char*); break;
    case PARAMETER_STRING: {
        const StringC* const text = va_arg(from.ap, const StringC*);
        list << (text != nullptr ? *text : StringC());
        break;
    }
    case PARAMETER_TIME: list << va_arg(from.ap, timeval); break;
    case PARAMETER_MISSING:
        assertFatal("Missing parameter in positional StringC::formatArgs, assuming int", __FILE_NAME__, __LINE__);
        list << va_arg(from.ap, int);
        break;
    default: assertFatal("Case missing in StringC::formatArgs()", __FILE_NAME__, __LINE__); break;
    }
}

}   // namespace

StringC StringC::format(const StringC& fmt, ArgListC args) { return fmt % std::move(args); }

void StringC::format(void (*emit)(void* ctx, UCS4 ch), void* ctx, const StringC& fmt, ArgListC args)
{
    fmt.str->getFactory()->format(emit, ctx, *fmt.str, std::move(args));
}

StringC StringC::operator%(ArgListC args) const { return StringC(*str->getFactory()->format(*str, std::move(args))); }

ArgListC StringC::formatArgs(const StringC& fmt, std::va_list ap)
{
    const ParametersC parameters(reinterpret_cast<const UTF8T*>(fmt.utf8()));
    ArgListC list;
    VaListT from;
    va_copy(from.ap, ap);
    for (int i = 0; i < parameters.count(); ++i) appendNext(list, parameters[i], from);
    va_end(from.ap);
    return list;
}
