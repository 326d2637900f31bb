// A session with the crypto service, whose results are strings and whose memory is counted.
#pragma once
#include <Security/cssm.h>

#include <cstdlib>
#include <optional>
#include <string>

// Memory functions that know what is out, and whether what comes back was wiped.
struct CountedMemory {
    long blocks = 0;
    CSSM_API_MEMORY_FUNCS functions = {
        [](CSSM_SIZE size, void *self) {
            return ++static_cast<CountedMemory *>(self)->blocks, std::malloc(size);
        },
        [](void *memory, void *self) {
            static_cast<CountedMemory *>(self)->blocks -= memory != nullptr;
            std::free(memory);
        },
        [](void *memory, CSSM_SIZE size, void *) { return std::realloc(memory, size); },
        [](uint32 count, CSSM_SIZE size, void *self) {
            return ++static_cast<CountedMemory *>(self)->blocks, std::calloc(count, size);
        },
        this};
};

inline CSSM_DATA dataOf(const std::string &bytes)
{
    return {bytes.size(), reinterpret_cast<uint8 *>(const_cast<char *>(bytes.data()))};
}

// A raw key; `bytes` must outlive it.
inline CSSM_KEY keyOf(CSSM_ALGORITHMS algorithm, const std::string &bytes,
                      CSSM_KEYCLASS keyClass = CSSM_KEYCLASS_SESSION_KEY,
                      CSSM_KEYBLOB_FORMAT format = CSSM_KEYBLOB_RAW_FORMAT_NONE)
{
    CSSM_KEY key{};
    key.KeyHeader.HeaderVersion = CSSM_KEYHEADER_VERSION;
    key.KeyHeader.Format = format;
    key.KeyHeader.AlgorithmId = algorithm;
    key.KeyHeader.KeyClass = keyClass;
    key.KeyHeader.LogicalKeySizeInBits = static_cast<uint32>(8 * bytes.size());
    key.KeyHeader.KeyUsage = CSSM_KEYUSE_ANY;
    key.KeyData = dataOf(bytes);
    return key;
}

class CryptSession {
public:
    CryptSession();
    ~CryptSession();

    CSSM_CSP_HANDLE csp = 0;
    CountedMemory memory;
    CSSM_RETURN status = CSSM_OK;  // of the last call that failed, or CSSM_OK

    CSSM_CC_HANDLE digestContext(CSSM_ALGORITHMS algorithm);
    CSSM_CC_HANDLE cipherContext(CSSM_ALGORITHMS algorithm, const std::string &key, const std::string &vector,
                                 CSSM_ENCRYPT_MODE mode, CSSM_PADDING padding);

    // No value on failure; `status` says why.
    std::optional<std::string> digest(CSSM_ALGORITHMS algorithm, const std::string &text);
    std::optional<std::string> crypt(bool encrypt, CSSM_CC_HANDLE context, const std::string &input);
    std::optional<std::string> deriveKey(const std::string &password, const std::string &salt,
                                         uint32 iterations, CSSM_ALGORITHMS type, uint32 bits);

    // The bytes of a result, which is freed.
    std::string take(CSSM_DATA &data);
};
