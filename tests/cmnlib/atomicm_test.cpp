#include "atomicm.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

// Counting up and down through every boundary of T, against plain wrapping arithmetic.
template <class T>
void countsLike(std::initializer_list<T> starts)
{
    for (const T start : starts) {
        SCOPED_TRACE(start);
        const T next = static_cast<T>(static_cast<unsigned long>(start) + 1);
        const T previous = static_cast<T>(static_cast<unsigned long>(start) - 1);
        AtomicM<T> cell(start);
        EXPECT_EQ(cell.incr(), start);
        EXPECT_EQ(T(cell), next);
        EXPECT_EQ(cell.exchangeCmp(start, next), next) << "the swap must find what the increment left";
        EXPECT_EQ(cell.decr(), start);
        EXPECT_EQ(T(cell), previous);
        EXPECT_EQ(++cell, start);
        EXPECT_EQ(cell++, start);
        EXPECT_EQ(cell--, next);
        EXPECT_EQ(--cell, previous);
    }
}

}   // namespace

TEST(AtomicM, countsThroughTheBoundariesOfItsType)
{
    countsLike<int>({-1, 0, INT_MIN, INT_MAX});
    countsLike<unsigned>({0, UINT_MAX});
    countsLike<long>({-1, 0, LONG_MIN, LONG_MAX, UINT_MAX});
    countsLike<unsigned long>({0, UINT_MAX, ULONG_MAX});
}

TEST(AtomicM, swapsEveryKindOfCell)
{
    AtomicM<bool> flag;
    EXPECT_FALSE(flag);
    EXPECT_FALSE(flag.exchange(true));
    EXPECT_TRUE(flag.exchangeCmp(false, false)) << "not what was expected: the cell keeps its value";
    EXPECT_TRUE(flag.zero());
    EXPECT_FALSE(flag);

    int object = 0;
    AtomicM<int*> pointer(&object);
    const AtomicM<int*> copy(pointer);
    EXPECT_EQ(pointer.exchangeCmp(nullptr, &object), &object);
    EXPECT_EQ(pointer, nullptr);
    pointer = copy;
    EXPECT_EQ(pointer.zero(), &object);
}

TEST(AtomicM, losesNoCountUnderContention)
{
    AtomicM<unsigned long> cell;
    inThreads(4, [&cell](int) {
        for (int i = 0; i < 10000; ++i) ++cell;
    });
    EXPECT_EQ(cell, 40000u);
}
