#include "string/impl/formatvalues.h"

#include "assertfatal.h"
#include "string/impl/formatoutput.h"

#include <climits>
#include <cmath>
#include <limits>

namespace {

const ArgC::TypeT NO_KIND = static_cast<ArgC::TypeT>(-1);

ArgC::TypeT kindOf(const ArgC* a) { return a != nullptr ? a->type() : NO_KIND; }

// Truncated towards zero; the nearest value where there is none, 0 of what is no number.
template <class IntegerT>
IntegerT truncated(double value, double lowest, double beyond)
{
    if (std::isnan(value)) return 0;
    if (value <= lowest) return std::numeric_limits<IntegerT>::min();
    if (value >= beyond) return std::numeric_limits<IntegerT>::max();
    return static_cast<IntegerT>(value);
}

int toInt(double value) { return truncated<int>(value, -0x1p31, 0x1p31); }

long toLong(double value) { return truncated<long>(value, -0x1p63, 0x1p63); }

// A negative value as its two's complement.
unsigned long toUnsignedLong(double value)
{
    if (value < 0) return static_cast<unsigned long>(toLong(value));
    return truncated<unsigned long>(value, 0, 0x1p64);
}

int saturated(unsigned value) { return value <= INT_MAX ? static_cast<int>(value) : INT_MAX; }

// A date-time counts units of 10 nanoseconds from the start of the calendar, and below 0 before it.
timeval toTimeVal(unsigned long dateTime)
{
    const long SECOND = 100000000;
    const long START_OF_1970 = 62135683200;   // in seconds of that count
    const long count = static_cast<long>(dateTime);
    const long seconds = count / SECOND - (count % SECOND < 0 ? 1 : 0);   // rounded down
    timeval time;
    time.tv_sec = seconds - START_OF_1970;
    time.tv_usec = (count - seconds * SECOND) / 100;
    return time;
}

}   // namespace

int FormatValuesC::starValue(const ArgC* a) const
{
    switch (kindOf(a)) {
    case ArgC::Bool: return a->asBool();
    case ArgC::Int16: return a->asInt16();
    case ArgC::Int32: return a->asInt32();
    case ArgC::Int64: return static_cast<int>(a->asInt64());
    case ArgC::Unsigned16: return a->asUnsigned16();
    case ArgC::Unsigned32: return saturated(a->asUnsigned32());
    case ArgC::Unsigned64: return static_cast<int>(a->asUnsigned64());
    case ArgC::UCS4: return saturated(a->asUCS4());
    case ArgC::Real: return toInt(a->asReal());
    default: return neutral(a, 0);
    }
}

long FormatValuesC::otherSignedValue(const ArgC* a) const
{
    switch (kindOf(a)) {
    case ArgC::Bool: return a->asBool();
    case ArgC::Int16: return a->asInt16();
    case ArgC::Int64: return a->asInt64();
    case ArgC::Unsigned16: return static_cast<short>(a->asUnsigned16());
    case ArgC::Unsigned32: return static_cast<int>(a->asUnsigned32());
    case ArgC::Unsigned64: return static_cast<long>(a->asUnsigned64());
    case ArgC::UCS4: return a->asUCS4();
    case ArgC::Real: return toLong(a->asReal());
    default: return neutral(a, 0L);
    }
}

unsigned long FormatValuesC::unsignedValue(const ArgC* a) const
{
    switch (kindOf(a)) {
    case ArgC::Bool: return a->asBool();
    case ArgC::Int16: return static_cast<unsigned short>(a->asInt16());
    case ArgC::Int32: return static_cast<unsigned>(a->asInt32());
    case ArgC::Int64: return static_cast<unsigned long>(a->asInt64());
    case ArgC::Unsigned16: return a->asUnsigned16();
    case ArgC::Unsigned32: return a->asUnsigned32();
    case ArgC::Unsigned64: return a->asUnsigned64();
    case ArgC::UCS4: return a->asUCS4();
    case ArgC::Real: return toUnsignedLong(a->asReal());
    default: return neutral(a, 0UL);
    }
}

// An integer that is not meant as a character gives its lowest byte, as a char does.
UCS4 FormatValuesC::characterValue(const ArgC* a) const
{
    switch (kindOf(a)) {
    case ArgC::Unsigned32: return a->asUnsigned32();
    case ArgC::UCS4: return a->asUCS4();
    case ArgC::Bool: return a->asBool();
    case ArgC::Int16: return static_cast<unsigned char>(a->asInt16());
    case ArgC::Int32: return static_cast<unsigned char>(a->asInt32());
    case ArgC::Int64: return static_cast<unsigned char>(a->asInt64());
    case ArgC::Unsigned16: return static_cast<unsigned char>(a->asUnsigned16());
    case ArgC::Unsigned64: return static_cast<unsigned char>(a->asUnsigned64());
    default: return neutral(a, static_cast<UCS4>(' '));
    }
}

const void* FormatValuesC::pointerValue(const ArgC* a) const
{
    switch (kindOf(a)) {
    case ArgC::ObjRef: return a->asObjRef();
    case ArgC::CharStar: return a->asCharStar();
    default: return neutral<const void*>(a, nullptr);
    }
}

timeval FormatValuesC::timeValue(const ArgC* a) const
{
    switch (kindOf(a)) {
    case ArgC::TimeVal: return a->asTimeVal();
    case ArgC::DateTime: return toTimeVal(a->asDateTime());
    default: return neutral(a, timeval{0, 0});
    }
}

void FormatValuesC::refuse(const ArgC* a) const
{
    m_out.flush();
    if (TVX_CHECK(a != nullptr, "a != 0")) {
        assertFatal("Type mismatch in string formatting", __FILE_NAME__, __LINE__);
    }
}

template <class ValueT>
ValueT FormatValuesC::neutral(const ArgC* a, ValueT value) const
{
    refuse(a);
    return value;
}
