#include "OpenSSLLibrary.h"

#include <array>
#include <mutex>

#include <openssl/provider.h>

namespace cssm::library {
namespace {

/// Never freed: exit handlers and static destructors of a host may still digest.
OSSL_LIB_CTX *makeContext()
{
    QuietErrors quiet;
    OSSL_LIB_CTX *made = OSSL_LIB_CTX_new();
    if (made && !OSSL_PROVIDER_load(made, "default")) {
        OSSL_LIB_CTX_free(made);
        made = nullptr;
    }
    return made;
}

/// The legacy provider is a module of its own on disk: loaded when one of its ciphers is first asked for.
bool loadLegacy()
{
    static const bool loaded = context() && OSSL_PROVIDER_load(context(), "legacy");
    return loaded;
}

struct CipherSource {
    const char *name;
    bool legacy;
};
constexpr CipherSource kSources[] = {
    {"DES-ECB", true},      {"DES-CBC", true},      {"DES-EDE3", false},    {"DES-EDE3-CBC", false},
    {"RC2-ECB", true},      {"RC2-CBC", true},      {"RC4", true},          {"AES-128-ECB", false},
    {"AES-128-CBC", false}, {"AES-192-ECB", false}, {"AES-192-CBC", false}, {"AES-256-ECB", false},
    {"AES-256-CBC", false},
};
static_assert(std::size(kSources) == static_cast<std::size_t>(CipherName::count));

const EVP_MD_CTX *startDigest(const char *name)
{
    QuietErrors quiet;
    EVP_MD *digest = context() ? EVP_MD_fetch(context(), name, nullptr) : nullptr;
    EVP_MD_CTX *made = digest ? EVP_MD_CTX_new() : nullptr;
    if (made && !EVP_DigestInit_ex2(made, digest, nullptr)) {
        EVP_MD_CTX_free(made);
        made = nullptr;
    }
    EVP_MD_free(digest);
    return made;
}

}  // namespace

OSSL_LIB_CTX *context()
{
    static OSSL_LIB_CTX *const made = makeContext();
    return made;
}

const EVP_CIPHER *cipher(CipherName name)
{
    struct Entry {
        std::once_flag once;
        EVP_CIPHER *cipher = nullptr;
    };
    static std::array<Entry, static_cast<std::size_t>(CipherName::count)> entries;

    Entry &entry = entries[static_cast<std::size_t>(name)];
    std::call_once(entry.once, [&] {
        QuietErrors quiet;
        const CipherSource &source = kSources[static_cast<std::size_t>(name)];
        if (context() && (!source.legacy || loadLegacy()))
            entry.cipher = EVP_CIPHER_fetch(context(), source.name, nullptr);
    });
    return entry.cipher;
}

const EVP_MD_CTX *startedMD5()
{
    static const EVP_MD_CTX *const made = startDigest("MD5");
    return made;
}

const EVP_MD_CTX *startedSHA1()
{
    static const EVP_MD_CTX *const made = startDigest("SHA1");
    return made;
}

EVP_KDF *pbkdf2()
{
    static EVP_KDF *const made = [] {
        QuietErrors quiet;
        return context() ? EVP_KDF_fetch(context(), "PBKDF2", nullptr) : nullptr;
    }();
    return made;
}

}  // namespace cssm::library
