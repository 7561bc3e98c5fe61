#include "string/api/utfkernels.h"

#include "support/helpers.h"
#include "utf8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

namespace {

const UTF8T* bytesOf(const std::string& text) { return reinterpret_cast<const UTF8T*>(text.data()); }

// The same, one character at a time.
size_t plainValidPrefix(const std::string& text, size_t* chars)
{
    size_t at = 0;
    for (*chars = 0; at < text.size(); ++*chars) {
        const UTF8T* p = bytesOf(text) + at;
        const size_t len = UTF8Len(p);
        if (len > 4 || len > text.size() - at || (len == 1 && *p >= 0x80)) break;
        size_t i = 1;
        while (i < len && !UTF8Is1st(p[i])) ++i;
        if (i < len || UTF8Len(UTF8Get(p)) != len) break;
        at += len;
    }
    return at;
}

}   // namespace

TEST(UtfKernels, agreeWithAPlainLoopOnWholeCutAndDamagedText)
{
    TextSourceC source(/*seed=*/220);
    for (int i = 0; i < 20000; ++i) {
        std::string text = source.utf8(source.below(40));
        if (i % 3 != 0) text = std::string(source.below(70), 'a') + text + std::string(source.below(70), 'b');
        if (i % 2 != 0) text = source.damaged(text, 1 + static_cast<int>(source.below(3)));
        const size_t from = text.empty() ? 0 : source.below(static_cast<uint32_t>(text.size()));
        text = std::string(text, from, source.below(300));   // an array of its own: ASan sees its end
        SCOPED_TRACE(hexOf(text));

        size_t plainChars = 0;
        const size_t plain = plainValidPrefix(text, &plainChars);
        size_t chars = 0;
        ASSERT_EQ(utfkernels::validPrefix(bytesOf(text), text.size(), &chars), plain);
        ASSERT_EQ(chars, plainChars);
        ASSERT_EQ(utfkernels::validPrefix(bytesOf(text), text.size(), nullptr), plain);
        ASSERT_EQ(utfkernels::countChars(bytesOf(text), plain), plainChars);
        const auto isHigh = [](char byte) { return (byte & 0x80) != 0; };
        const auto ascii = std::find_if(text.begin(), text.end(), isHigh) - text.begin();
        ASSERT_EQ(utfkernels::asciiPrefix(bytesOf(text), text.size()), static_cast<size_t>(ascii));
    }
}

TEST(UtfKernels, equalCIPrefixIsThatOfTheLoop)
{
    TextSourceC source(/*seed=*/222);
    for (int i = 0; i < 3000; ++i) {
        std::string a(source.below(130), ' ');
        for (char& byte : a) byte = static_cast<char>(source.below(i % 8 == 0 ? 256 : 128));
        std::string b = a;
        for (char& byte : b)
            byte = static_cast<char>(std::isalpha(static_cast<unsigned char>(byte)) ? byte ^ 0x20 : byte);
        if (!b.empty() && i % 2 == 0)
            b[source.below(static_cast<uint32_t>(b.size()))] ^= 0x20;   // "@" becomes "`", which is no other case

        size_t equal = 0;
        const auto isSame = [](unsigned char x, unsigned char y) {
            return x < 0x80 && y < 0x80 && std::tolower(x) == std::tolower(y);
        };
        while (equal < a.size() && isSame(static_cast<unsigned char>(a[equal]), static_cast<unsigned char>(b[equal])))
            ++equal;
        ASSERT_EQ(utfkernels::equalCIPrefix(bytesOf(a), bytesOf(b), a.size()), equal) << hexOf(a) << "\n" << hexOf(b);
    }
}

TEST(UtfKernels, advanceFindsEveryCharacter)
{
    TextSourceC source(/*seed=*/221);
    for (int i = 0; i < 200; ++i) {
        const std::vector<uint32_t> codePoints = source.codePoints(100);
        const std::string text = utf8Of(codePoints);
        size_t at = 0;
        size_t missing = 1;
        for (size_t k = 0; k <= codePoints.size(); ++k) {
            ASSERT_EQ(utfkernels::advance(bytesOf(text), text.size(), k, &missing), at) << hexOf(text);
            ASSERT_EQ(missing, 0u);
            if (k < codePoints.size()) at += utf8Of(codePoints[k]).size();
        }
        EXPECT_EQ(utfkernels::advance(bytesOf(text), text.size(), codePoints.size() + 7, &missing), text.size());
        EXPECT_EQ(missing, 7u);
    }
}

TEST(UtfKernels, wellFormedIsWhatReadingAndWritingLeavesAsItIs)
{
    const struct {
        const char* text;
        size_t length;
    } rows[] = {{"\xC0\x80", 0},
                {"\xC1\xBF", 0},
                {"\xC2\x80", 2},
                {"\xE0\x9F\xBF", 0},
                {"\xE0\xA0\x80", 3},
                {"\xED\xA0\x80", 3},
                {"\xED\xBF\xBF", 3},
                {"\xF0\x8F\xBF\xBF", 0},
                {"\xF0\x90\x80\x80", 4},
                {"\xF4\x90\x80\x80", 4},
                {"\xF7\xBF\xBF\xBF", 4},
                {"\xF8\x88\x80\x80\x80", 0},
                {"\x80", 0},
                {"\xFF", 0},
                {"\xE2\x82", 0},
                {"\xC3", 0}};
    for (const auto& row : rows) {
        for (const size_t before : {0UL, 1UL, 15UL, 31UL, 62UL, 64UL, 127UL}) {
            const std::string text = std::string(before, 'a') + row.text;
            EXPECT_EQ(utfkernels::validPrefix(bytesOf(text), text.size(), nullptr), before + row.length)
                << hexOf(row.text) << before;
        }
    }
}
