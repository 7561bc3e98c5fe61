// Numbers and truth values read from texts.

#include "cstrings.h"
#include "errornumbers.h"
#include "string/api/textbytes.h"
#include "stringc.h"
#include "ucs4.h"
#include "utf8.h"

#include <climits>
#include <cstring>
#include <initializer_list>

namespace {

const UCS4 NO_BREAK_SPACE = 0xA0;

bool IsWhite(UCS4 ch) { return ch == ' ' || ch == '\t' || ch == '\n' || ch == '\r' || ch == NO_BREAK_SPACE; }

// The value of a Latin letter as a digit, A or a being 10; -1 for anything else.
int HexAlpha(UCS4 ch)
{
    if (ch >= 'A' && ch <= 'Z') return static_cast<int>(ch - 'A') + 10;
    if (ch >= 'a' && ch <= 'z') return static_cast<int>(ch - 'a') + 10;
    return -1;
}

int DecimalDigit(UCS4 ch) { return ch - '0' < 10 ? static_cast<int>(ch - '0') : ch < 0x80 ? -1 : UCS4Digit(ch); }

// The value of a digit of a base, or -1. Base 1 is a tally: it also counts the digit 1.
int Digit(UCS4 ch, int base)
{
    int value = DecimalDigit(ch);
    if (value < 0 && base > 10) value = HexAlpha(ch);
    return value < base || (base == 1 && value == 1) ? value : -1;
}

// Walks over a text; `index` counts the characters passed.
class NumberReaderC {
public:
    explicit NumberReaderC(const StringC& text) : m_text(text), m_next(m_text.begin) {}

    bool atEnd() const { return m_next >= m_text.end; }
    UCS4 peek() const
    {
        const UTF8T* p = m_next;
        return *p < 0x80 ? *p : UTF8Get(p);
    }
    UCS4 get()
    {
        ++index;
        return *m_next < 0x80 ? *m_next++ : UTF8Get(m_next);
    }
    void skipWhite()
    {
        while (!atEnd() && IsWhite(peek())) get();
    }

    // Reads the whole number. Returns 0 or an error; after errors other than TVXERR_NUMBER_TRAILING_TEXT and a passed
    // limit the value is 0.
    long read(int radix, unsigned long long& value);

    size_t index = 0;

private:
    bool readSign();
    int readBase(int radix);
    long readDigits(int base, unsigned long long& value);

    TextBytesT m_text;
    const UTF8T* m_next;
};

bool NumberReaderC::readSign()
{
    const UCS4 ch = peek();
    if (ch != '+' && ch != '-') return false;
    get();
    skipWhite();
    return ch == '-';
}

// The base that a prefix announces, or `radix`; passes over "0b" and "0x" only.
int NumberReaderC::readBase(int radix)
{
    const NumberReaderC before(*this);
    if (DecimalDigit(get()) == 0 && !atEnd()) {
        const UCS4 letter = get() | 0x20;
        if (letter == 'b' && (radix == 0 || radix == 2)) return 2;
        if (letter == 'x' && (radix == 0 || radix == 16)) return 16;
        if (radix == 0) radix = 8;
    }
    *this = before;
    return radix != 0 ? radix : 10;
}

long NumberReaderC::readDigits(int base, unsigned long long& value)
{
    if (Digit(peek(), base) < 0) return TVXERR_NUMBER_NOT_A_DIGIT;
    for (int digit; !atEnd() && (digit = Digit(peek(), base)) >= 0;) {
        get();
        if (__builtin_mul_overflow(value, static_cast<unsigned long long>(base), &value) ||
            __builtin_add_overflow(value, static_cast<unsigned long long>(digit), &value)) {
            value = 0;
            return TVXERR_NUMBER_TOO_LARGE;
        }
    }
    return 0;
}

long NumberReaderC::read(int radix, unsigned long long& value)
{
    value = 0;
    if (radix < 0 || radix > 36) return TVXERR_NUMBER_BAD_RADIX;
    skipWhite();
    if (atEnd()) return TVXERR_NUMBER_MISSING;
    const bool isNegative = readSign();
    if (atEnd()) return TVXERR_NUMBER_MISSING;
    const int base = readBase(radix);
    if (atEnd()) return TVXERR_NUMBER_MISSING;
    const long failure = readDigits(base, value);
    if (failure != 0) return failure;
    skipWhite();

    const unsigned long long limit = static_cast<unsigned long long>(LLONG_MAX) + (isNegative ? 1 : 0);
    const bool isOutOfRange = value > limit;
    if (isNegative) value = 0 - value;
    if (isOutOfRange) return TVXERR_NUMBER_TOO_LARGE;
    return atEnd() ? 0 : TVXERR_NUMBER_TRAILING_TEXT;
}

}   // namespace

long long StringC::asLongLong(long* err_return, int radix, size_t* scanned) const
{
    NumberReaderC reader(*this);
    unsigned long long value = 0;
    const long failure = reader.read(radix, value);
    if (err_return != nullptr) *err_return = failure;
    if (scanned != nullptr) *scanned = reader.index;
    return static_cast<long long>(value);
}

long StringC::asLong(long* err_return, int radix, size_t* scanned) const
{
    static_assert(sizeof(long) == sizeof(long long), "one range for both");
    return static_cast<long>(asLongLong(err_return, radix, scanned));
}

bool StringC::asBoolean() const
{
    const TextBytesT bytes(*this);
    for (const char* word : {"TRUE", "T", "1", "YES", "ON", "OK", "ENABLED", "ACTIVE"}) {
        const size_t size = std::strlen(word);
        if (bytes.size() == size && StrCompareCIN(reinterpret_cast<const char*>(bytes.begin), word, size) == 0)
            return true;
    }
    return false;
}
