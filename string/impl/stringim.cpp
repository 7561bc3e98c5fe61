#include "string/impl/stringim.h"

#include "assertfatal.h"
#include "string/api/utfkernels.h"
#include "string/impl/casemapping.h"
#include "string/impl/textview.h"
#include "utf8.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace {

// Up to this size the text lies behind its body. Room there is lost when the text outgrows it.
const size_t MOST_ROOM = 256;

// What stands, in UTF-8, for a character that the end of a text cuts: U+FFFD. The terminator follows.
const UTF8T CUT_END[] = {0xEF, 0xBF, 0xBD, 0};

void* orDie(void* p)
{
    if (__builtin_expect(p == nullptr, 0)) Fatal(1, "Out of memory");
    return p;
}

// An upper bound of the UTF-8 bytes that `len` well-formed bytes in an encoding become.
size_t boundOf(size_t len, EncodingNameT encoding)
{
    return encoding == ENCODING_ASCII || encoding == ENCODING_VALID_UTF8 || isCheckedUTF8(encoding) ? len : 2 * len;
}

// Whether a short text is ASCII, as most are; longer ones are left to the kernels.
bool isShortASCII(const U8BitT* bytes, size_t len)
{
    const size_t most = 64;
    if (len > most) return false;
    uint64_t bits = 0;
    size_t at = 0;
    for (; len - at >= 8; at += 8) bits |= loadEight(bytes + at);
    for (; at < len; ++at) bits |= bytes[at];
    return areASCII(bits);
}

// Whether bytes in an encoding are taken as they stand. *chars is set to their number of characters, or
// to -1 where nobody looks at them.
bool isCopied(const U8BitT* bytes, size_t len, EncodingNameT encoding, long* chars)
{
    size_t counted = len;
    if (encoding == ENCODING_VALID_UTF8) {
        *chars = -1;
        return true;
    }
    if (!holdsASCIIAsBytes(encoding)) return false;
    if (!isShortASCII(bytes, len)) {
        const size_t taken = isCheckedUTF8(encoding) ? utfkernels::validPrefix(bytes, len, &counted)
                                                     : utfkernels::asciiPrefix(bytes, len);
        if (taken != len) return false;
    }
    *chars = static_cast<long>(counted);
    return true;
}

}   // namespace

const UTF8T StringImplC::NO_TEXT[1] = {0};

// ---- life -------------------------------------------------------------------------------------------

StringImplC::StringImplC(uint32_t room) noexcept : StringImplC(room, NO_TEXT, 0, -1) {}

StringImplC::StringImplC(uint32_t room, const UTF8T* text, size_t size, long chars) noexcept
    : data(ownRoom()), numChars(chars), numBytes(size), numAlloc(room), m_room(room)
{
    std::memcpy(data, text, size);
    data[size] = 0;
}

StringImplC::StringImplC(const U8BitT* bytes, size_t len, const char* encoding)
{
    convertFrom(bytes, len, encodingNamed(encoding));
}

StringImplC::StringImplC(const StringImplC& other) : StringImplI(), RefCountC()
{
    copyFrom(other.begin(), other.numBytes, other.knownChars());
}

StringImplC::~StringImplC()
{
    if (hasOwnBuffer()) std::free(data);
}

// Allocations come in steps of 16 bytes, 8 of which are the allocator's: the room takes what is left.
template <class... ArgumentsM>
StringImplC* StringImplC::make(size_t room, ArgumentsM... arguments)
{
    const size_t total = ((sizeof(StringImplC) + room + 7) | 15) - 7;
    return ::new (operator new(total)) StringImplC(static_cast<uint32_t>(total - sizeof(StringImplC)), arguments...);
}

StringImplC* StringImplC::createEmpty(size_t bytes) { return make(bytes < MOST_ROOM ? bytes + 1 : 1); }

StringImplC* StringImplC::create(const U8BitT* bytes, size_t len, EncodingNameT encoding)
{
    long chars = -1;
    if (len != 0 && len < MOST_ROOM && bytes != nullptr && isCopied(bytes, len, encoding, &chars)) {
        return make(len + 1, bytes, len, chars);
    }
    StringImplC* const body = createEmpty(boundOf(len, encoding));
    body->convertFrom(bytes, len, encoding);
    return body;
}

