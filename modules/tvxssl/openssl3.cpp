#include "openssl3.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <openssl/provider.h>

namespace tvxssl {

namespace {

// ---- Errors ----

// Plain data: nothing has to run when a thread ends.
struct LastErrorT {
    unsigned long code;
    char function[96];
};
thread_local LastErrorT t_lastError;

// ---- Extra data ----

// The callbacks of one index, in the form that they used to have. OpenSSL never gives an index back, so
// they stay, all of them reachable from the list's head.
struct ExtraDataT {
    OpenSSLProxyI::ExNewT created;
    OpenSSLProxyI::ExDupT duplicated;
    OpenSSLProxyI::ExFreeT freed;
    void* argp;
    ExtraDataT* next;
};
std::atomic<ExtraDataT*> s_extraData{nullptr};

void created(void* parent, void* ptr, CRYPTO_EX_DATA* ad, int idx, long argl, void* argp)
{
    const auto* const callbacks = static_cast<const ExtraDataT*>(argp);
    if (callbacks->created != nullptr) callbacks->created(parent, ptr, ad, idx, argl, callbacks->argp);
}

int duplicated(CRYPTO_EX_DATA* to, const CRYPTO_EX_DATA* from, void** from_d, int idx, long argl, void* argp)
{
    const auto* const callbacks = static_cast<const ExtraDataT*>(argp);
    if (callbacks->duplicated == nullptr) return 1;
    return callbacks->duplicated(to, const_cast<CRYPTO_EX_DATA*>(from), from_d, idx, argl, callbacks->argp);
}

void freed(void* parent, void* ptr, CRYPTO_EX_DATA* ad, int idx, long argl, void* argp)
{
    const auto* const callbacks = static_cast<const ExtraDataT*>(argp);
    if (callbacks->freed != nullptr) callbacks->freed(parent, ptr, ad, idx, argl, callbacks->argp);
}

// ---- Single DES ----

// A library context of its own keeps the old algorithms away from everything else in the process. It stays
// as long as the cipher, which is for ever.
const EVP_CIPHER* fetchSingleDes()
{
    ERR_set_mark();   // a missing provider is no error of the caller's
    OSSL_LIB_CTX* const context = OSSL_LIB_CTX_new();
    const EVP_CIPHER* cipher = nullptr;
    if (context != nullptr && OSSL_PROVIDER_load(context, "legacy") != nullptr) {
        cipher = EVP_CIPHER_fetch(context, "DES-ECB", nullptr);
    }
    if (cipher == nullptr) OSSL_LIB_CTX_free(context);
    ERR_pop_to_mark();
    return cipher != nullptr ? cipher : ::EVP_des_ecb();
}

}   // namespace

unsigned long ERR_get_error()
{
    const char* function = nullptr;
    t_lastError.code = ERR_get_error_all(nullptr, nullptr, &function, nullptr, nullptr);
    std::strncpy(t_lastError.function, function != nullptr ? function : "", sizeof t_lastError.function - 1);
    return t_lastError.code;
}

const char* ERR_func_error_string(unsigned long e)
{
    return e == t_lastError.code && t_lastError.function[0] != 0 ? t_lastError.function : nullptr;
}

void ERR_load_BIO_strings() { ERR_load_crypto_strings(); }
void ERR_load_CRYPTO_strings() { ERR_load_crypto_strings(); }
void ERR_load_crypto_strings() { OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr); }

void OPENSSL_add_all_algorithms_noconf()
{
    OPENSSL_init_crypto(OPENSSL_INIT_ADD_ALL_CIPHERS | OPENSSL_INIT_ADD_ALL_DIGESTS, nullptr);
}

void SSL_load_error_strings()
{
    OPENSSL_init_ssl(OPENSSL_INIT_LOAD_SSL_STRINGS | OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr);
}

int SSL_library_init() { return OPENSSL_init_ssl(0, nullptr); }

const char* SSLeay_version(int type)
{
    switch (type) {
    case 0: return OpenSSL_version(OPENSSL_VERSION);
    case 2: return OpenSSL_version(OPENSSL_CFLAGS);
    case 3: return OpenSSL_version(OPENSSL_BUILT_ON);
    case 4: return OpenSSL_version(OPENSSL_PLATFORM);
    case 5: return OpenSSL_version(OPENSSL_DIR);
    default: return "not available";
    }
}

unsigned long SSLeay() { return OpenSSL_version_num(); }

void EVP_CIPHER_CTX_init(evp_cipher_ctx_st* ctx) { EVP_CIPHER_CTX_reset(ctx); }
int EVP_CIPHER_CTX_cleanup(evp_cipher_ctx_st* ctx) { return EVP_CIPHER_CTX_reset(ctx); }

const evp_cipher_st* EVP_des_ecb()
{
    static const EVP_CIPHER* const cipher = fetchSingleDes();
    return cipher;
}

bio_method_st* BIO_s_mem() { return const_cast<BIO_METHOD*>(::BIO_s_mem()); }

const ssl_method_st* TLSv1_client_method() { return TLS_client_method(); }

int SSL_get_ex_new_index(long argl, void* argp, OpenSSLProxyI::ExNewT n, OpenSSLProxyI::ExDupT d,
                         OpenSSLProxyI::ExFreeT f)
{
    auto* const callbacks = new ExtraDataT{n, d, f, argp, s_extraData.load()};
    while (!s_extraData.compare_exchange_weak(callbacks->next, callbacks)) {
    }
    return CRYPTO_get_ex_new_index(CRYPTO_EX_INDEX_SSL, argl, callbacks, created, duplicated, freed);
}

int ssl_verify_cert_chain(ssl_st* s, stack_st_X509* sk)
{
    if (sk == nullptr || sk_X509_num(sk) == 0) return 0;
    const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> verification(X509_STORE_CTX_new(),
                                                                                       X509_STORE_CTX_free);
    X509_STORE* const store = SSL_CTX_get_cert_store(SSL_get_SSL_CTX(s));
    if (!verification || !X509_STORE_CTX_init(verification.get(), store, sk_X509_value(sk, 0), sk)) return 0;

    X509_STORE_CTX_set_ex_data(verification.get(), SSL_get_ex_data_X509_STORE_CTX_idx(), s);
    X509_STORE_CTX_set_default(verification.get(), SSL_is_server(s) ? "ssl_client" : "ssl_server");
    X509_VERIFY_PARAM* const rules = X509_STORE_CTX_get0_param(verification.get());
    X509_VERIFY_PARAM_set_auth_level(rules, SSL_get_security_level(s));
    X509_VERIFY_PARAM_set1(rules, SSL_get0_param(s));
    if (SSL_get_verify_callback(s) != nullptr)
        X509_STORE_CTX_set_verify_cb(verification.get(), SSL_get_verify_callback(s));

    const int isTrusted = X509_verify_cert(verification.get());
    SSL_set_verify_result(s, X509_STORE_CTX_get_error(verification.get()));
    return isTrusted;
}

unsigned long X509_NAME_hash(X509_name_st* name) { return X509_NAME_hash_ex(name, nullptr, nullptr, nullptr); }

}   // namespace tvxssl
