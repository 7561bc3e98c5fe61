#include "list.h"

#include "containr/list_elems.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

typedef std::vector<ListElemI*> OracleT;

void expectLinks(const ListElemI* head, const OracleT& oracle, const void* closure, bool both)
{
    const ListElemI* elem = head;
    for (size_t i = 0; i < oracle.size(); ++i, elem = elem->next()) {
        ASSERT_EQ(elem, oracle[i]);
        if (both) {
            ASSERT_EQ(elem->prev(), i > 0 ? oracle[i - 1] : nullptr);
        }
    }
    ASSERT_EQ(elem, nullptr);
    if (!oracle.empty()) {
        ASSERT_EQ(oracle[oracle.size() / 2]->getClosure(), closure);
    }
}

void expectSame(const ListLWC& list, const OracleT& oracle)
{
    expectLinks(list.Head(), oracle, &list, false);
    ASSERT_EQ(list.isEmpty(), oracle.empty());
}

void expectSame(const ListSingleUncountedC& list, const OracleT& oracle)
{
    expectLinks(list.Head(), oracle, &list, false);
    ASSERT_EQ(list.size(), oracle.size());
    ASSERT_EQ(list[list.size()], nullptr);
    if (!oracle.empty()) {
        ASSERT_EQ(list[oracle.size() - 1], oracle.back());
    }
}

void expectSame(const ListSingleC& list, const OracleT& oracle)
{
    expectSame(static_cast<const ListSingleUncountedC&>(list), oracle);
    ASSERT_EQ(list.Tail(), oracle.empty() ? nullptr : oracle.back());
}

void expectSame(const ListDoubleC& list, const OracleT& oracle)
{
    expectSame(static_cast<const ListSingleC&>(list), oracle);
    expectLinks(list.Head(), oracle, &list, true);
}

template <class ListT, class ElemT>
void behavesAsAVector(unsigned seed)
{
    TextSourceC source(seed);
    ElemT elems[12];
    ListT list;
    OracleT oracle;
    for (int step = 0; step < 4000; ++step) {
        SCOPED_TRACE(step);
        ElemT* const elem = &elems[source.below(12)];
        const auto found = std::find(oracle.begin(), oracle.end(), elem);
        ASSERT_EQ(elem->inSomeList(), found != oracle.end());
        if (found != oracle.end()) {
            ASSERT_TRUE(list.remove(elem));
            oracle.erase(found);
            ASSERT_FALSE(list.remove(elem));
        } else {
            const size_t at = source.below(static_cast<uint32_t>(oracle.size()) + 1);
            ListElemI* const after = at > 0 ? oracle[at - 1] : nullptr;
            switch (source.below(4)) {
            case 0:
                list.append(elem);
                oracle.push_back(elem);
                break;
            case 1:
                list.prepend(elem);
                oracle.insert(oracle.begin(), elem);
                break;
            case 2:
                list.insertAfter(elem, after);
                oracle.insert(after != nullptr ? oracle.begin() + static_cast<long>(at) : oracle.end(), elem);
                break;
            default:
                if constexpr (std::is_same_v<ListT, ListDoubleC>) {
                    list.insertBefore(elem, at < oracle.size() ? oracle[at] : nullptr);
                    oracle.insert(at < oracle.size() ? oracle.begin() + static_cast<long>(at) : oracle.begin(), elem);
                }
            }
        }
        expectSame(list, oracle);
        if (testing::Test::HasFatalFailure()) return;
    }
    int owner = 0;
    EXPECT_EQ(list.setClosure(&owner), &list);
    EXPECT_EQ(list.getClosure(), &owner);
    list.clear();
    expectSame(list, {});
    EXPECT_EQ(list.getClosure(), &owner);
    for (const ElemT& elem : elems) EXPECT_FALSE(elem.inSomeList());
}

// What `print` writes to a stream.
template <class PrintT>
std::string printed(PrintT print)
{
    char* text = nullptr;
    size_t size = 0;
    FILE* const stream = open_memstream(&text, &size);
    print(stream);
    std::fclose(stream);
    const std::string result(text, size);
    std::free(text);
    return result;
}

std::string address(const void* p) { return testing::PrintToString(p); }

}   // namespace

TEST(Lists, behaveAsAVectorUnderRandomOperations)
{
    behavesAsAVector<ListLWC, SingleElemC>(321);
    behavesAsAVector<ListSingleUncountedC, SingleElemC>(322);
    behavesAsAVector<ListSingleC, SingleElemC>(323);
    behavesAsAVector<ListDoubleC, DoubleElemC>(324);
}

TEST(Lists, takeElementsOfOneListForNoneOfTheirs)
{
    SingleElemC single[2];
    ListSingleC a;
    ListSingleC b;
    a.append(&single[0]);
    EXPECT_FALSE(b.remove(&single[0]));
    EXPECT_FALSE(b.remove(nullptr));
    EXPECT_TRUE(a.contains(&single[0]));
    EXPECT_FALSE(a.contains(&single[1]));

    DoubleElemC both[4];
    ListDoubleC c;
    ListDoubleC d;
    c.append(&both[0]);
    c.append(&both[1]);
    d.append(&both[2]);
    EXPECT_FALSE(d.remove(&both[0]));
    EXPECT_FALSE(d.remove(&both[1]));
    EXPECT_FALSE(d.remove(&single[0]));
    EXPECT_EQ(c.size(), 2u);
    for (ListI* list : {static_cast<ListI*>(&a), static_cast<ListI*>(&c), static_cast<ListI*>(&d)}) list->clear();
}

TEST(ListLWC, joinsListsOfOneClosure)
{
    int owner = 0;
    SingleElemC elems[5];
    ListLWC a(&owner);
    ListLWC b(&owner);
    a.append(&elems[0]);
    a.append(&elems[1]);
    b.append(&elems[2]);
    a.appendAll(b);
    a.appendAll(b);
    a.appendAll(a);
    EXPECT_TRUE(b.isEmpty());
    expectLinks(a.Head(), {&elems[0], &elems[1], &elems[2]}, &owner, false);
    b.appendAll(a);
    EXPECT_TRUE(a.isEmpty());
    EXPECT_EQ(a.getClosure(), &owner);
    b.clear();
}

TEST(Lists, printTheirElementsAndLinks)
{
    DoubleElemC both[2];
    ListDoubleC doubles;
    doubles.append(&both[0]);
    doubles.append(&both[1]);
    EXPECT_EQ(printed([&](FILE* stream) { both[0].dump(stream); }),
              address(&both[0]) + "(n " + address(&both[1]) + ", p (nil))");
    doubles.clear();

    SingleElemC single;
    ListLWC list;
    list.append(&single);
    EXPECT_EQ(printed([&](FILE* stream) { list.dump(stream); }),
              "list@" + address(&list) + ": " + address(&single) + "(n (nil))\n");
    list.clear();
}

TEST(ListsDeathTest, wrongUseEndsTheProcess)
{
    const auto exits = testing::ExitedWithCode(1);
    SingleElemC elem;
    ListLWC list;
    list.append(&elem);
    ListDoubleC doubles;
    EXPECT_EXIT(list.prepend(&elem), exits,
                "Element incorrectly initialized or already in another list.* file list.cpp");
    list.clear();
    EXPECT_EXIT(doubles.append(&elem), exits, "Singly-linkable list element cannot be added to dobly-linked list");
    EXPECT_EXIT(ListElemI::mark(ListElemI::mark(&list)), exits, "!isMarked\\(\\(ListElemI\\*\\)v\\)");
    EXPECT_EXIT({ ListLWC().append(&elem); }, exits, "List must be empty when deleted");
}
