#include "protection.h"

#include "arglist.h"
#include "errorapi.h"
#include "opensslproxy.h"
#include "tracesite.h"
#include "tvxcmn.h"

#include <vector>

namespace {

typedef std::vector<unsigned char> BytesT;

// AES with 256 bits in chained blocks of 16 bytes. Every value gets a key of its own, so all may start from
// the same block.
const size_t KEY_SIZE = 32;
const size_t BLOCK_SIZE = 16;
const unsigned char FIRST_BLOCK[BLOCK_SIZE] = {};

enum DirectionT { DECRYPT = 0, ENCRYPT = 1 };

class CipherC {
public:
    explicit CipherC(OpenSSLProxyI& crypto) : m_crypto(crypto), m_context((crypto.EVP_CIPHER_CTX_new)()) {}
    ~CipherC()
    {
        (m_crypto.EVP_CIPHER_CTX_free)(m_context);
        (m_crypto.OPENSSL_cleanse)(m_key, sizeof m_key);
    }
    CipherC(const CipherC&) = delete;
    CipherC& operator=(const CipherC&) = delete;

    bool makeKey() { return start(ENCRYPT, nullptr) && (m_crypto.EVP_CIPHER_CTX_rand_key)(m_context, m_key) == 1; }

    // Whether `in` could be turned into `out`.
    bool turn(DirectionT direction, const BytesT& in, BytesT& out)
    {
        int size = 0;
        int rest = 0;
        out.resize(in.size() + BLOCK_SIZE);
        if (!start(direction, m_key) ||
            (m_crypto.EVP_CipherUpdate)(m_context, out.data(), &size, in.data(), static_cast<int>(in.size())) != 1 ||
            (m_crypto.EVP_CipherFinal_ex)(m_context, out.data() + size, &rest) != 1) {
            return false;
        }
        out.resize(static_cast<size_t>(size) + static_cast<size_t>(rest));
        return true;
    }

private:
    bool start(DirectionT direction, const unsigned char* key)
    {
        return (m_crypto.EVP_CipherInit_ex)(m_context, (m_crypto.EVP_aes_256_cbc)(), nullptr, key, FIRST_BLOCK,
                                            direction) == 1;
    }

    OpenSSLProxyI& m_crypto;
    evp_cipher_ctx_st* const m_context;
    unsigned char m_key[KEY_SIZE] = {};
};

}   // namespace

StringC protect(const StringC& value)
{
    const AutoRollbackErrorCheckpointC checkpoint;
    OpenSSLProxyI& crypto = *getOpenSSL(1)->getProxy();
    if ((crypto.SSLeay)() == 0) return "cryptography: there is no usable module\n";

    const BytesT plain(value.utf8(), value.utf8() + value.utf8Bytes());
    BytesT secret;
    BytesT again;
    CipherC cipher(crypto);
    const bool isBack = cipher.makeKey() && cipher.turn(ENCRYPT, plain, secret) &&
                        cipher.turn(DECRYPT, secret, again) && again == plain && secret != plain;
    if (!isBack) return "cryptography: the module does not work\n";
    TVX_TRACE("agent/crypto", "%s", (crypto.SSLeay_version)(0));
    return StringC("cryptography: \"%S\", %u bytes as %u and back\n") %
           (ArgList << value << plain.size() << secret.size());
}
