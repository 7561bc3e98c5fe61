#include "stringc.h"

#include "assertfatal.h"
#include "hashfunc.h"
#include "string/api/textbytes.h"
#include "string/api/ucs4_tables.h"
#include "tvxcmn.h"
#include "utf8.h"

#include <atomic>
#include <utility>

namespace {

const U8BitT* bytesOf(const char* text) { return reinterpret_cast<const U8BitT*>(text); }

}   // namespace

// ---- construction -----------------------------------------------------------------------------------

StringImplFactoryI* StringC::orDefault(StringImplFactoryI* factory)
{
    return factory != nullptr ? factory : getStringFactory(1);
}

StringImplI* StringC::emptyBody()
{
    constinit static std::atomic<StringImplI*> body{nullptr};
    StringImplI* known = body.load(std::memory_order_acquire);
    if (known == nullptr) {
        known = getStringFactory(1)->CreateShared(nullptr, 0, CC_ASCII);
        body.store(known, std::memory_order_release);
    }
    return known;
}

StringC::StringC(const char* text, const char* encoding, StringImplFactoryI* factory)
    : StringC(bytesOf(text), encoding, factory)
{
}
StringC::StringC(const U8BitT* text, const char* encoding, StringImplFactoryI* factory)
    : str(orDefault(factory)->Create(text, encoding))
{
}
StringC::StringC(const char* bytes, size_t len, const char* encoding, StringImplFactoryI* factory)
    : StringC(bytesOf(bytes), len, encoding, factory)
{
}
StringC::StringC(const U8BitT* bytes, size_t len, const char* encoding, StringImplFactoryI* factory)
    : str(orDefault(factory)->Create(bytes, len, encoding))
{
}
StringC::StringC(UCS4 ch, StringImplFactoryI* factory) : str(orDefault(factory)->Create(ch)) {}
StringC::StringC(const UTF16T* text, StringImplFactoryI* factory) : str(orDefault(factory)->Create(text)) {}
StringC::StringC(const char16_t* text, StringImplFactoryI* factory)
    : StringC(reinterpret_cast<const UTF16T*>(text), factory)
{
}
StringC::StringC(const wchar_t* text, StringImplFactoryI* factory) : str(orDefault(factory)->Create(text)) {}
StringC::StringC(const wchar_t* text, size_t n, StringImplFactoryI* factory) : str(orDefault(factory)->Create(text, n))
{
}
StringC::StringC(const StringC& a, const StringC& b, StringImplFactoryI* factory)
    : str(orDefault(factory)->Create(*a.str, *b.str))
{
}

StringC& StringC::operator=(StringC&& other) noexcept
{
    StringC taken(std::move(other));
    swap(taken);
    return *this;
}

void StringC::swap(StringC& other) noexcept { str.swap(other.str); }

// ---- encoded forms ----------------------------------------------------------------------------------

const U8BitT* StringC::encoded(const char* encoding) const
{
    const U8BitT* text = nullptr;
    str->encoded(&text, encoding);
    return text;
}

void StringC::release(const void* p, const char* encoding) const
{
    str->encodedRelease(static_cast<const U8BitT*>(p), encoding);
}

// ---- comparison and hashes --------------------------------------------------------------------------

// The bodies are only asked for their counts, which may take a walk over the text, when the bytes are equal.
bool StringC::operator==(const StringC& other) const
{
    return str == other.str || (compare(other) == 0 && length() == other.length());
}

bool StringC::equalCI(const StringC& other) const { return length() == other.length() && collate(other) == 0; }

HashValT StringC::hashCode() const
{
    const TextBytesT bytes(*this);
    return hashBlock(bytes.begin, bytes.size());
}

// One at a time (Jenkins), over folded characters. Every ASCII byte gets the case bit, letter or not.
HashValT StringC::hashCodeCI() const
{
    const TextBytesT bytes(*this);
    HashValT h = 0;
    for (const UTF8T* p = bytes.begin; p < bytes.end;) {
        h += *p < 0x80 ? *p++ | 0x20u : ucs4tables::toLower(UTF8Get(p));
        h *= 1025;
        h ^= h >> 6;
    }
    h *= 9;
    h ^= h >> 11;
    return h * 32769;
}

// ---- parts ------------------------------------------------------------------------------------------

StringC StringC::substr(size_t at, long len) const
{
    StringImplI* const part = str->getFactory()->substr(*str, at, len);
    return part != nullptr ? StringC(*part) : StringC();
}

// ---- changes ----------------------------------------------------------------------------------------

// The old body is held until its bytes have been given back: this handle may have been its last.
void StringC::Unshare()
{
    if (!str->isShared()) return;
    const StringC old(*this);
    const U8BitT* const text = old.encoded(CC_UTF8);
    str = old.str->getFactory()->Create(text, old.str->encodedBytes(CC_UTF8), CC_VALID_UTF8);
    (void)TVX_CHECK(!str->isShared(), "!str->isShared()");
    old.release(text, CC_UTF8);
}

StringC& StringC::operator+=(const StringC& text)
{
    if (isEmpty()) {
        str = text.str;
    } else if (text.isEmpty()) {
        return *this;
    } else if (str->isShared()) {
        str = str->getFactory()->Create(*str, *text.str);
    } else {
        *str += *text.str;
    }
    return *this;
}

StringC& StringC::operator+=(UCS4 ch)
{
    Unshare();
    *str += ch;
    return *this;
}

StringC StringC::operator+(const StringC& text) const { return StringC(*str->getFactory()->Create(*str, *text.str)); }

void StringC::insert(size_t at, const StringC& text)
{
    if (text.isEmpty()) return;
    const StringC added(text);   // may be this very string
    Unshare();
    str->insert(at, *added.str);
}

void StringC::remove(size_t at, long len)
{
    if (len == 0) return;
    Unshare();
    str->remove(at, len);
}

StringC& StringC::toUpper()
{
    Unshare();
    str->toUpper();
    return *this;
}

StringC& StringC::toLower()
{
    Unshare();
    str->toLower();
    return *this;
}

StringC StringC::asUpper() const { return StringC(*this).toUpper(); }
StringC StringC::asLower() const { return StringC(*this).toLower(); }

StringC& StringC::ltrim(const StringC& set)
{
    if (!isEmpty()) remove(0, findNot(set));   // -1, none but members, removes it all
    return *this;
}

StringC& StringC::rtrim(const StringC& set)
{
    if (isEmpty()) return *this;
    const long last = rfindNot(set);
    if (last != length() - 1) remove(static_cast<size_t>(last + 1));
    return *this;
}
