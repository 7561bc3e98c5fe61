#include "hashtbl.h"

#include "containr/hash_elems.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <set>
#include <utility>

namespace {

// The elements in the table, newest first.
typedef std::deque<NumberElemC*> OracleT;

OracleT::iterator newest(OracleT& oracle, long key)
{
    return std::find_if(oracle.begin(), oracle.end(), [key](const NumberElemC* elem) { return elem->m_key == key; });
}

NumberElemC* takenFrom(OracleT& oracle, OracleT::iterator at)
{
    if (at == oracle.end()) return nullptr;
    NumberElemC* const elem = *at;
    oracle.erase(at);
    return elem;
}

// Equal keys are visited newest first; without duplicates, only the newest.
void expectVisits(const NumberTableC& table, const OracleT& oracle, bool with_dups)
{
    std::set<long> keys;
    OracleT expected;
    for (NumberElemC* elem : oracle) {
        if (keys.insert(elem->m_key).second || with_dups) expected.push_back(elem);
    }
    HashIteratorC it(&table, with_dups);
    OracleT visited;
    long status = -1;
    while (HashElemI* const elem = it.next(status)) visited.push_back(static_cast<NumberElemC*>(elem));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(it.next(status), nullptr);
    const auto byKey = [](const NumberElemC* a, const NumberElemC* b) { return a->m_key < b->m_key; };
    std::stable_sort(expected.begin(), expected.end(), byKey);
    std::stable_sort(visited.begin(), visited.end(), byKey);
    ASSERT_EQ(visited, expected);
}

void expectDuplicates(const NumberTableC& table, OracleT oracle, long key)
{
    HashElemI* elem = table.get(&key);
    for (auto at = newest(oracle, key); at != oracle.end(); at = newest(oracle, key)) {
        ASSERT_EQ(elem, *at);
        oracle.erase(at);
        elem = table.next(elem, &key);
    }
    ASSERT_EQ(elem, nullptr);
}

std::string dumped(const HashTableC& table)
{
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    table.dump(stream);
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}

std::string address(const void* p) { return testing::PrintToString(p); }

}   // namespace

TEST(HashTable, behavesAsAListUnderRandomOperations)
{
    TextSourceC source(311);
    std::deque<NumberElemC> elems;
    for (long i = 0; i < 600; ++i) elems.emplace_back(static_cast<long>(source.below(400)));
    NumberTableC table;
    OracleT oracle;
    for (int step = 0; step < 8000; ++step) {
        SCOPED_TRACE(step);
        NumberElemC* const elem = &elems[source.below(step < 5000 ? 600 : 20)];
        const bool isIn = elem->inSomeTable();
        ASSERT_EQ(isIn, std::find(oracle.begin(), oracle.end(), elem) != oracle.end());
        switch (source.below(6)) {
        case 0:
        case 1:
            if (isIn) break;
            table.add(elem);
            oracle.push_front(elem);
            break;
        case 2:
            if (isIn && *newest(oracle, elem->m_key) != elem) break;
            ASSERT_EQ(table.put(elem), takenFrom(oracle, newest(oracle, elem->m_key)));
            oracle.push_front(elem);
            break;
        case 3:
            ASSERT_EQ(source.below(2) != 0 ? table.remove(elem) : HashTableC::removeElem(elem), isIn);
            std::erase(oracle, elem);
            break;
        case 4: ASSERT_EQ(table.remove(elem->key()), takenFrom(oracle, newest(oracle, elem->m_key))); break;
        default:
            NumberElemC* const destroyed = takenFrom(oracle, newest(oracle, elem->m_key));
            ASSERT_EQ(table.destroy(elem->key()), destroyed != nullptr);
            ASSERT_TRUE(destroyed == nullptr || std::exchange(destroyed->m_isDestroyed, false));
        }
        ASSERT_EQ(table.size(), oracle.size());
        expectDuplicates(table, oracle, elem->m_key);
        if (step % 300 == 0) {
            ASSERT_TRUE(table.checkConsistency());
            expectVisits(table, oracle, false);
            expectVisits(table, oracle, true);
        }
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(table.buckets(), 200u);
    const size_t buckets = table.buckets();
    table.clear();
    EXPECT_TRUE(table.checkConsistency());
    for (NumberElemC& elem : elems) table.add(&elem);
    table.destroyAll();
    EXPECT_TRUE(table.checkConsistency());
    EXPECT_GE(table.buckets(), buckets);
    EXPECT_EQ(table.empty_lists, table.buckets());
    for (const NumberElemC& elem : elems) ASSERT_TRUE(elem.m_isDestroyed && !elem.inSomeTable());
}

TEST(HashTable, hasOneBucketMoreAsSoonAsNineTenthsAreExceeded)
{
    std::deque<NumberElemC> elems;
    NumberTableC table;
    EXPECT_EQ(table.buckets(), 1u);
    EXPECT_EQ(table.bits_mask, 0u);
    EXPECT_EQ(table.empty_lists, 1u);
    for (size_t n = 1; n <= 5000; ++n) {
        elems.emplace_back(static_cast<long>(n * 7));
        table.add(&elems.back());
        size_t buckets = 1;
        while (static_cast<double>(n) / static_cast<double>(buckets) > 0.9) ++buckets;
        ASSERT_EQ(table.buckets(), buckets) << n;
        ASSERT_GE(table.bits_mask + 1, buckets);
        ASSERT_LT(table.bits_mask / 2 + 1, std::max<size_t>(buckets, 2));
    }
    EXPECT_TRUE(table.checkConsistency());
}

TEST(HashTable, dumpsItsBuckets)
{
    NumberElemC elems[] = {NumberElemC(0), NumberElemC(3), NumberElemC(30)};
    NumberTableC table;
    for (NumberElemC& elem : elems) table.add(&elem);
    EXPECT_EQ(dumped(table),
              "Dumping table at " + address(&table) + ", size=4 (1 empty), mask=3\n\t0x0: " + address(&elems[0]) +
                  "(0x0)\n\t0x1: " + address(&elems[1]) + "(0x1)\n\t0x2: " + address(&elems[2]) + "(0x2)\n");
}

TEST(HashTable, tellsWhatIsInconsistent)
{
    NumberElemC elem(21);
    NumberTableC table;
    table.add(&elem);
    table.bits_mask = 15;
    table.empty_lists = 7;
    elem.m_hash = 8;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(table.checkConsistency());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "bits_mask 0xF incorrect, should be 0x1\n"
              "Element hash value wrong: " +
                  address(&elem) + "(0x8)\nElement in wrong list: " + address(&elem) +
                  "(0x8)\nempty_lists 7 incorrect, should be 1\nconsistency check failed\n");
    elem.m_hash = 7;
    table.empty_lists = 1;
    EXPECT_TRUE(table.checkConsistency());
}

