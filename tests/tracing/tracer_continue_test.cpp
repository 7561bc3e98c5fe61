#include "support/helpers.h"
#include "tracer.h"
#include "tracing/tracehelpers.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

namespace {

TEST(TracerContinues, wrongVersionGetsTheSecondOne)
{
    EXPECT_EQ(getTracer(0), getTracer(2));
    EXPECT_EQ(assertCount("Tracer version not supported"), 1u);
    EXPECT_EQ(getTraceController(1), getTraceController(2));
    EXPECT_EQ(assertCount("Trace Controller version not supported"), 1u);
    EXPECT_EQ(assertCount("Tracer version not supported"), 2u);
}

TEST(TracerContinues, messageWithoutATracePointIsNotSent)
{
    EXPECT_FALSE(getTracer(2)->trace("continue", nullptr, "x", ArgListC()));
    EXPECT_EQ(assertCount("enabled_pp != 0"), 1u);
    EXPECT_EQ(assertCount(), 1u);
}

TEST(TracerContinues, badFormatIsRepairedOnItsWayIntoTheFile)
{
    TraceDefaultConsumerI* const file = getTracer(2)->getDefaultConsumer();
    file->setFilePattern("bad.trc");
    EXPECT_EQ(file->message("continue", 0, "\xFF%d%k", ArgListC("text")), 0);
    EXPECT_EQ(fileText("bad.trc"), "\xEF\xBF\xBD"
                                   "0k\n");
    EXPECT_EQ(assertCount("Type mismatch in string formatting"), 1u);
    file->setFilePattern("/dev/null");
}

}   // namespace
