// textview.h: the UTF-8 bytes of a body, taken once.
#ifndef TVXCMN_STRING_IMPL_TEXTVIEW_H
#define TVXCMN_STRING_IMPL_TEXTVIEW_H

#include "string/impl/stringim.h"
#include "stringc.h"

#include <cstddef>

// Good while the body lives unchanged. A body lends its own "utf8" buffer, so nothing goes back. Bodies of
// this library, which is all of them but in a test, are not asked through their interface.
struct TextViewT {
    explicit TextViewT(const StringImplI& body)
    {
        if (body.getFactory() == StringImplC::factory()) {
            const StringImplC& own = static_cast<const StringImplC&>(body);
            begin = own.begin();
            size = own.numBytes;
        } else {
            body.encoded(&begin, StringC::CC_UTF8);
            size = body.encodedBytes(StringC::CC_UTF8);
        }
    }
    const UTF8T* end() const noexcept { return begin + size; }

    const UTF8T* begin = nullptr;
    size_t size;
};

#endif   // TVXCMN_STRING_IMPL_TEXTVIEW_H
