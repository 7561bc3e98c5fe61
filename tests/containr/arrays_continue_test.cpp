#include "contemplate.h"
#include "objarray.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

TEST(ArraysContinue, whatIsBeyondTheEndIsLeftAlone)
{
    ObjArrayC array;
    int object = 0;
    EXPECT_EQ(array[0], nullptr);
    array.put(0, &object);
    EXPECT_EQ(assertCount("n < used"), 2u);
    EXPECT_EQ(array.remove(0), nullptr);
    EXPECT_EQ(assertCount("Attempt to remove past end of BlobArrayC"), 1u);
    array.destroy(0);
    EXPECT_EQ(assertCount("Attempt to destroy element past end of BlobArrayC"), 1u);
    array.add(7, &object);
    EXPECT_EQ(assertCount("Attempt to add past end of BlobArrayC"), 1u);
    ASSERT_EQ(array.size(), 1u);
    EXPECT_EQ(array[0], &object);
    EXPECT_EQ(assertCount(), 5u);
}

TEST(ArraysContinue, typedArraysYieldZero)
{
    ArrayM<long> array;
    array[3] = 5;
    EXPECT_EQ(array[3], 0);
    EXPECT_EQ(assertCount("n < used"), 2u);
    array.put(0, 1);
    EXPECT_EQ(array.remove(0), 0);
    EXPECT_EQ(assertCount("position < used"), 2u);
    array.add(7, 8);
    EXPECT_EQ(assertCount("position == used"), 1u);
    EXPECT_EQ(assertCount("Attempt to add past end of ArrayM"), 1u);
    ASSERT_EQ(array.size(), 1u);
    EXPECT_EQ(array[0], 8);

    ArrayM<long*> pointers;
    pointers << new long(1);
    pointers.destroy(1);
    pointers.destroy(SIZE_MAX);
    EXPECT_EQ(assertCount("position < used"), 4u);
    EXPECT_EQ(pointers.size(), 1u);
    pointers.destroyAll();
}
