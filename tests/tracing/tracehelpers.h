// tracehelpers.h: what the tests of tracing share.
#ifndef TVXCMN_TESTS_TRACEHELPERS_H
#define TVXCMN_TESTS_TRACEHELPERS_H

#include "traceconsumer.h"
#include "tracecontroller.h"

#include <functional>
#include <string>
#include <vector>

// Keeps what it is told, and then does what a test wants.
class RecordingConsumerC final : public TraceConsumerI {
public:
    long message(const char* traceClass, int indent, const char* format, ArgListC args) override
    {
        const StringC text = StringC::format(StringC(format), args);
        messages.push_back(std::string(traceClass) + "@" + std::to_string(indent) + ":" + text.utf8());
        if (onMessage) onMessage(traceClass);
        return status;
    }
    long valueChange(const char* traceClass, int indent) override
    {
        changes.push_back(std::string(traceClass) + "@" + std::to_string(indent));
        if (onValueChange) onValueChange(traceClass);
        return 0;
    }
    long newClass(const char* traceClass) override
    {
        classes.push_back(traceClass);
        if (onNewClass) onNewClass(traceClass);
        return 0;
    }

    std::vector<std::string> messages;
    std::vector<std::string> changes;
    std::vector<std::string> classes;
    std::function<void(const char*)> onMessage;
    std::function<void(const char*)> onValueChange;
    std::function<void(const char*)> onNewClass;
    long status = 0;
};

inline TraceValuesT& valuesOf(TraceControllerI& controller, const char* traceClass)
{
    TraceValuesT* values = nullptr;
    controller.getValues(traceClass, &values);
    return *values;
}

inline TraceEnabledT netOf(TraceControllerI& controller, const char* traceClass)
{
    return valuesOf(controller, traceClass).net;
}

#endif   // TVXCMN_TESTS_TRACEHELPERS_H
