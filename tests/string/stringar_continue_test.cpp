#include "stringar.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

TEST(StringArrayContinues, whatLiesOutsideIsEmptyAndChangesNothing)
{
    StringArrayC array;
    array.put(5, "lost");
    EXPECT_TRUE(array[5].isEmpty());
    EXPECT_TRUE(array.remove(0).isEmpty());
    array.destroy(0);
    EXPECT_EQ(array.size(), 0u);
    array.add(7, "end");
    EXPECT_EQ(array.size(), 1u);
    EXPECT_TRUE(array[0] == StringC("end"));
    EXPECT_EQ(assertCount("n < used"), 2u);
    EXPECT_EQ(assertCount(), 5u);
}
