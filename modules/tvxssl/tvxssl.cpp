// tvxssl.cpp: the cryptographic module of the agent, libtvxssl.so. It puts the system's OpenSSL behind the
// interface that the base library loads at run time, and exports nothing but getOpenSSLProxy.

#include "openssl3.h"

#include <cstdint>

namespace tvxssl {

// One function for each row, outside of the class whose members have the same names. What openssl3.h
// declares is nearer than OpenSSL's own functions and is taken instead of them.
typedef OpenSSLProxyI::U8 U8;
typedef OpenSSLProxyI::VerifyT VerifyT;
typedef OpenSSLProxyI::ExNewT ExNewT;
typedef OpenSSLProxyI::ExDupT ExDupT;
typedef OpenSSLProxyI::ExFreeT ExFreeT;
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments)                                                          \
    inline result forward_##name parameters { return name arguments; }
namespace {
#include "opensslslots.h"

class ProxyC final : public OpenSSLProxyI {
public:
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments)                                                          \
    result(name) parameters override { return forward_##name arguments; }
#include "opensslslots.h"
};

constinit ProxyC s_proxy;

}   // namespace

}   // namespace tvxssl

extern "C" __attribute__((visibility("default"))) OpenSSLProxyI* getOpenSSLProxy(void) { return &tvxssl::s_proxy; }

// ---- The note about what the module needs -------------------------------------------------------------
//
// Packagers and tools read it without loading anything (readelf --notes). Form: the note of owner "FDO" and
// type 0x407c0c0a, whose content is JSON. OPENSSL_SHLIB_VERSION is the number in the library's file name.

#define TVXSSL_NEEDS                                                                                                   \
    "[{\"soname\":[\"libssl.so." OPENSSL_MSTR(OPENSSL_SHLIB_VERSION) "\",\"libcrypto.so." OPENSSL_MSTR(                \
        OPENSSL_SHLIB_VERSION) "\"],\"feature\":\"cryptography\",\"priority\":\"required\","                           \
                               "\"description\":\"OpenSSL, to which libtvxssl forwards\"}]"

namespace {

struct NoteT {
    uint32_t ownerSize;
    uint32_t contentSize;
    uint32_t type;
    char owner[4];
    char content[(sizeof TVXSSL_NEEDS + 3) / 4 * 4];
};

// A compiler may align large objects more than notes are.
__attribute__((used, aligned(4), section(".note.dlopen")))
const NoteT needs = {4, sizeof TVXSSL_NEEDS, 0x407c0c0a, "FDO", TVXSSL_NEEDS};

}   // namespace
