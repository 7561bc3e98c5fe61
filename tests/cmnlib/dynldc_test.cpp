#include "dynldc.h"

#include "support/helpers.h"

#include <cmath>
#include <gmock/gmock.h>
#include <type_traits>

using testing::HasSubstr;
using testing::StartsWith;

static_assert(!std::is_copy_constructible_v<DynLoadC>, "two objects would close one opening");

TEST(DynLoad, findsFunctionsOfASharedObject)
{
    DynLoadC math("libm.so.6", false);
    ASSERT_TRUE(math.Connected()) << math.LastError();
    const auto cosine = reinterpret_cast<double (*)(double)>(math.AddressOfProcedure("cos"));
    ASSERT_NE(cosine, nullptr);
    EXPECT_EQ(cosine(0.5), std::cos(0.5));

    EXPECT_EQ(math.AddressOfProcedure(nullptr), nullptr);
    EXPECT_EQ(math.AddressOfProcedure(""), nullptr);
    EXPECT_STREQ(math.LastError(), "");
    EXPECT_EQ(math.AddressOfProcedure("noSuchFunction"), nullptr);
    EXPECT_THAT(math.LastError(), HasSubstr("noSuchFunction"));

    math.Disconnect();
    math.Disconnect();
    EXPECT_FALSE(math.Connected());
    EXPECT_EQ(math.AddressOfProcedure("cos"), nullptr);
}

TEST(DynLoad, tellsOnceWhyItCouldNotOpen)
{
    DynLoadC missing("noSuchModule", true);
    EXPECT_FALSE(missing.Connected());
    EXPECT_THAT(missing.LastError(), StartsWith("noSuchModule.so: "));
    EXPECT_STREQ(missing.LastError(), "");
    EXPECT_EQ(missing.AddressOfProcedure("cos"), nullptr);
}

TEST(DynLoad, namesThatAreNotUtf8AreRepairedInTheMessage)
{
    DynLoadC missing(StringC("./caf\xE9\xC3\xA9", 8, StringC::CC_VALID_UTF8), false);
    EXPECT_THAT(missing.LastError(), StartsWith("./caf\xEF\xBF\xBD\xC3\xA9: "));
    EXPECT_EQ(assertCount(), 0U);
}

TEST(DynLoad, longMessagesEndWithAWholeCharacter)
{
    for (int shift = 0; shift < 3; ++shift) {
        std::string name = "./" + std::string(static_cast<size_t>(shift), 'x');
        while (name.size() < 5000) name += "\xE2\x82\xAC";
        DynLoadC missing(StringC(name.c_str()), false);
        const std::string message = missing.LastError();
        EXPECT_EQ(message, name.substr(0, message.size()));
        EXPECT_GE(message.size(), 4600U);
        EXPECT_EQ((message.size() - 2 - static_cast<size_t>(shift)) % 3, 0U);
    }
}

TEST(DynLoad, emptyNameIsTheProgram)
{
    DynLoadC program("", false);
    EXPECT_TRUE(program.Connected());
    EXPECT_NE(program.AddressOfProcedure("malloc"), nullptr);
}

TEST(DynLoad, eachThreadHasItsOwnMessage)
{
    inThreads(8, [](int i) {
        const std::string name = "noSuchModule" + std::to_string(i);
        for (int round = 0; round < 50; ++round) {
            DynLoadC missing(name.c_str(), true);
            const char* const message = missing.LastError();
            EXPECT_THAT(message, StartsWith(name + ".so: "));
        }
    });
}
