// stringfactory.h: the process-wide maker of string bodies.
//
// It holds no data. The shared bodies live for ever: one empty text, and one for each ASCII character.
//
// Thread safety: any thread, also before main and from exit handlers.
#ifndef TVXCMN_STRING_IMPL_STRINGFACTORY_H
#define TVXCMN_STRING_IMPL_STRINGFACTORY_H

#include "string/impl/encodingname.h"
#include "stringimpl.h"

class StringImplFactoryC : public StringImplFactoryI {
public:
    StringImplI* Create(const U8BitT* text, const char* encoding) override;
    StringImplI* Create(const U8BitT* bytes, size_t len, const char* encoding) override;
    StringImplI* Create(UCS4 ch) override;
    StringImplI* Create(const UTF16T* text) override;
    StringImplI* Create(const StringImplI& a, const StringImplI& b) override;
    StringImplI* Create(const wchar_t* text) override;
    StringImplI* Create(const wchar_t* text, size_t n) override;
    StringImplI* substr(const StringImplI& text, size_t at, long len) override;
    StringImplI* format(const StringImplI& fmt, ArgListC args) override;
    void format(void (*sink)(void* closure, UCS4 ch), void* closure, const StringImplI& fmt, ArgListC args) override;
    StringImplI* CreateShared(const U8BitT* bytes, size_t len, const char* encoding) override;

private:
    static StringImplI* createShared(const U8BitT* bytes, size_t len, EncodingNameT encoding);
};

#endif   // TVXCMN_STRING_IMPL_STRINGFACTORY_H
