/// \file
/// Reading a caller's input buffers and filling its output records.
#pragma once

#include <Security/cssm.h>

#include <openssl/crypto.h>

#include <span>

namespace cssm {

/// Checks `count` input buffers at `buffers`.
inline CSSM_RETURN checkInputs(const CSSM_DATA *buffers, uint32 count)
{
    if (!buffers)
        return CSSMERR_CSP_INVALID_INPUT_POINTER;
    if (count == 0)
        return CSSMERR_CSP_INVALID_DATA_COUNT;
    for (const CSSM_DATA &buffer : std::span(buffers, count))
        if (!buffer.Data && buffer.Length > 0)
            return CSSMERR_CSP_INVALID_INPUT_VECTOR;
    return CSSM_OK;
}

/// An output record while it is filled. Where the record has no memory, it gets some from the caller's
/// functions; that is wiped and freed again unless the work is committed.
class Output {
public:
    Output(CSSM_DATA &record, const CSSM_API_MEMORY_FUNCS &memory) : record_(record), memory_(memory) {}
    ~Output()
    {
        if (!allocated_)
            return;
        OPENSSL_cleanse(allocated_, size_);
        memory_.free_func(allocated_, memory_.AllocRef);
    }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    /// Makes room, once. An allocation is never of 0 bytes.
    CSSM_RETURN reserve(size_t size)
    {
        if (record_.Data)
            return record_.Length < size ? CSSMERR_CSP_OUTPUT_LENGTH_ERROR : CSSM_OK;
        size_ = size > 0 ? size : 1;
        allocated_ = static_cast<uint8 *>(memory_.malloc_func(size_, memory_.AllocRef));
        return allocated_ ? CSSM_OK : CSSMERR_CSP_MEMORY_ERROR;
    }

    bool fromCaller() const { return record_.Data != nullptr; }
    uint8 *bytes() const { return allocated_ ? allocated_ : record_.Data; }

    void commit(size_t length)
    {
        record_.Data = bytes();
        record_.Length = length;
        allocated_ = nullptr;
    }

private:
    CSSM_DATA &record_;
    const CSSM_API_MEMORY_FUNCS &memory_;
    uint8 *allocated_ = nullptr;
    size_t size_ = 0;
};

}  // namespace cssm
