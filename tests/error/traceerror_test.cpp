#include "errorapi.h"
#include "support/helpers.h"
#include "tracing/tracehelpers.h"
#include "tvxcmn.h"

#include <atomic>
#include <cerrno>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

ErrorT numberOf(unsigned set, unsigned message) { return 0xE0000000L | set << 16 | message; }

// A consumer of detail 0 that wants all announcements.
class TraceErrorTest : public testing::Test {
protected:
    TraceErrorTest() : buffer(*getErrBuf(2)), controller(*getTraceController(2))
    {
        buffer.reset();
        controller.registerConsumer(&consumer, 0, 0);
        controller.enable(&consumer, "Error");
    }
    ~TraceErrorTest() override
    {
        controller.disable(&consumer, "Error");
        controller.unregisterConsumer(&consumer);
        buffer.reset();
    }

    std::string texts() const
    {
        std::string all;
        for (unsigned long i = 0; i < buffer.count(); ++i) all += buffer.get(i)->message().utf8() + std::string(" ");
        return all;
    }

    ErrBufI& buffer;
    TraceControllerI& controller;
    RecordingConsumerC consumer;
};

TEST_F(TraceErrorTest, announcesWhatHappensToAFailure)
{
    ErrSevT worst;
    const ErrSequenceT checkpoint = ErrorCheckpoint();
    Error(numberOf(12, 5), "{w} %d\1r", ArgListC(1));
    Error(numberOf(434, 1), "b");
    ErrorRollback(checkpoint);
    Error(numberOf(12, 5), "{f} c");
    buffer.get(0)->setSeverity(ERR_SEV_INFO);
    buffer.reset();
    Error(numberOf(4095, 65535), "{m} d");
    buffer.coalesce(worst);
    buffer.error(numberOf(12, 6), ERR_SEV_NONE, "e");
    buffer.destroy(0);
    EXPECT_THAT(consumer.messages,
                ElementsAre("0,Error/Occurrence/Warning/12/5@0:Warning Occurrence (s12m5): Problem: 1",
                            "0,Error/Occurrence/Error/434/1@0:Error Occurrence (s434m1): b",
                            "0,Error/Recovery/Error/434/1@0:Error Recovery (s434m1): b",
                            "0,Error/Recovery/Warning/12/5@0:Warning Recovery (s12m5): 1\nr",
                            "0,Error/Occurrence/Fatal/12/5@0:Fatal Occurrence (s12m5): c",
                            "0,Error/Report/Information/12/5@0:Information Report (s12m5): c",
                            "0,Error/Occurrence/Monitor/4095/65535@0:Monitor Occurrence (s4095m65535): d",
                            "0,Error/Report/Monitor/4095/65535@0:Monitor Report (s4095m65535): d",
                            "0,Error/Occurrence/None/12/6@0:None Occurrence (s12m6): e"));
}

struct PartsRowT {
    const char* text;
    const char* shown;
};

const PartsRowT PARTS_ROWS[] = {
    {"P", "P"},
    {"", ""},
    {"P\1R", "Problem: P"},
    {"\1R", ""},
    {"P\1R\1", "Problem: P, Reason: R"},
    {"P\1\1", "Problem: P, "},
    {"\1R\1S", "Reason: R, Solution: S"},
    {"P\1\1S", "Problem: P, Solution: S"},
    {"P\1R\1S\1X", "Problem: P, Reason: R, Solution: S\1X"},
    {"\1\1S", "Solution: S"},
};

TEST_F(TraceErrorTest, namesThePartsOfATextThatHasASolutionsSeparator)
{
    for (const PartsRowT& row : PARTS_ROWS) {
        SCOPED_TRACE(row.shown);
        consumer.messages.clear();
        buffer.error(numberOf(13, 1), ERR_SEV_ERROR, row.text);
        EXPECT_THAT(consumer.messages, ElementsAre(std::string("0,Error/Occurrence/Error/13/1@0:Error Occurrence "
                                                               "(s13m1): ") +
                                                   row.shown));
    }
}

