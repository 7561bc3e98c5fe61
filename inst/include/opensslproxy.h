// opensslproxy.h: cryptography for the agent, without any of its programs or modules being linked to
// OpenSSL.
//
//     OpenSSLProxyI* const crypto = getOpenSSL(1)->getProxy();
//     if ((crypto->SSLeay)() == 0) ...                         // there is none
//     (crypto->EVP_EncryptInit_ex)(context, (crypto->EVP_aes_256_cbc)(), nullptr, key, iv);
//
// OpenSSL itself is behind a module, libtvxssl.so, which is loaded when the proxy is first asked for. When
// it is missing, unusable or too old, the proxy is a stand-in whose operations do nothing and answer 0 or
// null, so callers always have an object to call, and tell by SSLeay() == 0 that cryptography is missing.
// docs/crypto.md says how the module is found, and what each operation does with the OpenSSL of today.
//
// OpenSSL's types are opaque here and its headers are not needed. Who includes them as well does so first:
// they rename some functions, and the operations here must get the same names as the calls. For those that
// they turn into macros with parameters, names stand in parentheses in calls.
//
// Thread safety: getProxy and SetLibraryPath are latched. The proxy is OpenSSL's affair: different objects
// from any threads, one object unlocked.
// Ownership:     both objects live until the process ends. What OpenSSL allocates goes back through it.
#ifndef TVXCMN_OPENSSLPROXY_H
#define TVXCMN_OPENSSLPROXY_H

#include <cstddef>
#include <ctime>

struct evp_cipher_ctx_st;
struct evp_cipher_st;
struct evp_md_st;
struct engine_st;
struct bio_st;
struct bio_method_st;
struct ssl_st;
struct ssl_ctx_st;
struct ssl_method_st;
struct ssl_session_st;
struct x509_st;
struct X509_name_st;
struct x509_store_st;
struct x509_store_ctx_st;
struct x509_lookup_st;
struct x509_lookup_method_st;
struct X509_VERIFY_PARAM_st;
struct asn1_string_st;
struct GENERAL_NAME_st;
struct stack_st;
struct stack_st_X509;
struct stack_st_X509_CRL;
struct crypto_ex_data_st;

// OpenSSL's functions, each with its own parameters and result.
class OpenSSLProxyI {
public:
    typedef unsigned char U8;
    typedef int (*VerifyT)(int ok, x509_store_ctx_st* ctx);
    typedef int (*ExNewT)(void* parent, void* ptr, crypto_ex_data_st* ad, int idx, long argl, void* argp);
    typedef int (*ExDupT)(crypto_ex_data_st* to, crypto_ex_data_st* from, void* from_d, int idx, long argl, void* argp);
    typedef void (*ExFreeT)(void* parent, void* ptr, crypto_ex_data_st* ad, int idx, long argl, void* argp);

// NOLINTNEXTLINE(bugprone-macro-parentheses): they stand in the rows
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments) virtual result(name) parameters = 0;
#include "opensslslots.h"

protected:
    ~OpenSSLProxyI() = default;   // not a slot
};

// How a program gets the proxy (getOpenSSL in tvxcmn.h).
class OpenSSLI {
public:
    // The folder to look in for the module before the places where the loader looks. `path` is copied; null
    // and the empty text take back what was set. Has no effect once the proxy has been asked for.
    virtual void SetLibraryPath(const char* path) = 0;
    // The module's proxy, or the stand-in; the same in every call. Never null. The first call loads the
    // module, and reports 0xE1B20001 (not loaded) or 0xE1B20002 (not such a module) in its own thread.
    // A call that the module makes while it is being loaded gets the stand-in.
    virtual OpenSSLProxyI* getProxy() = 0;

protected:
    ~OpenSSLI() = default;   // not a slot
};

// What the module exports, as "getOpenSSLProxy".
extern "C" typedef OpenSSLProxyI* (*GetOpenSSLProxyT)(void);

#endif   // TVXCMN_OPENSSLPROXY_H
