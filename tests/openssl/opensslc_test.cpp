// The proxy before the module: each case in a process of its own, because what is found holds for good.

#include "dynldc.h"
#include "errbuf.h"
#include "openssl/fakemodule.h"
#include "openssl/proxy/opensslstub.h"
#include "support/helpers.h"
#include "support/system.h"
#include "tracing/tracehelpers.h"
#include "tvxcmn.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

const std::string FAKE = TVXSSL_FAKES "/fake";
const std::string WITHOUT_ENTRY = TVXSSL_FAKES "/noentry";
const std::string TRACED = "Encoding/Encryption/OpenSSL/Proxy@0:";
const std::string NOT_FOUND = TRACED + "Failed to load shared library 'libtvxssl.so': libtvxssl.so: ";

// A process in which nobody has asked for the proxy yet.
template <class BodyT>
void inNewProcess(BodyT body)
{
    const int status = inChild([&] {
        body();
        std::fflush(stdout);
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(status, 0);
}

// What is traced, and what is recorded in this thread, while it lives.
class ReportsC {
public:
    ReportsC()
    {
        m_buffer.reset();
        m_controller.registerConsumer(&consumer, 0, 9);
        m_controller.enable(&consumer, "Encoding");
    }
    ~ReportsC() { m_controller.unregisterConsumer(&consumer); }
    ReportsC(const ReportsC&) = delete;
    ReportsC& operator=(const ReportsC&) = delete;

    const std::vector<std::string>& lines() const { return consumer.messages; }
    std::vector<std::pair<ErrorT, std::string>> errors() const
    {
        std::vector<std::pair<ErrorT, std::string>> all;
        for (unsigned long i = 0; i < m_buffer.count(); ++i) {
            all.emplace_back(m_buffer.get(i)->error(), m_buffer.get(i)->message().utf8());
        }
        return all;
    }

    RecordingConsumerC consumer;

private:
    ErrBufI& m_buffer = *getErrBuf(2);
    TraceControllerI& m_controller = *getTraceController(2);
};

auto isError(ErrorT number, const char* text) { return testing::Pair(number, std::string(text)); }

OpenSSLProxyI& proxyIn(const std::string& folder)
{
    getOpenSSL(1)->SetLibraryPath(folder.c_str());
    return *getOpenSSL(1)->getProxy();
}

// The fake module's own affairs. Stays open, so what a test sets holds when the library opens the module.
FakeModuleT& fake()
{
    static DynLoadC* const module = new DynLoadC((FAKE + "/libtvxssl").c_str(), true);
    return *static_cast<FakeModuleT*>(module->AddressOfProcedure("fakeModule"));
}

bool isFakeLoaded()
{
    void* const handle = dlopen((FAKE + "/libtvxssl.so").c_str(), RTLD_NOW | RTLD_NOLOAD);
    return handle != nullptr && dlclose(handle) == 0;
}

bool isStub(OpenSSLProxyI& proxy) { return dynamic_cast<OpenSSLProxyStubC*>(&proxy) != nullptr; }

struct PlaceT {
    PlaceT() { EXPECT_EQ(stat(".", &info), 0); }
    bool operator==(const PlaceT& other) const
    {
        return info.st_dev == other.info.st_dev && info.st_ino == other.info.st_ino;
    }
    struct stat info = {};
};

// Calls an operation with nothing but zeros.
template <class ResultT, class... ArgT>
ResultT callWithZeros(OpenSSLProxyI& proxy, ResultT (OpenSSLProxyI::*operation)(ArgT...))
{
    return (proxy.*operation)(ArgT()...);
}

// The number of an operation's slot, as the C++ ABI keeps it in a pointer to a virtual function: its offset and 1.
template <class OperationT>
size_t slotOf(OperationT operation)
{
    size_t offset = 0;
    std::memcpy(&offset, &operation, sizeof offset);
    return (offset - 1) / sizeof(void*);
}

// Modules and programs of all years agree about this order.
const char ORDER[] =
    "ERR_get_error ERR_lib_error_string ERR_func_error_string ERR_reason_error_string EVP_EncryptInit "
    "EVP_EncryptInit_ex EVP_EncryptUpdate EVP_EncryptFinal_ex EVP_EncryptFinal EVP_DecryptInit EVP_DecryptInit_ex "
    "EVP_DecryptUpdate EVP_DecryptFinal EVP_DecryptFinal_ex EVP_CipherInit EVP_CipherInit_ex EVP_CipherUpdate "
    "EVP_CipherFinal EVP_CipherFinal_ex EVP_CIPHER_CTX_init EVP_CIPHER_CTX_cleanup EVP_CIPHER_CTX_new "
    "EVP_CIPHER_CTX_free EVP_CIPHER_CTX_set_key_length EVP_CIPHER_CTX_set_padding EVP_CIPHER_CTX_ctrl "
    "EVP_CIPHER_CTX_rand_key EVP_des_ecb EVP_des_ede3_cbc EVP_aes_128_cbc EVP_aes_256_cbc EVP_sha1 EVP_sha256 "
    "EVP_MD_size EVP_Digest PKCS5_PBKDF2_HMAC OPENSSL_cleanse ERR_load_BIO_strings ERR_load_CRYPTO_strings "
    "ERR_load_crypto_strings OPENSSL_add_all_algorithms_noconf BIO_s_mem BIO_new BIO_free BIO_write BIO_ctrl "
    "BIO_free_all BIO_nread0 BIO_nread BIO_nwrite0 BIO_nwrite BIO_new_bio_pair SSL_get_ex_data_X509_STORE_CTX_idx "
    "SSL_load_error_strings SSL_library_init SSLeay_version SSLeay SSL_new SSL_free SSL_read SSL_write SSL_pending "
    "SSL_peek SSL_get_peer_certificate SSL_get_error SSL_get_session SSL_get_verify_result ssl_verify_cert_chain "
    "SSL_get_SSL_CTX SSL_get_ex_data SSL_connect SSL_set_bio SSL_set_connect_state SSL_set_ex_data "
    "SSL_get_ex_new_index TLSv1_client_method SSL_CTX_new SSL_CTX_free SSL_CTX_get_cert_store SSL_CTX_get_verify_mode "
    "SSL_CTX_get_verify_depth SSL_CTX_set_verify SSL_CTX_set_verify_depth SSL_CTX_set_default_verify_paths "
    "SSL_CTX_load_verify_locations X509_verify_cert_error_string X509_LOOKUP_file X509_LOOKUP_hash_dir "
    "X509_LOOKUP_ctrl X509_cmp_time X509_NAME_get_text_by_NID X509_get_ext_d2i X509_STORE_get1_crls "
    "X509_STORE_set_flags X509_STORE_add_lookup X509_load_crl_file X509_STORE_CTX_get_ex_data "
    "X509_STORE_CTX_get_current_cert X509_STORE_CTX_get_error X509_VERIFY_PARAM_set_time X509_get_subject_name "
    "X509_get_issuer_name X509_subject_name_hash X509_issuer_name_hash X509_NAME_hash i2d_X509_NAME X509_free "
    "GENERAL_NAME_free sk_num sk_value sk_pop_free ASN1_STRING_type ASN1_STRING_data ASN1_STRING_length "
    "ASN1_TIME_print RAND_add RAND_status ";

}   // namespace

TEST(OpenSSLSlots, keepTheirOrderAndReachTheOperationOfTheirName)
{
    inNewProcess([] {
        OpenSSLProxyI& proxy = proxyIn(FAKE);
        const std::vector<std::string> order = splitText(ORDER, ' ');
        ASSERT_EQ(order.size(), 117U);
        size_t slot = 0;
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments)                                                          \
    EXPECT_EQ(slotOf(&OpenSSLProxyI::name), slot);                                                                     \
    callWithZeros(proxy, &OpenSSLProxyI::name);                                                                        \
    EXPECT_EQ(fake().called, order[slot++]);
#include "opensslslots.h"
        EXPECT_EQ(slot, order.size());
    });
}

