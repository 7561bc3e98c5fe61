#include "string/impl/formatdigits.h"

#include <algorithm>
#include <cstring>

namespace {

// The two digits of 0 to 99.
const char PAIRS[] = "0001020304050607080910111213141516171819"
                     "2021222324252627282930313233343536373839"
                     "4041424344454647484950515253545556575859"
                     "6061626364656667686970717273747576777879"
                     "8081828384858687888990919293949596979899";

// The last two digits of a number.
UTF8T* writePair(UTF8T* at, long number)
{
    std::memcpy(at, PAIRS + 2 * (static_cast<unsigned long>(number) % 100), 2);
    return at + 2;
}

// The smallest number of n + 1 digits.
struct PowersT {
    constexpr PowersT()
    {
        for (int n = 1; n < MAX_DECIMAL_DIGITS; ++n) of[n] = n > 1 ? of[n - 1] * 10 : 10;
    }
    unsigned long of[MAX_DECIMAL_DIGITS] = {};
};
constexpr PowersT POWERS;

UTF8T* writeField(UTF8T* at, char separator, long number)
{
    *at++ = static_cast<UTF8T>(separator);
    return writePair(at, number);
}

}   // namespace

UTF8T* writeDecimal(UTF8T* end, unsigned long value)
{
    for (; value >= 100; value /= 100) {
        end -= 2;
        std::memcpy(end, PAIRS + 2 * (value % 100), 2);
    }
    if (value < 10) {
        *--end = static_cast<UTF8T>('0' + value);
        return end;
    }
    end -= 2;
    std::memcpy(end, PAIRS + 2 * value, 2);
    return end;
}

// The number of bits tells the number of digits, but for one.
int countDecimal(unsigned long value)
{
    const int bits = 64 - __builtin_clzl(value | 1);
    const int digits = bits * 1233 >> 12;   // log10(2) is about 1233 / 4096
    return digits + (value >= POWERS.of[digits] ? 1 : 0);
}

UTF8T* writeDigits(UTF8T* end, unsigned long value, const RadixT& radix)
{
    if (radix.bits == 0) return writeDecimal(end, value);
    const unsigned long mask = (1UL << radix.bits) - 1;
    do {
        *--end = static_cast<UTF8T>(radix.digits[value & mask]);
        value >>= radix.bits;
    } while (value != 0);
    return end;
}

UTF8T* writeDate(UTF8T* at, const std::tm& date)
{
    const long year = 1900L + date.tm_year;
    if (year < 0) *at++ = '-';
    UTF8T digits[20];
    UTF8T* const end = digits + sizeof digits;
    const UTF8T* const begin = writeDecimal(end, static_cast<unsigned long>(year < 0 ? -year : year));
    at = std::copy<const UTF8T*>(begin, end, at);
    at = writeField(at, '/', date.tm_mon + 1);
    return writeField(at, '/', date.tm_mday);
}

UTF8T* writeTime(UTF8T* at, const std::tm& time, long microseconds)
{
    at = writePair(at, time.tm_hour);
    at = writeField(at, ':', time.tm_min);
    at = writeField(at, ':', time.tm_sec);
    at = writeField(at, '.', microseconds / 10000);
    at = writePair(at, microseconds / 100);
    return writePair(at, microseconds);
}
