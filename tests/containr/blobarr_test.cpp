#include "objarray.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

struct RecordT {
    long key;
    int extra;
};

class RecordArrayC : public BlobArrayC {
public:
    RecordArrayC() : BlobArrayC(sizeof(RecordT)) {}
    using BlobArrayC::destroy;
    void destroy(void* element) override { m_destroyed.push_back(static_cast<RecordT*>(element)->key); }
    void resize() override
    {
        ++m_growths;
        BlobArrayC::resize();
    }
    long key(size_t n) const { return static_cast<RecordT*>((*this)[n])->key; }

    std::vector<long> m_destroyed;
    int m_growths = 0;
};

class OwnedLongsC : public ObjArrayC {
public:
    ~OwnedLongsC() override { destroyAll(); }
    using ObjArrayC::destroy;
    void destroy(void* object) override { delete static_cast<long*>(object); }
    long value(size_t n) const { return *static_cast<long*>((*this)[n]); }
};

int compareLongs(void* ctx, const void* a, const void* b)
{
    const long x = *static_cast<const long*>(a);   // a record begins with its key
    const long y = *static_cast<const long*>(b);
    return *static_cast<int*>(ctx) * ((x > y) - (x < y));
}

}   // namespace

TEST(BlobArray, behavesAsAVectorUnderRandomOperations)
{
    TextSourceC source(335);
    RecordArrayC array;
    std::vector<long> oracle;
    std::vector<long> destroyed;
    for (int step = 0; step < 20000; ++step) {
        const size_t at = source.below(static_cast<uint32_t>(oracle.size()) + 1);
        const auto place = oracle.begin() + static_cast<long>(at);
        const RecordT record = {step, 0};
        switch (source.below(step % 2000 < 1000 ? 4 : 6)) {
        case 0:
            array.add(at, &record);
            oracle.insert(place, step);
            break;
        case 1:
            array.add(&record);
            oracle.push_back(step);
            break;
        case 2:
            *static_cast<RecordT*>(array.addAt(at)) = record;
            oracle.insert(place, step);
            break;
        case 3:
            if (at == oracle.size()) break;
            array.put(at, &record);
            *place = step;
            break;
        case 4:
            if (at == oracle.size()) break;
            array.remove(at);
            oracle.erase(place);
            break;
        default:
            if (at == oracle.size()) break;
            array.destroy(at);
            destroyed.push_back(*place);
            oracle.erase(place);
        }
        ASSERT_EQ(array.size(), oracle.size()) << step;
        if (oracle.empty()) continue;
        ASSERT_EQ(array.key(at % oracle.size()), oracle[at % oracle.size()]) << step;
    }
    for (size_t n = 0; n < oracle.size(); ++n) ASSERT_EQ(array.key(n), oracle[n]);

    int ascending = 1;
    array.sort(compareLongs, &ascending);
    std::sort(oracle.begin(), oracle.end());
    for (size_t n = 0; n < oracle.size(); ++n) ASSERT_EQ(array.key(n), oracle[n]);

    destroyed.insert(destroyed.end(), oracle.begin(), oracle.end());
    array.destroyAll();
    EXPECT_EQ(array.m_destroyed, destroyed);
    EXPECT_EQ(array.size(), 0u);
}

TEST(BlobArray, growsByStepsWhenFullAndStartsAnewAfterClear)
{
    RecordArrayC array;
    std::vector<size_t> sizes;
    const RecordT record = {0, 0};
    for (int before = 0; sizes.size() < 6; before = array.m_growths) {
        array.add(size_t{0}, &record);
        if (array.m_growths != before) sizes.push_back(array.size());
    }
    EXPECT_EQ(sizes, (std::vector<size_t>{1, 33, 65, 129, 225, 353}));
    array.clear();
    array.add(&record);
    EXPECT_EQ(array.m_growths, 7);
    EXPECT_TRUE(array.m_destroyed.empty());
}

TEST(ObjArray, ownsWhatADerivedClassDestroys)
{
    OwnedLongsC array;
    for (const long value : {5, 3, 4, 1, 2}) array.add(new long(value));
    array.add(size_t{0}, new long(9));
    long* const third = static_cast<long*>(array.remove(2));
    EXPECT_EQ(*third, 3);
    delete third;
    array.destroy(0);   // int, unsigned and size_t are all indices, never a null object
    array.destroy(0u);
    array.destroy(size_t{0});
    int descending = -1;
    array.sort(compareLongs, &descending);
    EXPECT_EQ(array.size(), 2u);
    EXPECT_EQ(array.value(0), 2);
    EXPECT_EQ(array.value(1), 1);
    delete static_cast<long*>(array[1]);
    array.put(1, new long(7));
    EXPECT_EQ(array.value(1), 7);
}

TEST(ArraysDeathTest, placesBeyondTheEndEndTheProcess)
{
    RecordArrayC array;
    const auto exits = testing::ExitedWithCode(1);
    EXPECT_EXIT(array.addAt(1), exits, "Attempt to add past end of BlobArrayC.* file blobarr.cpp");
    EXPECT_EXIT(array.remove(0), exits, "Attempt to remove past end of BlobArrayC");
    EXPECT_EXIT(array.destroy(0), exits, "Attempt to destroy element past end of BlobArrayC");
    EXPECT_EXIT((void)array[0], exits, "n < used");
}
