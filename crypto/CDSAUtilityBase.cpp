#include <Tarvik/crypto/CDSAUtilityBase.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "crypto/private/CryptService.h"

using tarvik::Attachment;
using tarvik::CryptContext;
using tarvik::FileDescriptor;

namespace {

// --- What is handed to the provider

constexpr CSSM_VERSION kVersion = {2, 0};
constexpr CSSM_GUID kCaller = {0x9d27c3f1, 0x4a68, 0x4e0b, {0x8f, 0x52, 0x61, 0x0c, 0xb7, 0x3e, 0x94, 0xd8}};

constexpr CSSM_RETURN kDigestFailed = -1;

bool cssmInitd = false;

void *appMalloc(CSSM_SIZE size, void *) { return std::malloc(size); }
void appFree(void *memory, void *) { std::free(memory); }
void *appRealloc(void *memory, CSSM_SIZE size, void *) { return std::realloc(memory, size); }
void *appCalloc(uint32 count, CSSM_SIZE size, void *) { return std::calloc(count, size); }

constexpr CSSM_API_MEMORY_FUNCS kMemory = {appMalloc, appFree, appRealloc, appCalloc, nullptr};

/// The process-wide initialisation vector.
constexpr size_t kVectorSize = 16;
uint8 vectorBytes[kVectorSize] = {0x3c, 0x91, 0x5e, 0x07, 0xd2, 0x68, 0xaf, 0x14,
                                  0xb9, 0x43, 0xe6, 0x7d, 0x20, 0xcb, 0x58, 0xf5};
CSSM_DATA processVector = {kVectorSize, vectorBytes};

// --- Bytes

/// In a way that the compiler doesn't leave out because nobody reads the memory again.
void wipe(void *memory, size_t length)
{
    for (volatile uint8 *byte = static_cast<uint8 *>(memory); length > 0; --length)
        *byte++ = 0;
}

/// The provider only reads its inputs, but their records hold pointers to non-const.
CSSM_DATA inputData(const void *bytes, size_t length)
{
    return {length, static_cast<uint8 *>(const_cast<void *>(bytes))};
}

/// An output that is wiped before it is freed.
struct SecretOutput {
    CSSM_DATA data{};

    SecretOutput() = default;
    ~SecretOutput()
    {
        wipe(data.Data, data.Length);
        std::free(data.Data);
    }
    SecretOutput(const SecretOutput &) = delete;
    SecretOutput &operator=(const SecretOutput &) = delete;
};

struct DerivedKey {
    CSSM_CSP_HANDLE csp;
    CSSM_KEY key{};

    explicit DerivedKey(CSSM_CSP_HANDLE attached) : csp(attached) {}
    ~DerivedKey() { CDSAUtilityBase::cdsaFreeKey(csp, &key); }
    DerivedKey(const DerivedKey &) = delete;
    DerivedKey &operator=(const DerivedKey &) = delete;
};

// --- Files

int openForReading(const char *path, FileDescriptor &file)
{
    if (!path)
        return EINVAL;
    file.reset(open(path, O_RDONLY | O_CLOEXEC));
    return file ? 0 : errno;
}

ssize_t readSome(int file, void *buffer, size_t size)
{
    ssize_t count;
    do
        count = read(file, buffer, size);
    while (count < 0 && errno == EINTR);
    return count;
}

// --- Ciphers

using CipherCall = CSSM_RETURN (*)(CSSM_CC_HANDLE, const CSSM_DATA *, uint32, CSSM_DATA_PTR, uint32,
                                   CSSM_SIZE *, CSSM_DATA_PTR);

/// Puts the final block behind what the call has brought.
CSSM_RETURN appendRest(CSSM_DATA &output, CSSM_DATA &rest)
{
    if (rest.Length == 0)
        return CSSM_OK;
    void *whole = std::realloc(output.Data, output.Length + rest.Length);
    if (!whole)
        return CSSMERR_CSSM_MEMORY_ERROR;
    output.Data = static_cast<uint8 *>(whole);
    std::memcpy(output.Data + output.Length, rest.Data, rest.Length);
    output.Length += rest.Length;
    return CSSM_OK;
}

CSSM_RETURN runCipher(CipherCall call, CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *input,
                      CSSM_DATA *output)
{
    if (!output)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    *output = {};
    CSSM_CC_HANDLE made = CSSM_INVALID_HANDLE;
    if (const CSSM_RETURN status = CDSAUtilityBase::genCryptHandle(csp, key, nullptr, &made))
        return status;
    const CryptContext context(made);

    SecretOutput result, rest;
    CSSM_SIZE written = 0;
    if (const CSSM_RETURN status = call(context.get(), input, 1, &result.data, 1, &written, &rest.data))
        return status;
    result.data.Length = written;
    if (const CSSM_RETURN status = appendRest(result.data, rest.data))
        return status;
    std::swap(*output, result.data);
    return CSSM_OK;
}

/// Makes the vector of a text the process-wide one; an empty text changes nothing.
void setProcessVector(const std::string &text)
{
    if (text.empty())
        return;
    const std::string digits = text.substr(0, 2 * kVectorSize);
    processVector.Length = kVectorSize;
    std::fill(vectorBytes, vectorBytes + kVectorSize, uint8{0});
    CDSAUtilityBase::convertHEXStringToHEXValue(digits.c_str(), vectorBytes);
}

std::string hexadecimal(const CSSM_DATA &data)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(2 * data.Length, '\0');
    for (size_t i = 0; i < data.Length; ++i) {
        text[2 * i] = kDigits[data.Data[i] >> 4];
        text[2 * i + 1] = kDigits[data.Data[i] & 15];
    }
    return text;
}

