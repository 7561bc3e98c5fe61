// stringc.h: the library's one text value.
//
// A StringC is a one-word counted handle on a body that holds UTF-8. Copies share the body, and every
// change copies it first when it is shared, so a StringC behaves like a value and is passed like a
// pointer. It is never null: an empty one holds the shared empty body. It has no pointer into itself
// and may be moved bytewise.
//
// Positions and lengths count characters (code points), never bytes; -1 is "not found".
//
// Thread safety: different handles from any threads, also on one body; one handle is unlocked.
#ifndef TVXCMN_STRINGC_H
#define TVXCMN_STRINGC_H

#include "basetypes.h"
#include "refcount.h"
#include "stringimpl.h"

#include <cstdarg>
#include <cstddef>

class StringArrayC;

class StringC {
public:
    // The names of the encodings.
    static constexpr const char* CC_ASCII = "ascii";         // 7-bit ASCII
    static constexpr const char* CC_SYS8 = "system-8";       // the system's 8-bit encoding, which is UTF-8
    static constexpr const char* CC_LATIN1 = "iso-8859-1";   // ISO/IEC 8859-1
    static constexpr const char* CC_UTF8 = "utf8";           // UTF-8, checked
    static constexpr const char* CC_VALID_UTF8 = "vutf8";    // UTF-8 that the caller vouches for; input only
    static constexpr const char* CC_UTF16 = "utf16";         // UTF-16 in the machine's byte order
    static constexpr const char* CC_UTF16BE = "utf16be";     // UTF-16, big-endian
    static constexpr const char* CC_UTF16LE = "utf16le";     // UTF-16, little-endian
    static constexpr const char* CC_WCHART = "wchar_t";      // 4-byte wide characters (UTF-32)

    // Construction. A null text is empty. Bytes that the encoding does not allow are assertions and
    // become U+FFFD; an unknown encoding is the assertion "encoding" and gives an empty text. `factory`
    // makes the body; null stands for the library's own.
    StringC() : StringC(*emptyBody()) {}
    StringC(const char* text, const char* encoding = CC_SYS8, StringImplFactoryI* factory = nullptr);
    StringC(const U8BitT* text, const char* encoding = CC_SYS8, StringImplFactoryI* factory = nullptr);
    StringC(const char* bytes, size_t len, const char* encoding, StringImplFactoryI* factory = nullptr);
    StringC(const U8BitT* bytes, size_t len, const char* encoding, StringImplFactoryI* factory = nullptr);
    StringC(UCS4 ch, StringImplFactoryI* factory = nullptr);
    StringC(const UTF16T* text, StringImplFactoryI* factory = nullptr);
    StringC(const char16_t* text, StringImplFactoryI* factory = nullptr);
    StringC(const wchar_t* text, StringImplFactoryI* factory = nullptr);
    StringC(const wchar_t* text, size_t n, StringImplFactoryI* factory = nullptr);
    StringC(const StringC& a, const StringC& b, StringImplFactoryI* factory = nullptr);   // a followed by b
    StringC(StringImplI& impl) : str(&impl) {}

    StringC(const StringC& other) = default;
    StringC(StringC&& other) noexcept : StringC() { swap(other); }   // leaves `other` empty
    StringC& operator=(const StringC& other) = default;
    StringC& operator=(StringC&& other) noexcept;
    ~StringC() = default;

    void swap(StringC& other) noexcept;

    // The body, still owned by the handle.
    StringImplI& impl() const noexcept { return *str; }

    long length() const { return str->length(); }
    bool isEmpty() const { return str->isEmpty() != 0; }
    // The character at `index`; 0 when there is none ("n >= 0" below, "!nchar" beyond the text, where
    // the character count of a text that is known to be ASCII is 0 in silence).
    UCS4 operator[](long index) const { return (*str)[index]; }

