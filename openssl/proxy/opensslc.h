// opensslc.h: finds the cryptographic module, loads it and judges it. docs/crypto.md tells how.
//
// There is one in a process (getOpenSSL). What it finds holds for the rest of the process, and is never
// destroyed.
//
// Thread safety: latched. While the module is being opened in the folder that was set, the current directory
// of the whole process is another.
#ifndef TVXCMN_OPENSSL_PROXY_OPENSSLC_H
#define TVXCMN_OPENSSL_PROXY_OPENSSLC_H

#include "arglist.h"
#include "errornumbers.h"
#include "opensslproxy.h"

#include <utility>
#include <vector>

class DynLoadC;

// What there is to tell about a search. It is told afterwards, because consumers of the tracer may ask for the
// proxy themselves, and must not find its latch held.
class OpenSSLReportC {
public:
    // A line for the tracer; `format` is a constant.
    void trace(const char* format, const ArgListC& args) { m_lines.emplace_back(format, args); }
    void fail(ErrorT failure) { m_failure = failure; }

    // Tells everything, the lines first.
    void send() const;

private:
    std::vector<std::pair<const char*, ArgListC>> m_lines;
    ErrorT m_failure = 0;
};

class OpenSSLC final : public OpenSSLI {
public:
    void SetLibraryPath(const char* path) override;
    OpenSSLProxyI* getProxy() override;

private:
    OpenSSLProxyI* decideProxy(OpenSSLReportC& report);
    // Null when there is none that can be used.
    OpenSSLProxyI* findProxy(OpenSSLReportC& report);
    // The module, which is loaded unless it was found before; null when there is none. The name, without suffix,
    // is the one under which it was loaded by this call; otherwise it is empty.
    DynLoadC* getLibTvxSSL(StringC& p_LoadedLibrary, OpenSSLReportC& report);

    static DynLoadC* s_libssl;   // the module, also when it was closed again; null when none could be opened
    static char* s_libpath;      // the folder that was set, or null
};

#endif   // TVXCMN_OPENSSL_PROXY_OPENSSLC_H
