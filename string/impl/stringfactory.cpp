#include "string/impl/stringfactory.h"

#include "arglist.h"
#include "assertfatal.h"
#include "string/impl/stringim.h"
#include "tvxcmn.h"
#include "utf8.h"

#include <atomic>
#include <cstring>
#include <cwchar>
#include <new>

namespace {

constinit StringImplFactoryC theFactory;

// Made on first use and never destroyed: exit handlers and other threads may still hold it.
StringImplI* emptyBody()
{
    alignas(EmptyStringImplC) static unsigned char storage[sizeof(EmptyStringImplC)];
    static EmptyStringImplC* const body = ::new (storage) EmptyStringImplC;
    return body;
}

// The shared body of a character 1 to 127. Two threads may both make one; one of them wins.
StringImplI* asciiBody(U8BitT byte)
{
    constinit static std::atomic<StaticStringImplC*> bodies[127];
    std::atomic<StaticStringImplC*>& body = bodies[byte - 1];
    StaticStringImplC* known = body.load(std::memory_order_acquire);
    if (known != nullptr) return known;

    StaticStringImplC* const made = new StaticStringImplC(&byte, 1);
    if (body.compare_exchange_strong(known, made, std::memory_order_acq_rel)) return made;
    delete made;
    return known;
}

}   // namespace

StringImplFactoryI* StringImplC::factory() { return &theFactory; }

extern "C" StringImplFactoryI* getStringFactory(int) { return StringImplC::factory(); }

StringImplI* StringImplFactoryC::Create(const U8BitT* text, const char* encoding)
{
    const EncodingNameT name = encodingNamed(encoding);
    (void)TVX_CHECK(holdsASCIIAsBytes(name), "terminated text needs a single-byte encoding or UTF-8");
    return createShared(text, text != nullptr ? std::strlen(reinterpret_cast<const char*>(text)) : 0, name);
}

StringImplI* StringImplFactoryC::Create(const U8BitT* bytes, size_t len, const char* encoding)
{
    return StringImplC::create(bytes, len, encodingNamed(encoding));
}

StringImplI* StringImplFactoryC::Create(UCS4 ch)
{
    U8BitT bytes[6];
    U8BitT* p = bytes;
    const size_t size = UTF8Len(ch);
    UTF8Put(p, ch);
    return createShared(bytes, size, ENCODING_UTF8);
}

StringImplI* StringImplFactoryC::Create(const UTF16T* text)
{
    size_t units = 0;
    if (text != nullptr) {
        while (text[units] != 0) ++units;
    }
    return createShared(reinterpret_cast<const U8BitT*>(text), units * sizeof(UTF16T), ENCODING_UTF16);
}

StringImplI* StringImplFactoryC::Create(const StringImplI& a, const StringImplI& b)
{
    return StringImplC::create(a, b);
}

StringImplI* StringImplFactoryC::Create(const wchar_t* text)
{
    return Create(text, text != nullptr ? std::wcslen(text) : 0);
}

StringImplI* StringImplFactoryC::Create(const wchar_t* text, size_t n)
{
    return createShared(reinterpret_cast<const U8BitT*>(text), n * sizeof(wchar_t), ENCODING_WCHART);
}

StringImplI* StringImplFactoryC::substr(const StringImplI& text, size_t at, long len) { return text.substr(at, len); }

StringImplI* StringImplFactoryC::format(const StringImplI& fmt, ArgListC args)
{
    return StringImplC::format(fmt, args);
}

void StringImplFactoryC::format(void (*sink)(void* closure, UCS4 ch), void* closure, const StringImplI& fmt,
                                ArgListC args)
{
    StringImplC::format(sink, closure, fmt, args);
}

StringImplI* StringImplFactoryC::CreateShared(const U8BitT* bytes, size_t len, const char* encoding)
{
    return createShared(bytes, len, encodingNamed(encoding));
}

StringImplI* StringImplFactoryC::createShared(const U8BitT* bytes, size_t len, EncodingNameT encoding)
{
    if (len == 0) return emptyBody();
    if (len == 1 && bytes != nullptr) {
        (void)TVX_CHECK(holdsASCIIAsBytes(encoding), "one byte needs a single-byte encoding or UTF-8");
        if (bytes[0] >= 1 && bytes[0] <= 127) return asciiBody(bytes[0]);
    }
    return StringImplC::create(bytes, len, encoding);
}
