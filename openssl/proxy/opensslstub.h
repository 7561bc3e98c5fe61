// opensslstub.h: what stands in for the cryptographic module when there is none that can be used.
//
// Thread safety: any thread.
#ifndef TVXCMN_OPENSSL_PROXY_OPENSSLSTUB_H
#define TVXCMN_OPENSSL_PROXY_OPENSSLSTUB_H

#include "opensslproxy.h"

// Every operation does nothing, and answers 0 or null. Out-parameters stay as they are.
class OpenSSLProxyStubC final : public OpenSSLProxyI {
public:
// NOLINTBEGIN(bugprone-macro-parentheses): they stand in the rows
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments)                                                          \
    result(name) parameters override { return nothing<result> arguments; }
// NOLINTEND(bugprone-macro-parentheses)
#include "opensslslots.h"

private:
    template <class ResultT, class... ArgT>
    static ResultT nothing(const ArgT&...)
    {
        return ResultT();
    }
};

#endif   // TVXCMN_OPENSSL_PROXY_OPENSSLSTUB_H
