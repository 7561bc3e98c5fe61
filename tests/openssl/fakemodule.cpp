#include "openssl/fakemodule.h"

#include <cstdlib>
#include <unistd.h>

extern "C" {
__attribute__((visibility("default"))) FakeModuleT fakeModule = {};
}

#ifndef FAKE_WITHOUT_ENTRY
namespace {

template <class ResultT>
auto noted(const char* name)
{
    fakeModule.called = name;
    return [](const auto&...) { return ResultT(); };
}

class NotingProxyC : public OpenSSLProxyI {
public:
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments)                                                          \
    result(name) parameters override { return noted<result>(#name) arguments; }
#include "opensslslots.h"
};

class FakeProxyC final : public NotingProxyC {
public:
    unsigned long SSLeay() override
    {
        if (fakeModule.onVersion != nullptr) fakeModule.onVersion();
        NotingProxyC::SSLeay();
        const char* const version = std::getenv("FAKE_VERSION");
        return version != nullptr ? std::strtoul(version, nullptr, 0) : 0x1000211F;
    }
    const char* SSLeay_version(int type) override
    {
        NotingProxyC::SSLeay_version(type);
        return type == 0 ? std::getenv("FAKE_TEXT") : "wrong type";
    }
};

FakeProxyC proxy;

__attribute__((constructor)) void noteFolder()
{
    if (getcwd(fakeModule.folder, sizeof fakeModule.folder) == nullptr) fakeModule.folder[0] = 0;
}

}   // namespace

extern "C" __attribute__((visibility("default"))) OpenSSLProxyI* getOpenSSLProxy(void)
{
    ++fakeModule.entries;
    return fakeModule.onEntry != nullptr ? fakeModule.onEntry(&proxy) : &proxy;
}
#endif
