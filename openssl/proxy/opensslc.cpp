#include "openssl/proxy/opensslc.h"

#include "atomicm.h"
#include "cmnlib/neverdestroyed.h"
#include "cmnlib/syscall.h"
#include "dynldc.h"
#include "errorapi.h"
#include "ipc/forkguard.h"
#include "latch.h"
#include "openssl/proxy/opensslstub.h"
#include "pathname.h"
#include "string/api/textrepair.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <unistd.h>

namespace {

const int SUPPORTED_VERSION = 1;
const char MODULE_NAME[] = "libtvxssl";
const char ENTRY_NAME[] = "getOpenSSLProxy";
const unsigned long REQUIRED_VERSION = 0x1000211F;
const size_t PATH_SIZE = 4096;

constinit TraceSiteC s_site("Encoding/Encryption/OpenSSL/Proxy");

// Both count, because what is called below them may come back.
constinit NeverDestroyedM<CountingLatchC> s_GetOpenSSLLatch;
constinit NeverDestroyedM<CountingLatchC> s_GetProxyLatch;
constinit LatchForkGuardM<CountingLatchC> s_GetOpenSSLGuard(*s_GetOpenSSLLatch);
constinit LatchForkGuardM<CountingLatchC> s_GetProxyGuard(*s_GetProxyLatch);

constinit OpenSSLProxyStubC s_stub;
constinit AtomicM<OpenSSLC*> s_openSSL{nullptr};
constinit AtomicM<OpenSSLProxyI*> s_proxy{nullptr};   // once it has been decided
bool s_isDeciding = false;                            // under s_GetProxyLatch: by the thread that holds it

template <class... ArgT>
ArgListC listOf(const ArgT&... args)
{
    ArgListC list;
    (list << ... << args);
    return list;
}

// ---- The folder that was set -----------------------------------------------------------------------------

// The current directory is another while it lives. It is remembered as a directory, not by its name, which
// may be gone by the end, or lead elsewhere.
class WorkingFolderC {
public:
    explicit WorkingFolderC(const char* folder) : m_before(openFd(".", O_PATH | O_DIRECTORY))
    {
        if (m_before.isOpen() && ::chdir(folder) != 0) m_before.reset();
    }
    ~WorkingFolderC()
    {
        if (!m_before.isOpen()) return;
        [[maybe_unused]] const int result = ::fchdir(m_before.fd());   // there is no other way back
    }
    WorkingFolderC(const WorkingFolderC&) = delete;
    WorkingFolderC& operator=(const WorkingFolderC&) = delete;

private:
    FdOwnerC m_before;
};

// Paths are bytes.
StringC textOf(const std::string& path) { return {path.data(), path.size(), StringC::CC_VALID_UTF8}; }

// Keeps the loader's reason before anything else can fail in this thread.
std::unique_ptr<DynLoadC> opened(const std::string& path, StringC& reason)
{
    std::unique_ptr<DynLoadC> module(new (std::nothrow) DynLoadC(textOf(path), true));
    if (module != nullptr && !module->Connected()) reason = module->LastError();
    return module;
}

// Opens a module in a folder, from that folder's parent. A relative folder is completed first, or would be
// looked for below itself; where that cannot be done, the current directory stays.
std::unique_ptr<DynLoadC> openedInFolder(const char* folder, StringC& reason)
{
    std::string path = folder;
    if (path[0] != '/') {
        char current[PATH_SIZE];
        if (GetCWD(current, sizeof current) == 0) return opened(path + '/' + MODULE_NAME, reason);
        path.insert(0, std::string(current) + '/');
    }
    std::string parent(path.size() + 2, 0);
    const WorkingFolderC away(DirFileName(path.data(), parent.data()));
    return opened(path + '/' + MODULE_NAME, reason);
}

// The module, if it could be opened; tells why not.
DynLoadC* checked(std::unique_ptr<DynLoadC> module, const StringC& name, const StringC& reason, OpenSSLReportC& report)
{
    if (module == nullptr) {
        report.trace("Failed to create shared library object", ArgListC());
    } else if (!module->Connected()) {
        report.trace("Failed to load shared library '%s%s': %s", listOf(name, DynLoadC::DefaultSuffix, reason));
        module.reset();
    }
    return module.release();
}

// ---- Judging a module ------------------------------------------------------------------------------------

// What the module says about itself, copied: it may be closed before that is told.
unsigned long versionOf(OpenSSLProxyI& proxy, const StringC& name, OpenSSLReportC& report)
{
    const unsigned long version = (proxy.SSLeay)();
    const char* const text = (proxy.SSLeay_version)(0);
    report.trace("Loaded shared library %s%s, version %#lx '%s'",
                 listOf(name, DynLoadC::DefaultSuffix, version, repairedText(text != nullptr ? text : "none")));
    return version;
}

OpenSSLProxyI* usableProxyOf(DynLoadC& module, GetOpenSSLProxyT entry, const StringC& name, OpenSSLReportC& report)
{
    OpenSSLProxyI* const proxy = entry();
    if (proxy == nullptr) return nullptr;
    const unsigned long version = versionOf(*proxy, name, report);
    if (version >= REQUIRED_VERSION) return proxy;
    report.trace("Found version %#lx < required version %#lx, unloading library", listOf(version, REQUIRED_VERSION));
    module.Disconnect();
    return nullptr;
}

OpenSSLC* makeOpenSSL(int version)
{
    guardOverForks(FORK_RANK_CREATE_CRYPTO, s_GetOpenSSLGuard);
    bool isFirst = false;
    {
        const LatchGuardM<CountingLatchC> guard(*s_GetOpenSSLLatch);
        isFirst = s_openSSL == nullptr;
        if (isFirst) s_openSSL = new (std::nothrow) OpenSSLC;
    }
    if (isFirst && version > SUPPORTED_VERSION && s_site.isEnabled()) {
        s_site.trace("Warning: OpenSSL proxy version %d requested, version %d supported", version, SUPPORTED_VERSION);
    }
    if (s_openSSL == nullptr && s_site.isEnabled()) s_site.trace("Failed to create OpenSSL proxy object");
    return s_openSSL;
}

}   // namespace

