/// \file
/// What stands behind a context handle and a module handle, and the registry that leads from the one to the
/// other.
#pragma once

#include <Security/cssm.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "CipherRun.h"
#include "OpenSSLLibrary.h"
#include "SecureBytes.h"

namespace cssm {

/// A key as a host handed it over: the header's words and a copy of the data.
struct KeyCopy {
    CSSM_KEYHEADER header;
    SecureBytes data;
};

/// Whether a cipher of the algorithm takes a key of this class, with its bytes at hand, for this direction. The format and the
/// size are the cipher's own concern.
CSSM_RETURN checkKeyHeader(const std::optional<KeyCopy> &key, CSSM_ALGORITHMS algorithm,
                           CSSM_KEYCLASS keyClass, bool encrypting);

/// What a context is set up with. Its kind and algorithm say which fields count.
struct Attributes {
    std::optional<KeyCopy> key;
    std::optional<SecureBytes> vector;
    std::optional<SecureBytes> salt;
    CSSM_ENCRYPT_MODE mode = CSSM_ALGMODE_NONE;
    CSSM_PADDING padding = CSSM_PADDING_NONE;
    std::optional<uint32> rounds;
    std::optional<uint32> effectiveBits;
    CSSM_KEY_TYPE keyType = CSSM_ALGID_NONE;
    uint32 keyBits = 0;
    uint32 iterations = 0;
};

enum class Kind { digest, symmetric, asymmetric, deriveKey };

struct Context {
    CSSM_CC_HANDLE handle = CSSM_INVALID_HANDLE;  // invalid: the slot is free
    std::atomic<bool> busy = false;               // a call is at work on it
    Kind kind = Kind::digest;
    CSSM_ALGORITHMS algorithm = CSSM_ALGID_NONE;
    uint32 attachment = 0;  // slot of the attachment that it belongs to
    CSSM_API_MEMORY_FUNCS memory{};
    std::unique_ptr<Attributes> attributes;  // all kinds but digest
    std::unique_ptr<CipherRun> run;          // a staged cipher operation
    bool encrypting = false;                 // ... and its direction
    EVP_MD_CTX *digest = nullptr;            // stays with the slot, for the next digest
    bool digesting = false;                  // a staged digest

    bool isCipher() const { return kind == Kind::symmetric || kind == Kind::asymmetric; }
};

/// A lock for a few instructions, which costs half of what a mutex does: giving it back is one store.
class BriefLock {
public:
    void lock()
    {
        while (held_.test_and_set(std::memory_order_acquire))
            std::this_thread::yield();
    }
    void unlock() { held_.clear(std::memory_order_release); }

private:
    std::atomic_flag held_;
};

/// Handles in, objects out. A handle is a slot's number and the generation that uses the slot, so that one
/// which has been closed is known as such for good. One lock guards the tables; it is held for a few
/// instructions, never during work.
class Registry {
public:
    static Registry &shared();

    CSSM_RETURN init();
    CSSM_RETURN terminate();
    CSSM_RETURN load();
    CSSM_RETURN unload();

    CSSM_RETURN attach(const CSSM_API_MEMORY_FUNCS &memory, CSSM_MODULE_HANDLE &handle);
    CSSM_RETURN detach(CSSM_MODULE_HANDLE handle);
    CSSM_RETURN memoryOf(CSSM_MODULE_HANDLE handle, CSSM_API_MEMORY_FUNCS &memory);

    CSSM_RETURN open(CSSM_MODULE_HANDLE module, Kind kind, CSSM_ALGORITHMS algorithm,
                     std::unique_ptr<Attributes> attributes, CSSM_CC_HANDLE &handle);
    CSSM_RETURN close(CSSM_CC_HANDLE handle);
    CSSM_RETURN lease(CSSM_CC_HANDLE handle, Context *&context);

private:
    struct Attachment {
        CSSM_MODULE_HANDLE handle = CSSM_INVALID_HANDLE;
        CSSM_API_MEMORY_FUNCS memory{};
        uint32 contexts = 0;
    };
    /// What a closed context leaves to be destroyed, outside the lock.
    struct Remains {
        std::unique_ptr<Attributes> attributes;
        std::unique_ptr<CipherRun> run;
    };

    Attachment *findAttachment(CSSM_MODULE_HANDLE handle);
    Context *findContext(CSSM_CC_HANDLE handle);
    Remains retire(Context &context);

    BriefLock lock_;
    uint32 initialised_ = 0;
    uint32 loaded_ = 0;
    uint64 generation_ = 0;
    std::vector<Attachment> attachments_;
    std::vector<uint32> freeAttachments_;
    std::vector<std::unique_ptr<Context>> contexts_;
    std::vector<uint32> freeContexts_;
};

/// A context for the time of one call.
class Lease {
public:
    explicit Lease(CSSM_CC_HANDLE handle) : status_(Registry::shared().lease(handle, context_)) {}
    ~Lease()
    {
        if (context_)
            context_->busy.store(false, std::memory_order_release);
    }
    Lease(const Lease &) = delete;
    Lease &operator=(const Lease &) = delete;

    CSSM_RETURN status() const { return status_; }
    Context *operator->() const { return context_; }
    Context &operator*() const { return *context_; }

private:
    Context *context_ = nullptr;
    CSSM_RETURN status_;
};

/// Runs a function of the interface: memory that is short becomes a status, and nothing is thrown across the
/// boundary.
template <class Body>
CSSM_RETURN answering(CSSM_RETURN memoryError, Body &&body) noexcept
{
    try {
        return body();
    } catch (const std::bad_alloc &) {
        return memoryError;
    } catch (...) {
        return memoryError;
    }
}

}  // namespace cssm
