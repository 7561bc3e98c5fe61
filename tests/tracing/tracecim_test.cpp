#include "tracing/tracecim.h"

#include "errornumbers.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "tracing/tracehelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <deque>
#include <map>

namespace {

using testing::ElementsAre;

class TraceController : public testing::Test {
protected:
    TraceEnabledT net(const std::string& name) { return netOf(controller, name.c_str()); }
    std::string childrenOf(const char* name)
    {
        std::string all;
        int count = -1;
        EXPECT_EQ(controller.getChildCount(name, &count), 0);
        for (int i = 0; i < count; ++i) {
            const char* child = nullptr;
            EXPECT_EQ(controller.getChild(name, i, &child), 0);
            (all += child) += ' ';
        }
        return all;
    }

    TraceControllerC controller;
    RecordingConsumerC consumer;
};

TEST_F(TraceController, classesFollowTheirParentAsFarAsTheDetailReaches)
{
    controller.registerConsumer(&consumer, 0, 9);
    controller.enable(&consumer, "net");
    EXPECT_EQ(net("net/1/2/3/4/5/6/7/8"), 1u);
    EXPECT_EQ(net("net/1/2/3/4/5/6/7/8/9"), 0u);
    controller.setDetail(&consumer, 3);
    EXPECT_EQ(net("net/1/2"), 1u);
    EXPECT_EQ(net("net/1/2/3"), 0u);
    EXPECT_EQ(controller.setDetail(&consumer, 99), 0);   // is 9
    EXPECT_EQ(net("net/1/2/3/4/5/6/7/8"), 1u);
}

TEST_F(TraceController, disabledClassStopsInheritanceUntilItFollowsItsParentAgain)
{
    controller.registerConsumer(&consumer, 0, 9);
    controller.enable(&consumer, "net");
    net("net/a/x");
    controller.disable(&consumer, "net/a");
    EXPECT_EQ(net("net/a") | net("net/a/x"), 0u);
    EXPECT_EQ(net("net/b"), 1u);
    controller.inherit(&consumer, "net/a");
    EXPECT_EQ(net("net/a") & net("net/a/x"), 1u);
}

TEST_F(TraceController, reusedSlotBeginsWithNothingOn)
{
    RecordingConsumerC other;
    controller.registerConsumer(&consumer, 0, 9);
    controller.registerConsumer(&other, 0, 9);
    controller.enable(&consumer, "net/a/x");
    controller.enable(&consumer, "web");
    controller.enable(&other, "web");
    EXPECT_EQ(controller.unregisterConsumer(&consumer), 0);
    EXPECT_EQ(controller.enable(&consumer, "net"), TVXERR_TRACE_UNKNOWN_CONSUMER);
    EXPECT_EQ(net("net/a/x"), 1u);   // nobody's, until somebody gets the slot
    EXPECT_EQ(controller.registerConsumer(&consumer, 0, 9), 0);
    EXPECT_EQ(net("net/a/x"), 0u);
    EXPECT_EQ(net("web/page"), 2u);
}

TEST_F(TraceController, detailPrefixIsNoPartOfTheName)
{
    TraceValuesT& values = valuesOf(controller, "3,net/socket");
    EXPECT_EQ(values.detail_incr, 3);
    EXPECT_EQ(&valuesOf(controller, "net/socket"), &values);
    EXPECT_EQ(valuesOf(controller, "net").detail_incr, 3);   // a prefix goes up to what it makes
    controller.registerConsumer(&consumer, 0, 5);
    controller.enable(&consumer, "net");
    EXPECT_EQ(values.net, 0u);   // 5 - 3 - 3
    EXPECT_EQ(&valuesOf(controller, "2net/socket"), &values);
    EXPECT_EQ(values.net, 1u);   // and the class is computed again
    EXPECT_THAT(consumer.classes, ElementsAre());
    valuesOf(controller, "0,net/file");   // changes the parent that it finds
    EXPECT_EQ(valuesOf(controller, "net").detail_incr, 0);
    EXPECT_EQ(valuesOf(controller, "7,").detail_incr, 7);
    EXPECT_EQ(valuesOf(controller, "").detail_incr, 7);
}

TEST_F(TraceController, classesAreListedInTheOrderInWhichTheyCameIntoBeing)
{
    controller.registerConsumer(&consumer, 0, 9);
    for (const char* name : {"5,net/b//x", "web", "net/a", "/", "net/b"}) valuesOf(controller, name);
    EXPECT_EQ(childrenOf(nullptr), "net web  ");   // and the empty name
    EXPECT_EQ(childrenOf("net"), "net/b net/a ");
    EXPECT_EQ(childrenOf("net/b/"), "net/b//x ");
    EXPECT_THAT(consumer.classes, ElementsAre("5,net", "5,net/b", "5,net/b/", "5,net/b//x", "web", "net/a", "", "/"));
    const char* child = nullptr;
    EXPECT_EQ(controller.getChild("net", 2, &child), ErrorOfErrno(EINVAL));
    EXPECT_EQ(controller.getChild("net", -1, &child), ErrorOfErrno(EINVAL));
}

TEST_F(TraceController, longPathsCostTimeAndMemoryByTheirLength)
{
    const std::string name = "0," + std::string(100000, '/');
    const auto start = std::chrono::steady_clock::now();
    valuesOf(controller, name.c_str());
    controller.registerConsumer(&consumer, 0, 9);
    controller.enable(&consumer, "");
    EXPECT_EQ(netOf(controller, name.c_str() + 2), 1u);
    EXPECT_EQ(net(name + "further"), 1u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(childrenOf(name.c_str() + 3) == name.substr(2) + " " + name.substr(2) + "further ");
}

TEST_F(TraceController, onlyThirtyTwoConsumersHaveABit)
{
    std::deque<RecordingConsumerC> consumers(40);
    for (RecordingConsumerC& c : consumers) EXPECT_EQ(controller.registerConsumer(&c, 0, 9), 0);
    for (RecordingConsumerC& c : consumers) EXPECT_EQ(controller.enable(&c, "net"), 0);
    EXPECT_EQ(net("net/a"), ~0u);
    EXPECT_EQ(controller.disable(&consumers[35], "net"), 0);
    EXPECT_EQ(net("net/a"), ~0u);
    controller.deliver(~0u, "net", 0, "x", ArgListC());
    EXPECT_EQ(consumers[31].messages.size(), 1u);
    EXPECT_EQ(consumers[32].messages.size(), 0u);
    controller.announceValueChange("net", 0);
    EXPECT_EQ(consumers[39].changes.size(), 1u);
}

TEST_F(TraceController, badArgumentsGiveAnErrorNumber)
{
    const long invalid = ErrorOfErrno(EINVAL);
    EXPECT_EQ(controller.registerConsumer(nullptr, 0, 9), TVXERR_TRACE_UNKNOWN_CONSUMER);
    EXPECT_EQ(controller.unregisterConsumer(nullptr), TVXERR_TRACE_UNKNOWN_CONSUMER);
    controller.registerConsumer(&consumer, 0, 9);
    controller.registerConsumer(&consumer, 0, 4);   // two slots; the first one answers
    controller.unregisterConsumer(&consumer);
    EXPECT_EQ(controller.setDetail(nullptr, 9), TVXERR_TRACE_UNKNOWN_CONSUMER);   // there is a free slot
    EXPECT_EQ(controller.enable(nullptr, "net"), TVXERR_TRACE_UNKNOWN_CONSUMER);
    EXPECT_EQ(controller.enable(&consumer, nullptr), invalid);
    controller.enable(&consumer, "net");
    EXPECT_EQ(net("net"), 2u);
    TraceValuesT* values = nullptr;
    EXPECT_EQ(controller.getValues(nullptr, &values), invalid);
    EXPECT_EQ(controller.setValues("net", nullptr), invalid);
    EXPECT_EQ(controller.getChildCount("net", nullptr), invalid);
}

TEST_F(TraceController, setValuesTakesAllButTheMaskAndTheRunningTimer)
{
    controller.registerConsumer(&consumer, 0, 9);
    TraceValuesT& values = valuesOf(controller, "net");
    values.last_start = 77;
    EXPECT_EQ(controller.setValues("net", std::vector<TraceValuesT>{{8, 1, 1, 42, 5, 6, 7}}.data()), 0);
    EXPECT_EQ(values.net, 1u);
    EXPECT_EQ(values.detail_incr, 9);
    EXPECT_EQ(values.count + values.total, 11);
    EXPECT_EQ(values.last_start, 77);
}

TEST_F(TraceController, consumersMayChangeEverythingWhileTheyAreCalled)
{
    RecordingConsumerC late;
    RecordingConsumerC refusing;
    refusing.status = 5;
    for (RecordingConsumerC* c : {&consumer, &refusing}) controller.registerConsumer(c, 0, 9);
    controller.enable(&consumer, "net");
    consumer.onNewClass = [&](const char* name) {
        valuesOf(controller, "net/a/b/c");   // is being made already
        if (std::string(name) == "net/a") controller.disable(&consumer, "net/a");
    };
    EXPECT_EQ(net("net/a/b/c"), 0u);
    EXPECT_EQ(childrenOf("net/a/b"), "net/a/b/c ");   // once

    consumer.onMessage = [&](const char*) {
        controller.unregisterConsumer(&consumer);
        for (int i = 0; i < 40; ++i) controller.registerConsumer(&late, 0, 9);
    };
    errno = ENOENT;
    controller.deliver(~0u, "net", 3, "%s", ArgListC("text"));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_THAT(consumer.messages, ElementsAre("net@3:text"));
    EXPECT_THAT(refusing.messages, ElementsAre("net@3:text"));
    EXPECT_EQ(late.messages.size(), 30u);
    EXPECT_FALSE(controller.isRegistered(&refusing));
    late.onValueChange = [&](const char*) { controller.unregisterConsumer(&late); };
    controller.announceValueChange("net", 0);
    EXPECT_FALSE(controller.isRegistered(&late));
}

TEST_F(TraceController, timerFollowsNoChangeOfTheClock)
{
    long long ticks = -1;
    {
        const FaultC fault("gettimeofday", EFAULT);
        EXPECT_EQ(controller.getTimer(&ticks), TVXERR_TRACE_NO_TIME);
        EXPECT_EQ(ticks, 0);
    }
    EXPECT_EQ(controller.getTimer(&ticks), 0);
    const FaultC fault("gettimeofday", EFAULT, 0, 1000);
    long long later = -1;
    EXPECT_EQ(controller.getTimer(&later), 0);
    EXPECT_GE(later, ticks);
    EXPECT_EQ(fault.calls(), 0);
}

// ---- the mask rule beside an obvious model ---------------------------------------------------------------

const int CONSUMERS = 5;

struct ModelClassT {
    std::string parent;   // none: "-"
    int increment = 1;
    bool self[CONSUMERS] = {};
    bool specified[CONSUMERS] = {};
};

class ModelC {
public:
    void need(const std::string& name)
    {
        if (classes.count(name) != 0) return;
        const size_t slash = name.rfind('/');
        if (slash != std::string::npos) need(name.substr(0, slash));
        classes[name].parent = slash != std::string::npos ? name.substr(0, slash) : "-";
    }
    // The rule as it is told: from the root down to the class.
    bool isOn(const std::string& name, int consumer)
    {
        bool on = false;
        int left = -1;
        for (const std::string& step : path(name)) {
            const ModelClassT& c = classes[step];
            if (c.specified[consumer]) left = details[consumer];
            left = left < 0 ? left : left - c.increment;
            on = c.specified[consumer] ? c.self[consumer] : on && left >= 0;
        }
        return on;
    }
    std::vector<std::string> path(const std::string& name)
    {
        std::vector<std::string> steps;
        for (std::string at = name; at != "-"; at = classes[at].parent) steps.insert(steps.begin(), at);
        return steps;
    }

    std::map<std::string, ModelClassT> classes;
    int details[CONSUMERS] = {};
};

TEST_F(TraceController, masksAreWhatTheRuleSaysAfterAnyStepsInAnyOrder)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        TextSourceC random(seed);
        TraceControllerC tested;
        ModelC model;
        RecordingConsumerC consumers[CONSUMERS];
        for (int i = 0; i < CONSUMERS; ++i) {
            model.details[i] = static_cast<int>(random.below(10));
            tested.registerConsumer(&consumers[i], 0, model.details[i]);
        }
        for (int step = 0; step < 80; ++step) {
            std::string name(1, static_cast<char>('a' + random.below(2)));
            for (uint32_t depth = random.below(12); depth > 0; --depth) {
                (name += '/') += static_cast<char>('a' + random.below(2));
            }
            const uint32_t who = random.below(CONSUMERS);
            const uint32_t what = random.below(6);
            model.need(name);
            valuesOf(tested, name.c_str());
            ModelClassT& c = model.classes[name];
            switch (what) {
            case 0: tested.enable(&consumers[who], name.c_str()); break;
            case 1: tested.disable(&consumers[who], name.c_str()); break;
            case 2: tested.inherit(&consumers[who], name.c_str()); break;
            case 3:
                model.details[who] = static_cast<int>(random.below(10));
                tested.setDetail(&consumers[who], model.details[who]);
                break;
            case 4:
                c.increment = static_cast<int>(random.below(10));
                valuesOf(tested, (std::to_string(c.increment) + "," + name).c_str());
                break;
            default:   // another consumer in the slot
                tested.unregisterConsumer(&consumers[who]);
                model.details[who] = 9;
                tested.registerConsumer(&consumers[who], 0, 9);
                for (auto& [other, values] : model.classes) values.self[who] = values.specified[who] = false;
            }
            if (what < 3) c.self[who] = what == 0;
            if (what < 3) c.specified[who] = what < 2;

            if (step % 4 != 3) continue;
            for (const auto& [other, values] : model.classes) {
                for (int i = 0; i < CONSUMERS; ++i) {
                    ASSERT_EQ((netOf(tested, other.c_str()) >> i & 1) != 0, model.isOn(other, i))
                        << "step " << step << ", class " << other << ", consumer " << i;
                }
            }
        }
    }
}

}   // namespace