DynLoadC* OpenSSLC::s_libssl = nullptr;
char* OpenSSLC::s_libpath = nullptr;

void OpenSSLReportC::send() const
{
    for (const auto& [format, args] : m_lines) {
        if (s_site.isEnabled()) s_site.trace(format, args);
    }
    if (m_failure == TVXERR_CRYPTO_NOT_LOADED) Error(m_failure, "The OpenSSL module libtvxssl could not be loaded");
    if (m_failure == TVXERR_CRYPTO_NO_FUNCTION) {
        Error(m_failure, "The libtvxssl function %s was not found", listOf(ENTRY_NAME));
    }
}

void OpenSSLC::SetLibraryPath(const char* path)
{
    guardOverForks(FORK_RANK_LOAD_CRYPTO, s_GetProxyGuard);
    const LatchGuardM<CountingLatchC> guard(*s_GetProxyLatch);
    char* const copy = path != nullptr && *path != 0 ? ::strdup(path) : nullptr;
    std::free(s_libpath);
    s_libpath = copy;
}

OpenSSLProxyI* OpenSSLC::getProxy()
{
    OpenSSLProxyI* const known = s_proxy;
    if (known != nullptr) return known;
    guardOverForks(FORK_RANK_LOAD_CRYPTO, s_GetProxyGuard);
    OpenSSLReportC report;
    OpenSSLProxyI* const proxy = decideProxy(report);
    report.send();
    return proxy;
}

OpenSSLProxyI* OpenSSLC::decideProxy(OpenSSLReportC& report)
{
    const LatchGuardM<CountingLatchC> guard(*s_GetProxyLatch);
    if (s_proxy != nullptr) return s_proxy;
    if (s_isDeciding) return &s_stub;   // the module itself is asking
    s_isDeciding = true;
    OpenSSLProxyI* const found = findProxy(report);
    s_isDeciding = false;
    s_proxy = found != nullptr ? found : &s_stub;
    return s_proxy;
}

OpenSSLProxyI* OpenSSLC::findProxy(OpenSSLReportC& report)
{
    StringC name;
    DynLoadC* const module = getLibTvxSSL(name, report);
    if (module == nullptr) return nullptr;
    const auto entry = reinterpret_cast<GetOpenSSLProxyT>(module->AddressOfProcedure(ENTRY_NAME));
    if (entry == nullptr) {
        report.trace("Failed to find getOpenSSLProxy() in %s%s", listOf(name, DynLoadC::DefaultSuffix));
        report.fail(TVXERR_CRYPTO_NO_FUNCTION);
        return nullptr;
    }
    try {
        return usableProxyOf(*module, entry, name, report);
    } catch (...) {   // from foreign code; what it cannot say about itself cannot be trusted with more
        return nullptr;
    }
}

DynLoadC* OpenSSLC::getLibTvxSSL(StringC& p_LoadedLibrary, OpenSSLReportC& report)
{
    p_LoadedLibrary = StringC();
    if (s_libssl != nullptr) return s_libssl;
    StringC name;
    StringC reason;
    if (s_libpath != nullptr) {
        name = repairedText(s_libpath) + "/" + MODULE_NAME;
        std::unique_ptr<DynLoadC> module = openedInFolder(s_libpath, reason);
        s_libssl = checked(std::move(module), name, reason, report);
    }
    if (s_libssl == nullptr) {
        name = MODULE_NAME;
        std::unique_ptr<DynLoadC> module = opened(MODULE_NAME, reason);
        s_libssl = checked(std::move(module), name, reason, report);
    }
    if (s_libssl == nullptr) {
        report.fail(TVXERR_CRYPTO_NOT_LOADED);
    } else {
        p_LoadedLibrary = name;
    }
    return s_libssl;
}

extern "C" OpenSSLI* getOpenSSL(int version)
{
    OpenSSLC* const known = s_openSSL;
    return known != nullptr ? known : makeOpenSSL(version);
}