    // Encoded forms, terminated. What an accessor returns goes back through its ...Release; the "utf8"
    // pointer is the body's own buffer, good until the text is changed or its last handle goes. The
    // ...Bytes forms give the size in bytes without terminator.
    const char* utf8() const { return reinterpret_cast<const char*>(encoded(CC_UTF8)); }
    size_t utf8Bytes() const { return str->encodedBytes(CC_UTF8); }
    void utf8Release(const char*) const {}   // nothing to give back: utf8() handed out the body's own
    const char* sys8() const { return reinterpret_cast<const char*>(encoded(CC_SYS8)); }
    size_t sys8Bytes() const { return str->encodedBytes(CC_SYS8); }
    void sys8Release(const char* p) const { release(p, CC_SYS8); }
    const char* latin1() const { return reinterpret_cast<const char*>(encoded(CC_LATIN1)); }
    size_t latin1Bytes() const { return str->encodedBytes(CC_LATIN1); }
    void latin1Release(const char* p) const { release(p, CC_LATIN1); }
    const UTF16T* utf16() const { return reinterpret_cast<const UTF16T*>(encoded(CC_UTF16)); }
    size_t utf16Bytes() const { return str->encodedBytes(CC_UTF16); }
    void utf16Release(const UTF16T* p) const { release(p, CC_UTF16); }
    const wchar_t* wchart() const { return reinterpret_cast<const wchar_t*>(encoded(CC_WCHART)); }
    size_t wchartBytes() const { return str->encodedBytes(CC_WCHART); }
    void wchartRelease(const wchar_t* p) const { release(p, CC_WCHART); }
    // Writes the terminated text into `buffer` of `size` bytes, cut short if need be, and sets `size` to
    // the full size without terminator; a null buffer of size 0 asks for that alone. A character that the end
    // of the text cuts becomes U+FFFD. False if a character could not be represented, or the encoding is unknown.
    bool convertTo(U8BitT* buffer, size_t& size, const char* encoding) const
    {
        return str->encodeInto(buffer, size, encoding) != 0;
    }

    // Comparison: below 0, 0 or above 0. compare goes by code point, collate ignores case, compareNat
    // takes runs of decimal digits as numbers.
    int compare(const StringC& other) const { return str->compare(*other.str); }
    int collate(const StringC& other) const { return str->collate(*other.str); }
    int compareNat(const StringC& other, bool case_indep = false) const
    {
        return str->compareNat(*other.str, case_indep);
    }
    bool operator==(const StringC& other) const;   // equal character counts and compare 0
    bool operator!=(const StringC& other) const { return !(*this == other); }
    bool equalCI(const StringC& other) const;   // equal character counts and collate 0

    // Searching. `after` and `before` are exclusive; -1 stands for the start or the end.
    long find(UCS4 ch, long after = -1) const { return str->find(ch, after); }
    long rfind(UCS4 ch, long before = -1) const { return str->rfind(ch, before); }
    long find(const StringC& text, long after = -1) const { return str->find(*text.str, after); }
    long rfind(const StringC& text, long before = -1) const { return str->rfind(*text.str, before); }
    long findAny(const StringC& set, long after = -1) const { return str->findAny(*set.str, after); }
    long rfindAny(const StringC& set, long before = -1) const { return str->rfindAny(*set.str, before); }
    long findNot(const StringC& set, long after = -1) const { return str->findNot(*set.str, after); }
    long rfindNot(const StringC& set, long before = -1) const { return str->rfindNot(*set.str, before); }

    // Parts, as new values. `len` -1 reaches to the end.
    StringC substr(size_t at, long len = -1) const;
    StringC head(long n) const { return substr(0, n); }
    StringC tail(long n) const { return substr(static_cast<size_t>(length() - n), n); }

    // Changes, each of which first copies a shared body.
    StringC& operator+=(const StringC& text);
    StringC& operator+=(UCS4 ch);
    StringC operator+(const StringC& text) const;
    void insert(size_t at, const StringC& text);
    void remove(size_t at, long len = -1);
    StringC& toUpper();
    StringC& toLower();
    // Removes characters of `set` from the front or the end.
    StringC& ltrim(const StringC& set);
    StringC& rtrim(const StringC& set);

    // Copies with a change applied.
    StringC asUpper() const;
    StringC asLower() const;
    // Each character of `from_chars` replaced by the one at the same place in `to_chars`; only the first
    // after `after` unless `do_all`. Lists of different lengths are an assertion, after which the
    // longer `from_chars` is cut.
    StringC transform(const StringC& from_chars, const StringC& to_chars, bool do_all = true, long after = -1) const;
    // Each `from_str` after `after` replaced by `to_str`; only the first one unless `do_all`.
    StringC substitute(const StringC& from_str, const StringC& to_str, bool do_all = true, long after = -1,
                       bool ignore_case = false) const;
    // `escapeChar` put in front of itself and of each character of `chars`, and taken away again: what
    // follows an escape character is literal, one at the very end is dropped.
    StringC PrefixEscape(const StringC& chars, UCS4 escapeChar) const;
    StringC PrefixUnescape(UCS4 escapeChar) const;

    // Hashes. hashCode: of the UTF-8 bytes. hashCodeCI: equal for texts that are equalCI.
    HashValT hashCode() const;
    HashValT hashCodeCI() const;