TEST(OpenSSLStub, answersZeroToEverything)
{
    OpenSSLProxyStubC stub;
    size_t zeros = 0;
    const auto countZero = [&](auto operation) {
        if constexpr (std::is_void_v<decltype(callWithZeros(stub, operation))>) {
            callWithZeros(stub, operation);
            ++zeros;
        } else if (callWithZeros(stub, operation) == 0) {
            ++zeros;
        }
    };
#define TVX_OPENSSL_SLOT(result, name, parameters, arguments) countZero(&OpenSSLProxyI::name);
#include "opensslslots.h"
    EXPECT_EQ(zeros, 117U);
}

TEST(OpenSSLProxy, missingModuleIsToldOnceInTheThreadThatAskedFirst)
{
    inNewProcess([] {
        const ReportsC reports;
        getOpenSSL(1)->SetLibraryPath("/no/such");
        OpenSSLProxyI* const proxy = getOpenSSL(1)->getProxy();
        EXPECT_EQ(proxy->SSLeay(), 0U);
        EXPECT_THAT(reports.lines(),
                    ElementsAre(StartsWith(TRACED + "Failed to load shared library '/no/such/libtvxssl.so': /no/such/"),
                                StartsWith(NOT_FOUND)));
        const auto error = isError(0xE1B20001, "The OpenSSL module libtvxssl could not be loaded");
        EXPECT_THAT(reports.errors(), ElementsAre(error));
        EXPECT_EQ(&proxyIn(FAKE), proxy) << "what was found first holds";
        std::thread([&] {
            EXPECT_EQ(getOpenSSL(1)->getProxy(), proxy);
            EXPECT_EQ(getErrBuf(2)->count(), 0U);
        }).join();
        EXPECT_EQ(reports.lines().size(), 2U);
        EXPECT_EQ(reports.errors().size(), 1U);
    });
}

