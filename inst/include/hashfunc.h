// hashfunc.h: the two byte hashes of the hash tables, as functions of their own, so that texts can be
// hashed without knowing the table.
//
// The values are the same on every machine and in every version. The two differ for the same bytes:
// whoever hashes a kind of key always uses the same one.
//
// Thread safety: any thread.
#ifndef TVXCMN_HASHFUNC_H
#define TVXCMN_HASHFUNC_H

#include "basetypes.h"

#include <cstddef>

// The hash of a terminated text; 0 for the empty one and for null.
[[nodiscard]] HashValT hashString(const char* text);

// The hash of `size` bytes; 0 for none of them, and then `block` may be null.
[[nodiscard]] HashValT hashBlock(const void* block, size_t size);

#endif   // TVXCMN_HASHFUNC_H
