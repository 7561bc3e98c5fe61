#include "arglist.h"

#include "string/stringmodel.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using stringmodel::bytesOf;

// The kinds of a list's arguments, one name after the other.
std::string kinds(const ArgListC& list)
{
    std::string names;
    for (long i = 0; i < list.size(); ++i) names += std::string(i > 0 ? " " : "") + list[i]->typeName();
    return names;
}

// An argument of a caller's own that knows whether it lives.
class OwnArgC : public ArgUserC {
public:
    explicit OwnArgC(bool& isAlive) : m_isAlive(isAlive) { m_isAlive = true; }
    ~OwnArgC() override { m_isAlive = false; }
    const char* typeName() const override { return "Own"; }

private:
    bool& m_isAlive;
};

const timeval NOON = {43200, 7};

}   // namespace

TEST(ArgList, operandDecidesTheKind)
{
    enum { ENUMERATOR = 3 };
    ArgListC list;
    list << short{-1} << static_cast<unsigned short>(65535) << -2 << 3u << 4L << 5LL << 6UL << 7ULL << StringC("s")
         << "text" << NOON << ArgUCS4C(0x20AC) << ArgObjRefC(&list) << true << 'c' << ENUMERATOR << sizeof(int);
    EXPECT_EQ(kinds(list), "Int16 Unsigned16 Int32 Unsigned32 Int64 Int64 Unsigned64 Unsigned64 String CharStar "
                           "TimeVal UCS4 ObjRef Int32 Int32 Int32 Unsigned64");
    EXPECT_EQ(list[0]->asInt16(), -1);
    EXPECT_EQ(list[1]->asUnsigned16(), 65535);
    EXPECT_EQ(list[2]->asInt32(), -2);
    EXPECT_EQ(list[3]->asUnsigned32(), 3u);
    EXPECT_EQ(list[5]->asInt64(), 5);
    EXPECT_EQ(list[7]->asUnsigned64(), 7u);
    EXPECT_EQ(bytesOf(list[8]->asString()), "s");
    EXPECT_STREQ(list[9]->asCharStar(), "text");
    EXPECT_EQ(list[10]->asTimeVal().tv_usec, 7);
    EXPECT_EQ(list[11]->asUCS4(), 0x20ACu);
    EXPECT_EQ(list[12]->asObjRef(), &list);
    EXPECT_EQ(list[-1], nullptr);
    EXPECT_EQ(list[list.size()], nullptr);
}

TEST(ArgList, factoryAndConstructorsStartWithOneArgument)
{
    const ArgListC lists[] = {ArgList << short{1},
                              ArgList << static_cast<unsigned short>(65535),
                              ArgList << 1,
                              ArgList << 1u,
                              ArgList << 1L,
                              ArgList << 1ULL,
                              ArgList << "a",
                              ArgList << StringC("a"),
                              ArgList << NOON,
                              ArgList << ArgUCS4C('a'),
                              ArgList << ArgObjRefC(nullptr)};
    const char* const expected[] = {"Int16",    "Int32",  "Int32",   "Unsigned32", "Int64", "Unsigned64",
                                    "CharStar", "String", "TimeVal", "UCS4",       "ObjRef"};
    for (size_t i = 0; i < std::size(lists); ++i) EXPECT_EQ(kinds(lists[i]), expected[i]) << i;
    EXPECT_EQ(kinds(ArgListC(5LL)) + kinds("a") + kinds(StringC("a")), "Int64CharStarString");
    EXPECT_EQ(kinds(ArgList << 1 << "a" << StringC("b")), "Int32 CharStar String");
    EXPECT_EQ(ArgListNull.size(), 0);
    EXPECT_EQ(ArgListNull[0], nullptr);
}

TEST(ArgList, namesOfKindsEndWithTheKnownOnes)
{
    EXPECT_STREQ(ArgC::typeName(ArgC::Bool), "Bool");
    EXPECT_STREQ(ArgC::typeName(ArgC::Blob), "Blob");
    EXPECT_STREQ(ArgC::typeName(ArgC::NullArg), "Null");
    for (const int type : {-1, 20, 300}) EXPECT_STREQ(ArgC::typeName(static_cast<ArgC::TypeT>(type)), "") << type;
}