TEST(OpenSSLProxy, moduleWithoutEntryIsTold)
{
    inNewProcess([] {
        const ReportsC reports;
        EXPECT_TRUE(isStub(proxyIn(WITHOUT_ENTRY)));
        EXPECT_THAT(reports.lines(),
                    ElementsAre(TRACED + "Failed to find getOpenSSLProxy() in " + WITHOUT_ENTRY + "/libtvxssl.so"));
        EXPECT_THAT(reports.errors(),
                    ElementsAre(isError(0xE1B20002, "The libtvxssl function getOpenSSLProxy was not found")));
    });
}

TEST(OpenSSLProxy, versionDecides)
{
    struct RowT {
        const char* version;
        const char* text;
        const char* line;
        bool isAccepted;
    };
    const RowT rows[] = {
        {"0x1000211F", nullptr, ", version 0x1000211f 'none'", true},
        {"0x30000110", "OpenSSL 3.0.17", ", version 0x30000110 'OpenSSL 3.0.17'", true},
        {"0x1000211E", "caf\xE9", ", version 0x1000211e 'caf\xEF\xBF\xBD'", false},
        {"0", "", ", version 0 ''", false},
    };
    for (const RowT& row : rows) {
        SCOPED_TRACE(row.version);
        inNewProcess([&] {
            setenv("FAKE_VERSION", row.version, 1);
            if (row.text != nullptr) setenv("FAKE_TEXT", row.text, 1);
            const ReportsC reports;
            EXPECT_EQ(isStub(proxyIn(FAKE)), !row.isAccepted);
            EXPECT_EQ(isFakeLoaded(), row.isAccepted);
            const std::string loaded = TRACED + "Loaded shared library " + FAKE + "/libtvxssl.so" + row.line;
            if (row.isAccepted) {
                EXPECT_THAT(reports.lines(), ElementsAre(loaded));
            } else {
                EXPECT_THAT(reports.lines(), ElementsAre(loaded, AllOf(StartsWith(TRACED + "Found version "),
                                                                       EndsWith(" < required version 0x1000211f, "
                                                                                "unloading library"))));
            }
            EXPECT_THAT(reports.errors(), IsEmpty());
        });
    }
}

TEST(OpenSSLProxy, moduleThatFailsToGiveAProxyIsReplaced)
{
    const auto give = [](OpenSSLProxyI*) -> OpenSSLProxyI* { return nullptr; };
    const auto fail = [](OpenSSLProxyI*) -> OpenSSLProxyI* { throw std::runtime_error("broken"); };
    struct RowT {
        OpenSSLProxyI* (*onEntry)(OpenSSLProxyI*);
        void (*onVersion)();
    };
    for (const RowT& row : {RowT{give, nullptr}, RowT{fail, nullptr}, RowT{nullptr, [] { throw 1; }}}) {
        inNewProcess([&] {
            const ReportsC reports;
            fake().onEntry = row.onEntry;
            fake().onVersion = row.onVersion;
            EXPECT_TRUE(isStub(proxyIn(FAKE)));
            EXPECT_THAT(reports.errors(), IsEmpty());
            // The latch is free again.
            std::thread([] { getOpenSSL(1)->SetLibraryPath(nullptr); }).join();
        });
    }
}

TEST(OpenSSLProxy, moduleThatAsksForTheProxyGetsTheStandInMeanwhile)
{
    inNewProcess([] {
        fake().onEntry = [](OpenSSLProxyI* own) -> OpenSSLProxyI* {
            EXPECT_TRUE(isStub(*getOpenSSL(1)->getProxy()));
            return own;
        };
        EXPECT_FALSE(isStub(proxyIn(FAKE)));
        EXPECT_FALSE(isStub(*getOpenSSL(1)->getProxy()));
        EXPECT_EQ(fake().entries, 1);
    });
}

TEST(OpenSSLProxy, reportsAreSentWhenTheLatchIsFree)
{
    inNewProcess([] {
        ReportsC reports;
        int asked = 0;
        reports.consumer.onMessage = [&](const char*) {
            std::thread([] { getOpenSSL(1)->SetLibraryPath("x"); }).join();
            EXPECT_FALSE(isStub(*getOpenSSL(1)->getProxy()));
            ++asked;
        };
        proxyIn(FAKE);
        EXPECT_EQ(asked, 1);
    });
}

