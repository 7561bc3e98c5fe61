#include "quicksort.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace {

// An element of BYTES bytes with its key in the first ones and a trace of it in the last one.
template <size_t BYTES>
struct ElementM {
    unsigned char bytes[BYTES];

    explicit ElementM(unsigned key = 0)
    {
        for (size_t i = 0; i < BYTES; ++i) bytes[i] = static_cast<unsigned char>(i < 2 ? key >> (8 * (1 - i)) : key);
    }
    bool operator==(const ElementM& other) const { return std::memcmp(bytes, other.bytes, BYTES) == 0; }
};

struct CountT {
    size_t bytes;
    size_t calls;
};

int compareBytes(void* ctx, const void* a, const void* b)
{
    CountT* const count = static_cast<CountT*>(ctx);
    ++count->calls;
    return std::memcmp(a, b, count->bytes);
}

// Sorts the keys as elements and returns how often elements were compared.
template <size_t BYTES>
size_t sorted(const std::vector<unsigned>& keys)
{
    std::vector<ElementM<BYTES>> elements(keys.begin(), keys.end());
    std::vector<ElementM<BYTES>> expected = elements;
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto& a, const auto& b) { return std::memcmp(a.bytes, b.bytes, BYTES) < 0; });
    CountT count = {BYTES, 0};
    quicksort(elements.data(), elements.size(), BYTES, compareBytes, &count);
    EXPECT_TRUE(elements == expected) << keys.size() << " elements of " << BYTES << " bytes";
    return count.calls;
}

// Plays against the sort: an element's value is settled only when a comparison forces it to be, and
// then so that it helps as little as it can (M. D. McIlroy, "A Killer Adversary for Quicksort", 1999).
struct AdversaryT {
    std::vector<int> values;
    int settled = 0;
    int candidate = 0;
    size_t calls = 0;

    static int compare(void* ctx, const void* a, const void* b)
    {
        AdversaryT& self = *static_cast<AdversaryT*>(ctx);
        const int x = *static_cast<const int*>(a);
        const int y = *static_cast<const int*>(b);
        const int gas = static_cast<int>(self.values.size());
        const auto value = [&](int i) -> int& { return self.values[static_cast<size_t>(i)]; };
        ++self.calls;
        if (value(x) == gas && value(y) == gas) value(x == self.candidate ? x : y) = self.settled++;
        if (value(x) == gas) self.candidate = x;
        if (value(y) == gas) self.candidate = y;
        return value(x) - value(y);
    }
};

}   // namespace

TEST(Quicksort, agreesWithAStableSortForEverySizeAndKindOfOrder)
{
    TextSourceC source(333);
    for (const size_t count : {0u, 1u, 2u, 3u, 4u, 5u, 8u, 9u, 10u, 33u, 100u, 1000u, 3000u}) {
        for (const unsigned range : {1u, 2u, 16u, 65536u}) {
            std::vector<unsigned> keys(count);
            for (unsigned& key : keys) key = source.below(range);
            sorted<2>(keys);
            sorted<4>(keys);
            sorted<8>(keys);
            sorted<16>(keys);
            sorted<24>(keys);
            sorted<700>(keys);
            std::sort(keys.begin(), keys.end());
            sorted<8>(keys);
            std::reverse(keys.begin(), keys.end());
            sorted<24>(keys);
            if (count > 2) std::swap(keys[0], keys[count / 2]);
            sorted<4>(keys);
        }
    }
}

TEST(Quicksort, comparesNoMoreThanItMust)
{
    EXPECT_EQ(sorted<4>({}), 0u);
    EXPECT_EQ(sorted<4>({1}), 0u);
    EXPECT_EQ(sorted<4>({2, 1}), 1u);

    std::vector<unsigned> keys(5000);
    std::iota(keys.begin(), keys.end(), 0u);
    EXPECT_EQ(sorted<4>(keys), keys.size() - 1);
    std::reverse(keys.begin(), keys.end());
    EXPECT_EQ(sorted<4>(keys), keys.size());
    EXPECT_EQ(sorted<4>(std::vector<unsigned>(5000, 7)), keys.size() - 1);
}

TEST(Quicksort, anAdversaryCannotMakeItQuadratic)
{
    for (const int count : {100, 16000, 64000}) {
        AdversaryT adversary;
        adversary.values.assign(static_cast<size_t>(count), count);
        std::vector<int> elements(static_cast<size_t>(count));
        std::iota(elements.begin(), elements.end(), 0);
        quicksort(elements.data(), elements.size(), sizeof(int), AdversaryT::compare, &adversary);
        EXPECT_TRUE(std::is_sorted(elements.begin(), elements.end(), [&](int a, int b) {
            return adversary.values[static_cast<size_t>(a)] < adversary.values[static_cast<size_t>(b)];
        }));
        EXPECT_LT(static_cast<double>(adversary.calls), 5 * count * std::log2(count)) << count;
    }
}

// Run under the address sanitizer this also shows that nothing outside the array is touched.
TEST(Quicksort, comparisonsThatContradictThemselvesOnlyMixTheOrder)
{
    typedef int (*AnswerT)(TextSourceC&);
    const AnswerT answers[] = {[](TextSourceC&) { return -1; }, [](TextSourceC&) { return 1; },
                               [](TextSourceC& source) { return static_cast<int>(source.below(3)) - 1; },
                               [](TextSourceC& source) { return source.below(20) == 0 ? 1 : -1; }};
    struct ContextT {
        TextSourceC source{334};
        AnswerT answer;
    };
    for (const AnswerT answer : answers) {
        for (const size_t count : {2u, 5u, 9u, 10u, 64u, 2000u}) {
            ContextT context;
            context.answer = answer;
            std::vector<long> elements(count);
            std::iota(elements.begin(), elements.end(), 0L);
            const std::vector<long> before = elements;
            quicksort(
                elements.data(), count, sizeof(long),
                [](void* ctx, const void*, const void*) {
                    ContextT* const self = static_cast<ContextT*>(ctx);
                    return self->answer(self->source);
                },
                &context);
            EXPECT_TRUE(std::is_permutation(elements.begin(), elements.end(), before.begin()));
        }
    }
}
