#include "hashmap.h"

#include "containr/hash_elems.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

TEST(HashTableContinues, elementsInATableStayWhereTheyAre)
{
    NumberElemC elem(1);
    NumberTableC table;
    NumberTableC other;
    table.add(&elem);
    table.add(&elem);
    other.add(&elem);
    EXPECT_EQ(other.put(&elem), nullptr);
    EXPECT_EQ(table.put(&elem), &elem) << "the element itself is what it displaces";
    EXPECT_EQ(assertCount("Element incorrectly initialized or already in another hashtable"), 3u);
    EXPECT_EQ(table.size(), 1u);
    EXPECT_EQ(other.size(), 0u);
    EXPECT_EQ(elem.getTable(), &table);

    const long missing = 9;
    EXPECT_EQ(table.next(nullptr, &missing), nullptr);
    EXPECT_EQ(assertCount("current"), 1u);

    NumberElemC stray(2);
    ListLWC list(nullptr);
    list.append(&stray);
    EXPECT_FALSE(HashTableC::removeElem(&stray));
    EXPECT_EQ(assertCount("Can't remove element, it isn't in any table"), 1u);
    list.clear();
}

TEST(HashTableContinues, aMissYieldsAnEmptyValue)
{
    HashMapM<unsigned long, std::string> map;
    map.get(1).Value() = "lost";
    EXPECT_EQ(map.get(1).Value(), "");
    EXPECT_EQ(map.remove(1).Key(), 0ul);
    EXPECT_EQ(assertCount("found()"), 3u);
}
