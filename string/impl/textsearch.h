// textsearch.h: finding a text inside another, by bytes. Both directions take linear time.
//
// In UTF-8 a whole character never matches inside another one, so a hit always starts a character.
#ifndef TVXCMN_STRING_IMPL_TEXTSEARCH_H
#define TVXCMN_STRING_IMPL_TEXTSEARCH_H

#include "basetypes.h"

#include <cstddef>

namespace textsearch {

// The first or last place in [begin, end) where the `n` bytes of `needle` stand whole; null when there
// is none, and for an empty needle.
const UTF8T* findFirst(const UTF8T* begin, const UTF8T* end, const UTF8T* needle, size_t n);
const UTF8T* findLast(const UTF8T* begin, const UTF8T* end, const UTF8T* needle, size_t n);

}   // namespace textsearch

#endif   // TVXCMN_STRING_IMPL_TEXTSEARCH_H