TEST_F(TraceErrorTest, takesSeveritiesOutOfRangeForTheNextOne)
{
    buffer.error(numberOf(14, 1), static_cast<ErrSevT>(6), "x");
    buffer.error(numberOf(14, 1), static_cast<ErrSevT>(-1), "x");
    EXPECT_THAT(consumer.messages, ElementsAre("0,Error/Occurrence/Fatal/14/1@0:Fatal Occurrence (s14m1): x",
                                               "0,Error/Occurrence/None/14/1@0:None Occurrence (s14m1): x"));
}

TEST_F(TraceErrorTest, seesAtOnceWhatIsTurnedOnAndOff)
{
    controller.disable(&consumer, "Error/Occurrence");
    Error(numberOf(15, 1), "a");
    EXPECT_TRUE(consumer.messages.empty());
    controller.enable(&consumer, "Error/Occurrence/Error/15/1");
    errno = ENOENT;
    consumer.onMessage = [](const char*) { errno = EIO; };
    Error(numberOf(15, 1), "b");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(consumer.messages.size(), 1U);
    controller.inherit(&consumer, "Error/Occurrence");
    controller.inherit(&consumer, "Error/Occurrence/Error/15/1");
}

TEST_F(TraceErrorTest, announcesMoreFailuresThanItRemembers)
{
    for (unsigned message = 0; message < 6000; ++message) Error(numberOf(18, message), "x");
    EXPECT_EQ(consumer.messages.size(), 6000U);
    EXPECT_EQ(consumer.messages.back(), "0,Error/Occurrence/Error/18/5999@0:Error Occurrence (s18m5999): x");
    controller.disable(&consumer, "Error");
    Error(numberOf(18, 5999), "x");
    EXPECT_EQ(consumer.messages.size(), 6000U);
}

TEST_F(TraceErrorTest, recordsWhatAConsumerReportsWithoutAnnouncingIt)
{
    consumer.onMessage = [](const char*) { Error(numberOf(16, 2), "nested"); };
    Error(numberOf(16, 1), "first");
    EXPECT_EQ(texts(), "first nested ");
    EXPECT_EQ(consumer.messages.size(), 1U);
}

TEST_F(TraceErrorTest, letsAConsumerChangeTheBufferThatAnnounces)
{
    for (const char* const text : {"a", "b", "c"}) Error(numberOf(17, 1), text);
    consumer.onMessage = [](const char*) { Error(numberOf(17, 2), "nested"); };
    buffer.rollback(buffer.get(1)->sequence());
    EXPECT_EQ(texts(), "a nested nested ");
    buffer.reset();
    EXPECT_EQ(texts(), "nested nested nested ");
    ErrSevT worst;
    EXPECT_EQ(buffer.coalesce(worst), StringC("nested\nnested\nnested"));
    EXPECT_EQ(texts(), "nested nested nested ");

    consumer.messages.clear();
    consumer.onMessage = [this](const char*) {
        ErrSevT ignored;
        buffer.coalesce(ignored);
        Error(numberOf(17, 2), "late");
    };
    buffer.rollback(1);
    EXPECT_EQ(texts(), "late ");
    EXPECT_STREQ(buffer.coalesce(worst).utf8(), "late");
    EXPECT_EQ(texts(), "late ");
    EXPECT_EQ(consumer.messages.size(), 2U);
}

TEST_F(TraceErrorTest, makesAClassForEachDifferentFailureOnly)
{
    for (int i = 0; i < 1000; ++i) {
        Error(numberOf(18, 1), "a");
        Error(numberOf(18, 2), "b");
        buffer.reset();
    }
    int count = 0;
    controller.getChildCount("Error/Occurrence/Error/18", &count);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(consumer.messages.size(), 4000U);
}

TEST_F(TraceErrorTest, threadsMeetInOneClass)
{
    std::atomic<int> messages{0};
    consumer.onMessage = [&messages](const char*) { ++messages; };
    inThreads(8, [](int) {
        for (unsigned message = 0; message < 50; ++message) Error(numberOf(19, message), "%d", ArgListC(1));
        getErrBuf(2)->rollback(1);
    });
    EXPECT_EQ(messages, 8 * 50 * 2);
}

}   // namespace
