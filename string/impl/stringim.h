// stringim.h: the one real string body, and its two variants that are never freed.
//
// A body and the bytes of a short text are one allocation: the bytes follow the object. A longer text,
// or one that outgrows that room, has a buffer of its own.
//
// Invariants, on entry to and exit from every operation:
//   data is null, numBytes and numAlloc 0; or data[numBytes] == 0 and numBytes < numAlloc
//   numChars is -1 (not counted yet) or the number of characters; whether it is known decides if an
//     index beyond an ASCII text is an assertion, so nothing computes it before its time
//   m_memo is the last character position found; index 0 is "none"
//   m_shape never promises more than holds
//
// Thread safety: while a body is shared no byte changes; numChars, m_memo and m_shape may be filled in
// by any reader and are atomic. Two readers may compute the same value twice.
#ifndef TVXCMN_STRING_IMPL_STRINGIM_H
#define TVXCMN_STRING_IMPL_STRINGIM_H

#include "refcount.h"
#include "string/impl/encodingname.h"
#include "stringimpl.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

class StringImplC : public StringImplI, public RefCountC {
public:
    StringImplC() noexcept = default;
    StringImplC(const U8BitT* bytes, size_t len, const char* encoding);
    StringImplC(const StringImplC& other);
    StringImplC& operator=(const StringImplC&) = delete;
    ~StringImplC() override;

    // New bodies, short texts in one allocation.
    static StringImplC* create(const U8BitT* bytes, size_t len, EncodingNameT encoding);
    static StringImplC* create(const StringImplI& a, const StringImplI& b);   // a followed by b
    // `n` bytes of well-formed UTF-8 that hold `chars` characters, which stays known.
    static StringImplC* createUTF8(const UTF8T* bytes, size_t n, size_t chars);
    // A new empty body with room for `bytes` bytes of text.
    static StringImplC* createEmpty(size_t bytes);

    static void* operator new(size_t size);
    static void operator delete(void* p);

    static StringImplFactoryI* factory();

    // The arguments put into the format: as a new body, or one character at a time.
    static StringImplI* format(const StringImplI& fmt, const ArgListC& args);
    static void format(void (*emit)(void* ctx, UCS4 ch), void* ctx, const StringImplI& fmt, const ArgListC& args);

    // Whether two names stand for one encoding: equal but for the case bit. Null names none.
    static bool IsEncoding(const char* a, const char* b);
    // The encoding object of a name; null for an unknown one and for "vutf8".
    static TextEncodingI* GetTextEncoding(const char* name);
    static void dumpStats() {}

    void AddRef() override;
    void Release() override;
    BooleanT isShared() const final { return GetRefCount() > 1; }
    StringImplFactoryI* getFactory() const override { return factory(); }
    long length() const override;
    BooleanT isEmpty() const override { return numBytes == 0; }
    int compare(const StringImplI& other) const override;
    int compareNat(const StringImplI& other, bool case_indep) const override;
    int collate(const StringImplI& other) const override;
    long find(UCS4 ch, long after) const override;
    long rfind(UCS4 ch, long before) const override;
    long find(const StringImplI& text, long after) const override;
    long rfind(const StringImplI& text, long before) const override;
    long findAny(const StringImplI& set, long after) const override;
    long rfindAny(const StringImplI& set, long before) const override;
    long findNot(const StringImplI& set, long after) const override;
    long rfindNot(const StringImplI& set, long before) const override;
    UCS4 operator[](long index) const override;
    size_t encodedBytes(const char* encoding) const override;
    BooleanT encoded(const U8BitT** out, const char* encoding) const override;
    void encodedRelease(const U8BitT* p, const char* encoding) const override;
    BooleanT encodeInto(U8BitT* buffer, size_t& size, const char* encoding) const override;
    StringImplI* substr(size_t at, long len) const override;
    void remove(size_t at, long len) override;
    void operator+=(const StringImplI& text) override;
    void operator+=(UCS4 ch) override;
    void insert(size_t at, const StringImplI& text) override;
    void toLower() override;
    void toUpper() override;

    // Appends `n` bytes of well-formed UTF-8 that hold `chars` characters; a known count stays known.
    // The bytes must not be this body's own.
    void appendUTF8(const UTF8T* bytes, size_t n, size_t chars);

    // Replaces the text by converted bytes.
    void convertFrom(const U8BitT* bytes, size_t len, EncodingNameT encoding);

private:
    friend struct TextViewT;

    // What is known about the bytes of a text whose numChars is not numBytes.
    enum ShapeT : unsigned char {
        SHAPE_UNKNOWN,     // nobody looked yet
        SHAPE_ASCII,       // only bytes 1 to 127: a character index is a byte offset
        SHAPE_ZERO_FREE,   // any characters, but no zero byte
        SHAPE_ANY          // may hold zero bytes, at which walks stop
    };
    // Character `index` starts at `at`, which is null where there is no such place.
    struct PlaceT {
        const UTF8T* at;
        long index;
    };

