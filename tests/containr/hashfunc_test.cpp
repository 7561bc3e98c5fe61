#include "hashfunc.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

namespace {

// The definition, one byte at a time: `place` tells where byte i of a chunk of n bytes goes.
template <class PlaceT>
HashValT plainHash(const std::string& bytes, PlaceT place)
{
    HashValT h = 0;
    for (size_t at = 0; at < bytes.size(); at += 4) {
        const size_t n = std::min<size_t>(4, bytes.size() - at);
        HashValT c = 0;
        for (size_t i = 0; i < n; ++i) c += HashValT{static_cast<unsigned char>(bytes[at + i])} << (8 * place(i, n));
        h = (h ^ c) * 1103515245u + 12345u;
        h = ((h >> 26) | (h << 6)) ^ c;
    }
    return h;
}

}   // namespace

TEST(HashFunctions, valuesNeverChange)
{
    EXPECT_EQ(hashBlock("abcd", 4), 0x405c1009u);
    EXPECT_EQ(hashString("abcd"), 0xf04b03ceu);
    EXPECT_EQ(hashBlock("abc", 3), 0x40aefa67u);
    EXPECT_EQ(hashString("abc"), 0x944b03ebu);
    EXPECT_EQ(hashBlock(nullptr, 0), 0u);
    EXPECT_EQ(hashString(""), 0u);
    EXPECT_EQ(hashString(nullptr), 0u);
}

TEST(HashFunctions, agreeWithTheDefinitionAtEveryLengthAndAlignment)
{
    TextSourceC source(331);
    for (int i = 0; i < 3000; ++i) {
        const std::string text = source.utf8(12);
        const size_t from = std::min<size_t>(text.size(), source.below(4));
        const std::string part = text.substr(from);
        SCOPED_TRACE(hexOf(part));
        EXPECT_EQ(hashString(text.c_str() + from), plainHash(part, [](size_t at, size_t) { return at; }));
        EXPECT_EQ(hashBlock(text.data() + from, part.size()),
                  plainHash(part, [](size_t at, size_t n) { return n - 1 - at; }));
    }
}