StringImplC* StringImplC::createUTF8(const UTF8T* bytes, size_t n, size_t chars)
{
    StringImplC* const body = createEmpty(n);
    body->copyFrom(bytes, n, static_cast<long>(chars));
    return body;
}

StringImplC* StringImplC::create(const StringImplI& a, const StringImplI& b)
{
    const TextViewT first(a);
    const TextViewT second(b);
    StringImplC* const body = createEmpty(first.size + second.size);
    body->resize(first.size + second.size + 1);
    std::memcpy(body->data, first.begin, first.size);
    std::memcpy(body->data + first.size, second.begin, second.size);
    body->setText(first.size + second.size, a.length() + b.length());
    return body;
}

void* StringImplC::operator new(size_t size) { return orDie(std::malloc(size)); }

void StringImplC::operator delete(void* p) { std::free(p); }

// A body with a count of 0 is known to its maker alone: its first handle needs no atomic step.
void StringImplC::AddRef()
{
    if (GetRefCount() == 0) {
        startCount();
    } else {
        RefCountC::AddRef();
    }
}

void StringImplC::Release() { RefCountC::Release(); }

// ---- the buffer -------------------------------------------------------------------------------------

bool StringImplC::hasOwnBuffer() const noexcept
{
    return m_room == 0 || data != reinterpret_cast<const UTF8T*>(this + 1);
}

void StringImplC::reset() noexcept
{
    if (hasOwnBuffer()) std::free(data);
    data = m_room != 0 ? ownRoom() : nullptr;
    numAlloc = m_room;
    numBytes = 0;
    if (data != nullptr) data[0] = 0;
    numChars.store(-1, std::memory_order_relaxed);
    forgetPos();
    m_shape.store(SHAPE_UNKNOWN, std::memory_order_relaxed);
}

// Grows by half, in steps of 32 bytes, so that repeated appends stay linear; never shrinks.
void StringImplC::resize(size_t minimum)
{
    if (!TVX_CHECK(numBytes < minimum, "numBytes < minimum")) return;
    if (numAlloc >= minimum) return;

    const size_t grown = numAlloc != 0 ? ((numAlloc + numAlloc / 2) | 31) + 1 : 0;
    numAlloc = std::max(grown, ((minimum - 1) | 7) + 1);
    if (hasOwnBuffer()) {
        const bool isNew = data == nullptr;
        data = static_cast<UTF8T*>(orDie(std::realloc(data, numAlloc)));
        if (isNew) data[0] = 0;
    } else {
        data = static_cast<UTF8T*>(std::memcpy(orDie(std::malloc(numAlloc)), data, numBytes + 1));
    }
}

// Declares that the buffer holds a new text of `bytes` bytes and `chars` characters (-1: not counted).
void StringImplC::setText(size_t bytes, long chars) noexcept
{
    numBytes = bytes;
    data[bytes] = 0;
    numChars.store(chars, std::memory_order_relaxed);
    forgetPos();
    m_shape.store(SHAPE_UNKNOWN, std::memory_order_relaxed);
}

// ---- from other encodings ---------------------------------------------------------------------------

void StringImplC::convertFrom(const U8BitT* bytes, size_t len, EncodingNameT encoding)
{
    if (!TVX_CHECK(!isShared(), "!isShared()")) return;
    reset();
    if (len != 0 && !TVX_CHECK(bytes != nullptr, "p_data != __null")) len = 0;
    if (len == 0) {
        resize(1);
        setText(0, 0);
        return;
    }
    long chars = -1;
    if (isCopied(bytes, len, encoding, &chars)) {
        copyFrom(bytes, len, chars);
    } else {
        decodeFrom(bytes, len, encoding);
    }
}

void StringImplC::copyFrom(const U8BitT* bytes, size_t len, long chars)
{
    resize(len + 1);
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): resize has made room
    std::memcpy(data, bytes, len);
    setText(len, chars);
}

