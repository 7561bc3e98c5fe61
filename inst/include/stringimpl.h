// stringimpl.h: the two interfaces behind every text of the library.
//
// A body (StringImplI) holds a text as UTF-8 and converts it to other encodings on demand. Bodies are
// made by the factory and held through StringC (stringc.h), which is what programs use. The order of
// the slots is fixed.
//
// Positions and lengths count characters (code points), never bytes. Encodings are named by the texts
// "ascii", "system-8", "iso-8859-1", "utf8", "vutf8", "utf16", "utf16be", "utf16le" and "wchar_t",
// compared without regard to case; "vutf8", UTF-8 that the caller vouches for, is for input only.
//
// Thread safety: a body that more than one handle holds is never changed, so any threads may read it.
#ifndef TVXCMN_STRINGIMPL_H
#define TVXCMN_STRINGIMPL_H

#include "basetypes.h"

#include <cstddef>

class ArgListC;
class StringImplFactoryI;

class StringImplI {
public:
    virtual void AddRef() = 0;
    virtual void Release() = 0;

    // True if more than one holder may see the body. Only an unshared body may be changed.
    virtual BooleanT isShared() const = 0;
    // The factory that made the body.
    virtual StringImplFactoryI* getFactory() const = 0;

    virtual long length() const = 0;
    virtual BooleanT isEmpty() const = 0;

    // Below 0, 0 or above 0. compare: code point order. compareNat: runs of decimal digits by their
    // value, other characters by code point (lower-cased first when `case_indep`). collate: by lower-cased
    // characters, walked no further than the shorter text's byte length, then by byte length.
    virtual int compare(const StringImplI& other) const = 0;
    virtual int compareNat(const StringImplI& other, bool case_indep) const = 0;
    virtual int collate(const StringImplI& other) const = 0;

    // The index of the first (find) or last (rfind) hit, or -1. `after` and `before` are exclusive; -1
    // stands for the start or the end. An empty text is never found.
    virtual long find(UCS4 ch, long after) const = 0;
    virtual long rfind(UCS4 ch, long before) const = 0;
    virtual long find(const StringImplI& text, long after) const = 0;
    virtual long rfind(const StringImplI& text, long before) const = 0;
    virtual long findAny(const StringImplI& set, long after) const = 0;
    virtual long rfindAny(const StringImplI& set, long before) const = 0;
    virtual long findNot(const StringImplI& set, long after) const = 0;
    virtual long rfindNot(const StringImplI& set, long before) const = 0;

    // The character at an index; 0 when there is none.
    virtual UCS4 operator[](long index) const = 0;

    // The size of the text in an encoding, in bytes, without terminator. 0 for an unknown encoding ("e").
    virtual size_t encodedBytes(const char* encoding) const = 0;
    // Sets *out to the text in an encoding, terminated by a zero unit of its width; what comes out must
    // go back through encodedRelease. False if a character could not be represented ("~" stands for it),
    // or for an unknown encoding ("e"; *out is null). For "utf8" *out is the body's own buffer.
    virtual BooleanT encoded(const U8BitT** out, const char* encoding) const = 0;
    virtual void encodedRelease(const U8BitT* p, const char* encoding) const = 0;
    // Writes the terminated text into `buffer` of `size` bytes, cut short if it does not fit, and sets
    // `size` to the full size without terminator. Result as for encoded.
    virtual BooleanT encodeInto(U8BitT* buffer, size_t& size, const char* encoding) const = 0;

    // `len` characters from `at` (-1: up to the end) as a new body, or this one when that is all of it.
    // Null when there is no such position.
    virtual StringImplI* substr(size_t at, long len) const = 0;

    // What follows changes the body in place and requires that it is not shared ("!isShared()").
    virtual void remove(size_t at, long len) = 0;   // -1: up to the end
    virtual void operator+=(const StringImplI& text) = 0;
    virtual void operator+=(UCS4 ch) = 0;
    virtual void insert(size_t at, const StringImplI& text) = 0;
    virtual void toLower() = 0;
    virtual void toUpper() = 0;

protected:
    ~StringImplI() = default;   // not a slot
};

// Makes bodies. Each comes with a count of 0, for the handle that takes it to raise.
class StringImplFactoryI {
public:
    // A terminated text in a single-byte encoding, "utf8" or "vutf8". Null is the empty text.
    virtual StringImplI* Create(const U8BitT* text, const char* encoding) = 0;
    // `len` bytes in any encoding; always a new body.
    virtual StringImplI* Create(const U8BitT* bytes, size_t len, const char* encoding) = 0;
    virtual StringImplI* Create(UCS4 ch) = 0;
    // Terminated UTF-16 in the machine's byte order. Null is the empty text.
    virtual StringImplI* Create(const UTF16T* text) = 0;
    // a followed by b.
    virtual StringImplI* Create(const StringImplI& a, const StringImplI& b) = 0;
    // Terminated wide text, or `n` wide characters. Null is the empty text.
    virtual StringImplI* Create(const wchar_t* text) = 0;
    virtual StringImplI* Create(const wchar_t* text, size_t n) = 0;
    virtual StringImplI* substr(const StringImplI& text, size_t at, long len) = 0;
    // The arguments put into the format, as a body or one character at a time (arglist.h, stringc.h).
    virtual StringImplI* format(const StringImplI& fmt, ArgListC args) = 0;
    virtual void format(void (*sink)(void* closure, UCS4 ch), void* closure, const StringImplI& fmt, ArgListC args) = 0;
    // As Create, but empty texts and single ASCII characters give bodies that everybody shares.
    virtual StringImplI* CreateShared(const U8BitT* bytes, size_t len, const char* encoding) = 0;

protected:
    ~StringImplFactoryI() = default;
};

#endif   // TVXCMN_STRINGIMPL_H