TEST(HashIterator, noticesChangesThatAreNotItsOwn)
{
    std::deque<NumberElemC> elems;
    NumberTableC table;
    for (long i = 0; i < 40; ++i) table.add(&elems.emplace_back(i));
    HashIteratorC it(&table, true);
    long status = -1;
    ASSERT_NE(it.next(status), nullptr);
    EXPECT_EQ(status, 0);
    NumberElemC late(100);
    table.add(&late);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(it.next(status), nullptr);
        EXPECT_EQ(status, 0xE0CA0002L);
        EXPECT_EQ(it.current(status), nullptr);
        EXPECT_EQ(status, 0xE0CA0002L);
        EXPECT_EQ(it.remove(status), nullptr);
        EXPECT_EQ(status, 0xE0CA0002L);
    }
    it.rewind();
    EXPECT_EQ(it.current(status), &elems[2]) << "the newest of bucket 0, which comes without next";
    EXPECT_EQ(status, 0);

    // Removing every other element: what followed the removed one is current.
    size_t removed = 0;
    for (HashElemI* elem = it.current(status); elem != nullptr; elem = it.next(status)) {
        ASSERT_EQ(it.remove(status), elem);
        ASSERT_FALSE(elem->inSomeTable());
        ++removed;
        if (it.current(status) == nullptr) break;
    }
    EXPECT_EQ(removed, 21u);
    EXPECT_EQ(table.size(), 20u);
    EXPECT_EQ(it.remove(status), nullptr);
    EXPECT_EQ(status, 0);
}

TEST(HashTableDeathTest, wrongUseEndsTheProcess)
{
    const auto exits = testing::ExitedWithCode(1);
    NumberElemC elem(1);
    NumberTableC table;
    const long missing = 9;
    EXPECT_EXIT(table.next(nullptr, &missing), exits, "\\(current\\) failed file hashtbl.cpp");
    table.add(&elem);
    const char* const already = "Element incorrectly initialized or already in another hashtable";
    EXPECT_EXIT(table.add(&elem), exits, already);
    NumberTableC other;
    EXPECT_EXIT(other.put(&elem), exits, already);
    EXPECT_EQ(table.next(nullptr, elem.key()), nullptr) << "the element after the first one";

    NumberElemC stray(2);
    ListLWC list(nullptr);
    list.append(&stray);
    EXPECT_EXIT(HashTableC::removeElem(&stray), exits, "Can't remove element, it isn't in any table");
    list.clear();
    EXPECT_FALSE(HashTableC::removeElem(&stray));
    EXPECT_FALSE(other.remove(&elem));
}
