#include "Context.h"

namespace cssm {
namespace {

constexpr unsigned kSlotBits = 24;  // 16 million open contexts
constexpr uint64 kSlotMask = (uint64{1} << kSlotBits) - 1;

/// Slots count from 1, so that no handle is 0; the generation stays within 39 bits, so that none is negative.
uint64 makeHandle(uint64 generation, size_t slot)
{
    return (generation << kSlotBits & INT64_MAX) | (slot + 1);
}

size_t slotOf(uint64 handle) { return static_cast<size_t>(handle & kSlotMask) - 1; }

/// A free slot's number, or that of one appended by `append`. There is always room to give it back: closing
/// must not need memory.
template <class Slots, class Append>
size_t takeSlot(std::vector<uint32> &free, Slots &slots, Append append)
{
    if (free.empty()) {
        free.reserve(slots.size() + 1);
        append();
        return slots.size() - 1;
    }
    const size_t slot = free.back();
    free.pop_back();
    return slot;
}

}  // namespace

Registry &Registry::shared()
{
    static Registry &made = *new Registry;  // outlives the host's static destructors
    return made;
}

CSSM_RETURN Registry::init()
{
    std::lock_guard lock(lock_);
    ++initialised_;
    return CSSM_OK;
}

CSSM_RETURN Registry::terminate()
{
    std::lock_guard lock(lock_);
    if (initialised_ == 0)
        return CSSMERR_CSSM_NOT_INITIALIZED;
    --initialised_;
    return CSSM_OK;
}

CSSM_RETURN Registry::load()
{
    std::lock_guard lock(lock_);
    if (initialised_ == 0)
        return CSSMERR_CSSM_NOT_INITIALIZED;
    ++loaded_;
    return CSSM_OK;
}

CSSM_RETURN Registry::unload()
{
    std::lock_guard lock(lock_);
    if (loaded_ == 0)
        return CSSMERR_CSSM_MODULE_NOT_LOADED;
    --loaded_;
    return CSSM_OK;
}

CSSM_RETURN Registry::attach(const CSSM_API_MEMORY_FUNCS &memory, CSSM_MODULE_HANDLE &handle)
{
    std::lock_guard lock(lock_);
    if (loaded_ == 0)
        return CSSMERR_CSSM_MODULE_NOT_LOADED;
    const size_t slot = takeSlot(freeAttachments_, attachments_, [&] { attachments_.emplace_back(); });
    Attachment &made = attachments_[slot];
    made.handle = static_cast<CSSM_MODULE_HANDLE>(makeHandle(++generation_, slot));
    made.memory = memory;
    made.contexts = 0;
    handle = made.handle;
    return CSSM_OK;
}

CSSM_RETURN Registry::detach(CSSM_MODULE_HANDLE handle)
{
    std::vector<Remains> remains;  // destroyed after the lock is given back
    std::lock_guard lock(lock_);
    Attachment *attachment = findAttachment(handle);
    if (!attachment)
        return CSSMERR_CSSM_INVALID_ADDIN_HANDLE;

    const auto slot = static_cast<uint32>(attachment - attachments_.data());
    if (attachment->contexts > 0) {
        const auto ours = [&](const auto &context) {
            return context->handle != CSSM_INVALID_HANDLE && context->attachment == slot;
        };
        remains.reserve(attachment->contexts);
        for (const auto &context : contexts_)
            if (ours(context) && context->busy.load(std::memory_order_acquire))
                return CSSMERR_CSSM_INVALID_HANDLE_USAGE;
        for (const auto &context : contexts_)
            if (ours(context))
                remains.push_back(retire(*context));
    }
    attachment->handle = CSSM_INVALID_HANDLE;
    freeAttachments_.push_back(slot);
    return CSSM_OK;
}

CSSM_RETURN Registry::memoryOf(CSSM_MODULE_HANDLE handle, CSSM_API_MEMORY_FUNCS &memory)
{
    std::lock_guard lock(lock_);
    const Attachment *attachment = findAttachment(handle);
    if (!attachment)
        return CSSMERR_CSSM_INVALID_ADDIN_HANDLE;
    memory = attachment->memory;
    return CSSM_OK;
}

CSSM_RETURN Registry::open(CSSM_MODULE_HANDLE module, Kind kind, CSSM_ALGORITHMS algorithm,
                           std::unique_ptr<Attributes> attributes, CSSM_CC_HANDLE &handle)
{
    std::lock_guard lock(lock_);
    Attachment *attachment = findAttachment(module);
    if (!attachment)
        return CSSMERR_CSSM_INVALID_ADDIN_HANDLE;
    if (freeContexts_.empty() && contexts_.size() == kSlotMask)
        return CSSMERR_CSSM_MEMORY_ERROR;

    const size_t slot =
        takeSlot(freeContexts_, contexts_, [&] { contexts_.push_back(std::make_unique<Context>()); });
    Context &made = *contexts_[slot];
    made.kind = kind;
    made.algorithm = algorithm;
    made.attachment = static_cast<uint32>(attachment - attachments_.data());
    made.memory = attachment->memory;
    made.attributes = std::move(attributes);
    made.handle = makeHandle(++generation_, slot);
    ++attachment->contexts;
    handle = made.handle;
    return CSSM_OK;
}

CSSM_RETURN Registry::close(CSSM_CC_HANDLE handle)
{
    Remains remains;  // destroyed after the lock is given back
    std::lock_guard lock(lock_);
    Context *context = findContext(handle);
    if (!context)
        return CSSMERR_CSSM_INVALID_CONTEXT_HANDLE;
    if (context->busy.load(std::memory_order_acquire))
        return CSSMERR_CSSM_INVALID_HANDLE_USAGE;
    remains = retire(*context);
    return CSSM_OK;
}

CSSM_RETURN Registry::lease(CSSM_CC_HANDLE handle, Context *&context)
{
    std::lock_guard lock(lock_);
    Context *found = findContext(handle);
    if (!found)
        return CSSMERR_CSSM_INVALID_CONTEXT_HANDLE;
    if (found->busy.load(std::memory_order_acquire))
        return CSSMERR_CSSM_INVALID_HANDLE_USAGE;
    found->busy.store(true, std::memory_order_relaxed);
    context = found;
    return CSSM_OK;
}

Registry::Attachment *Registry::findAttachment(CSSM_MODULE_HANDLE handle)
{
    const size_t slot = slotOf(static_cast<uint64>(handle));
    if (handle == CSSM_INVALID_HANDLE || slot >= attachments_.size() || attachments_[slot].handle != handle)
        return nullptr;
    return &attachments_[slot];
}

Context *Registry::findContext(CSSM_CC_HANDLE handle)
{
    const size_t slot = slotOf(handle);
    if (handle == CSSM_INVALID_HANDLE || slot >= contexts_.size() || contexts_[slot]->handle != handle)
        return nullptr;
    return contexts_[slot].get();
}

Registry::Remains Registry::retire(Context &context)
{
    if (context.digesting)
        EVP_MD_CTX_reset(context.digest);  // begun and given up: leaves nothing of its input
    context.digesting = false;
    --attachments_[context.attachment].contexts;
    freeContexts_.push_back(static_cast<uint32>(slotOf(context.handle)));
    context.handle = CSSM_INVALID_HANDLE;
    return {std::move(context.attributes), std::move(context.run)};
}

}  // namespace cssm
