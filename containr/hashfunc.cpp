#include "hashfunc.h"

#include <cstring>

namespace {

HashValT rotatedLeft(HashValT value, int bits) { return value << bits | value >> (32 - bits); }

HashValT mixed(HashValT h, HashValT chunk) { return rotatedLeft((h ^ chunk) * 1103515245u + 12345u, 6) ^ chunk; }

// Four bytes as a number whose highest byte is the first.
HashValT bigEndian(const U8BitT* p)
{
    HashValT chunk;
    std::memcpy(&chunk, p, sizeof chunk);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    chunk = __builtin_bswap32(chunk);
#endif
    return chunk;
}

}   // namespace

// A chunk of text has its first byte lowest, and zeros in place of what lies beyond the end.
HashValT hashString(const char* text)
{
    if (text == nullptr) return 0;
    HashValT h = 0;
    while (*text != 0) {
        HashValT chunk = 0;
        for (int shift = 0; shift < 32 && *text != 0; shift += 8, ++text) {
            chunk |= static_cast<HashValT>(static_cast<U8BitT>(*text)) << shift;
        }
        h = mixed(h, chunk);
    }
    return h;
}

// A chunk of a block has its last byte lowest, also where fewer than four bytes are left.
HashValT hashBlock(const void* block, size_t size)
{
    const U8BitT* p = static_cast<const U8BitT*>(block);
    HashValT h = 0;
    for (; size >= 4; size -= 4, p += 4) h = mixed(h, bigEndian(p));
    if (size == 0) return h;

    HashValT chunk = 0;
    for (; size > 0; --size, ++p) chunk = chunk << 8 | *p;
    return mixed(h, chunk);
}