    // The number that the text begins with, in `radix` 2 to 36 (1: a tally of ones; 0: by its prefix 0b,
    // 0x or 0, else decimal), with white space around it and a sign in front. *err_return (may be null)
    // is set to 0 or to one of (errornumbers.h)
    //   TVXERR_NUMBER_TRAILING_TEXT  other text follows (the number is returned all the same)
    //   TVXERR_NUMBER_MISSING  no number at all      TVXERR_NUMBER_TOO_LARGE
    //   TVXERR_NUMBER_NOT_A_DIGIT                    TVXERR_NUMBER_BAD_RADIX  outside 0 to 36
    // and *scanned (may be null) to the index where reading stopped.
    long long asLongLong(long* err_return = nullptr, int radix = 10, size_t* scanned = nullptr) const;
    long asLong(long* err_return = nullptr, int radix = 10, size_t* scanned = nullptr) const;
    // True for "TRUE", "T", "1", "YES", "ON", "OK", "ENABLED" and "ACTIVE" in any case.
    bool asBoolean() const;

    // The parts between characters of `delimiters`, in a new array that the caller deletes. Empty parts are
    // left out unless `allowEmpty`; blanks and tabs around a part are taken off if `stripWhite`. When an
    // `escapeCharacter` is given, a delimiter right behind one does not divide, and both stay in the part.
    [[nodiscard]] StringArrayC* split(const StringC& delimiters, bool stripWhite = false, bool allowEmpty = false,
                                      UCS4 escapeCharacter = 0xFFFF) const;

    // Formatting (arglist.h). A format is text with directives:
    //     %[0][N$][flags][0][width][.precision][modifiers]conversion, or %[0]width[.precision]...conversion
    //   N$         takes the N-th argument; a later directive without one takes those behind it
    //   flags      - left-justified, # with prefix, + and blank: sign of what is not negative
    //   0          pads numbers with zeros to the width (unless the precision is above 0), texts with "0"
    //   width      minimum of characters; * takes it from the next argument, *N$ from the N-th; negative
    //              turns to the left
    //   precision  minimum of digits (at least 1, at most 64), or maximum of a text's characters; as width
    //   modifiers  of h l j z q L, ignored: arguments know their own size
    //   d i        signed decimal; a 16-bit or 32-bit unsigned argument is taken for a signed one of its size
    //   u o x X b  unsigned decimal, octal, hexadecimal, binary; the same the other way round
    //   c C        a character: Unsigned32 and UCS4 in full, of other integers the lowest byte
    //   s          text: String, or CharStar in the system's encoding
    //   S          text: String, CharStar, UCS4, or Guid as {01234567-89AB-...}
    //   p          pointer: ObjRef or CharStar, 0x and 16 digits
    //   t          local date and time of a TimeVal or DateTime, "2001/02/28 23:59:59"; a precision above 20
    //              shows the second's fraction (D and T: beyond 9 for T, never for D)
    //   D T        the current local date, "2001/02/28", and time, "23:59:59"
    //   !          the system's text for the errno of the moment when formatting begins
    //   %          a percent sign
    // A missing argument ("a != 0"), one of the wrong kind ("Type mismatch in string formatting") and a
    // character that is no conversion ("Invalid conversion specifier in StringImplC::format()!") fail;
    // then 0, an empty text, a blank or the character itself stand there. The format ends at a zero.
    static StringC format(const StringC& fmt, ArgListC args);
    // Gives the characters of the result to `emit`, one after the other.
    static void format(void (*emit)(void* ctx, UCS4 ch), void* ctx, const StringC& fmt, ArgListC args);
    // This text as the format: fmt % (ArgList << 1 << "two").
    StringC operator%(ArgListC args) const;

    // The list that `fmt` needs, filled from C arguments: int for c, d, i and *, unsigned for u, o, x, X, b
    // (h, hh, l and ll say another width), const char* for s, timeval for t, a pointer for p, UCS4 for C, and
    // for S the address of a StringC. `ap` itself is not moved. At most 128 arguments are read. A position that no
    // directive names is taken for an int ("Missing parameter in positional StringC::formatArgs, assuming
    // int"); "Illegal formatting character in formatArgs()" for what is no conversion here: it reads nothing.
    static ArgListC formatArgs(const StringC& fmt, std::va_list ap);

private:
    static StringImplI* emptyBody();
    static StringImplFactoryI* orDefault(StringImplFactoryI* factory);
    const U8BitT* encoded(const char* encoding) const;
    void release(const void* p, const char* encoding) const;
    void Unshare();

    RefM<StringImplI> str;
};

static_assert(sizeof(StringC) == sizeof(void*), "a StringC is one word");

#endif   // TVXCMN_STRINGC_H
