// openssl3.h: what the OpenSSL of today no longer has under the name, or in the form, that the interface of
// the module gives it. Each function does what comes nearest; docs/crypto.md lists them.
//
// Everything here is found before OpenSSL's own function of the same name, because the forwarding functions
// stand in this namespace too.
//
// Thread safety: as OpenSSL's functions.
#ifndef TVXSSL_OPENSSL3_H
#define TVXSSL_OPENSSL3_H

// First, because they rename some functions: the interface below has to go along.
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

// Macros, with and without parameters, that would stand in the way of functions of these names.
#undef ERR_load_CRYPTO_strings
#undef ERR_load_crypto_strings
#undef EVP_CIPHER_CTX_cleanup
#undef EVP_CIPHER_CTX_init
#undef OPENSSL_add_all_algorithms_noconf
#undef SSL_get_ex_new_index
#undef SSL_library_init
#undef SSL_load_error_strings
#undef SSLeay
#undef SSLeay_version
#undef X509_NAME_hash

#include "opensslproxy.h"

namespace tvxssl {

// Remembers which function raised the error, for ERR_func_error_string: codes do not hold it any more.
unsigned long ERR_get_error();
// The function that raised the last error fetched in this thread, if that was `e`; otherwise null.
const char* ERR_func_error_string(unsigned long e);

void ERR_load_BIO_strings();
void ERR_load_CRYPTO_strings();
void ERR_load_crypto_strings();
void OPENSSL_add_all_algorithms_noconf();
void SSL_load_error_strings();
int SSL_library_init();

// Number as ever: 0 text, 2 compiler flags, 3 date, 4 platform, 5 folder of settings.
const char* SSLeay_version(int type);
unsigned long SSLeay();

void EVP_CIPHER_CTX_init(evp_cipher_ctx_st* ctx);
int EVP_CIPHER_CTX_cleanup(evp_cipher_ctx_st* ctx);
// From the provider of old algorithms, which only this cipher uses. Without that provider a cipher that
// cannot be initialised.
const evp_cipher_st* EVP_des_ecb();

bio_method_st* BIO_s_mem();

// Any version that both sides allow: version 1.0 alone is refused by the security levels of today.
const ssl_method_st* TLSv1_client_method();
int SSL_get_ex_new_index(long argl, void* argp, OpenSSLProxyI::ExNewT n, OpenSSLProxyI::ExDupT d,
                         OpenSSLProxyI::ExFreeT f);
// Verifies the chain whose first certificate is the peer's, as a handshake on `s` would, and stores the result
// in `s`. 0 also for an empty or missing chain.
int ssl_verify_cert_chain(ssl_st* s, stack_st_X509* sk);

unsigned long X509_NAME_hash(X509_name_st* name);

}   // namespace tvxssl

#endif   // TVXSSL_OPENSSL3_H