uint8 digitValue(char digit)
{
    if (digit <= '9')
        return static_cast<uint8>(digit - '0');
    return static_cast<uint8>(digit < 'a' ? digit - 'A' + 10 : digit - 'a' + 10);
}

CSSM_RETURN reporting(const char *label, CSSM_RETURN status)
{
    if (status != CSSM_OK)
        cssmPerror(label, status);
    return status;
}

}  // namespace

CDSAUtilityBase::~CDSAUtilityBase() = default;

// --- Session

CSSM_RETURN CDSAUtilityBase::cssmStartup()
{
    if (cssmInitd)
        return CSSM_OK;
    CSSM_PVC_MODE policy = CSSM_PVC_NONE;
    const CSSM_RETURN status =
        CSSM_Init(&kVersion, CSSM_PRIVILEGE_SCOPE_NONE, &kCaller, CSSM_KEY_HIERARCHY_NONE, &policy, nullptr);
    cssmInitd = status == CSSM_OK;
    return status;
}

CSSM_RETURN CDSAUtilityBase::cdsaCspAttach(CSSM_CSP_HANDLE *csp)
{
    if (const CSSM_RETURN status = cssmStartup())
        return status;
    if (const CSSM_RETURN status = CSSM_ModuleLoad(&gGuidAppleCSP, CSSM_KEY_HIERARCHY_NONE, nullptr, nullptr))
        return status;
    return CSSM_ModuleAttach(&gGuidAppleCSP, &kVersion, &kMemory, 0, CSSM_SERVICE_CSP, 0,
                             CSSM_KEY_HIERARCHY_NONE, nullptr, 0, nullptr, csp);
}

CSSM_RETURN CDSAUtilityBase::cdsaCspDetach(CSSM_CSP_HANDLE csp) { return CSSM_ModuleDetach(csp); }

// --- Digests

CSSM_RETURN CDSAUtilityBase::cdsaDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const CSSM_DATA *data,
                                        CSSM_DATA *digest)
{
    if (!digest)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    *digest = {};
    CSSM_CC_HANDLE made = CSSM_INVALID_HANDLE;
    if (const CSSM_RETURN status = CSSM_CSP_CreateDigestContext(csp, algorithm, &made))
        return status;
    const CryptContext context(made);
    return CSSM_DigestData(context.get(), data, 1, digest);
}

CSSM_RETURN CDSAUtilityBase::cdsaStagedDigestInit(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm,
                                                  CSSM_CC_HANDLE *context)
{
    if (const CSSM_RETURN status = CSSM_CSP_CreateDigestContext(csp, algorithm, context))
        return status;
    const CSSM_RETURN status = CSSM_DigestDataInit(*context);
    if (status != CSSM_OK)
        CSSM_DeleteContext(*context);
    return status;
}

CSSM_RETURN CDSAUtilityBase::cdsaStagedDigest(CSSM_CC_HANDLE context, bool final, const CSSM_DATA *data,
                                              CSSM_DATA *digest)
{
    if (final && digest)
        *digest = {};
    CSSM_RETURN status = CSSM_OK;
    if (data && data->Length > 0)
        status = CSSM_DigestDataUpdate(context, data, 1);
    if (status == CSSM_OK && final)
        status = CSSM_DigestDataFinal(context, digest);
    if (status != CSSM_OK || final)
        CSSM_DeleteContext(context);
    return status;
}

CSSM_RETURN CDSAUtilityBase::oneShotDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const char *text,
                                           CSSM_DATA *digest)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    return oneShotDigest(csp, algorithm, bytes, text ? std::strlen(text) : 1, digest);
}

CSSM_RETURN CDSAUtilityBase::oneShotDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm,
                                           const unsigned char *bytes, size_t length, CSSM_DATA *digest)
{
    const CSSM_DATA data = inputData(bytes, length);
    return reporting("Attach to CSP", cdsaDigest(csp, algorithm, &data, digest)) ? kDigestFailed : CSSM_OK;
}

