// opensslslots.h: the one list of what the cryptographic module does, from which the interface, the
// stand-in for a missing module, the module itself and the tests are made.
//
// Each row is TVX_OPENSSL_SLOT(result, name, (parameters), (arguments)). Whoever includes this file defines
// that macro first, inside a class or wherever the rows are wanted; it is gone afterwards.
//
// The order is that of the interface's slots. It never changes, and nothing is ever put in between or
// removed: modules and programs of different years meet here. The signatures are those of OpenSSL 1.0.2.
//
// A macro must put the name into parentheses where it declares or calls a function: OpenSSL's headers turn
// some names into macros. Those with parameters leave such a name alone, and the others rename it, which does
// no harm when those headers come first, since slots are found by their place.

// Without a guard, because it is included once for each thing that is made from it.
#ifndef TVX_OPENSSL_SLOT
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments)
#endif

// clang-format off

// Error codes of the calling thread, and their texts (constant; null when there is none).
TVX_OPENSSL_SLOT(unsigned long, ERR_get_error, (), ())
TVX_OPENSSL_SLOT(const char*, ERR_lib_error_string, (unsigned long e), (e))
TVX_OPENSSL_SLOT(const char*, ERR_func_error_string, (unsigned long e), (e))
TVX_OPENSSL_SLOT(const char*, ERR_reason_error_string, (unsigned long e), (e))

// Ciphers. A context belongs to one thread at a time.
TVX_OPENSSL_SLOT(int, EVP_EncryptInit, (evp_cipher_ctx_st* ctx, const evp_cipher_st* c, const U8* key, const U8* iv),
                 (ctx, c, key, iv))
TVX_OPENSSL_SLOT(int, EVP_EncryptInit_ex, (evp_cipher_ctx_st* ctx, const evp_cipher_st* c, engine_st* impl,
                  const U8* key, const U8* iv), (ctx, c, impl, key, iv))
TVX_OPENSSL_SLOT(int, EVP_EncryptUpdate, (evp_cipher_ctx_st* ctx, U8* out, int* outl, const U8* in, int inl),
                 (ctx, out, outl, in, inl))
TVX_OPENSSL_SLOT(int, EVP_EncryptFinal_ex, (evp_cipher_ctx_st* ctx, U8* out, int* outl), (ctx, out, outl))
TVX_OPENSSL_SLOT(int, EVP_EncryptFinal, (evp_cipher_ctx_st* ctx, U8* out, int* outl), (ctx, out, outl))
TVX_OPENSSL_SLOT(int, EVP_DecryptInit, (evp_cipher_ctx_st* ctx, const evp_cipher_st* c, const U8* key, const U8* iv),
                 (ctx, c, key, iv))
TVX_OPENSSL_SLOT(int, EVP_DecryptInit_ex, (evp_cipher_ctx_st* ctx, const evp_cipher_st* c, engine_st* impl,
                  const U8* key, const U8* iv), (ctx, c, impl, key, iv))
TVX_OPENSSL_SLOT(int, EVP_DecryptUpdate, (evp_cipher_ctx_st* ctx, U8* out, int* outl, const U8* in, int inl),
                 (ctx, out, outl, in, inl))
TVX_OPENSSL_SLOT(int, EVP_DecryptFinal, (evp_cipher_ctx_st* ctx, U8* outm, int* outl), (ctx, outm, outl))
TVX_OPENSSL_SLOT(int, EVP_DecryptFinal_ex, (evp_cipher_ctx_st* ctx, U8* outm, int* outl), (ctx, outm, outl))
TVX_OPENSSL_SLOT(int, EVP_CipherInit, (evp_cipher_ctx_st* ctx, const evp_cipher_st* c, const U8* key, const U8* iv,
                  int enc), (ctx, c, key, iv, enc))
TVX_OPENSSL_SLOT(int, EVP_CipherInit_ex, (evp_cipher_ctx_st* ctx, const evp_cipher_st* c, engine_st* impl,
                  const U8* key, const U8* iv, int enc), (ctx, c, impl, key, iv, enc))
TVX_OPENSSL_SLOT(int, EVP_CipherUpdate, (evp_cipher_ctx_st* ctx, U8* out, int* outl, const U8* in, int inl),
                 (ctx, out, outl, in, inl))