void StringImplC::decodeFrom(const U8BitT* bytes, size_t len, EncodingNameT encoding)
{
    if (!TVX_CHECK(isConvertible(encoding), "encoding")) return;
    const transcode::FormatT format = formatOf(encoding);
    const size_t size = transcode::decodedLength(format, bytes, len);
    resize(size + 1);
    size_t chars = 0;
    transcode::decode(format, bytes, len, data, size, &chars);
    setText(size, static_cast<long>(chars));
}

// ---- into other encodings ---------------------------------------------------------------------------

size_t StringImplC::encodedBytes(const char* encoding) const
{
    if (isUTF8Name(encoding)) return numBytes;
    const EncodingNameT e = encodingNamed(encoding);
    if (!TVX_CHECK(isConvertible(e), "e")) return 0;
    return transcode::encodedLength(formatOf(e), begin(), numBytes);
}

// The terminator is converted with the text, so what comes out ends in a zero unit of the right width. A
// cut character takes the terminator for its own next byte, and is left over together with it.
size_t StringImplC::terminatedSize(transcode::FormatT format) const
{
    const transcode::ResultT whole = transcode::fromUtf8Length(format, begin(), numBytes + 1);
    if (whole.consumed > numBytes) return whole.written;
    return whole.written + transcode::encodedLength(format, CUT_END, sizeof CUT_END);
}

bool StringImplC::encodeTerminated(transcode::FormatT format, U8BitT* out, size_t size) const
{
    const transcode::ResultT whole = transcode::fromUtf8(format, begin(), numBytes + 1, out, size);
    if (whole.consumed > numBytes) return !whole.lossy;
    transcode::encode(format, CUT_END, sizeof CUT_END, out + whole.written, size - whole.written, nullptr);
    return false;
}

BooleanT StringImplC::encoded(const U8BitT** out, const char* encoding) const
{
    if (isUTF8Name(encoding)) {
        *out = begin();
        return true;
    }
    *out = nullptr;
    const EncodingNameT e = encodingNamed(encoding);
    if (!TVX_CHECK(isConvertible(e), "e")) return false;

    const size_t size = terminatedSize(formatOf(e));
    U8BitT* const buffer = new U8BitT[size];
    *out = buffer;
    return encodeTerminated(formatOf(e), buffer, size);
}

void StringImplC::encodedRelease(const U8BitT* p, const char* encoding) const
{
    if (!isUTF8Name(encoding)) delete[] p;
}

BooleanT StringImplC::encodeInto(U8BitT* buffer, size_t& size, const char* encoding) const
{
    const size_t room = size;
    size = 0;
    const EncodingNameT e = encodingNamed(encoding);
    if (!TVX_CHECK(isConvertible(e), "e")) return false;

    const transcode::FormatT format = formatOf(e);
    const bool isTerminated = transcode::encodedLength(format, NO_TEXT, 1) == codeUnitLength(e);
    (void)TVX_CHECK(isTerminated, "the terminator must be one code unit");
    const size_t needed = terminatedSize(format);
    size = needed - codeUnitLength(e);
    if (needed <= room) return encodeTerminated(format, buffer, needed);

    std::vector<U8BitT> whole(needed);
    const bool isWhole = encodeTerminated(format, whole.data(), needed);
    std::copy_n(whole.data(), room, buffer);
    return isWhole;
}

// ---- changes ----------------------------------------------------------------------------------------

void StringImplC::appendUTF8(const UTF8T* bytes, size_t n, size_t chars)
{
    resize(numBytes + n + 1);
    std::memcpy(data + numBytes, bytes, n);
    mergeShape(data + numBytes, n);
    numBytes += n;
    data[numBytes] = 0;
    const long known = knownChars();
    if (known >= 0) numChars.store(known + static_cast<long>(chars), std::memory_order_relaxed);
}

// The count becomes unknown. The memo, which counting leaves at the end, still holds.
void StringImplC::operator+=(const StringImplI& text)
{
    if (!TVX_CHECK(!isShared(), "!isShared()")) return;
    const TextViewT view(text);
    const bool isThis = view.begin == data;
    const size_t added = view.size;
    resize(numBytes + added + 1);
    std::memcpy(data + numBytes, isThis ? data : view.begin, added);
    mergeShape(data + numBytes, added);
    numBytes += added;
    data[numBytes] = 0;
    numChars.store(-1, std::memory_order_relaxed);
}