TEST(ArgList, textsAreCopied)
{
    char text[] = "before";
    ArgListC list;
    list << text << static_cast<const char*>(nullptr) << std::string(1000, 'x').c_str();
    std::strcpy(text, "after!");
    EXPECT_STREQ(list[0]->asCharStar(), "before");
    EXPECT_STREQ(list[1]->asCharStar(), "");
    EXPECT_EQ(list[2]->asCharStar(), std::string(1000, 'x'));
    EXPECT_STREQ(ArgCharStarC(ArgCharStarC(nullptr)).value(), "");
}

TEST(ArgList, copiesShareWhatIsAppendedLaterOnceThereIsABody)
{
    ArgListC empty;
    ArgListC copyOfEmpty = empty;
    empty << 1;
    EXPECT_EQ(copyOfEmpty.size(), 0);

    ArgListC copy = empty;
    empty << 2;
    copy << 3;
    EXPECT_EQ(copy.size(), 3);
    EXPECT_EQ(empty[2], copy[2]);
    copy = copyOfEmpty;
    EXPECT_EQ(copy.size(), 0);
    EXPECT_EQ(empty.size(), 3);
}

TEST(ArgList, keepsEveryArgumentWhileItGrows)
{
    ArgListC list;
    for (int i = 0; i < 100; ++i) {
        list << i << std::to_string(i).c_str() << StringC(std::to_string(i).c_str());
    }
    ASSERT_EQ(list.size(), 300);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(list[3 * i]->asInt32(), i);
        EXPECT_EQ(list[3 * i + 1]->asCharStar(), std::to_string(i));
        EXPECT_EQ(bytesOf(list[3 * i + 2]->asString()), std::to_string(i));
    }
}

// Run under the leak sanitizer, this tells whether every kind is freed.
TEST(ArgList, ownsWhatIsAddedButForBoolAndUser)
{
    const StringC text("a text of its own");
    bool isAlive = false;
    OwnArgC own(isAlive);
    ArgBoolC truth(true);
    {
        ArgListC list;
        list.add(&truth).add(&own).add(nullptr).add(new ArgRealC(1.5)).add(new ArgDateTimeC(9)).add(new ArgNullC);
        list.add(new ArgGuidC(OSAGuidT{1, 2, 3, {4}})).add(new ArgArgListC(ArgList << text)).add(new ArgInt16C(1));
        list.add(new ArgInt32C(1)).add(new ArgInt64C(1)).add(new ArgUnsigned16C(1)).add(new ArgUnsigned32C(1));
        list.add(new ArgUnsigned64C(1)).add(new ArgUCS4C(1)).add(new ArgStringC(text)).add(new ArgObjRefC(&own));
        list.add(new ArgCharStarC("c")).add(new ArgTimeValC(NOON));
        EXPECT_EQ(list[2], nullptr);
        EXPECT_TRUE(list[0]->asBool());
        EXPECT_STREQ(list[1]->typeName(), "User");
        EXPECT_STREQ(list[1]->asUser().typeName(), "Own");
        EXPECT_EQ(list[4]->asDateTime(), 9u);
        EXPECT_EQ(list[6]->asGuid().Data3, 3);
        EXPECT_EQ(bytesOf(list[7]->asArgList()[0]->asString()), "a text of its own");
        EXPECT_TRUE(text.impl().isShared());
    }
    EXPECT_FALSE(text.impl().isShared());
    EXPECT_TRUE(isAlive);
}

TEST(ArgList, copiesMayBeDroppedByDifferentThreads)
{
    const StringC text("shared by all");
    for (int round = 0; round < 200; ++round) {
        std::vector<ArgListC> copies(4, ArgList << text << 1);
        inThreads(4, [&copies](int i) {
            ArgListC copy = copies[static_cast<size_t>(i)];
            copies[static_cast<size_t>(i)] = ArgListNull;
            EXPECT_EQ(copy[1]->asInt32(), 1);
        });
    }
    EXPECT_FALSE(text.impl().isShared());
}

TEST(ArgListDeathTest, objectReferenceIsTheOnlyAccessorThatChecks)
{
    const ArgListC list = ArgList << 1;
    EXPECT_EXIT((void)list[0]->asObjRef(), testing::ExitedWithCode(1), "t == ObjRef");
}
