// basetypes.h: the plain types that cross every interface of the library.
//
// Thread words used in all headers:
//   unlocked    one thread at a time; whoever owns the object locks
//   latched     locks itself, any thread may call
//   per-thread  each thread has its own
// A header that says nothing means: different objects from any threads, one object unlocked, and
// operations marked const may run at the same time on one object.
#ifndef TVXCMN_BASETYPES_H
#define TVXCMN_BASETYPES_H

#include <cstring>

typedef unsigned char U8BitT;    // one byte of encoded text
typedef unsigned char UTF8T;     // one byte of UTF-8
typedef unsigned short UTF16T;   // one UTF-16 code unit
typedef unsigned int UCS4;       // one character: a code point, or any other 31-bit value
typedef UCS4 UCS4T;
typedef unsigned char BooleanT;   // the boolean of interfaces: 0 is false, any other value true
typedef unsigned int HashValT;    // a hash value
typedef long FileSizeT;           // a size in bytes

static_assert(sizeof(UTF16T) == 2 && sizeof(UCS4) == 4 && sizeof(long) == 8 && sizeof(void*) == 8,
              "the library's interfaces are laid out for LP64");

// A globally unique identifier (ISO/IEC 9834-8, RFC 4122), in the machine's byte order.
struct OSAGUID {
    unsigned int Data1;
    unsigned short Data2;
    unsigned short Data3;
    unsigned char Data4[8];
};
typedef OSAGUID OSAGuidT;

inline bool operator==(const OSAGUID& a, const OSAGUID& b) { return std::memcmp(&a, &b, sizeof(OSAGUID)) == 0; }
inline bool operator!=(const OSAGUID& a, const OSAGUID& b) { return !(a == b); }

#endif   // TVXCMN_BASETYPES_H
