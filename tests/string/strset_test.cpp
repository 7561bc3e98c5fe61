#include "strset.h"

#include "string/stringmodel.h"
#include "strkeyed.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

// Words that differ in case, in and beyond ASCII.
std::string randomWord(TextSourceC& source)
{
    static const char* const LETTERS[] = {"a", "A", "b", "\xC3\xA9", "\xC3\x89", "_"};
    std::string word;
    for (uint32_t n = source.below(5); n > 0; --n) word += LETTERS[source.below(std::size(LETTERS))];
    return word;
}

std::string folded(const std::string& word) { return stringmodel::bytesOf(StringC(word.c_str()).asLower()); }

std::set<std::string> contents(const StringSetC& set)
{
    std::set<std::string> strings;
    long status = 0;
    HashIteratorC walk(&set, false);
    while (HashElemI* const element = walk.next(status)) {
        strings.insert(stringmodel::bytesOf(*static_cast<StringSetEntryC*>(element)));
    }
    return strings;
}

std::string dumped(const HashElemI& element)
{
    char text[100] = "";
    FILE* const stream = fmemopen(text, sizeof text, "w");
    element.dump(stream, 0);
    std::fclose(stream);
    return std::string(text).substr(std::string(text).find('('));
}

// An element that counts how many of its kind live.
class CountedC : public StringKeyedHashElemC {
public:
    CountedC(const StringC& key, int value) : StringKeyedHashElemC(key), m_value(value) { ++living; }
    CountedC(const CountedC& other) : StringKeyedHashElemC(other), m_value(other.m_value) { ++living; }
    ~CountedC() override { --living; }
    int value() const { return m_value; }

    static int living;

private:
    const int m_value;
};
int CountedC::living = 0;

}   // namespace

TEST(StringSet, holdsWhatASortedSetHolds)
{
    for (const bool caseIndependent : {false, true}) {
        TextSourceC source(2603);
        StringSetC set(caseIndependent);
        std::map<std::string, std::string> model;   // what tells strings apart, to the string
        for (int step = 0; step < 3000; ++step) {
            const std::string word = randomWord(source);
            const std::string key = caseIndependent ? folded(word) : word;
            const StringC text(word.c_str());
            EXPECT_EQ(set.contains(text), model.count(key) != 0);
            if (source.below(2) != 0) {
                set.add(text);
                model[key] = word;
            } else {
                EXPECT_EQ(set.remove(text), model.erase(key) != 0);
            }
            ASSERT_EQ(set.size(), model.size());
        }
        std::set<std::string> expected;
        for (const auto& entry : model) expected.insert(entry.second);
        EXPECT_EQ(contents(set), expected);
        EXPECT_TRUE(set.checkConsistency());
        set.clear();
        EXPECT_EQ(set.size(), 0u);
    }
}

TEST(StringSet, dropsItsStringsWithItself)
{
    const StringC text("a text of its own");
    {
        StringSetC set;
        set.add(text);
        set.add(text);
        EXPECT_EQ(set.size(), 1u);
        long status = 0;
        StringSetEntryC copy(*static_cast<StringSetEntryC*>(HashIteratorC(&set, false).next(status)));
        EXPECT_FALSE(copy.inSomeTable());
        EXPECT_EQ(dumped(copy), "(0x0)\"a text of its own\"");
    }
    EXPECT_FALSE(text.impl().isShared());
}

TEST(StringKeyedHash, findsElementsByTheirString)
{
    for (const bool caseIndependent : {false, true}) {
        StringKeyedHashC table(caseIndependent);
        for (int i = 0; i < 200; ++i) table.add(new CountedC(StringC(("Key" + std::to_string(i)).c_str()), i));
        const StringC other("kEY17");
        const StringC same("Key17");
        EXPECT_EQ(table.get(&other) != nullptr, caseIndependent);
        ASSERT_NE(table.get(&same), nullptr);
        EXPECT_EQ(static_cast<CountedC*>(table.get(&same))->value(), 17);
        EXPECT_EQ(dumped(*table.get(&same)), "(0x0)\"Key17\"");
        {
            const CountedC copy(*static_cast<CountedC*>(table.get(&same)));
            EXPECT_FALSE(copy.inSomeTable());
        }
        EXPECT_TRUE(table.destroy(&same));
        EXPECT_EQ(table.get(&same), nullptr);
        EXPECT_TRUE(table.checkConsistency());
        EXPECT_EQ(CountedC::living, 199);
        table.destroyAll();
        EXPECT_EQ(CountedC::living, 0);
    }
}