void StringImplC::operator+=(UCS4 ch)
{
    if (!TVX_CHECK(!isShared(), "!isShared()")) return;
    if (ch < 0x80 && ch != 0 && numBytes + 1 < numAlloc) {
        data[numBytes] = static_cast<UTF8T>(ch);   // an ASCII character changes no shape
        data[++numBytes] = 0;
        const long known = knownChars();
        if (known >= 0) numChars.store(known + 1, std::memory_order_relaxed);
        return;
    }
    const size_t size = UTF8Len(ch);
    if (size == 0) return;
    UTF8T bytes[6];
    UTF8T* p = bytes;
    UTF8Put(p, ch);
    appendUTF8(bytes, size, 1);
}

void StringImplC::insert(size_t at, const StringImplI& text)
{
    if (!TVX_CHECK(!isShared(), "!isShared()")) return;
    if (text.isEmpty()) return;
    if (&text == this) {
        const StringImplC copy(*this);
        insert(at, copy);
        return;
    }
    const TextViewT added(text);
    resize(numBytes + added.size + 1);
    const PlaceT place = nthChar(static_cast<long>(at));
    if (place.at == nullptr) return;

    UTF8T* const gap = data + (place.at - data);
    std::memmove(gap + added.size, gap, static_cast<size_t>(end() - gap) + 1);
    std::memcpy(gap, added.begin, added.size);
    mergeShape(gap, added.size);
    numBytes += added.size;
    numChars.store(-1, std::memory_order_relaxed);
    forgetPos();   // a memo behind the gap would have moved
    savePos(place.index, gap);
}

void StringImplC::remove(size_t at, long len)
{
    if (!TVX_CHECK(!isShared(), "!isShared()")) return;
    if (!TVX_CHECK(len >= -1, "len >= -1")) return;
    const PlaceT place = nthChar(static_cast<long>(at));
    if (place.at == nullptr) return;

    size_t missing = 0;
    const UTF8T* const rest = len < 0 ? end() : skip(place.at, static_cast<size_t>(len), &missing);
    const long known = knownChars();
    UTF8T* const gap = data + (place.at - data);
    numBytes -= static_cast<size_t>(rest - gap);
    std::memmove(gap, rest, static_cast<size_t>(end() - gap) + 1);
    const bool isCounted = known >= 0 && len >= 0;
    numChars.store(isCounted ? known - (len - static_cast<long>(missing)) : -1, std::memory_order_relaxed);
    forgetPos();
    savePos(place.index, gap);
}

StringImplI* StringImplC::substr(size_t at, long len) const
{
    if (!TVX_CHECK(len >= -1, "len >= -1")) return nullptr;
    if (at == 0 && len == -1) return const_cast<StringImplC*>(this);
    const PlaceT place = nthChar(static_cast<long>(at));
    if (place.at == nullptr) return nullptr;

    size_t missing = 0;
    const UTF8T* const partEnd = len < 0 ? end() : skip(place.at, static_cast<size_t>(len), &missing);
    return create(place.at, static_cast<size_t>(partEnd - place.at), ENCODING_VALID_UTF8);
}

// ---- texts that are never freed ---------------------------------------------------------------------

StaticStringImplC::StaticStringImplC(const U8BitT* bytes, size_t len) : StringImplC(bytes, len, StringC::CC_UTF8)
{
    startCount(2);
}

UCS4 EmptyStringImplC::operator[](long index) const
{
    (void)TVX_CHECK(index == 0, "index == 0");
    return 0;
}

StringImplI* EmptyStringImplC::substr(size_t at, long len) const
{
    const bool isAll = (at == 0) && ((len == -1) || len == 0);
    if (!TVX_CHECK(isAll, "(at == 0) && ((len == -1) || len == 0)")) return nullptr;
    return const_cast<EmptyStringImplC*>(this);
}
