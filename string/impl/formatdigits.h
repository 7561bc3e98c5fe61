// formatdigits.h: the digits of numbers, dates and times. Written straight into a caller's buffer;
// nothing is terminated.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_STRING_IMPL_FORMATDIGITS_H
#define TVXCMN_STRING_IMPL_FORMATDIGITS_H

#include "basetypes.h"

#include <ctime>

// How a number is written.
struct RadixT {
    unsigned bits;        // of one digit; 0 stands for decimal
    const char* digits;   // unused for decimal
    const char* prefix;   // of the alternate form
};

const RadixT RADIX_DECIMAL = {0, nullptr, ""};
const RadixT RADIX_BINARY = {1, "01", "0b"};
const RadixT RADIX_OCTAL = {3, "01234567", "0"};
const RadixT RADIX_HEX = {4, "0123456789abcdef", "0x"};
const RadixT RADIX_UPPER_HEX = {4, "0123456789ABCDEF", "0X"};

const int MAX_DIGITS = 64;           // of any number in any radix
const int MAX_DECIMAL_DIGITS = 20;   // of a decimal one

// Write the digits of a number, at least one, so that they end at `end`. Return where they begin.
UTF8T* writeDecimal(UTF8T* end, unsigned long value);
UTF8T* writeDigits(UTF8T* end, unsigned long value, const RadixT& radix);

// How many digits writeDecimal writes.
int countDecimal(unsigned long value);

const int MAX_DATE = 26;   // characters of a date whose year may have 20 digits
const int MAX_TIME = 15;

// Write "2001/02/28" and "23:59:59.123456" at `at`. Return the end.
UTF8T* writeDate(UTF8T* at, const std::tm& date);
UTF8T* writeTime(UTF8T* at, const std::tm& time, long microseconds);

#endif   // TVXCMN_STRING_IMPL_FORMATDIGITS_H