CSSM_RETURN CDSAUtilityBase::oneShotDigestFromFile(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm,
                                                   const char *path, CSSM_DATA *digest)
{
    if (digest)
        *digest = {};
    unsigned char *bytes = nullptr;
    uint64_t length = 0;
    if (readFile(path, &bytes, &length) != 0)
        return kDigestFailed;
    const std::unique_ptr<unsigned char, decltype(&std::free)> owned(bytes, &std::free);
    return oneShotDigest(csp, algorithm, bytes, length, digest);
}

CSSM_RETURN CDSAUtilityBase::stagedDigest(CSSM_CSP_HANDLE csp, CSSM_ALGORITHMS algorithm, const char *path,
                                          CSSM_DATA *digest)
{
    constexpr size_t kRead = 256;
    constexpr size_t kManyReads = 512 * kRead;

    if (digest)
        *digest = {};
    FileDescriptor file;
    if (const int status = openForReading(path, file))
        return status;
    lseek(file.get(), 0, SEEK_SET);  // a pipe can't, and needn't
    struct stat info;
    if (fstat(file.get(), &info) != 0)
        return errno;
    CSSM_CC_HANDLE made = CSSM_INVALID_HANDLE;
    if (const CSSM_RETURN status = cdsaStagedDigestInit(csp, algorithm, &made))
        return status;
    CryptContext context(made);

    // In an ordinary file reads are short at its end only, so many of them are made as one. Everything else
    // (pipes, devices, files made up by the kernel, which have no size) is read as it says.
    const bool ordinary = S_ISREG(info.st_mode) && info.st_size > 0;
    std::vector<uint8> buffer(ordinary ? kManyReads : kRead);
    for (;;) {
        const ssize_t count = readSome(file.get(), buffer.data(), buffer.size());
        if (count < 0)
            return errno;
        const CSSM_DATA piece = inputData(buffer.data(), static_cast<size_t>(count));
        if (count == 0 || static_cast<size_t>(count) % kRead != 0)
            return cdsaStagedDigest(context.release(), true, &piece, digest);
        if (const CSSM_RETURN status = cdsaStagedDigest(context.get(), false, &piece, digest)) {
            (void)context.release();  // the failing step has deleted it
            return status;
        }
    }
}

int CDSAUtilityBase::readFile(const char *path, unsigned char **bytes, uint64_t *length)
{
    if (!bytes || !length)
        return EINVAL;
    *bytes = nullptr;
    *length = 0;
    FileDescriptor file;
    if (const int status = openForReading(path, file))
        return status;
    struct stat info;
    if (fstat(file.get(), &info) != 0 || lseek(file.get(), 0, SEEK_SET) < 0)
        return errno;

    const auto size = static_cast<size_t>(info.st_size);
    std::unique_ptr<void, decltype(&std::free)> buffer(std::malloc(std::max<size_t>(size, 1)), &std::free);
    if (!buffer)
        return ENOMEM;
    size_t done = 0;
    while (done < size) {  // Linux reads 2 GiB at a time at the most
        const ssize_t count = readSome(file.get(), static_cast<char *>(buffer.get()) + done, size - done);
        if (count < 0)
            return errno;
        if (count == 0) {
            std::fprintf(stderr, "readFile: short read\n");
            return EIO;
        }
        done += static_cast<size_t>(count);
    }
    *bytes = static_cast<unsigned char *>(buffer.release());
    *length = size;
    return 0;
}

// --- Ciphers

CSSM_RETURN CDSAUtilityBase::genCryptHandle(CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *vector,
                                            CSSM_CC_HANDLE *context)
{
    if (!key)
        return CSSMERR_CSP_INVALID_KEY_POINTER;
    const CSSM_ALGORITHMS algorithm = key->KeyHeader.AlgorithmId;
    const auto symmetric = [&](CSSM_ENCRYPT_MODE mode, CSSM_PADDING padding) {
        return CSSM_CSP_CreateSymmetricContext(csp, algorithm, mode, nullptr, key,
                                               vector ? vector : &processVector, padding, nullptr, context);
    };
    switch (algorithm) {
    case CSSM_ALGID_DES:
    case CSSM_ALGID_3DES_3KEY:
    case CSSM_ALGID_RC2:
    case CSSM_ALGID_RC5: return symmetric(CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS5);
    case CSSM_ALGID_AES: return symmetric(CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS7);
    case CSSM_ALGID_RC4:
    case CSSM_ALGID_ASC: return symmetric(CSSM_ALGMODE_NONE, CSSM_PADDING_NONE);
    case CSSM_ALGID_RSA:
        return CSSM_CSP_CreateAsymmetricContext(csp, algorithm, nullptr, key, CSSM_PADDING_PKCS1, context);
    default: return CSSMERR_CSP_INTERNAL_ERROR;
    }
}

