#include "hashmap.h"

#include "stringc.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <set>

namespace {

typedef HashMapM<unsigned long, long> NumberMapT;

// Counts how many there are.
struct CountedT {
    explicit CountedT(long number = 0) : value(number) { ++alive; }
    CountedT(const CountedT& other) : value(other.value) { ++alive; }
    CountedT& operator=(const CountedT&) = default;
    ~CountedT() { --alive; }

    long value;
    static std::atomic<long> alive;
};
std::atomic<long> CountedT::alive{0};

struct LargeT {
    long values[100];
};

struct ByLengthT {
    HashValT operator()(const std::string& key) const { return static_cast<HashValT>(key.size() / 2); }
};
struct SameLengthT {
    bool operator()(const std::string& a, const std::string& b) const { return a.size() == b.size(); }
};

// Every key with its values, newest first.
typedef std::map<unsigned long, std::deque<long>> OracleT;

void expectSame(const HashMapM<unsigned long, CountedT>& map, const OracleT& oracle)
{
    OracleT visited;
    auto all = map.getIter(true);
    for (++all; all; ++all) visited[all->Key()].push_back(all->Value().value);
    ASSERT_EQ(visited, oracle);
    size_t keys = 0;
    auto it = map.getIter();
    for (++it; it; ++it, ++keys) ASSERT_EQ((*it).Value().value, oracle.at(it->Key()).front());
    ASSERT_EQ(keys, oracle.size());
    ASSERT_EQ(map.values().size(), map.size());
    ASSERT_EQ(map.keys().size(), map.size());
}

}   // namespace

TEST(HashMap, behavesAsAMapUnderRandomOperations)
{
    TextSourceC source(312);
    {
        HashMapM<unsigned long, CountedT> map;
        OracleT oracle;
        std::deque<HashResultM<unsigned long, CountedT>> results;
        size_t size = 0;
        for (int step = 0; step < 20000; ++step) {
            SCOPED_TRACE(step);
            const unsigned long key = source.below(step % 8000 < 6000 ? 3000 : 100) * 0x100000001ul;
            std::deque<long>& values = oracle[key];
            const bool isIn = !values.empty();
            ASSERT_EQ(map.exists(key), isIn);
            switch (source.below(5)) {
            case 0:
                map.add(key, CountedT(step));
                values.push_front(step);
                ++size;
                break;
            case 1:
            case 2: {
                const auto displaced = map.put(key, CountedT(step));
                ASSERT_EQ(displaced.found(), isIn);
                if (isIn) {
                    ASSERT_EQ(displaced->value, values.front());
                    values.pop_front();
                }
                values.push_front(step);
                size += !isIn;
                results.push_back(displaced);
                break;
            }
            default:
                const auto removed = map.remove(key);
                ASSERT_EQ(removed.found(), isIn);
                if (!isIn) break;
                ASSERT_EQ(removed.Key(), key);
                ASSERT_EQ(removed.Value().value, values.front());
                values.pop_front();
                --size;
            }
            ASSERT_EQ(map.size(), size);
            ASSERT_EQ(map.get(key).found(), !values.empty());
            if (values.empty()) {
                oracle.erase(key);
            } else {
                ASSERT_EQ(map.get(key).Value().value, values.front());
            }
            if (results.size() > 50) results.erase(results.begin(), results.begin() + 30);
            if (step % 500 == 0) {
                expectSame(map, oracle);
                ASSERT_TRUE(map.checkConsistency());
            }
            if (step == 12000) {
                map.clear();
                oracle.clear();
                size = 0;
            }
            if (HasFatalFailure()) return;
        }
    }
    EXPECT_EQ(CountedT::alive, 0);
}

TEST(HashMap, resultsOutliveTheMap)
{
    typedef HashMapM<unsigned long, CountedT> MapT;
    for (const unsigned long count : {1ul, 10ul, 2000ul}) {
        std::vector<MapT::ResultT> results;
        {
            MapT map;
            for (unsigned long key = 0; key < count; ++key) map.put(key, CountedT(7));
            for (unsigned long key = 0; key < count; key += 2) results.push_back(map.remove(key));
            results.push_back(map.put(count, CountedT(8)));
            EXPECT_FALSE(results.back().found());
        }
        EXPECT_EQ(CountedT::alive, static_cast<long>(results.size()) - 1);
        MapT::ResultT copy = results.front();
        results.front().Value().value = 9;
        EXPECT_EQ(copy->value, 7) << "a copy has an element of its own";
        copy = *&copy;
        copy = results.front();
        EXPECT_EQ(copy->value, 9);
        MapT::ResultT moved = std::move(copy);
        results.clear();
        EXPECT_EQ(CountedT::alive, 1);
    }
    EXPECT_EQ(CountedT::alive, 0);
}