TVX_OPENSSL_SLOT(int, EVP_CipherFinal, (evp_cipher_ctx_st* ctx, U8* outm, int* outl), (ctx, outm, outl))
TVX_OPENSSL_SLOT(int, EVP_CipherFinal_ex, (evp_cipher_ctx_st* ctx, U8* outm, int* outl), (ctx, outm, outl))

// Contexts come from EVP_CIPHER_CTX_new and go back through EVP_CIPHER_CTX_free; one that the caller
// allocates itself is too small for every OpenSSL since 1.1.
TVX_OPENSSL_SLOT(void, EVP_CIPHER_CTX_init, (evp_cipher_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(int, EVP_CIPHER_CTX_cleanup, (evp_cipher_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(evp_cipher_ctx_st*, EVP_CIPHER_CTX_new, (), ())
TVX_OPENSSL_SLOT(void, EVP_CIPHER_CTX_free, (evp_cipher_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(int, EVP_CIPHER_CTX_set_key_length, (evp_cipher_ctx_st* ctx, int keylen), (ctx, keylen))
TVX_OPENSSL_SLOT(int, EVP_CIPHER_CTX_set_padding, (evp_cipher_ctx_st* ctx, int pad), (ctx, pad))
TVX_OPENSSL_SLOT(int, EVP_CIPHER_CTX_ctrl, (evp_cipher_ctx_st* ctx, int type, int arg, void* ptr),
                 (ctx, type, arg, ptr))
TVX_OPENSSL_SLOT(int, EVP_CIPHER_CTX_rand_key, (evp_cipher_ctx_st* ctx, U8* key), (ctx, key))

// Constant objects that name ciphers and digests.
TVX_OPENSSL_SLOT(const evp_cipher_st*, EVP_des_ecb, (), ())
TVX_OPENSSL_SLOT(const evp_cipher_st*, EVP_des_ede3_cbc, (), ())
TVX_OPENSSL_SLOT(const evp_cipher_st*, EVP_aes_128_cbc, (), ())
TVX_OPENSSL_SLOT(const evp_cipher_st*, EVP_aes_256_cbc, (), ())
TVX_OPENSSL_SLOT(const evp_md_st*, EVP_sha1, (), ())
TVX_OPENSSL_SLOT(const evp_md_st*, EVP_sha256, (), ())

// Digests, keys from passwords, wiping of secrets.
TVX_OPENSSL_SLOT(int, EVP_MD_size, (const evp_md_st* md), (md))
TVX_OPENSSL_SLOT(int, EVP_Digest, (const void* data, size_t count, U8* md, unsigned int* size, const evp_md_st* type,
                  engine_st* impl), (data, count, md, size, type, impl))
TVX_OPENSSL_SLOT(int, PKCS5_PBKDF2_HMAC, (const char* pass, int passlen, const U8* salt, int saltlen, int iter,
                  const evp_md_st* digest, int keylen, U8* out),
                 (pass, passlen, salt, saltlen, iter, digest, keylen, out))
TVX_OPENSSL_SLOT(void, OPENSSL_cleanse, (void* ptr, size_t len), (ptr, len))

// Preparation. Allowed any number of times, from any thread.
TVX_OPENSSL_SLOT(void, ERR_load_BIO_strings, (), ())
TVX_OPENSSL_SLOT(void, ERR_load_CRYPTO_strings, (), ())
TVX_OPENSSL_SLOT(void, ERR_load_crypto_strings, (), ())
TVX_OPENSSL_SLOT(void, OPENSSL_add_all_algorithms_noconf, (), ())

// Buffers between the caller and a connection. BIO_nread and BIO_nwrite give the address of bytes inside
// the buffer, good until its next operation.
TVX_OPENSSL_SLOT(bio_method_st*, BIO_s_mem, (), ())
TVX_OPENSSL_SLOT(bio_st*, BIO_new, (bio_method_st* type), (type))
TVX_OPENSSL_SLOT(int, BIO_free, (bio_st* b), (b))
TVX_OPENSSL_SLOT(int, BIO_write, (bio_st* b, const void* data, int len), (b, data, len))
TVX_OPENSSL_SLOT(long, BIO_ctrl, (bio_st* b, int cmd, long larg, void* parg), (b, cmd, larg, parg))
TVX_OPENSSL_SLOT(void, BIO_free_all, (bio_st* b), (b))
TVX_OPENSSL_SLOT(int, BIO_nread0, (bio_st* b, char** buf), (b, buf))
TVX_OPENSSL_SLOT(int, BIO_nread, (bio_st* b, char** buf, int num), (b, buf, num))
TVX_OPENSSL_SLOT(int, BIO_nwrite0, (bio_st* b, char** buf), (b, buf))
TVX_OPENSSL_SLOT(int, BIO_nwrite, (bio_st* b, char** buf, int num), (b, buf, num))
TVX_OPENSSL_SLOT(int, BIO_new_bio_pair, (bio_st** bio1, size_t writebuf1, bio_st** bio2, size_t writebuf2),
                 (bio1, writebuf1, bio2, writebuf2))

// Where a verify callback finds its connection; preparation; which OpenSSL there is (SSLeay() 0: none).
TVX_OPENSSL_SLOT(int, SSL_get_ex_data_X509_STORE_CTX_idx, (), ())
TVX_OPENSSL_SLOT(void, SSL_load_error_strings, (), ())
TVX_OPENSSL_SLOT(int, SSL_library_init, (), ())
TVX_OPENSSL_SLOT(const char*, SSLeay_version, (int type), (type))
TVX_OPENSSL_SLOT(unsigned long, SSLeay, (), ())

// Connections. A connection belongs to one thread at a time. SSL_set_bio takes over both buffers, and
// SSL_get_peer_certificate gives a reference that goes back through X509_free.
TVX_OPENSSL_SLOT(ssl_st*, SSL_new, (ssl_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(void, SSL_free, (ssl_st* s), (s))
TVX_OPENSSL_SLOT(int, SSL_read, (ssl_st* s, void* buf, int num), (s, buf, num))
TVX_OPENSSL_SLOT(int, SSL_write, (ssl_st* s, const void* buf, int num), (s, buf, num))
TVX_OPENSSL_SLOT(int, SSL_pending, (const ssl_st* s), (s))
TVX_OPENSSL_SLOT(int, SSL_peek, (ssl_st* s, void* buf, int num), (s, buf, num))
TVX_OPENSSL_SLOT(x509_st*, SSL_get_peer_certificate, (const ssl_st* s), (s))
TVX_OPENSSL_SLOT(int, SSL_get_error, (const ssl_st* s, int ret), (s, ret))
TVX_OPENSSL_SLOT(ssl_session_st*, SSL_get_session, (const ssl_st* s), (s))
TVX_OPENSSL_SLOT(long, SSL_get_verify_result, (const ssl_st* s), (s))
TVX_OPENSSL_SLOT(int, ssl_verify_cert_chain, (ssl_st* s, stack_st_X509* sk), (s, sk))
TVX_OPENSSL_SLOT(ssl_ctx_st*, SSL_get_SSL_CTX, (const ssl_st* s), (s))
TVX_OPENSSL_SLOT(void*, SSL_get_ex_data, (const ssl_st* s, int idx), (s, idx))
TVX_OPENSSL_SLOT(int, SSL_connect, (ssl_st* s), (s))
TVX_OPENSSL_SLOT(void, SSL_set_bio, (ssl_st* s, bio_st* rbio, bio_st* wbio), (s, rbio, wbio))
TVX_OPENSSL_SLOT(void, SSL_set_connect_state, (ssl_st* s), (s))
TVX_OPENSSL_SLOT(int, SSL_set_ex_data, (ssl_st* s, int idx, void* data), (s, idx, data))
TVX_OPENSSL_SLOT(int, SSL_get_ex_new_index, (long argl, void* argp, ExNewT n, ExDupT d, ExFreeT f),
                 (argl, argp, n, d, f))

// Settings that connections share; to be made before the first connection.
TVX_OPENSSL_SLOT(const ssl_method_st*, TLSv1_client_method, (), ())
TVX_OPENSSL_SLOT(ssl_ctx_st*, SSL_CTX_new, (const ssl_method_st* m), (m))
TVX_OPENSSL_SLOT(void, SSL_CTX_free, (ssl_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(x509_store_st*, SSL_CTX_get_cert_store, (const ssl_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(int, SSL_CTX_get_verify_mode, (const ssl_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(int, SSL_CTX_get_verify_depth, (const ssl_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(void, SSL_CTX_set_verify, (ssl_ctx_st* ctx, int mode, VerifyT cb), (ctx, mode, cb))
TVX_OPENSSL_SLOT(void, SSL_CTX_set_verify_depth, (ssl_ctx_st* ctx, int depth), (ctx, depth))
TVX_OPENSSL_SLOT(int, SSL_CTX_set_default_verify_paths, (ssl_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(int, SSL_CTX_load_verify_locations, (ssl_ctx_st* ctx, const char* CAfile, const char* CApath),
                 (ctx, CAfile, CApath))

// Certificates and their verification. What a verify callback is given lives until it returns.
TVX_OPENSSL_SLOT(const char*, X509_verify_cert_error_string, (long n), (n))
TVX_OPENSSL_SLOT(x509_lookup_method_st*, X509_LOOKUP_file, (), ())
TVX_OPENSSL_SLOT(x509_lookup_method_st*, X509_LOOKUP_hash_dir, (), ())
TVX_OPENSSL_SLOT(int, X509_LOOKUP_ctrl, (x509_lookup_st* lk, int cmd, const char* argc, long argl, char** ret),
                 (lk, cmd, argc, argl, ret))
TVX_OPENSSL_SLOT(int, X509_cmp_time, (const asn1_string_st* s, time_t* t), (s, t))
TVX_OPENSSL_SLOT(int, X509_NAME_get_text_by_NID, (X509_name_st* name, int nid, char* buf, int len),
                 (name, nid, buf, len))
TVX_OPENSSL_SLOT(void*, X509_get_ext_d2i, (x509_st* x, int nid, int* crit, int* idx), (x, nid, crit, idx))
TVX_OPENSSL_SLOT(stack_st_X509_CRL*, X509_STORE_get1_crls, (x509_store_ctx_st* ctx, X509_name_st* nm), (ctx, nm))
TVX_OPENSSL_SLOT(int, X509_STORE_set_flags, (x509_store_st* st, unsigned long flags), (st, flags))
TVX_OPENSSL_SLOT(x509_lookup_st*, X509_STORE_add_lookup, (x509_store_st* st, x509_lookup_method_st* m), (st, m))
TVX_OPENSSL_SLOT(int, X509_load_crl_file, (x509_lookup_st* lk, const char* file, int type), (lk, file, type))
TVX_OPENSSL_SLOT(void*, X509_STORE_CTX_get_ex_data, (x509_store_ctx_st* ctx, int idx), (ctx, idx))
TVX_OPENSSL_SLOT(x509_st*, X509_STORE_CTX_get_current_cert, (x509_store_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(int, X509_STORE_CTX_get_error, (x509_store_ctx_st* ctx), (ctx))
TVX_OPENSSL_SLOT(void, X509_VERIFY_PARAM_set_time, (X509_VERIFY_PARAM_st* param, time_t t), (param, t))
TVX_OPENSSL_SLOT(X509_name_st*, X509_get_subject_name, (x509_st* x), (x))
TVX_OPENSSL_SLOT(X509_name_st*, X509_get_issuer_name, (x509_st* x), (x))
TVX_OPENSSL_SLOT(unsigned long, X509_subject_name_hash, (x509_st* x), (x))
TVX_OPENSSL_SLOT(unsigned long, X509_issuer_name_hash, (x509_st* x), (x))
TVX_OPENSSL_SLOT(unsigned long, X509_NAME_hash, (X509_name_st* name), (name))
TVX_OPENSSL_SLOT(int, i2d_X509_NAME, (X509_name_st* name, U8** out), (name, out))
TVX_OPENSSL_SLOT(void, X509_free, (x509_st* x), (x))
TVX_OPENSSL_SLOT(void, GENERAL_NAME_free, (GENERAL_NAME_st* gn), (gn))

// Lists of any objects, texts inside certificates, randomness.
TVX_OPENSSL_SLOT(int, sk_num, (const stack_st* sk), (sk))
TVX_OPENSSL_SLOT(void*, sk_value, (const stack_st* sk, int i), (sk, i))
TVX_OPENSSL_SLOT(void, sk_pop_free, (stack_st* sk, void (*func)(void*)), (sk, func))
TVX_OPENSSL_SLOT(int, ASN1_STRING_type, (asn1_string_st* s), (s))
TVX_OPENSSL_SLOT(U8*, ASN1_STRING_data, (asn1_string_st* s), (s))
TVX_OPENSSL_SLOT(int, ASN1_STRING_length, (const asn1_string_st* s), (s))
TVX_OPENSSL_SLOT(int, ASN1_TIME_print, (bio_st* out, const asn1_string_st* t), (out, t))
TVX_OPENSSL_SLOT(void, RAND_add, (const void* buf, int num, double entropy), (buf, num, entropy))
TVX_OPENSSL_SLOT(int, RAND_status, (), ())
// clang-format on

#undef TVX_OPENSSL_SLOT