CSSM_RETURN CDSAUtilityBase::cdsaDeriveKey(CSSM_CSP_HANDLE csp, const void *password, size_t passwordLength,
                                           CSSM_ALGORITHMS keyAlgorithm, uint32_t keySizeInBits,
                                           CSSM_KEY *key)
{
    constexpr uint32 kIterations = 1000;
    static constexpr char kSalt[] = "bramWick";
    static constexpr char kLabel[] = "tempKey";
    const CSSM_DATA salt = inputData(kSalt, sizeof kSalt - 1);
    const CSSM_DATA label = inputData(kLabel, sizeof kLabel);

    if (key)
        *key = {};
    CSSM_CC_HANDLE made = CSSM_INVALID_HANDLE;
    if (const CSSM_RETURN status =
            CSSM_CSP_CreateDeriveKeyContext(csp, CSSM_ALGID_PKCS5_PBKDF2, keyAlgorithm, keySizeInBits,
                                            nullptr, nullptr, kIterations, &salt, nullptr, &made))
        return status;
    const CryptContext context(made);

    CSSM_PKCS5_PBKDF2_PARAMS parameters = {inputData(password, passwordLength),
                                           CSSM_PKCS5_PBKDF2_PRF_HMAC_SHA1};
    CSSM_DATA parameterData = inputData(&parameters, sizeof parameters);
    return CSSM_DeriveKey(context.get(), &parameterData, CSSM_KEYUSE_ANY,
                          CSSM_KEYATTR_RETURN_DATA | CSSM_KEYATTR_EXTRACTABLE, &label, nullptr, key);
}

CSSM_RETURN CDSAUtilityBase::cdsaFreeKey(CSSM_CSP_HANDLE csp, CSSM_KEY *key)
{
    return CSSM_FreeKey(csp, nullptr, key, CSSM_FALSE);
}

CSSM_RETURN CDSAUtilityBase::cdsaEncrypt(CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *input,
                                         CSSM_DATA *output)
{
    return runCipher(CSSM_EncryptData, csp, key, input, output);
}

CSSM_RETURN CDSAUtilityBase::cdsaDecrypt(CSSM_CSP_HANDLE csp, const CSSM_KEY *key, const CSSM_DATA *input,
                                         CSSM_DATA *output)
{
    return runCipher(CSSM_DecryptData, csp, key, input, output);
}

CSSM_RETURN CDSAUtilityBase::encryptData(CSSM_ALGORITHMS keyAlgorithm, const std::string &data,
                                         const std::string &password, std::string &out,
                                         std::string &vectorText, bool encrypt)
{
    setProcessVector(vectorText);
    CSSM_CSP_HANDLE attached = CSSM_INVALID_HANDLE;
    if (const CSSM_RETURN status = reporting("Attach to CSP", cdsaCspAttach(&attached)))
        return status;
    const Attachment attachment(attached);
    DerivedKey derived(attached);
    if (const CSSM_RETURN status =
            reporting("DeriveKey", cdsaDeriveKey(attached, password.data(), password.size(), keyAlgorithm,
                                                 256, &derived.key)))
        return status;

    SecretOutput output;
    if (encrypt) {
        const CSSM_DATA plain = inputData(data.data(), data.size());
        if (const CSSM_RETURN status =
                reporting("cdsaEncrypt", cdsaEncrypt(attached, &derived.key, &plain, &output.data)))
            return status;
        out = hexadecimal(output.data);
        vectorText = hexadecimal(processVector);
    } else {
        std::vector<uint8> bytes(data.size() / 2 + 1);
        const size_t digits = convertHEXStringToHEXValue(data.c_str(), bytes.data());
        const CSSM_DATA cipherText = inputData(bytes.data(), digits / 2);
        if (const CSSM_RETURN status =
                reporting("cdsaDecrypt", cdsaDecrypt(attached, &derived.key, &cipherText, &output.data)))
            return status;
        out.assign(reinterpret_cast<const char *>(output.data.Data), output.data.Length);
    }
    return CSSM_OK;
}

// --- Hexadecimal text

size_t CDSAUtilityBase::convertHEXStringToHEXValue(const char *text, unsigned char *bytes)
{
    if (!bytes)
        return 1;
    if (!text)
        return 0;
    const size_t length = std::strlen(text);
    for (size_t i = 0; i + 1 < length; i += 2)
        *bytes++ = static_cast<unsigned char>(digitValue(text[i]) << 4) + digitValue(text[i + 1]);
    return length;
}

void CDSAUtilityBase::convertHEXValueToHEXString(const unsigned char *bytes, int count, char *text)
{
    if (!text)
        return;
    for (int i = 0; bytes && i < count; ++i, text += 2)
        std::snprintf(text, 3, "%02x", bytes[i]);
    *text = '\0';
}
