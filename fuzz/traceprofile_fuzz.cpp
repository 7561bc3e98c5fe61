// Trace profiles of any bytes: what is read lies inside the line, and the
// consumer that loads a profile ends up with the classes that the items name,
// the last word on each of them counting.

#include "traceprofile.h"

#include "fuzz.h"
#include "tracing/tracecim.h"
#include "tracing/tracefil.h"

#include <map>
#include <memory>
#include <unistd.h>

namespace {

typedef std::unique_ptr<std::FILE, int (*)(std::FILE*)> FileT;

struct ProfileT {
    std::map<std::string, bool> classes;   // by their bare names: on or off
};

std::string bareName(const char* name)
{
    if (*name >= '0' && *name <= '9') name += name[1] == ',' ? 2 : 1;
    return name;
}

ProfileT readBack(std::FILE* file)
{
    ProfileT profile;
    TraceProfileReaderC reader(file);
    int lines = 0;
    while (reader.next()) {
        FUZZ_REQUIRE(reader.number() == ++lines);
        const std::string line = reader.line();
        FUZZ_REQUIRE(line.size() <= TraceProfileReaderC::MAX_LINE);
        const TraceProfileItemT item = ParseTraceProfileLine(reader.line());
        const char* const begin = reader.line();
        FUZZ_REQUIRE(item.name >= begin && item.name + std::strlen(item.name) <= begin + line.size());
        FUZZ_REQUIRE((item.value != nullptr) == (item.kind == TraceProfileItemT::SETTING));
        if (item.value != nullptr) FUZZ_REQUIRE(item.value + std::strlen(item.value) <= begin + line.size());
        const bool isOn = item.kind == TraceProfileItemT::ENABLE;
        if (isOn || item.kind == TraceProfileItemT::DISABLE) profile.classes[bareName(item.name)] = isOn;
    }
    return profile;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path = "traceprofile_fuzz." + std::to_string(getpid());
    FileT file(std::fopen(path.c_str(), "w+e"), std::fclose);
    FUZZ_REQUIRE(file != nullptr);
    if (size > 0) std::fwrite(data, 1, size, file.get());   // `data` may be null then
    std::rewind(file.get());
    const ProfileT profile = readBack(file.get());

    TraceControllerC controller;
    TraceConsumerFileC consumer(controller);
    controller.registerConsumer(&consumer, 0, 9);
    FUZZ_REQUIRE(consumer.loadProfile(path.c_str()) == 0);
    unlink(path.c_str());
    for (const auto& [name, isOn] : profile.classes) {
        if (!name.empty() && name[0] >= '0' && name[0] <= '9') continue;   // would be taken for a prefix
        TraceValuesT* values = nullptr;
        FUZZ_REQUIRE(controller.getValues(name.c_str(), &values) == 0);
        FUZZ_REQUIRE((values->specified & 1) == 1 && (values->net & 1) == unsigned{isOn});
        FUZZ_REQUIRE(values->detail_incr >= 0 && values->detail_incr <= 9);
    }
    return 0;
}
