#include "tracing/tracerc.h"

#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tracesite.h"
#include "tracing/tracedelivery.h"
#include "tracing/tracehelpers.h"
#include "tvxcmn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <fstream>
#include <thread>

namespace {

using testing::ElementsAre;

// Every test uses classes of its own: the tracer is one for all of them.
class Tracer : public testing::Test {
protected:
    Tracer() { controller->registerConsumer(&consumer, 0, 9); }
    ~Tracer() override
    {
        controller->unregisterConsumer(&consumer);
        tracer->getDefaultConsumer()->setFilePattern("/dev/null");
    }

    TracerI* const tracer = getTracer(2);
    TracerV1I* const tracerV1 = getTracerV1();
    TraceControllerI* const controller = getTraceController(2);
    RecordingConsumerC consumer;
    const unsigned* site = nullptr;
};

TEST_F(Tracer, exportsGiveThreeInterfacesOfOneObject)
{
    EXPECT_EQ(static_cast<TracerI*>(static_cast<TracerC*>(controller)), tracer);
    EXPECT_EQ(static_cast<TracerC*>(tracer)->TracerV1(), tracerV1);
    EXPECT_EQ(getTracer(2), tracer);
    EXPECT_EQ(tracer->unregisterTask() + tracerV1->unregisterTask(), 0);
    EXPECT_EQ(tracerV1->getDefaultConsumer(), tracer->getDefaultConsumer());
}

TEST_F(Tracer, tracePointSeesTheMaskThroughItsPointer)
{
    EXPECT_FALSE(tracer->trace("cached", &site, "x", ArgListC()));
    EXPECT_EQ(site, &valuesOf(*controller, "cached").net);
    controller->enable(&consumer, "cached");
    EXPECT_TRUE(tracer->trace("not looked up again", &site, "%d", ArgListC(1)));
    EXPECT_NE(tracer->enabled("cached", nullptr), 0u);
    controller->disable(&consumer, "cached");
    EXPECT_EQ(*site, 0u);
    EXPECT_FALSE(tracer->trace("cached", &site, "x", ArgListC()));
    EXPECT_THAT(consumer.messages, ElementsAre("not looked up again@0:1"));

    const unsigned* none = nullptr;
    EXPECT_EQ(tracer->enabled(nullptr, &none), 0u);
    EXPECT_FALSE(tracer->increment(nullptr, &none, 1) || tracer->realTimerStart(nullptr, &none));
    EXPECT_FALSE(tracer->getCounters(nullptr, &none, nullptr, nullptr, nullptr));
    EXPECT_EQ(none, nullptr);
}

bool traceV1(TracerV1I* tracer, const unsigned** site, const char* format, ...)
{
    std::va_list parameters;
    va_start(parameters, format);
    const bool traced = tracer->trace("v1", site, format, parameters);
    va_end(parameters);
    return traced;
}

TEST_F(Tracer, firstVersionTakesArgumentsLikePrintf)
{
    EXPECT_FALSE(traceV1(tracerV1, &site, "%k is not even looked at"));
    controller->enable(&consumer, "v1");
    errno = ENOENT;
    EXPECT_TRUE(traceV1(tracerV1, &site, "%s %ld %!", "text", 5000000000));
    EXPECT_THAT(consumer.messages, ElementsAre("v1@0:text 5000000000 No such file or directory"));
}

TEST_F(Tracer, indentationIsOneForTheProcess)
{
    EXPECT_FALSE(tracer->indent("indent/off", nullptr));
    controller->enable(&consumer, "indent");
    EXPECT_TRUE(tracer->indent("indent", nullptr));
    TVX_TRACE("indent", "in");
    tracer->outdent();
    tracer->outdent();
    TVX_TRACE("indent", "out");
    EXPECT_TRUE(tracerV1->indent("indent", nullptr));
    EXPECT_THAT(consumer.messages, ElementsAre("indent@1:in", "indent@-1:out"));
}

TEST_F(Tracer, countersAndTimersTellAllConsumers)
{
    long count = 0;
    long long total = 0;
    long long frequency = 0;
    EXPECT_FALSE(tracer->increment("values", &site, 5));
    EXPECT_FALSE(tracer->decrement("values", &site, 3));
    EXPECT_FALSE(tracerV1->decrement("values", &site, INT32_MIN));
    tracer->realTimerEnd("values", &site);   // does not run
    tracer->realTimerEnd("values", nullptr);
    EXPECT_EQ(consumer.changes.size(), 3u);
    EXPECT_TRUE(tracer->realTimerStart("values", &site));
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    tracer->realTimerEnd("values", &site);
    tracer->realTimerEnd("values", &site);
    EXPECT_EQ(consumer.changes.size(), 4u);
    EXPECT_TRUE(tracer->getCounters("values", &site, &count, &total, &frequency));
    EXPECT_EQ(count, 2L + INT32_MIN);
    EXPECT_GE(total, 2000);
    EXPECT_EQ(frequency, 1000000);
}

// The first reading of the timer in a process is 0, which must not mean that it stands still.
TEST_F(Tracer, firstTimerOfAProcessRuns)
{
    TracerC fresh;
    EXPECT_TRUE(fresh.realTimerStart("first", &site));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    fresh.realTimerEnd("first", &site);
    EXPECT_GT(reinterpret_cast<const TraceValuesT*>(site)->total, 0);
}

TEST_F(Tracer, tracePointsEvaluateTheirArgumentsOnlyWhenTheClassIsOn)
{
    int evaluated = 0;
    for (int i = 0; i < 2; ++i) {
        TVX_TRACE("site", "%d %s", ++evaluated, "text");
        TVX_TRACE_INDENT("site");
        TVX_TRACE("site", "inside");
        TVX_TRACE("site", "%s", ArgList << "list");
        TVX_TRACE_COUNT("site", 2);
        TVX_TRACE_TIMER("site/timer");
        controller->enable(&consumer, "site");
    }
    EXPECT_EQ(evaluated, 1);
    EXPECT_THAT(consumer.messages, ElementsAre("site@0:1 text", "site@1:inside", "site@1:list"));
    EXPECT_THAT(consumer.changes, ElementsAre("site@0", "site/timer@0", "site@1", "site/timer@1"));
    EXPECT_EQ(valuesOf(*controller, "site").count, 4);
}

TEST_F(Tracer, registeredTaskSaysWhoItIsAndSetsTheDefaultConsumer)
{
    const char* name = nullptr;
    int id = 0;
    std::ofstream("profile") << "filename = task.trc\nmax_detail = 1\nshow_process = no\ntask\n";
    EXPECT_EQ(tracer->registerTask("agent", "profile", nullptr), 0);
    controller->programName(&name);
    EXPECT_STREQ(name, "agent");
    EXPECT_EQ(tracerV1->registerTask(nullptr, "missing profile", "description"), 0);
    const char* kept = nullptr;
    controller->programName(&kept);
    EXPECT_EQ(kept, name);
    EXPECT_EQ(controller->traceDescriptionFile(&name), 0);
    EXPECT_STREQ(name, "description");
    EXPECT_EQ(controller->taskId(&id), 0);
    EXPECT_EQ(id, getpid());
    EXPECT_FALSE(tracer->trace("task/a/b", &site, "too deep", ArgListC()));
    TVX_TRACE("task", "%s", "line");
    EXPECT_EQ(fileText("task.trc"), "line\n");
}

// A file that cannot be opened drops the consumer; the next profile brings it back.
TEST_F(Tracer, defaultConsumerComesBackWithAProfile)
{
    std::ofstream("bad") << "filename = missing/x.trc\ndropped\n";
    std::ofstream("good") << "filename = good.trc\ndropped\n";
    tracer->registerTask(nullptr, "bad", nullptr);
    TVX_TRACE("dropped", "lost");
    tracer->getDefaultConsumer()->setFilePattern("good.trc");
    TVX_TRACE("dropped", "lost");
    EXPECT_EQ(tracer->getDefaultConsumer()->message("dropped", 0, "direct", ArgListC()), 0);
    tracer->registerTask(nullptr, "good", nullptr);
    TVX_TRACE("dropped", "written");
    EXPECT_EQ(fileText("good.trc"), "direct\nwritten\n");
}

TEST_F(Tracer, consumerMayTraceFromEachOfItsCalls)
{
    RecordingConsumerC inner;
    controller->registerConsumer(&inner, 0, 9);
    controller->enable(&inner, "nested/inner");
    controller->enable(&consumer, "nested");
    controller->disable(&consumer, "nested/inner");
    bool isInside = false;
    consumer.onMessage = consumer.onNewClass = consumer.onValueChange = [&](const char*) {
        isInside = TraceDeliveryC::isRunning();
        TVX_TRACE("nested/inner", "from inside");
    };
    TVX_TRACE("nested", "x");
    tracer->increment("nested", nullptr, 1);
    tracer->enabled("nested/new", nullptr);
    controller->unregisterConsumer(&inner);
    EXPECT_EQ(inner.messages, std::vector<std::string>(3, "nested/inner@0:from inside"));
    EXPECT_TRUE(isInside);
    EXPECT_FALSE(TraceDeliveryC::isRunning());
}

TEST_F(Tracer, threadsShareTracePointsWhileConsumersComeAndGo)
{
    static TraceSiteC shared("threads/shared");
    inThreads(8, [this](int thread) {
        RecordingConsumerC own;
        for (int i = 0; i < 200; ++i) {
            if (shared.isEnabled()) shared.trace("%d", thread);
            shared.count(1);
            TraceTimerC timer(shared);
            if (thread < 3) controller->registerConsumer(&own, 0, 9);
            if (thread < 3) controller->enable(&own, i % 2 == 0 ? "threads" : "threads/shared");
            if (thread < 3) controller->unregisterConsumer(&own);
        }
    });
    EXPECT_EQ(valuesOf(*controller, "threads/shared").count, 1600);
}

TEST_F(Tracer, childOfABusyProcessTracesAndKeepsNoneOfTheParentsLines)
{
    TraceDefaultConsumerI* const file = tracer->getDefaultConsumer();
    file->setFilePattern("fork.trc");
    file->setFlushFreq(1000);
    controller->enable(file, "fork");
    TVX_TRACE("fork", "parent");
    std::atomic<bool> isDone{false};
    std::thread busy([&] {
        while (!isDone) controller->enable(file, "fork/busy");
    });
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(inChild([&] {
                      alarm(10);
                      TVX_TRACE("fork", "child");
                      file->setFilePattern("/dev/null");   // writes what waits
                      return 0;
                  }),
                  0);
    }
    isDone = true;
    busy.join();
    file->setFilePattern("/dev/null");
    file->setFlushFreq(1);
    const std::vector<std::string> lines = splitText(fileText("fork.trc"), '\n');
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "child"), 20);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "parent"), 1);
}

TEST(TracerDeathTest, wrongUseEndsTheProcess)
{
    EXPECT_EXIT(getTracer(3), testing::ExitedWithCode(1), "Tracer version not supported");
    EXPECT_EXIT(getTraceController(1), testing::ExitedWithCode(1), "Trace Controller version not supported");
    EXPECT_EXIT(getTracer(2)->trace("net", nullptr, "x", ArgListC()), testing::ExitedWithCode(1), "enabled_pp != 0");
}

}   // namespace
