#include "refcount.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

class CountedC : public RefCountC {
public:
    explicit CountedC(int* deleted) : m_deleted(deleted) {}
    CountedC(const CountedC&) = default;
    CountedC& operator=(const CountedC&) = default;
    ~CountedC() override { ++*m_deleted; }

private:
    int* m_deleted;
};
typedef RefM<CountedC> HandleT;

}   // namespace

TEST(RefCountC, copiesStartTheirOwnCount)
{
    int deleted = 0;
    const HandleT first(new CountedC(&deleted));
    const HandleT second(first);
    EXPECT_EQ(first.GetRefCount(), 2);
    const std::unique_ptr<CountedC> copy = std::make_unique<CountedC>(*first);
    EXPECT_EQ(copy->GetRefCount(), 0);
    *copy = *first;
    EXPECT_EQ(copy->GetRefCount(), 0);
}

TEST(RefM, lastHandleDeletesExactlyOnce)
{
    int deleted = 0;
    {
        HandleT handle(new CountedC(&deleted));
        HandleT& alias = handle;
        handle = alias;
        EXPECT_EQ(deleted, 0) << "assigned to itself";
        handle = std::move(alias);
        EXPECT_EQ(deleted, 0) << "moved to itself";
        HandleT moved(std::move(handle));
        EXPECT_EQ(moved.GetRefCount(), 1);
        moved = new CountedC(&deleted);
        EXPECT_EQ(deleted, 1);
        moved = nullptr;
        EXPECT_EQ(deleted, 2);
        EXPECT_EQ(moved.GetRefCount(), 0);
    }
    EXPECT_EQ(deleted, 2);
}

TEST(RefM, comparesByObject)
{
    int deleted = 0;
    CountedC* const object = new CountedC(&deleted);
    const HandleT handle(object);
    const HandleT other(new CountedC(&deleted));
    EXPECT_TRUE(handle == object);
    EXPECT_TRUE(handle != other);
    EXPECT_TRUE(handle < other || handle > other);
    EXPECT_TRUE(HandleT() == nullptr);
    EXPECT_FALSE(HandleT());
    EXPECT_EQ(handle.obj(), handle.GetObject());
}

TEST(RefM, unshareCopiesOnlyWhatIsShared)
{
    int deleted = 0;
    HandleT handle(new CountedC(&deleted));
    CountedC* const object = handle.obj();
    handle.Unshare();
    EXPECT_EQ(handle.obj(), object);
    const HandleT other(handle);
    handle.Unshare();
    EXPECT_NE(handle.obj(), object);
    EXPECT_EQ(other.GetRefCount(), 1);
}

TEST(RefM, handlesOfManyThreadsShareOneBody)
{
    int deleted = 0;
    {
        const HandleT shared(new CountedC(&deleted));
        inThreads(4, [&shared](int) {
            for (int i = 0; i < 5000; ++i) {
                HandleT mine(shared);
                const HandleT again(mine);
                mine = nullptr;
            }
        });
        EXPECT_EQ(shared.GetRefCount(), 1);
    }
    EXPECT_EQ(deleted, 1);
}
