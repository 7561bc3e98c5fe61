#include "arglist.h"

#include "string/formathelpers.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

// How many arguments are read for that many directives, each with an argument at hand.
template <int... INDICES>
long countRead(std::integer_sequence<int, INDICES...>)
{
    std::string fmt;
    for (size_t i = 0; i < sizeof...(INDICES); ++i) fmt += "%d";
    const ArgListC args = argsOf(fmt.c_str(), INDICES...);
    EXPECT_EQ(args[args.size() - 1]->asInt32(), args.size() - 1);
    return args.size();
}

}   // namespace

TEST(FormatArgs, readsWhatEachDirectiveNeeds)
{
    const StringC string("s");
    const timeval time = {5, 6};
    const struct {
        ArgListC args;
        const char* kind;
        const char* value;   // through %d, %u, %s, %S or %p
    } rows[] = {
        {argsOf("%d", -1), "Int32", "-1"},
        {argsOf("%c", 'x'), "Int32", "120"},
        {argsOf("%hhi", 0x1FF), "Int32", "-1"},
        {argsOf("%hhu", 0x1FF), "Int32", "255"},
        {argsOf("%hd", 0x18000), "Int16", "-32768"},
        {argsOf("%hX", 0x1FFFE), "Unsigned16", "-2"},
        {argsOf("%u", ~0u), "Unsigned32", "-1"},
        {argsOf("%b", 5u), "Unsigned32", "5"},
        {argsOf("%ld", 1L << 40), "Int64", "1099511627776"},
        {argsOf("%lo", 1UL << 40), "Unsigned64", "1099511627776"},
        {argsOf("%lli", 1LL << 40), "Int64", "1099511627776"},
        {argsOf("%llx", 1ULL << 40), "Unsigned64", "1099511627776"},
        {argsOf("%C", 0x20ACu), "UCS4", "8364"},
    };
    for (const auto& row : rows) {
        ASSERT_EQ(row.args.size(), 1) << row.kind;
        EXPECT_STREQ(row.args[0]->typeName(), row.kind);
        EXPECT_EQ(formatted("%d", row.args), row.value) << row.kind;
    }

    const ArgListC args = argsOf("%s%S%S%t%p%lp%llp%s%%%!%D%T%d", "text", &string, static_cast<const StringC*>(nullptr),
                                 time, &time, &time, &time, static_cast<const char*>(nullptr), 9);
    EXPECT_STREQ(args[0]->asCharStar(), "text");
    EXPECT_EQ(args[1]->asString(), string);
    EXPECT_TRUE(args[2]->asString().isEmpty());
    EXPECT_EQ(args[3]->asTimeVal().tv_usec, 6);
    for (const int pointer : {4, 5, 6}) EXPECT_EQ(args[pointer]->asObjRef(), &time);
    EXPECT_STREQ(args[7]->asCharStar(), "");
    EXPECT_EQ(args[8]->asInt32(), 9);
    EXPECT_EQ(args.size(), 9);
}

TEST(FormatArgs, countsPositionsAsTheEngineDoes)
{
    const struct {
        const char* format;
        ArgListC args;
        const char* expected;
    } rows[] = {
        {"%*.*d", argsOf("%*.*d", 5, 3, 7), "  007"},
        {"%2$s %1$d %s", argsOf("%2$s %1$d %s", 7, "two"), "two 7 two"},
        {"%3$*1$.*2$d", argsOf("%3$*1$.*2$d", 5, 3, 7), "  007"},
        {"%-*d|%05.1d", argsOf("%-*d|%05.1d", 3, 7, 8), "7  |    8"},
        {"%1$s %1$d", argsOf("%1$s %1$d", 7), "0"},
    };
    for (size_t i = 0; i + 1 < std::size(rows); ++i) {
        EXPECT_EQ(formatted(rows[i].format, rows[i].args), rows[i].expected) << rows[i].format;
    }
    EXPECT_STREQ(rows[4].args[0]->typeName(), "Int32") << "the last directive decides";
}

TEST(FormatArgs, readsAtMost128)
{
    EXPECT_EQ(countRead(std::make_integer_sequence<int, 127>()), 127);
    EXPECT_EQ(countRead(std::make_integer_sequence<int, 128>()), 128);
    EXPECT_EQ(countRead(std::make_integer_sequence<int, 129>()), 128);
}

TEST(FormatArgs, readsNothingFromTheLastPossiblePositionOn)
{
    EXPECT_EQ(argsOf("%d%2147483647$*.*d%d", 1, 2, 3, 4).size(), 1);
}

TEST(FormatArgs, leavesTheCallersListWhereItIs)
{
    const auto twice = [](const char* fmt, ...) {
        std::va_list ap;
        va_start(ap, fmt);
        (void)StringC::formatArgs(StringC(fmt), ap);
        const int value = StringC::formatArgs(StringC(fmt), ap)[0]->asInt32();
        va_end(ap);
        return value;
    };
    EXPECT_EQ(twice("%d", 7, 8), 7);
}
