// Digests, ciphers, keys and DES against OpenSSL's own calls. "evp" is OpenSSL with everything kept from call
// to call; "evp-copy" its cheapest way to a short digest: a context copied from one that has just begun.
#include <Tarvik/core/BlockEncryption.h>
#include <Tarvik/crypto/CDSAUtilityBase.h>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kMiB = 1 << 20;
constexpr uint64_t kGiB = 1 << 30;

const std::vector<uint8_t> &data()
{
    static const std::vector<uint8_t> made = [] {
        std::vector<uint8_t> bytes(kMiB);
        uint32_t random = 1;
        for (uint8_t &byte : bytes)
            byte = static_cast<uint8_t>((random = random * 1664525 + 1013904223) >> 24);
        return bytes;
    }();
    return made;
}

CSSM_CSP_HANDLE csp()
{
    static const CSSM_CSP_HANDLE attached = [] {
        CSSM_CSP_HANDLE handle = 0;
        if (CDSAUtilityBase::cdsaCspAttach(&handle) != CSSM_OK)
            std::abort();
        return handle;
    }();
    return attached;
}

void processed(benchmark::State &state, size_t length)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(length));
}

benchmark::internal::Benchmark *add(const std::string &name, void (*run)(benchmark::State &))
{
    return benchmark::RegisterBenchmark(name.c_str(), run);
}

// --- Digests

template <CSSM_ALGORITHMS algorithm, size_t length>
void digestTarvik(benchmark::State &state)
{
    const uint8_t *bytes = data().data();
    const CSSM_CSP_HANDLE handle = csp();
    for (auto _ : state) {
        CSSM_DATA digest{};
        CDSAUtilityBase::oneShotDigest(handle, algorithm, bytes, length, &digest);
        benchmark::DoNotOptimize(digest.Data);
        std::free(digest.Data);
    }
    processed(state, length);
}

template <CSSM_ALGORITHMS algorithm, size_t length, bool copying>
void digestEVP(benchmark::State &state)
{
    const EVP_MD *md = EVP_MD_fetch(nullptr, algorithm == CSSM_ALGID_MD5 ? "MD5" : "SHA1", nullptr);
    EVP_MD_CTX *begun = EVP_MD_CTX_new(), *context = EVP_MD_CTX_new();
    EVP_DigestInit_ex2(begun, md, nullptr);
    unsigned char digest[EVP_MAX_MD_SIZE];
    const uint8_t *bytes = data().data();
    for (auto _ : state) {
        if (copying)
            EVP_MD_CTX_copy_ex(context, begun);
        else
            EVP_DigestInit_ex2(context, md, nullptr);
        EVP_DigestUpdate(context, bytes, length);
        EVP_DigestFinal_ex(context, digest, nullptr);
        benchmark::DoNotOptimize(digest);
    }
    processed(state, length);
    EVP_MD_CTX_free(context);
    EVP_MD_CTX_free(begun);
}

template <CSSM_ALGORITHMS algorithm, size_t length>
void addDigest(const std::string &name)
{
    add(name + ":tarvik", digestTarvik<algorithm, length>);
    add(name + ":evp", digestEVP<algorithm, length, false>);
    add(name + ":evp-copy", digestEVP<algorithm, length, true>);
}

// --- A file of 1 GiB, in the file cache

class BigFile {
public:
    BigFile()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tarvik-bench-XXXXXX").string();
        const int file = mkstemp(name.data());
        path_ = name;
        std::ofstream out(name, std::ios::binary);
        for (uint64_t done = 0; done < kGiB; done += kMiB)
            out.write(reinterpret_cast<const char *>(data().data()), kMiB);
        close(file);
    }
    ~BigFile() { std::filesystem::remove(path_); }
    const std::string &path() const { return path_; }

private:
    std::string path_;
};

const std::string &bigFile()
{
    static const BigFile file;
    return file.path();
}

void fileTarvik(benchmark::State &state)
{
    const std::string &path = bigFile();
    for (auto _ : state) {
        CSSM_DATA digest{};
        if (CDSAUtilityBase::stagedDigest(csp(), CSSM_ALGID_SHA1, path.c_str(), &digest) != 0)
            state.SkipWithError("stagedDigest failed");
        std::free(digest.Data);
    }
    processed(state, kGiB);
}

void fileSha1sum(benchmark::State &state)
{
    const std::string command = "sha1sum " + bigFile() + " > /dev/null";
    for (auto _ : state)
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("sha1sum failed");
    processed(state, kGiB);
}

// --- Ciphers

const std::vector<uint8_t> kKey(32, 'k');

CSSM_KEY aesKey()
{
    CSSM_KEY key{};
    key.KeyHeader.AlgorithmId = CSSM_ALGID_AES;
    key.KeyHeader.KeyClass = CSSM_KEYCLASS_SESSION_KEY;
    key.KeyHeader.KeyUsage = CSSM_KEYUSE_ANY;
    key.KeyData = {kKey.size(), const_cast<uint8_t *>(kKey.data())};
    return key;
}

std::vector<uint8_t> aesCipherText()
{
    const CSSM_KEY key = aesKey();
    const CSSM_DATA input = {kMiB, const_cast<uint8_t *>(data().data())};
    CSSM_DATA output{};
    CDSAUtilityBase::cdsaEncrypt(csp(), &key, &input, &output);
    std::vector<uint8_t> bytes(output.Data, output.Data + output.Length);
    std::free(output.Data);
    return bytes;
}