TEST(OpenSSLProxy, folderIsEnteredForTheLoadingAndLeftAgain)
{
    for (const bool isDeleted : {false, true}) {
        inNewProcess([&] {
            fs::create_directory("gone");
            fs::current_path("gone");
            if (isDeleted) fs::remove("../gone");
            const PlaceT before;
            const size_t descriptors = openDescriptors();
            EXPECT_FALSE(isStub(proxyIn(FAKE)));
            EXPECT_EQ(fake().folder, fs::canonical(TVXSSL_FAKES).string());
            EXPECT_TRUE(PlaceT() == before);
            EXPECT_EQ(openDescriptors(), descriptors);
        });
    }
}

TEST(OpenSSLProxy, relativeFolderIsMeantFromTheCurrentDirectory)
{
    for (const char* const folder : {"lib", "a/lib", "a/../a/lib/", "./lib"}) {
        SCOPED_TRACE(folder);
        inNewProcess([&] {
            fs::create_directories(folder);
            fs::copy(FAKE + "/libtvxssl.so", std::string(folder) + "/libtvxssl.so",
                     fs::copy_options::overwrite_existing);
            const ReportsC reports;
            const PlaceT before;
            EXPECT_FALSE(isStub(proxyIn(folder)));
            EXPECT_THAT(reports.lines(), ElementsAre(StartsWith(TRACED + "Loaded shared library " + folder +
                                                                "/libtvxssl.so, version ")));
            EXPECT_TRUE(PlaceT() == before);
        });
    }
}

TEST(OpenSSLProxy, folderThatWasTakenBackIsNotLookedIn)
{
    for (const char* const none : {static_cast<const char*>(nullptr), ""}) {
        inNewProcess([&] {
            const ReportsC reports;
            getOpenSSL(1)->SetLibraryPath(FAKE.c_str());
            getOpenSSL(1)->SetLibraryPath(none);
            EXPECT_TRUE(isStub(*getOpenSSL(1)->getProxy()));
            EXPECT_THAT(reports.lines(), ElementsAre(StartsWith(NOT_FOUND)));
        });
    }
}

TEST(OpenSSLProxy, threadsThatAskTogetherGetOneProxy)
{
    inNewProcess([] {
        fake().entries = 0;
        std::atomic<OpenSSLI*> objects[16] = {};
        std::atomic<OpenSSLProxyI*> proxies[16] = {};
        inThreads(16, [&](int i) {
            objects[i] = getOpenSSL(1);
            getOpenSSL(1)->SetLibraryPath(FAKE.c_str());
            proxies[i] = getOpenSSL(1)->getProxy();
        });
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(objects[i], getOpenSSL(1));
            EXPECT_EQ(proxies[i], getOpenSSL(1)->getProxy());
        }
        EXPECT_FALSE(isStub(*proxies[0]));
        EXPECT_EQ(fake().entries, 1);
    });
}

TEST(OpenSSLProxy, forkWaitsUntilTheModuleIsLoaded)
{
    inNewProcess([] {
        static std::atomic<bool> isLoading{false};
        std::atomic<bool> isForked{false};
        fake().onEntry = [](OpenSSLProxyI* own) {
            isLoading = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            return own;
        };
        std::thread loader([&] {
            proxyIn(FAKE);
            while (!isForked) std::this_thread::yield();   // a child with an ended thread that nobody joined leaks it
        });
        while (!isLoading) std::this_thread::yield();
        EXPECT_EQ(inChild([] { return isStub(*getOpenSSL(1)->getProxy()) ? 1 : 0; }), 0);
        isForked = true;
        loader.join();
        EXPECT_FALSE(isStub(*getOpenSSL(1)->getProxy()));
    });
}

TEST(OpenSSLProxy, onlyTheFirstCallWarnsAboutItsVersion)
{
    const std::string warning = TRACED + "Warning: OpenSSL proxy version 2 requested, version 1 supported";
    inNewProcess([&] {
        const ReportsC reports;
        OpenSSLI* const object = getOpenSSL(2);
        EXPECT_EQ(getOpenSSL(1), object);
        EXPECT_EQ(getOpenSSL(5), object);
        EXPECT_THAT(reports.lines(), ElementsAre(warning));
    });
    for (const int version : {1, 0, -1}) {
        inNewProcess([&] {
            const ReportsC reports;
            OpenSSLI* const object = getOpenSSL(version);
            EXPECT_EQ(getOpenSSL(2), object);
            EXPECT_THAT(reports.lines(), IsEmpty());
        });
    }
}
