#include "explain.h"

#include "tracecontroller.h"
#include "traceprofile.h"
#include "tracer.h"
#include "tvxcmn.h"

#include <algorithm>
#include <memory>

namespace {

const int FULL_DETAIL = 9;
const TraceEnabledT FILE_CONSUMER = 1;   // the bit of the consumer that reads profiles

// The detail that the profile asks for; there is no other way to learn it.
int maxDetailOf(const std::string& profile)
{
    int detail = FULL_DETAIL;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(profile.c_str(), "re"), std::fclose);
    if (file == nullptr) return detail;
    TraceProfileReaderC reader(file.get());
    while (reader.next()) {
        const TraceProfileItemT item = ParseTraceProfileLine(reader.line());
        if (item.kind != TraceProfileItemT::SETTING) continue;
        if (TraceAttributeNamed(item.name) == TRACE_ATTR_MAX_DETAIL) ReadTraceValue(item.value, detail);
    }
    return std::clamp(detail, 0, FULL_DETAIL);
}

}   // namespace

ExplanationT explainClass(const std::string& profile, const std::string& traceClass)
{
    ExplanationT result = {maxDetailOf(profile), {}};
    getTracer(2)->registerTask("tvxtrace", profile.c_str(), nullptr);
    TraceControllerI* const controller = getTraceController(2);

    TraceValuesT* values = nullptr;
    controller->getValues(traceClass.c_str(), &values);   // makes the class and all above it
    const char* const name = traceClass.c_str();
    const size_t prefix = *name < '0' || *name > '9' ? 0 : name[1] == ',' ? 2 : 1;
    int left = -1;
    for (size_t end = traceClass.find('/', prefix);; end = traceClass.find('/', end + 1)) {
        const std::string step = traceClass.substr(prefix, std::min(end, traceClass.size()) - prefix);
        controller->getValues(step.c_str(), &values);   // without its prefix, which would change the class
        const bool isSet = (values->specified & FILE_CONSUMER) != 0;
        const bool isOn = (values->net & FILE_CONSUMER) != 0;
        if (isSet) left = result.maxDetail;
        left = std::max(left - values->detail_incr, -1);
        result.chain.push_back({step, values->detail_incr, !isSet ? "inherits" : isOn ? "on" : "off", left, isOn});
        if (end == std::string::npos) return result;
    }
}
