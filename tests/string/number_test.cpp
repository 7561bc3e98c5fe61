#include "stringc.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace {

const long TRAILING = 0xE0C90002L;
const long NONE = 0xE0C90003L;
const long RANGE = 0xE0C90004L;
const long DIGIT = 0xE0C90005L;
const long RADIX = 0xE0C90006L;

}   // namespace

TEST(NumberReading, followsItsRules)
{
    struct RowT {
        const char* text;
        int radix;
        long long value;
        long error;
        size_t end;
    };
    const RowT rows[] = {
        {"  -0x1F  ", 0, -31, 0, 9},
        {"12abc", 10, 12, TRAILING, 2},
        {"", 10, 0, NONE, 0},
        {" \t\r\n\xC2\xA0", 10, 0, NONE, 5},
        {"+", 10, 0, NONE, 1},
        {"- ", 10, 0, NONE, 2},
        {"- 5", 10, -5, 0, 3},
        {"0b101", 0, 5, 0, 5},
        {"0b1", 16, 0xB1, 0, 3},
        {"0b", 0, 0, NONE, 2},
        {"0x", 16, 0, NONE, 2},
        {"0x", 10, 0, TRAILING, 1},
        {"09", 0, 0, TRAILING, 1},
        {"09", 10, 9, 0, 2},
        {"0", 0, 0, 0, 1},
        {"017", 0, 15, 0, 3},
        {"z", 36, 35, 0, 1},
        {"z", 35, 0, DIGIT, 0},
        {"111", 1, 3, 0, 3},
        {"2", 1, 0, DIGIT, 0},
        {"1", 37, 0, RADIX, 0},
        {"1", -1, 0, RADIX, 0},
        {"\xD9\xA1\xD9\xA2", 10, 12, 0, 2},   // Arabic-Indic digits
        {"\xD9\xA0x1F", 0, 31, 0, 4},         // any script's zero begins a prefix
        {"18446744073709551615", 10, -1, RANGE, 20},
        {"18446744073709551616", 10, 0, RANGE, 20},
        {"184467440737095516160", 10, 0, RANGE, 20},
        {"9223372036854775807", 10, LLONG_MAX, 0, 19},
        {"9223372036854775808", 10, LLONG_MIN, RANGE, 19},
        {"-9223372036854775808", 10, LLONG_MIN, 0, 20},
        {"9223372036854775808 x", 10, LLONG_MIN, RANGE, 20},
    };
    for (const RowT& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " in base " + std::to_string(row.radix));
        long error = -1;
        size_t end = 99;
        EXPECT_EQ(StringC(row.text).asLongLong(&error, row.radix, &end), row.value);
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(end, row.end);
        EXPECT_EQ(StringC(row.text).asLong(nullptr, row.radix, nullptr), row.value);
    }
}

TEST(NumberReading, agreesWithTheCLibraryWhereBothGiveANumber)
{
    TextSourceC source(1801);
    const std::string alphabet = "0123456789abcdefxyzAFXZ";
    for (int round = 0; round < 20000; ++round) {
        const int radix = round % 3 == 0 ? 0 : static_cast<int>(2 + source.below(35));
        std::string text = source.below(2) != 0 ? "-" : "";
        for (uint32_t left = 1 + source.below(25); left > 0; --left)
            text += alphabet[source.below(static_cast<uint32_t>(alphabet.size()))];
        if (text.find_first_of("bB") != std::string::npos) continue;   // a prefix that the C library lacks here

        long error = -1;
        size_t end = 0;
        const long long value = StringC(text.c_str()).asLongLong(&error, radix, &end);
        errno = 0;
        char* stop = nullptr;
        const long long expected = std::strtoll(text.c_str(), &stop, radix);
        SCOPED_TRACE(text + " in base " + std::to_string(radix));
        if (error == 0 || error == TRAILING) {
            ASSERT_EQ(value, expected);
            ASSERT_EQ(errno, 0);
            ASSERT_EQ(end, static_cast<size_t>(stop - text.c_str()));
        } else if (error == RANGE) {
            ASSERT_EQ(errno, ERANGE);
        } else {
            ASSERT_EQ(value, 0);
        }
    }
}
