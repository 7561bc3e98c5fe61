#include "stringar.h"

#include "string/stringmodel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using stringmodel::bytesOf;

typedef std::vector<std::string> StringsT;

StringsT contents(const StringArrayC& array)
{
    StringsT strings;
    for (size_t n = 0; n < array.size(); ++n) strings.push_back(bytesOf(array[n]));
    return strings;
}

StringArrayC arrayOf(const StringsT& strings)
{
    StringArrayC array;
    for (const std::string& text : strings) array << StringC(text.c_str());
    return array;
}

// Short words, so that some are equal, and some in front of each other.
std::string randomWord(TextSourceC& source)
{
    std::string word(source.below(3), 'x');
    for (char& ch : word) ch = static_cast<char>('a' + source.below(3));
    return word + (source.below(4) == 0 ? "\xC3\xA9" : "");
}

}   // namespace

TEST(StringArray, behavesLikeAVectorOfStrings)
{
    TextSourceC source(2601);
    StringArrayC array;
    StringsT model;
    for (int step = 0; step < 5000; ++step) {
        const std::string word = randomWord(source);
        const size_t at = source.below(static_cast<uint32_t>(model.size()) + 1);
        const auto place = model.begin() + static_cast<ptrdiff_t>(at);
        const StringC text(word.c_str());
        if (at == model.size() || step % 7 < 2) {
            array.add(text);
            model.push_back(word);
        } else if (step % 7 == 2) {
            array.add(at, array[at]);   // a string of its own
            model.insert(place, std::string(model[at]));
        } else if (step % 7 == 3) {
            array.put(at, text);
            model[at] = word;
        } else if (step % 7 == 4) {
            EXPECT_EQ(bytesOf(array.remove(at)), *place);
            model.erase(place);
        } else if (step % 7 == 5) {
            array.destroy(at);
            model.erase(place);
        } else if (model.size() < 100) {
            array += array;
            const StringsT twin = model;
            model.insert(model.end(), twin.begin(), twin.end());
        }
        ASSERT_EQ(array.size(), model.size());
        if (step % 50 == 0) {
            ASSERT_EQ(contents(array), model);
        }
    }
    ASSERT_EQ(contents(array), model);
    array.sort();
    std::sort(model.begin(), model.end());
    EXPECT_EQ(contents(array), model);
}

TEST(StringArray, copiesShareTextsAndNothingElse)
{
    const StringC one("a text of its own");
    const StringC two("another");
    const StringC* const list[] = {&one, &two, &one, nullptr};
    {
        StringArrayC array(list);
        StringArrayC copy(array);
        copy << two;
        copy[0] += two;
        EXPECT_EQ(contents(array), (StringsT{"a text of its own", "another", "a text of its own"}));
        EXPECT_EQ(contents(copy).front(), "a text of its ownanother");
        array = copy;
        array = static_cast<const StringArrayC&>(array);
        EXPECT_EQ(contents(array), contents(copy));
        array.destroyAll();
        EXPECT_EQ(array.size(), 0u);
        BlobArrayC& base = copy;
        base.destroyAll();
        EXPECT_EQ(base.size(), 0u);
        array.add(one);
        array.clear();
        array.add(two);
    }
    EXPECT_FALSE(one.impl().isShared()) << "every handle is gone";
    EXPECT_FALSE(two.impl().isShared());
}

TEST(StringArray, sortsByWhatTheCallerSays)
{
    StringArrayC array = arrayOf({"pear", "fig", "banana", "kiwi", ""});
    int calls = 0;
    array.sort(
        [](void* closure, StringC a, StringC b) {
            ++*static_cast<int*>(closure);
            return static_cast<int>(b.length() - a.length());
        },
        &calls);
    EXPECT_EQ(array[0].length(), 6);
    EXPECT_TRUE(array[4].isEmpty());
    EXPECT_GT(calls, 4);
    array.sort(
        [](void*, const void* a, const void* b) {
            return static_cast<const StringArrayEntryC*>(b)->compare(*static_cast<const StringArrayEntryC*>(a));
        },
        nullptr);
    EXPECT_EQ(contents(array), (StringsT{"pear", "kiwi", "fig", "banana", ""}));
}

TEST(StringArray, comparesElementByElement)
{
    const StringsT arrays[] = {{}, {""}, {"a"}, {"a", ""}, {"a", "b"}, {"ab"}, {"b"}, {"\xC3\xA9"}};
    for (size_t i = 0; i < std::size(arrays); ++i) {
        for (size_t k = 0; k < std::size(arrays); ++k) {
            const int result = arrayOf(arrays[i]).compare(arrayOf(arrays[k]));
            EXPECT_EQ((result > 0) - (result < 0), (i > k) - (i < k)) << i << " and " << k;
        }
    }
}

TEST(StringArrayDeathTest, rangesAreChecked)
{
    StringArrayC array;
    EXPECT_EXIT((void)array[0], testing::ExitedWithCode(1), "n < used");
    EXPECT_EXIT(array.put(0, "a"), testing::ExitedWithCode(1), "n < used");
    EXPECT_EXIT(array.add(1, "a"), testing::ExitedWithCode(1), "Attempt to add past end of BlobArrayC");
    EXPECT_EXIT((void)array.remove(0), testing::ExitedWithCode(1), "Attempt to remove past end of BlobArrayC");
}
