/// \file
/// The one place that knows where OpenSSL's algorithms come from: a library context of our own with the
/// default and the legacy provider, so that nothing here depends on a host's OpenSSL configuration, or
/// changes it.
#pragma once

#include <Tarvik/support/Owned.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>

namespace cssm {

using tarvik::Owned;

using OwnedCipherContext = Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free>;
using OwnedKey = Owned<EVP_PKEY, EVP_PKEY_free>;
using OwnedKeyContext = Owned<EVP_PKEY_CTX, EVP_PKEY_CTX_free>;
using OwnedKDFContext = Owned<EVP_KDF_CTX, EVP_KDF_CTX_free>;

/// Takes away, at its end, the entries that failing calls have left in the thread's error queue: a host that
/// uses OpenSSL itself must not find ours there.
class QuietErrors {
public:
    QuietErrors() { ERR_set_mark(); }
    ~QuietErrors() { ERR_pop_to_mark(); }
    QuietErrors(const QuietErrors &) = delete;
    QuietErrors &operator=(const QuietErrors &) = delete;
};

/// Ciphers by what they do; each is fetched once.
enum class CipherName {
    desECB,
    desCBC,
    des3ECB,
    des3CBC,
    rc2ECB,
    rc2CBC,
    rc4,
    aes128ECB,
    aes128CBC,
    aes192ECB,
    aes192CBC,
    aes256ECB,
    aes256CBC,
    count
};

/// All functions answer null when OpenSSL does not have the thing (a system without the legacy provider), and
/// may be called from any thread. Results live as long as the process.
namespace library {

OSSL_LIB_CTX *context();  // null: no OpenSSL to work with
const EVP_CIPHER *cipher(CipherName name);
const EVP_MD_CTX *startedMD5();   // a digest just begun, to be copied:
const EVP_MD_CTX *startedSHA1();  // cheaper than beginning one
EVP_KDF *pbkdf2();

}  // namespace library
}  // namespace cssm
