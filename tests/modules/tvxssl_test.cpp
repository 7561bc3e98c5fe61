// The cryptographic module against OpenSSL: published values, the openssl program, and a server of it. What
// is only handed on to a function of the same name has been checked by the compiler; the cases are about
// what goes a way of its own, and about whole tasks.

#include "dynldc.h"
#include "opensslproxy.h"

#include "support/helpers.h"
#include "support/system.h"
#include "support/tlsclient.h"

#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

OpenSSLProxyI& crypto()
{
    static DynLoadC* const module = new DynLoadC(TVXSSL_MODULE, false);
    static OpenSSLProxyI* const proxy =
        reinterpret_cast<GetOpenSSLProxyT>(module->AddressOfProcedure("getOpenSSLProxy"))();
    return *proxy;
}

std::string fromHex(const std::string& hex)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

std::string toHex(const std::string& bytes)
{
    std::string hex;
    for (const char c : bytes) hex += {"0123456789abcdef"[c >> 4 & 15], "0123456789abcdef"[c & 15]};
    return hex;
}

unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
const unsigned char* bytesOf(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }

typedef const evp_cipher_st* (OpenSSLProxyI::*CipherT)();

// The text in the other form, or "failed".
std::string crypted(CipherT cipher, const std::string& key, const std::string& iv, const std::string& text,
                    bool encrypt, bool pad)
{
    evp_cipher_ctx_st* const context = crypto().EVP_CIPHER_CTX_new();
    std::string result(text.size() + 32, 0);
    int size = 0;
    int rest = 0;
    (crypto().EVP_CIPHER_CTX_init)(context);
    bool good = crypto().EVP_CipherInit_ex(context, (crypto().*cipher)(), nullptr, bytesOf(key), bytesOf(iv), encrypt);
    good = good && crypto().EVP_CIPHER_CTX_set_padding(context, pad);
    good = good && crypto().EVP_CipherUpdate(context, bytesOf(result), &size, bytesOf(text), int(text.size()));
    good = good && crypto().EVP_CipherFinal_ex(context, bytesOf(result) + size, &rest);
    EXPECT_EQ((crypto().EVP_CIPHER_CTX_cleanup)(context), 1);
    crypto().EVP_CIPHER_CTX_free(context);
    result.resize(static_cast<size_t>(size + rest));
    return good ? result : "failed";
}

}   // namespace

