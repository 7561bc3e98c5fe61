#include "transcode.h"

#include "assertfatal.h"
#include "ucs4.h"
#include "utf16.h"
#include "utf8.h"
#include "utfkernels.h"
#include "wchars.h"

#include <algorithm>

namespace transcode {

namespace {

using utfkernels::ProgressT;

const UTF8T REPLACEMENT_UTF8[] = {0xEF, 0xBF, 0xBD};
const UTF8T UNREPRESENTABLE = '~';
const U8BitT MARK_LE[] = {0xFF, 0xFE};
const U8BitT MARK_BE[] = {0xFE, 0xFF};

void add(ResultT& result, const ProgressT& progress)
{
    result.consumed += progress.consumed;
    result.written += progress.written;
    result.chars += progress.chars;
}

// The well-formed prefix, copied.
ProgressT copyPrefix(size_t length, const U8BitT* in, U8BitT* out, size_t chars)
{
    std::copy_n(in, length, out);
    return {length, length, chars};
}

// Targets of a conversion from UTF-8. Each has
//   UNIT          the bytes of the smallest character
//   measure       kernel: the length of the well-formed prefix
//   convert       kernel: converts the well-formed prefix that fits
//   length(ch)    the bytes that a character takes, asserting what the length pass asserts
//   room(ch)      the same, silent
//   put           writes the character and says whether it could be represented

// One byte a character.
struct SingleByteM {
    static constexpr size_t UNIT = 1;
    static ProgressT measure(const UTF8T* in, size_t n)
    {
        ProgressT progress;
        progress.consumed = utfkernels::validPrefix(in, n, &progress.chars);
        progress.written = progress.chars;
        return progress;
    }
    static size_t length(UCS4) { return UNIT; }
    static size_t room(UCS4) { return UNIT; }
    static bool put(U8BitT* out, UCS4 ch, bool fits)
    {
        *out = fits ? static_cast<U8BitT>(ch) : UNREPRESENTABLE;
        return fits;
    }
};

struct AsciiTargetC : SingleByteM {
    static ProgressT convert(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
    {
        const size_t length = utfkernels::asciiPrefix(in, std::min(n, outSize));
        return copyPrefix(length, in, out, length);
    }
    static bool put(U8BitT* out, UCS4 ch)
    {
        return SingleByteM::put(out, ch, TVX_CHECK(UCS4IsASCII(ch), "UCS4IsASCII(ch)"));
    }
};

struct Latin1TargetC : SingleByteM {
    static ProgressT convert(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
    {
        return utfkernels::utf8ToLatin1(in, n, out, outSize);
    }
    static bool put(U8BitT* out, UCS4 ch)
    {
        return SingleByteM::put(out, ch, TVX_CHECK(UCS4IsLatin1(ch), "UCS4IsLatin1(ch)"));
    }
};

struct Utf8TargetC {
    static constexpr size_t UNIT = 1;
    static ProgressT measure(const UTF8T* in, size_t n)
    {
        ProgressT progress;
        progress.consumed = progress.written = utfkernels::validPrefix(in, n, &progress.chars);
        return progress;
    }
    static ProgressT convert(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
    {
        const ProgressT found = measure(in, std::min(n, outSize));
        return copyPrefix(found.consumed, in, out, found.chars);
    }
    static size_t length(UCS4 ch) { return UTF8Len(ch); }
    static size_t room(UCS4 ch) { return UTF8Len(ch); }
    static bool put(U8BitT* out, UCS4 ch)
    {
        UTF8Put(out, ch);
        return true;
    }
};

template <bool SWAP>
struct Utf16TargetM {
    static constexpr size_t UNIT = sizeof(UTF16T);
    static ProgressT measure(const UTF8T* in, size_t n) { return utfkernels::utf8ToUtf16Length(in, n); }
    static ProgressT convert(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
    {
        return utfkernels::utf8ToUtf16(in, n, out, outSize, SWAP);
    }
    static size_t length(UCS4 ch) { return UNIT * UTF16Len(ch); }
    static size_t room(UCS4 ch) { return ch > 0xFFFF && UCS4IsUnicode(ch) ? 2 * UNIT : UNIT; }
    static bool put(U8BitT* out, UCS4 ch)
    {
        UTF16T units[2];
        UTF16T* end = units;
        UTF16Put(end, ch, SWAP);
        std::memcpy(out, units, static_cast<size_t>(end - units) * UNIT);
        return UCS4IsUnicode(ch);
    }
};

struct WideTargetC {
    static constexpr size_t UNIT = sizeof(UCS4);
    static ProgressT measure(const UTF8T* in, size_t n)
    {
        ProgressT progress = Utf8TargetC::measure(in, n);
        progress.written = progress.chars * UNIT;
        return progress;
    }
    static ProgressT convert(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
    {
        return utfkernels::utf8ToWide(in, n, out, outSize);
    }
    static size_t length(UCS4) { return UNIT; }
    static size_t room(UCS4) { return UNIT; }
    static bool put(U8BitT* out, UCS4 ch)
    {
        wchar_t unit;
        wchar_t* end = &unit;
        WCharPut(end, ch);
        std::memcpy(out, &unit, UNIT);
        return true;
    }
};

template <class TargetT>
ResultT measureFromUtf8(const UTF8T* in, size_t n)
{
    ResultT result;
    for (;;) {
        add(result, TargetT::measure(in + result.consumed, n - result.consumed));
        const UTF8T* p = in + result.consumed;
        if (result.consumed == n || UTF8Len(p) > n - result.consumed) return result;
        result.written += TargetT::length(UTF8Get(p));
        result.consumed = static_cast<size_t>(p - in);
        ++result.chars;
    }
}

template <class TargetT>
ResultT convertFromUtf8(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    ResultT result;
    for (;;) {
        add(result, TargetT::convert(in + result.consumed, n - result.consumed, out + result.written,
                                     outSize - result.written));
        const UTF8T* p = in + result.consumed;
        if (result.consumed == n || outSize - result.written < TargetT::UNIT) return result;
        if (UTF8Len(p) > n - result.consumed) return result;
        const UCS4 ch = UTF8Get(p);
        const size_t room = TargetT::room(ch);
        if (room > outSize - result.written) return result;
        result.lossy |= !TargetT::put(out + result.written, ch);
        result.written += room;
        result.consumed = static_cast<size_t>(p - in);
        ++result.chars;
    }
}

// Sources of a conversion to UTF-8. Each has
//   measure       kernel: the UTF-8 length of the well-formed prefix
//   convert       kernel: converts the well-formed prefix that fits
//   charLen       the bytes of the first character
//   get           reads it and advances

template <bool SWAP>
struct Utf16SourceM {
    static constexpr size_t UNIT = sizeof(UTF16T);
    static ProgressT measure(const U8BitT* in, size_t n) { return utfkernels::utf16ToUtf8Length(in, n, SWAP); }
    static ProgressT convert(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
    {
        return utfkernels::utf16ToUtf8(in, n, out, outSize, SWAP);
    }
    static size_t charLen(const U8BitT* p, size_t available)
    {
        if (available < UNIT) return 2 * UNIT;
        UTF16T unit;
        std::memcpy(&unit, p, UNIT);
        return UNIT * UTF16Len(&unit, SWAP);
    }
    static UCS4 get(const U8BitT*& p)
    {
        UTF16T units[2] = {0, 0};
        std::memcpy(units, p, charLen(p, UNIT));
        const UTF16T* end = units;
        const UCS4 ch = UTF16Get(end, SWAP);
        p += static_cast<size_t>(end - units) * UNIT;
        return ch;
    }
};

struct WideSourceC {
    static constexpr size_t UNIT = sizeof(UCS4);
    static ProgressT measure(const U8BitT* in, size_t n) { return utfkernels::wideToUtf8Length(in, n); }
    static ProgressT convert(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
    {
        return utfkernels::wideToUtf8(in, n, out, outSize);
    }
    static size_t charLen(const U8BitT*, size_t available) { return available < UNIT ? 2 * UNIT : UNIT; }
    static UCS4 get(const U8BitT*& p)
    {
        wchar_t unit;
        std::memcpy(&unit, p, UNIT);
        p += UNIT;
        const wchar_t* end = &unit;
        return WCharGet(end);
    }
};

template <class SourceT>
ResultT measureToUtf8(const U8BitT* in, size_t n)
{
    ResultT result;
    for (;;) {
        add(result, SourceT::measure(in + result.consumed, n - result.consumed));
        const U8BitT* p = in + result.consumed;
        if (SourceT::charLen(p, n - result.consumed) > n - result.consumed) return result;
        const size_t length = UTF8Len(SourceT::get(p));
        result.written += length;
        result.consumed = static_cast<size_t>(p - in);
        if (length > 0) ++result.chars;
    }
}

template <class SourceT>
ResultT convertToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    ResultT result;
    for (;;) {
        add(result, SourceT::convert(in + result.consumed, n - result.consumed, out + result.written,
                                     outSize - result.written));
        const U8BitT* p = in + result.consumed;
        if (SourceT::charLen(p, n - result.consumed) > n - result.consumed) return result;
        const UCS4 ch = SourceT::get(p);
        const size_t length = UTF8Len(ch);
        if (length > outSize - result.written) return result;
        UTF8T* end = out + result.written;
        UTF8Put(end, ch);
        result.written += length;
        result.consumed = static_cast<size_t>(p - in);
        if (length > 0) ++result.chars;
    }
}

ResultT asciiToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    ResultT result = {n, 0, n, false};
    for (size_t at = 0;;) {
        const size_t ascii = utfkernels::asciiPrefix(in + at, std::min(n - at, outSize - result.written));
        std::copy_n(in + at, ascii, out + result.written);
        at += ascii;
        result.written += ascii;
        if (at == n || result.written == outSize) return result;
        const U8BitT ch = in[at++];
        if (!TVX_CHECK(!(ch & 0x80), "!(ch & 0x80)")) {
            if (sizeof REPLACEMENT_UTF8 > outSize - result.written) return result;
            std::memcpy(out + result.written, REPLACEMENT_UTF8, sizeof REPLACEMENT_UTF8);
            result.written += sizeof REPLACEMENT_UTF8;
        }
    }
}

bool isUtf16(FormatT format)
{
    return format == FormatT::UTF16 || format == FormatT::UTF16LE || format == FormatT::UTF16BE;
}

// What a decoder does with one piece, given whether it decodes or only measures.
template <class ConvertT>
ResultT decodePiece(FormatT from, const U8BitT* in, size_t n, ConvertT convert)
{
    size_t markSize = 0;
    if (isUtf16(from) && n >= sizeof(UTF16T)) {
        const Utf16StartT start = utf16Start(from, in);
        from = start.order;
        markSize = start.markSize;
    }
    ResultT result = convert(from, in + markSize, n - markSize);
    result.consumed += markSize;
    storable(0, n - result.consumed, keptCapacity(from));
    return result;
}

}   // namespace

ResultT fromUtf8Length(FormatT to, const UTF8T* in, size_t n)
{
    switch (to) {
    case FormatT::ASCII:
    case FormatT::LATIN1: return measureFromUtf8<SingleByteM>(in, n);
    case FormatT::UTF8: return measureFromUtf8<Utf8TargetC>(in, n);
    case FormatT::WIDE: return measureFromUtf8<WideTargetC>(in, n);
    default: return measureFromUtf8<Utf16TargetM<false>>(in, n);
    }
}

ResultT fromUtf8(FormatT to, const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    switch (to) {
    case FormatT::ASCII: return convertFromUtf8<AsciiTargetC>(in, n, out, outSize);
    case FormatT::LATIN1: return convertFromUtf8<Latin1TargetC>(in, n, out, outSize);
    case FormatT::UTF8: return convertFromUtf8<Utf8TargetC>(in, n, out, outSize);
    case FormatT::UTF16BE: return convertFromUtf8<Utf16TargetM<true>>(in, n, out, outSize);
    case FormatT::WIDE: return convertFromUtf8<WideTargetC>(in, n, out, outSize);
    default: return convertFromUtf8<Utf16TargetM<false>>(in, n, out, outSize);
    }
}

ResultT toUtf8Length(FormatT from, const U8BitT* in, size_t n)
{
    switch (from) {
    case FormatT::ASCII: return {n, n + (sizeof REPLACEMENT_UTF8 - 1) * utfkernels::countHigh(in, n), n, false};
    case FormatT::LATIN1: return {n, n + utfkernels::countHigh(in, n), n, false};
    case FormatT::UTF8: return measureFromUtf8<Utf8TargetC>(in, n);
    case FormatT::UTF16BE: return measureToUtf8<Utf16SourceM<true>>(in, n);
    case FormatT::WIDE: return measureToUtf8<WideSourceC>(in, n);
    default: return measureToUtf8<Utf16SourceM<false>>(in, n);
    }
}

ResultT toUtf8(FormatT from, const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    switch (from) {
    case FormatT::ASCII: return asciiToUtf8(in, n, out, outSize);
    case FormatT::LATIN1: return {n, utfkernels::latin1ToUtf8(in, n, out, outSize).written, n, false};
    case FormatT::UTF8: return convertFromUtf8<Utf8TargetC>(in, n, out, outSize);
    case FormatT::UTF16BE: return convertToUtf8<Utf16SourceM<true>>(in, n, out, outSize);
    case FormatT::WIDE: return convertToUtf8<WideSourceC>(in, n, out, outSize);
    default: return convertToUtf8<Utf16SourceM<false>>(in, n, out, outSize);
    }
}

size_t charLen(FormatT format, const U8BitT* p, size_t available)
{
    switch (format) {
    case FormatT::ASCII:
    case FormatT::LATIN1: return 1;
    case FormatT::UTF8: return available > 0 ? UTF8Len(p) : 1;
    case FormatT::UTF16BE: return Utf16SourceM<true>::charLen(p, available);
    case FormatT::WIDE: return WideSourceC::charLen(p, available);
    default: return Utf16SourceM<false>::charLen(p, available);
    }
}

size_t maxDecodedLength(FormatT format, size_t n)
{
    switch (format) {
    case FormatT::ASCII:
    case FormatT::UTF8: return n * 3;
    case FormatT::LATIN1: return n * 2;
    case FormatT::WIDE: return n / sizeof(UCS4) * 6;
    default: return n / sizeof(UTF16T) * 4;
    }
}

size_t keptCapacity(FormatT format)
{
    switch (format) {
    case FormatT::ASCII:
    case FormatT::LATIN1: return 0;
    case FormatT::UTF8: return 6;
    case FormatT::WIDE: return 2 * sizeof(UCS4);
    default: return 2 * sizeof(UTF16T);
    }
}

size_t storable(size_t kept, size_t count, size_t capacity)
{
    return TVX_CHECK(kept + count <= capacity, "(numUnusedBytes + unusedCount) <= maxUnusedBytes") ? count
                                                                                                   : capacity - kept;
}

Utf16StartT utf16Start(FormatT format, const U8BitT* in)
{
    const auto beginsWith = [in](const U8BitT* mark) { return std::memcmp(in, mark, sizeof MARK_LE) == 0; };
    if (format == FormatT::UTF16) format = beginsWith(MARK_BE) ? FormatT::UTF16BE : FormatT::UTF16LE;
    const bool isMarked = beginsWith(format == FormatT::UTF16BE ? MARK_BE : MARK_LE);
    return {format, isMarked ? sizeof MARK_LE : 0};
}

size_t encodedLength(FormatT to, const UTF8T* in, size_t n) { return fromUtf8Length(to, in, n).written; }

size_t encode(FormatT to, const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* lossy)
{
    const ResultT result = fromUtf8(to, in, n, out, outSize);
    storable(0, n - result.consumed, keptCapacity(FormatT::UTF8));
    if (lossy != nullptr) *lossy = result.lossy;
    return result.written;
}

size_t decodedLength(FormatT from, const U8BitT* in, size_t n)
{
    return decodePiece(from, in, n, toUtf8Length).written;
}

size_t decode(FormatT from, const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars)
{
    const ResultT result = decodePiece(
        from, in, n, [=](FormatT order, const U8BitT* p, size_t left) { return toUtf8(order, p, left, out, outSize); });
    if (numChars != nullptr) *numChars = result.chars;
    return result.written;
}

}   // namespace transcode