// What was taken out is nobody's but its holder's, whatever the map is doing meanwhile.
TEST(HashMap, resultsMayEndInAnyThread)
{
    for (int round = 0; round < 20; ++round) {
        auto map = std::make_unique<HashMapM<unsigned long, CountedT>>();
        for (unsigned long key = 0; key < 400; ++key) map->add(key, CountedT(1));
        std::vector<HashResultM<unsigned long, CountedT>> results[3];
        for (unsigned long key = 0; key < 300; ++key) results[key % 3].push_back(map->remove(key));
        inThreads(4, [&](int i) {
            if (i < 3) return results[i].clear();
            for (unsigned long key = 0; key < 300; ++key) map->add(key, CountedT(2));
            map.reset();
        });
    }
    EXPECT_EQ(CountedT::alive, 0);
}

TEST(HashMap, isUsableThroughItsBase)
{
    HashMapM<unsigned long, CountedT> map;
    HashTableC& table = map;
    for (unsigned long key = 0; key < 100; ++key) map.add(key, CountedT(1));
    table.add(new HashElemM<unsigned long, CountedT>(1000, CountedT(2)));
    const unsigned long key = 1000;
    EXPECT_EQ(map.get(1000)->value, 2);
    EXPECT_TRUE(table.destroy(&key));
    long status = -1;
    HashIteratorC it(&table, true);
    delete it.remove(status);
    EXPECT_EQ(CountedT::alive, 99);
    table.destroyAll();
    EXPECT_EQ(CountedT::alive, 0);
    EXPECT_TRUE(map.checkConsistency());
    map.add(5, CountedT(5));
    EXPECT_EQ(map.size(), 1u);
}

// The base takes an element out without ending it, so that it may go into another map.
TEST(HashMap, endsElementsFromOtherMaps)
{
    typedef HashMapM<unsigned long, CountedT> MapT;
    for (const unsigned long own : {0ul, 100ul}) {
        MapT cleared;
        MapT ended;
        for (unsigned long key = 0; key < own; ++key) ended.add(key, CountedT(1));
        {
            MapT source;
            for (unsigned long key = 0; key < 100; ++key) source.add(key, CountedT(2));
            for (unsigned long key = 50; key < 70; ++key) {
                HashTableC& target = key % 2 != 0 ? cleared : ended;
                target.add(static_cast<HashTableC&>(source).remove(static_cast<const void*>(&key)));
            }
        }
        cleared.clear();
        EXPECT_EQ(CountedT::alive, static_cast<long>(own) + 10);
    }
    EXPECT_EQ(CountedT::alive, 0);
}

TEST(HashMap, takesAnyKeysValuesAndFunctors)
{
    HashMapM<std::string, LargeT, ByLengthT, SameLengthT> map;
    for (size_t length = 0; length < 40; ++length)
        map.put(std::string(length, 'a'), LargeT{{static_cast<long>(length)}});
    EXPECT_EQ(map.get("bbbbb")->values[0], 5);
    EXPECT_TRUE(map.put("ccccc", LargeT{{55}}).found());
    EXPECT_EQ(map.size(), 40u);

    StringMapM<long> counts;
    for (const char* word : {"b", "a", "b", "", "b"}) {
        counts.exists(word) ? ++counts.get(word).Value() : (counts.add(word, 1), 1L);
    }
    EXPECT_EQ(counts.size(), 3u);
    EXPECT_EQ(counts.get("b").Value(), 3);
    struct SameHashT {
        HashValT operator()(double) const { return 1; }
    };
    HashMapM<double, int, SameHashT> numbers;
    for (const double key : {1.0, 1.0, std::nan(""), std::nan(""), 2.0}) numbers.add(key, 0);
    int visited = 0;
    auto it = numbers.getIter();
    for (++it; it; ++it) ++visited;
    EXPECT_EQ(visited, 4) << "a NaN equals no other key";
    EXPECT_EQ(hashOf<unsigned long>()(0x123456789ABCDEF0ul), 0x9ABCDEF0u);
}

TEST(HashMap, iteratorsThatFindTheMapChangedAreAtTheirEnd)
{
    NumberMapT map;
    for (unsigned long key = 0; key < 20; ++key) map.put(key, 1);
    auto it = map.getIter();
    EXPECT_FALSE(it);
    EXPECT_EQ((*it).Key(), 0ul) << "the first element comes without a step";
    EXPECT_TRUE(it);
    map.put(3, 2);
    EXPECT_FALSE(++it);
    long status = 0;
    EXPECT_EQ(it.current(status), nullptr);
    EXPECT_EQ(status, 0xE0CA0002L);
    it.rewind();
    EXPECT_EQ(it.next(status)->Key(), 0ul);
}

TEST(HashMapDeathTest, aMissHasNoValue)
{
    NumberMapT map;
    EXPECT_EXIT((void)map.get(7).Value(), testing::ExitedWithCode(1), "\\(found\\(\\)\\) failed file hashmap.h");
}
