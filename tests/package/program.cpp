// Loads the module named on its command line and lets it work on a text of its own. Exits with 0 if
// program and module share one factory and one error buffer, and what the module made outlives it.

#include "module.h"

#include <errbuf.h>
#include <stringc.h>
#include <tvxcmn.h>

#include <cstdio>
#include <dlfcn.h>

namespace {

int failed(const char* what)
{
    std::fprintf(stderr, "consumer: %s\n", what);
    return 1;
}

}   // namespace

int main(int argc, char** argv)
{
    if (argc != 2) return failed("the path of the module is missing");
    void* handle = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return failed(dlerror());
    const auto entry = reinterpret_cast<ConsumerModuleT (*)()>(dlsym(handle, "consumerModule"));
    if (entry == nullptr) return failed(dlerror());
    const ConsumerModuleT module = entry();
    if (module.factory != getStringFactory(1)) return failed("program and module see different factories");

    const StringC name("na\xC3\xAFve caf\xC3\xA9", StringC::CC_UTF8);
    StringImplI* described = module.describe(&name.impl());
    const StringC result(*described);
    described->Release();
    dlclose(handle);

    const ErrBufI& errors = *getErrBuf(2);
    if (errors.count() != 1 || errors.get(0)->error() != DESCRIBED) return failed("the module's report is missing");
    if (errors.get(0)->message() != result + StringC(" is described")) return failed("the module's report is wrong");

    std::printf("%s\n", result.utf8());
    return result == name + StringC(", 10") ? 0 : failed("the module's text is wrong");
}
