#include "list.h"

#include "containr/list_elems.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

TEST(ListsContinue, elementsThatCannotBeAddedChangeNothing)
{
    const char* const inAList = "Element incorrectly initialized or already in another list";
    DoubleElemC elems[2];
    SingleElemC single;
    ListDoubleC list;
    list.append(&elems[0]);
    list.append(&elems[1]);
    list.append(&elems[1]);
    list.prepend(&elems[1]);
    list.insertAfter(&elems[1], &elems[0]);
    list.insertBefore(&elems[0], &elems[1]);
    EXPECT_EQ(assertCount(inAList), 4u);

    list.append(&single);
    list.prepend(&single);
    list.insertBefore(&single, &elems[1]);
    EXPECT_EQ(assertCount("Singly-linkable list element cannot be added to dobly-linked list"), 3u);

    EXPECT_EQ(list.size(), 2u);
    EXPECT_EQ(list.Tail(), &elems[1]);
    EXPECT_EQ(elems[1].prev(), &elems[0]);
    EXPECT_TRUE(list.remove(&elems[1]));
    EXPECT_TRUE(list.remove(&elems[0]));

    ListSingleC counted;
    counted.append(&single);
    counted.prepend(&single);
    EXPECT_EQ(counted.size(), 1u);
    counted.clear();
    EXPECT_EQ(assertCount(inAList), 5u);
}

TEST(ListsContinue, aMarkedPointerStaysMarked)
{
    int closure = 0;
    ListElemI* const marked = ListElemI::mark(&closure);
    EXPECT_EQ(ListElemI::mark(marked), marked);
    EXPECT_EQ(ListElemI::unmark(marked), &closure);
    EXPECT_EQ(assertCount("!isMarked((ListElemI*)v)"), 1u);
    SingleElemC elem;
    ListLWC().append(&elem);
    EXPECT_EQ(assertCount("List must be empty when deleted"), 1u);
}
