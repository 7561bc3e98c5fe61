// Class names of any bytes, named in any order: a name always means one class,
// whose parent is that of the name's text, and the tree lists each class once.
// Masks that were computed step by step are those that a computation of
// everything gives.

#include "fuzz.h"
#include "traceconsumer.h"
#include "tracing/tracecim.h"

#include <map>
#include <vector>

namespace {

class DeafConsumerC final : public TraceConsumerI {
public:
    long message(const char*, int, const char*, ArgListC) override { return 0; }
    long valueChange(const char*, int) override { return 0; }
    long newClass(const char*) override { return 0; }
};

const size_t CONSUMERS = 3;

TraceValuesT* valuesOf(TraceControllerC& controller, const std::string& name)
{
    TraceValuesT* values = nullptr;
    FUZZ_REQUIRE(controller.getValues(name.c_str(), &values) == 0);
    return values;
}

// Every class below `name`, null for the roots, with its mask.
void collect(TraceControllerC& controller, const char* name, std::map<std::string, TraceEnabledT>& masks)
{
    std::vector<const char*> open = {name};
    while (!open.empty()) {
        const char* const parent = open.back();
        open.pop_back();
        if (parent != nullptr && (*parent == 0 || (*parent >= '0' && *parent <= '9'))) continue;   // means another one
        int count = 0;
        FUZZ_REQUIRE(controller.getChildCount(parent, &count) == 0);
        for (int i = 0; i < count; ++i) {
            const char* child = nullptr;
            FUZZ_REQUIRE(controller.getChild(parent, i, &child) == 0);
            const std::string text = child;
            if (parent != nullptr) FUZZ_REQUIRE(text.substr(0, text.rfind('/')) == parent);
            if (parent == nullptr) FUZZ_REQUIRE(text.find('/') == std::string::npos);
            if (!text.empty() && text[0] >= '0' && text[0] <= '9') continue;
            FUZZ_REQUIRE(masks.emplace(text, valuesOf(controller, text)->net).second);
            open.push_back(child);
        }
    }
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    TraceControllerC controller;
    DeafConsumerC consumers[CONSUMERS];
    for (DeafConsumerC& consumer : consumers) controller.registerConsumer(&consumer, 0, 9);
    std::map<std::string, TraceValuesT*> known;
    for (int step = 0; step < 64 && !input.isEmpty(); ++step) {
        const unsigned what = input.below(6);
        DeafConsumerC* const consumer = &consumers[input.below(CONSUMERS)];
        const std::string name = std::string(input.bytes(input.below(48))).c_str();
        switch (what) {
        case 0: controller.enable(consumer, name.c_str()); break;
        case 1: controller.disable(consumer, name.c_str()); break;
        case 2: controller.inherit(consumer, name.c_str()); break;
        case 3: controller.setDetail(consumer, static_cast<int>(input.below(12))); break;
        default: break;
        }
        TraceValuesT* const values = valuesOf(controller, name);
        FUZZ_REQUIRE(known.emplace(name, values).first->second == values);
    }

    std::map<std::string, TraceEnabledT> before;
    collect(controller, nullptr, before);
    DeafConsumerC newcomer;   // takes a slot and gives it back: all masks are computed again
    controller.registerConsumer(&newcomer, 0, 9);
    controller.unregisterConsumer(&newcomer);
    controller.registerConsumer(&newcomer, 0, 9);
    std::map<std::string, TraceEnabledT> after;
    collect(controller, nullptr, after);
    FUZZ_REQUIRE(before == after);
    return 0;
}