template <bool encrypt>
void aesTarvik(benchmark::State &state)
{
    const CSSM_KEY key = aesKey();
    const std::vector<uint8_t> bytes = encrypt ? data() : aesCipherText();
    const CSSM_DATA input = {bytes.size(), const_cast<uint8_t *>(bytes.data())};
    for (auto _ : state) {
        CSSM_DATA output{};
        if ((encrypt ? CDSAUtilityBase::cdsaEncrypt : CDSAUtilityBase::cdsaDecrypt)(csp(), &key, &input,
                                                                                    &output))
            state.SkipWithError("the cipher failed");
        std::free(output.Data);
    }
    processed(state, kMiB);
}

// With its output in new memory each time, as the other's is.
template <bool encrypt>
void aesEVP(benchmark::State &state)
{
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    const EVP_CIPHER *cipher = EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr);
    const uint8_t vector[16] = {};
    const std::vector<uint8_t> bytes = encrypt ? data() : aesCipherText();
    for (auto _ : state) {
        auto *output = static_cast<uint8_t *>(std::malloc(bytes.size() + 16));
        int count = 0, last = 0;
        EVP_CipherInit_ex2(context, cipher, kKey.data(), vector, encrypt, nullptr);
        EVP_CipherUpdate(context, output, &count, bytes.data(), static_cast<int>(bytes.size()));
        EVP_CipherFinal_ex(context, output + count, &last);
        benchmark::DoNotOptimize(output);
        std::free(output);
    }
    processed(state, kMiB);
    EVP_CIPHER_CTX_free(context);
}

// --- DES

template <bool encrypt>
void desTarvik(benchmark::State &state)
{
    std::vector<uint8_t> place = data();
    for (auto _ : state) {
        if (encrypt) {
            void *copy = nullptr;
            size_t length = 0;
            MemAllocateEncryptedCopy(data().data(), kMiB, &copy, &length, kKey.data());
            benchmark::DoNotOptimize(copy);
            std::free(copy);
        } else {
            MemDecrypt(place.data(), kMiB, kKey.data());
        }
    }
    processed(state, kMiB);
}

template <bool encrypt>
void desEVP(benchmark::State &state)
{
    OSSL_LIB_CTX *library = OSSL_LIB_CTX_new();
    OSSL_PROVIDER_load(library, "legacy");
    EVP_CIPHER *cipher = EVP_CIPHER_fetch(library, "DES-ECB", nullptr);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_CipherInit_ex2(context, cipher, kKey.data(), nullptr, encrypt, nullptr);
    EVP_CIPHER_CTX_set_padding(context, 0);
    std::vector<uint8_t> place = data();
    for (auto _ : state) {
        int count = 0;
        EVP_CipherUpdate(context, place.data(), &count, place.data(), kMiB);
        benchmark::DoNotOptimize(place.data());
    }
    processed(state, kMiB);
    EVP_CIPHER_CTX_free(context);
    EVP_CIPHER_free(cipher);
}

// --- Keys

void keyTarvik(benchmark::State &state)
{
    for (auto _ : state) {
        CSSM_KEY key{};
        CDSAUtilityBase::cdsaDeriveKey(csp(), "password", 8, CSSM_ALGID_AES, 256, &key);
        benchmark::DoNotOptimize(key.KeyData.Data);
        CDSAUtilityBase::cdsaFreeKey(csp(), &key);
    }
}

void keyOpenSSL(benchmark::State &state)
{
    const auto *salt = reinterpret_cast<const unsigned char *>("bramWick");
    for (auto _ : state) {
        unsigned char key[32];
        PKCS5_PBKDF2_HMAC("password", 8, salt, 8, 1000, EVP_sha1(), sizeof key, key);
        benchmark::DoNotOptimize(key);
    }
}

const bool registered = [] {
    addDigest<CSSM_ALGID_MD5, 16>("digest/md5-16B");
    addDigest<CSSM_ALGID_MD5, kMiB>("digest/md5-1MiB");
    addDigest<CSSM_ALGID_SHA1, 16>("digest/sha1-16B");
    addDigest<CSSM_ALGID_SHA1, kMiB>("digest/sha1-1MiB");
    add("digest/sha1-file-1GiB:tarvik", fileTarvik)->UseRealTime();
    add("digest/sha1-file-1GiB:sha1sum", fileSha1sum)->UseRealTime();  // a child's time is not ours
    add("cipher/aes-256-cbc-1MiB:tarvik", aesTarvik<true>);
    add("cipher/aes-256-cbc-1MiB:evp", aesEVP<true>);
    add("cipher/aes-256-cbc-back-1MiB:tarvik", aesTarvik<false>);
    add("cipher/aes-256-cbc-back-1MiB:evp", aesEVP<false>);
    add("des/encrypt-1MiB:tarvik", desTarvik<true>);
    add("des/encrypt-1MiB:evp", desEVP<true>);
    add("des/decrypt-1MiB:tarvik", desTarvik<false>);
    add("des/decrypt-1MiB:evp", desEVP<false>);
    add("key/pbkdf2-1000:tarvik", keyTarvik);
    add("key/pbkdf2-1000:openssl", keyOpenSSL);
    return true;
}();

}  // namespace
