#include "module.h"

#include <errorapi.h>
#include <stringc.h>
#include <tvxcmn.h>

#include <string>

namespace {

StringImplI* describe(StringImplI* text)
{
    StringC result(*text);
    result += StringC((", " + std::to_string(result.length())).c_str());
    Error(DESCRIBED, "{i} %S is described", result);
    result.impl().AddRef();   // outlives the handle, for the caller
    return &result.impl();
}

}   // namespace

extern "C" __attribute__((visibility("default"))) ConsumerModuleT consumerModule()
{
    return {getStringFactory(1), describe};
}