// Values of FIPS 81 (appendix B, C) and NIST SP 800-38A (F.2.1, F.2.5). Three equal keys make triple DES
// single DES, so one value serves both.
TEST(Tvxssl, ciphersGiveThePublishedValues)
{
    const std::string aesText = "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51";
    const std::string aesIv = "000102030405060708090a0b0c0d0e0f";
    const std::string desText = toHex("Now is the time for all ");
    const struct {
        const char* name;
        CipherT cipher;
        std::string key, iv, text, result;
    } rows[] = {
        {"AES-128", &OpenSSLProxyI::EVP_aes_128_cbc, "2b7e151628aed2a6abf7158809cf4f3c", aesIv, aesText,
         "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"},
        {"AES-256", &OpenSSLProxyI::EVP_aes_256_cbc, "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
         aesIv, aesText, "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"},
        {"DES-EDE3", &OpenSSLProxyI::EVP_des_ede3_cbc, "0123456789abcdef0123456789abcdef0123456789abcdef",
         "1234567890abcdef", desText, "e5c7cdde872bf27c43e934008c389c0f683788499a7c05f6"},
        {"DES", &OpenSSLProxyI::EVP_des_ecb, "0123456789abcdef", "", desText,
         "3fa40e8a984d48156a271787ab8883f9893d51ec4b563b53"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string key = fromHex(row.key);
        const std::string iv = fromHex(row.iv);
        EXPECT_EQ(toHex(crypted(row.cipher, key, iv, fromHex(row.text), true, false)), row.result);
        EXPECT_EQ(toHex(crypted(row.cipher, key, iv, fromHex(row.result), false, false)), row.text);
    }
}

TEST(Tvxssl, ciphersAgreeWithTheOpensslProgram)
{
    TextSourceC source(/*seed=*/901);
    const struct {
        const char* name;
        CipherT cipher;
        size_t keySize, ivSize;
    } rows[] = {{"-aes-128-cbc", &OpenSSLProxyI::EVP_aes_128_cbc, 16, 16},
                {"-aes-256-cbc", &OpenSSLProxyI::EVP_aes_256_cbc, 32, 16},
                {"-des-ede3-cbc", &OpenSSLProxyI::EVP_des_ede3_cbc, 24, 8}};
    for (const auto& row : rows) {
        for (const size_t size : {0UL, 1UL, 15UL, 16UL, 1000UL}) {
            std::string random;
            while (random.size() < 64 + size) random += source.bytes(200);
            const std::string key = random.substr(0, row.keySize);
            const std::string iv = random.substr(32, row.ivSize);
            const std::string text = random.substr(64, size);
            SCOPED_TRACE(std::string(row.name) + " " + toHex(key) + " " + toHex(iv) + " " + toHex(text));
            std::ofstream("text") << text;
            const std::string expected =
                programOutput({TVXSSL_OPENSSL, "enc", row.name, "-K", toHex(key), "-iv", toHex(iv), "-in", "text"});
            const std::string result = crypted(row.cipher, key, iv, text, true, true);
            EXPECT_EQ(toHex(result), toHex(expected));
            EXPECT_EQ(crypted(row.cipher, key, iv, result, false, true), text);
        }
    }
}

// FIPS 180-4's "abc", RFC 6070 and RFC 7914 (section 11).
TEST(Tvxssl, digestsAndDerivedKeysGiveThePublishedValues)
{
    const evp_md_st* const sha1 = crypto().EVP_sha1();
    const evp_md_st* const sha256 = crypto().EVP_sha256();
    const auto digest = [](const evp_md_st* type) {
        std::string result(64, 0);
        unsigned size = 0;
        EXPECT_EQ(crypto().EVP_Digest("abc", 3, bytesOf(result), &size, type, nullptr), 1);
        EXPECT_EQ(int(size), (crypto().EVP_MD_size)(type));
        return toHex(result.substr(0, size));
    };
    EXPECT_EQ(digest(sha1), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(digest(sha256), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");

    const auto derived = [](const char* password, const std::string& salt, int rounds, const evp_md_st* type,
                            int size) {
        std::string result(static_cast<size_t>(size), 0);
        EXPECT_EQ(crypto().PKCS5_PBKDF2_HMAC(password, -1, bytesOf(salt), int(salt.size()), rounds, type, size,
                                             bytesOf(result)),
                  1);
        return toHex(result);
    };
    EXPECT_EQ(derived("password", "salt", 1, sha1, 20), "0c60c80f961f0e71f3a9b524af6012062fe037a6");
    EXPECT_EQ(derived("password", "salt", 4096, sha1, 20), "4b007901b765489abead49d926f721d065a429c1");
    EXPECT_THAT(derived("passwd", "salt", 1, sha256, 64),
                StartsWith("55ac046e56e3089fec1691c22544b605f94185216dde0465"));
}

TEST(Tvxssl, saysWhichOpensslItIs)
{
    EXPECT_GE(crypto().SSLeay(), 0x30000000UL);
    EXPECT_THAT(programOutput({TVXSSL_OPENSSL, "version"}), StartsWith(crypto().SSLeay_version(0)));
    EXPECT_THAT(crypto().SSLeay_version(2), StartsWith("compiler:"));
    EXPECT_THAT(crypto().SSLeay_version(3), StartsWith("built on:"));
    EXPECT_THAT(crypto().SSLeay_version(4), StartsWith("platform:"));
    EXPECT_THAT(crypto().SSLeay_version(5), StartsWith("OPENSSLDIR:"));
}

TEST(Tvxssl, aFailureTellsLibraryFunctionAndReason)
{
    crypto().ERR_load_crypto_strings();
    const std::string key(16, 'k');
    EXPECT_EQ(crypted(&OpenSSLProxyI::EVP_aes_128_cbc, key, key, "not a whole block", false, true), "failed");
    const unsigned long error = crypto().ERR_get_error();
    EXPECT_STREQ(crypto().ERR_reason_error_string(error), "wrong final block length");
    EXPECT_NE(crypto().ERR_lib_error_string(error), nullptr);
    EXPECT_THAT(crypto().ERR_func_error_string(error), HasSubstr("final"));
    EXPECT_EQ(crypto().ERR_func_error_string(error + 1), nullptr);
    EXPECT_EQ(crypto().ERR_get_error(), 0UL);
    EXPECT_EQ(crypto().ERR_func_error_string(0), nullptr);
}

namespace {
std::vector<std::string> s_extraDataCalls;
void noteCall(const char* what, long argl, void* argp)
{
    s_extraDataCalls.push_back(what + std::to_string(argl) + static_cast<const char*>(argp));
}
}   // namespace

TEST(Tvxssl, extraDataHasTheCallbacksOfOld)
{
    static char text[] = "x";
    const auto created = [](void*, void*, crypto_ex_data_st*, int, long argl, void* argp) {
        noteCall("new", argl, argp);
        return 1;
    };
    const auto freed = [](void*, void*, crypto_ex_data_st*, int, long argl, void* argp) {
        noteCall("free", argl, argp);
    };
    const int index = (crypto().SSL_get_ex_new_index)(7, text, created, nullptr, freed);
    ssl_ctx_st* const settings = crypto().SSL_CTX_new(crypto().TLSv1_client_method());
    ssl_st* const connection = crypto().SSL_new(settings);
    EXPECT_EQ(crypto().SSL_set_ex_data(connection, index, text), 1);
    EXPECT_EQ(crypto().SSL_get_ex_data(connection, index), text);
    crypto().SSL_free(connection);
    crypto().SSL_CTX_free(settings);
    EXPECT_THAT(s_extraDataCalls, ElementsAre("new7x", "free7x"));
}

TEST(Tvxssl, exportsItsEntryOnlyAndNotesWhatItNeeds)
{
    const std::string notes = programOutput({"readelf", "--notes", "--wide", TVXSSL_MODULE});
    EXPECT_THAT(notes, HasSubstr(".note.dlopen"));
    EXPECT_THAT(notes, HasSubstr("(0x407c0c0a)"));
    const std::string dynamic = programOutput({"readelf", "--dynamic", "--wide", TVXSSL_MODULE});
    const size_t at = dynamic.find("libssl.so");
    const std::string needed = dynamic.substr(at, dynamic.find(']', at) - at);
    EXPECT_THAT(fileText(TVXSSL_MODULE), HasSubstr("\"soname\":[\"" + needed + "\""));
#ifdef TVXSSL_IS_PLAIN   // a sanitizer adds names of its own
    EXPECT_EQ(programOutput({"nm", "--dynamic", "--defined-only", "--format=just-symbols", TVXSSL_MODULE}),
              "getOpenSSLProxy\n");
#endif
}

// ---- Connections ----

namespace {

const long UNKNOWN_ISSUER = 20;
const int COMMON_NAME = 13;
const int SUBJECT_ALTERNATIVE_NAMES = 85;

// What the verify callback does and sees, found through the connection that it is called for.
struct WatcherT {
    bool overrules = false;
    std::vector<std::string> names = {};
    std::vector<int> errors = {};
};
int s_watcherIndex;

std::string commonName(X509_name_st* name)
{
    char text[80] = "";
    crypto().X509_NAME_get_text_by_NID(name, COMMON_NAME, text, sizeof text);
    return text;
}

int watch(int ok, x509_store_ctx_st* verification)
{
    void* const connection =
        crypto().X509_STORE_CTX_get_ex_data(verification, crypto().SSL_get_ex_data_X509_STORE_CTX_idx());
    auto& watcher = *static_cast<WatcherT*>(crypto().SSL_get_ex_data(static_cast<ssl_st*>(connection), s_watcherIndex));
    x509_st* const certificate = crypto().X509_STORE_CTX_get_current_cert(verification);
    watcher.names.push_back(commonName(crypto().X509_get_subject_name(certificate)));
    if (!ok) watcher.errors.push_back(crypto().X509_STORE_CTX_get_error(verification));
    return ok || watcher.overrules;
}

class TvxsslConnection : public testing::Test {
protected:
    // An authority, a certificate that it has signed, and a server that shows it.
    void SetUp() override
    {
        std::ofstream("openssl.cnf") << "[req]\ndistinguished_name=dn\n[dn]\n";
        setenv("OPENSSL_CONF", "openssl.cnf", 1);
        make({"-keyout", "authority.key", "-out", "authority.pem", "-subj", "/CN=Authority", "-addext",
              "basicConstraints=critical,CA:TRUE"});
        make({"-keyout", "agent.key", "-out", "agent.pem", "-subj", "/CN=Agent", "-CA", "authority.pem", "-CAkey",
              "authority.key", "-addext", "subjectAltName=DNS:agent.example,DNS:localhost"});
        m_server = popen("exec timeout 60 " TVXSSL_OPENSSL " s_server -accept 127.0.0.1:0 -naccept 1 -rev"
                         " -cert agent.pem -key agent.key </dev/null 2>&1",
                         "r");
        char line[200];
        int port = 0;
        while (fgets(line, sizeof line, m_server) != nullptr && sscanf(line, "ACCEPT 127.0.0.1:%d", &port) != 1) {
        }
        unsetenv("OPENSSL_CONF");

        m_settings = crypto().SSL_CTX_new(crypto().TLSv1_client_method());
        crypto().SSL_CTX_set_verify(m_settings, 1, watch);
        s_watcherIndex = (crypto().SSL_get_ex_new_index)(0, nullptr, nullptr, nullptr, nullptr);
        m_port = port;
    }
    void TearDown() override
    {
        crypto().SSL_CTX_free(m_settings);
        pclose(m_server);
    }

    static void make(std::vector<std::string> arguments)
    {
        const char* const common[] = {
            TVXSSL_OPENSSL, "req",   "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
            "-nodes",       "-days", "2"};
        arguments.insert(arguments.begin(), std::begin(common), std::end(common));
        programOutput(arguments);
    }

    FILE* m_server = nullptr;
    ssl_ctx_st* m_settings = nullptr;
    int m_port = 0;
    WatcherT m_watcher;
};

}   // namespace

TEST_F(TvxsslConnection, withAKnownAuthorityCarriesTextsAndShowsTheCertificate)
{
    ASSERT_EQ(crypto().SSL_CTX_load_verify_locations(m_settings, "authority.pem", nullptr), 1);
    TlsClientC client(crypto(), m_settings, m_port);
    crypto().SSL_set_ex_data(client.ssl(), s_watcherIndex, &m_watcher);
    ASSERT_TRUE(client.connect());
    EXPECT_THAT(m_watcher.names, ElementsAre("Authority", "Agent"));
    EXPECT_THAT(m_watcher.errors, IsEmpty());
    EXPECT_EQ(crypto().SSL_get_verify_result(client.ssl()), 0);

    client.write("drawn onward\n");
    EXPECT_EQ(client.readLine(), "drawno nward\n");

    x509_st* const certificate = (crypto().SSL_get_peer_certificate)(client.ssl());
    X509_name_st* const subject = crypto().X509_get_subject_name(certificate);
    EXPECT_EQ(commonName(crypto().X509_get_issuer_name(certificate)), "Authority");
    char hash[20];
    snprintf(hash, sizeof hash, "%08lx\n", (crypto().X509_NAME_hash)(subject));
    EXPECT_EQ(programOutput({TVXSSL_OPENSSL, "x509", "-in", "agent.pem", "-noout", "-subject_hash"}), hash);

    auto* const names =
        static_cast<stack_st*>(crypto().X509_get_ext_d2i(certificate, SUBJECT_ALTERNATIVE_NAMES, nullptr, nullptr));
    EXPECT_EQ((crypto().sk_num)(names), 2);
    (crypto().sk_pop_free)(names, [](void* name) { crypto().GENERAL_NAME_free(static_cast<GENERAL_NAME_st*>(name)); });
    crypto().X509_free(certificate);
}

TEST_F(TvxsslConnection, withAnUnknownAuthorityEndsWithTheReason)
{
    TlsClientC client(crypto(), m_settings, m_port);
    crypto().SSL_set_ex_data(client.ssl(), s_watcherIndex, &m_watcher);
    EXPECT_FALSE(client.connect());
    EXPECT_THAT(m_watcher.errors, ElementsAre(UNKNOWN_ISSUER));
    EXPECT_EQ(crypto().SSL_get_verify_result(client.ssl()), UNKNOWN_ISSUER);
    EXPECT_STREQ(crypto().ERR_reason_error_string(crypto().ERR_get_error()), "certificate verify failed");
}

// The chain comes from OpenSSL itself, whose names the module has made visible.
TEST_F(TvxsslConnection, aChainCanBeVerifiedAgainLater)
{
    m_watcher.overrules = true;
    TlsClientC client(crypto(), m_settings, m_port);
    crypto().SSL_set_ex_data(client.ssl(), s_watcherIndex, &m_watcher);
    ASSERT_TRUE(client.connect());
    const auto chainOf =
        reinterpret_cast<stack_st_X509* (*)(const ssl_st*)>(dlsym(RTLD_DEFAULT, "SSL_get_peer_cert_chain"));
    ASSERT_NE(chainOf, nullptr);
    stack_st_X509* const chain = chainOf(client.ssl());

    m_watcher = WatcherT();
    EXPECT_EQ(crypto().ssl_verify_cert_chain(client.ssl(), chain), 0);
    EXPECT_THAT(m_watcher.errors, ElementsAre(UNKNOWN_ISSUER));
    ASSERT_EQ(crypto().SSL_CTX_load_verify_locations(m_settings, "authority.pem", nullptr), 1);
    EXPECT_EQ(crypto().ssl_verify_cert_chain(client.ssl(), chain), 1);
    EXPECT_EQ(crypto().SSL_get_verify_result(client.ssl()), 0);
    EXPECT_EQ(crypto().ssl_verify_cert_chain(client.ssl(), nullptr), 0);
}
