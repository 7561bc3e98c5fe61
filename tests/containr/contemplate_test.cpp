#include "contemplate.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

int compareDescending(const int& a, const int& b) { return (a < b) - (a > b); }

int compareByContext(void* ctx, const int& a, const int& b)
{
    return *static_cast<int*>(ctx) * compareDescending(a, b);
}

void expectSame(const ArrayM<int>& array, const std::vector<int>& oracle)
{
    ASSERT_EQ(array.size(), oracle.size());
    ASSERT_TRUE(std::equal(array.begin(), array.end(), oracle.begin()));
}

}   // namespace

TEST(ArrayM, behavesAsAVectorUnderRandomOperations)
{
    TextSourceC source(336);
    ArrayM<int> array;
    std::vector<int> oracle;
    for (int step = 0; step < 20000; ++step) {
        const size_t at = source.below(static_cast<uint32_t>(oracle.size()) + 1);
        const auto place = oracle.begin() + static_cast<long>(at);
        const bool inside = at < oracle.size();
        switch (source.below(step % 1000 < 500 ? 5 : 8)) {
        case 0:
        case 1:
            array.add(at, step);
            oracle.insert(place, step);
            break;
        case 2:
            inside ? array << array[at] : array << step;   // a value of the array's own, which may be full
            oracle.push_back(inside ? oracle[at] : step);
            break;
        case 3:
            *array.addAt(at) = step;
            oracle.insert(place, step);
            break;
        case 4:
            if (inside) array.put(at, oracle[at] = step);
            break;
        case 5:
        case 6:
            if (!inside) break;
            ASSERT_EQ(array.remove(at), *place);
            oracle.erase(place);
            break;
        default:
            if (source.below(50) != 0) break;
            array.truncate(at);
            oracle.resize(at);
        }
        expectSame(array, oracle);
    }
    ArrayM<int> copy(array);
    copy << 1;
    copy.sort(compareDescending);
    expectSame(array, oracle);
    array = copy;
    oracle.push_back(1);
    std::sort(oracle.rbegin(), oracle.rend());
    expectSame(array, oracle);
    int reverse = -1;
    array.sort_c(compareByContext, &reverse);
    std::reverse(oracle.begin(), oracle.end());
    expectSame(array, oracle);
}

TEST(ArrayM, deletesWhatItsPointersPointAtOnlyWhenTold)
{
    ArrayM<std::string*> array;
    for (const char* text : {"a", "b", "c", "d", "e", "f"}) array << new std::string(text);
    array.destroy(0);
    array.destroyRange(1, 3);
    ASSERT_EQ(array.size(), 3u);
    EXPECT_EQ(*array[0] + *array[1] + *array[2], "bef");
    delete array.remove(1);
    array.destroyAll();
    EXPECT_EQ(array.size(), 0u);
}

TEST(ArrayMDeathTest, placesBeyondTheEndEndTheProcess)
{
    ArrayM<int> array;
    const auto exits = testing::ExitedWithCode(1);
    EXPECT_EXIT(array[0] = 1, exits, "n < used");
    EXPECT_EXIT(array.put(0, 1), exits, "position < used");
    EXPECT_EXIT(array.remove(0), exits, "position < used");
    EXPECT_EXIT(array.add(1, 1), exits, "position == used");
}
