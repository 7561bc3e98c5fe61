#include "error/impl/errimpl.h"
#include "errorapi.h"
#include "support/allocations.h"
#include "support/helpers.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <thread>

namespace {

const ErrorT DISK = 0xE1B20005L;

// A buffer that is no thread's, and what is in it: the messages, one a line.
struct BufferT {
    ErrBufI* const buffer = new ErrBufImplC;
    BufferT() = default;
    BufferT(const BufferT&) = delete;
    BufferT& operator=(const BufferT&) = delete;
    ~BufferT() { buffer->release(); }

    ErrBufI* operator->() const { return buffer; }
    void add(const char* text, ErrSevT sev = ERR_SEV_ERROR) const { buffer->error(DISK, sev, text); }
    std::string texts() const
    {
        std::string all;
        for (unsigned long i = 0; i < buffer->count(); ++i) all += buffer->get(i)->message().utf8() + std::string("\n");
        return all;
    }
};

struct TextRowT {
    const char* text;
    const char* problem;
    const char* reason;
    const char* solution;
    const char* message;
};

const TextRowT TEXT_ROWS[] = {
    {"", "", "", "", ""},
    {"P", "P", "", "", "P"},
    {"P\1R", "P", "R", "", "P\nR"},
    {"P\1R\1", "P", "R", "", "P\nR"},
    {"\1R\1S", "", "R", "S", "\nR\nS"},
    {"P\1\1S", "P", "", "S", "P\nS"},
    {"P\1R\1S\1X", "P", "R", "S", "P\nR\nS"},
    {"\xC3\xA9\1\xE2\x82\xAC", "\xC3\xA9", "\xE2\x82\xAC", "", "\xC3\xA9\n\xE2\x82\xAC"},
};

TEST(ErrBuf, takesTextsApart)
{
    const BufferT buffer;
    for (const TextRowT& row : TEXT_ROWS) {
        SCOPED_TRACE(row.message);
        buffer.add(row.text);
        const ErrEntryI& entry = *buffer->get(buffer->count() - 1);
        EXPECT_STREQ(entry.problem().utf8(), row.problem);
        EXPECT_STREQ(entry.reason().utf8(), row.reason);
        EXPECT_STREQ(entry.solution().utf8(), row.solution);
        EXPECT_STREQ(entry.message().utf8(), row.message);
        EXPECT_STREQ(StringC(entry).utf8(), row.message);
    }
}

TEST(ErrBuf, numbersItsEntriesAndGoesBackToACheckpoint)
{
    const BufferT buffer;
    EXPECT_EQ(buffer->checkpoint(), 1U);
    buffer.add("a");
    const ErrSequenceT checkpoint = buffer->checkpoint();
    buffer.add("b");
    buffer.add("c");
    EXPECT_EQ(buffer->get(2)->sequence(), 3U);
    buffer->rollback(checkpoint);
    EXPECT_EQ(buffer.texts(), "a\n");
    buffer.add("b");
    buffer.add("c");
    buffer->destroy(1);
    EXPECT_EQ(buffer.texts(), "a\nc\n");
    buffer->reset();
    EXPECT_EQ(buffer->count(), 0U);
    EXPECT_EQ(buffer->get(0), nullptr);
    buffer.add("d", ERR_SEV_NONE);
    EXPECT_EQ(buffer->get(0)->sequence(), 6U);
    EXPECT_EQ(buffer->get(0)->severity(), ERR_SEV_NONE);
    EXPECT_EQ(buffer->get(0)->error(), DISK);
}

TEST(ErrBuf, coalescesIntoOneTextWhoseEntriesStayReadable)
{
    const BufferT buffer;
    ErrSevT worst = ERR_SEV_FATAL;
    EXPECT_TRUE(buffer->coalesce(worst).isEmpty());
    EXPECT_EQ(worst, ERR_SEV_NONE);

    buffer.add("a\1b", ERR_SEV_WARN);
    buffer.add("c", ERR_SEV_INFO);
    buffer->get(1)->setSeverity(ERR_SEV_FATAL);
    buffer.add("", ERR_SEV_ERROR);
    const ErrEntryI* const first = buffer->get(0);
    EXPECT_STREQ(buffer->coalesce(worst).utf8(), "a\nb\nc\n");
    EXPECT_EQ(worst, ERR_SEV_FATAL);
    EXPECT_EQ(buffer->count(), 0U);
    EXPECT_STREQ(first->reason().utf8(), "b");
}

TEST(GetErrBuf, belongsToItsThread)
{
    ErrBufI* const mine = getErrBuf(2);
    EXPECT_EQ(getErrBuf(1), mine);
    std::thread([mine] { EXPECT_NE(getErrBuf(2), mine); }).join();

    destroyErrBuf();
    EXPECT_EQ(getErrBuf(2)->checkpoint(), 1U);
    getErrBuf(2)->release();   // what belongs to the thread itself
    EXPECT_EQ(getErrBuf(2)->count(), 0U);
    EXPECT_EQ(getErrBuf(2)->checkpoint(), 1U);
}

TEST(GetErrBuf, livesOnForWhoeverRetainsIt)
{
    ErrBufI* theirs = nullptr;
    std::thread([&theirs] {
        theirs = getErrBuf(2);
        theirs->retain();
        Error(DISK, "theirs");
    }).join();
    EXPECT_EQ(theirs->checkpoint(), 2U);
    EXPECT_STREQ(theirs->get(0)->message().utf8(), "theirs");
    theirs->release();
}

// Under a sanitizer, whose heap grows by itself, only leaks are looked for.
TEST(GetErrBuf, isEmptiedAMillionTimesInTheSameMemory)
{
    const int rounds = countsAllocations() ? 1000000 : 10000;
    size_t before = 0;
    for (int round = 0; round < rounds; ++round) {
        if (round == 1000) before = mallinfo2().uordblks;
        Error(DISK, "x");
        ErrSevT worst;
        getErrBuf(2)->coalesce(worst);
    }
    if (!countsAllocations()) return;
    EXPECT_LT(mallinfo2().uordblks, before + 1000);
}

// A thread's last words: reported when its buffer is already gone.
TEST(GetErrBuf, isThereAgainForWhoReportsInACleanUp)
{
    static unsigned long count;
    static pthread_key_t key;
    std::thread([] {
        Error(DISK, "first");
        pthread_key_create(&key, [](void*) {
            Error(DISK, "last");
            count = getErrBuf(2)->count();
        });
        pthread_setspecific(key, &key);
    }).join();
    pthread_key_delete(key);
    EXPECT_EQ(count, 1U);
}

TEST(GetErrBuf, threadsReportAndRollBackOnTheirOwn)
{
    inThreads(16, [](int thread) {
        for (int round = 0; round < 200; ++round) {
            Error(DISK, "%d", ArgListC(thread));
            {
                const AutoRollbackErrorCheckpointC scope;
                for (int i = 0; i < 5; ++i) ErrorErrno(i);
                EXPECT_EQ(getErrBuf(2)->count(), 6U);
            }
            ErrSevT worst;
            EXPECT_EQ(getErrBuf(2)->coalesce(worst), StringC(std::to_string(thread).c_str()));
        }
    });
}

}   // namespace