    // In memory with `room` bytes behind the object: an empty text, or a copy of one that fits there.
    explicit StringImplC(uint32_t room) noexcept;
    StringImplC(uint32_t room, const UTF8T* text, size_t size, long chars) noexcept;
    template <class... ArgumentsM>
    static StringImplC* make(size_t room, ArgumentsM... arguments);

    UTF8T* ownRoom() noexcept { return reinterpret_cast<UTF8T*>(this + 1); }
    bool hasOwnBuffer() const noexcept;
    const UTF8T* begin() const noexcept { return data != nullptr ? data : NO_TEXT; }
    const UTF8T* end() const noexcept { return begin() + numBytes; }
    long knownChars() const noexcept { return numChars.load(std::memory_order_relaxed); }
    bool isKnownASCII() const noexcept { return knownChars() == static_cast<long>(numBytes); }

    void reset() noexcept;
    void resize(size_t minimum);
    void setText(size_t bytes, long chars) noexcept;
    void copyFrom(const U8BitT* bytes, size_t len, long chars);
    void decodeFrom(const U8BitT* bytes, size_t len, EncodingNameT encoding);
    // The size in bytes of the text and its terminator, and their conversion into that much room. False:
    // characters were lost.
    size_t terminatedSize(transcode::FormatT format) const;
    bool encodeTerminated(transcode::FormatT format, U8BitT* out, size_t size) const;
    template <class CaseM>
    void transformChars();
    template <class CaseM>
    void transformBeyondBuffer(size_t written, long chars, UCS4 ch, const UTF8T* rest);

    // Positions (stringim_pos.cpp).
    PlaceT memo() const noexcept;
    void savePos(long n, const UTF8T* ptr) const;
    void forgetPos() const noexcept { m_memo.store(0, std::memory_order_relaxed); }
    ShapeT shape() const noexcept;
    void mergeShape(const UTF8T* added, size_t n) noexcept;
    PlaceT nthChar(long n) const;
    const UTF8T* walk(const PlaceT& from, const PlaceT& to, long n, size_t* nchar) const;
    const UTF8T* skip(const UTF8T* from, size_t count, size_t* missing) const noexcept;
    const UTF8T* backup(const UTF8T* p) const noexcept;

    // Searches (stringim_find.cpp).
    PlaceT placeBefore(long before) const;
    long hitAfter(const PlaceT& start, const UTF8T* hit) const;
    long hitBefore(const PlaceT& limit, const UTF8T* hit) const;
    long findMember(const StringImplI& set, long after, bool wanted) const;
    long rfindMember(const StringImplI& set, long before, bool wanted) const;

    static const UTF8T NO_TEXT[1];

    UTF8T* data = nullptr;
    mutable std::atomic<long> numChars{-1};
    size_t numBytes = 0;
    size_t numAlloc = 0;
    // Character index and byte offset of the memo must belong together, so they share one word (index in
    // the high half). There is no memo beyond 4 GiB.
    mutable std::atomic<uint64_t> m_memo{0};
    const uint32_t m_room = 0;   // bytes behind the object
    mutable std::atomic<ShapeT> m_shape{SHAPE_UNKNOWN};
};

// A text that lives until the process ends: its count stands at 2 for ever, so that it is always shared
// and a handle that wants to change it copies it first.
class StaticStringImplC : public StringImplC {
public:
    // Bytes read as "utf8".
    StaticStringImplC(const U8BitT* bytes, size_t len);

    void AddRef() override {}
    void Release() override {}
};

// The one empty text that all empty handles share.
class EmptyStringImplC : public StaticStringImplC {
public:
    EmptyStringImplC() : StaticStringImplC(nullptr, 0) {}

    long length() const override { return 0; }
    BooleanT isEmpty() const override { return true; }
    int compare(const StringImplI& other) const override { return other.isEmpty() ? 0 : -1; }
    int compareNat(const StringImplI& other, bool) const override { return other.isEmpty() ? 0 : -1; }
    int collate(const StringImplI& other) const override { return other.isEmpty() ? 0 : -1; }
    long find(UCS4, long) const override { return -1; }
    long rfind(UCS4, long) const override { return -1; }
    long find(const StringImplI&, long) const override { return -1; }
    long rfind(const StringImplI&, long) const override { return -1; }
    long findAny(const StringImplI&, long) const override { return -1; }
    long rfindAny(const StringImplI&, long) const override { return -1; }
    long findNot(const StringImplI&, long) const override { return -1; }
    long rfindNot(const StringImplI&, long) const override { return -1; }
    UCS4 operator[](long index) const override;
    size_t encodedBytes(const char*) const override { return 0; }
    StringImplI* substr(size_t at, long len) const override;
};

#endif   // TVXCMN_STRING_IMPL_STRINGIM_H
