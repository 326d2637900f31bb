#include <Carbon/MacMemory.h>

#include <cstdlib>
#include <cstring>

namespace {

/// A handle points at the first member, so that *handle is where the bytes are.
struct Block {
    Ptr bytes;
    Size size;
};

Block *blockOf(Handle handle) { return reinterpret_cast<Block *>(handle); }

thread_local OSErr lastError = noErr;

Handle newBlock(Size size, bool clear)
{
    lastError = memFullErr;
    if (size < 0)
        return nullptr;
    const size_t length = size ? size_t(size) : 1;  // an empty block has an address too
    void *bytes = clear ? std::calloc(1, length) : std::malloc(length);
    auto *block = static_cast<Block *>(std::malloc(sizeof(Block)));
    if (!bytes || !block) {
        std::free(bytes);
        std::free(block);
        return nullptr;
    }
    *block = {static_cast<Ptr>(bytes), size};
    lastError = noErr;
    return &block->bytes;
}

}  // namespace

Handle NewHandle(Size byteCount) { return newBlock(byteCount, false); }
Handle NewHandleClear(Size byteCount) { return newBlock(byteCount, true); }

void DisposeHandle(Handle block)
{
    lastError = block ? OSErr(noErr) : OSErr(nilHandleErr);
    if (!block)
        return;
    std::free(*block);
    std::free(blockOf(block));
}

Size GetHandleSize(Handle block)
{
    lastError = block ? OSErr(noErr) : OSErr(nilHandleErr);
    return block ? blockOf(block)->size : 0;
}

void SetHandleSize(Handle block, Size newSize)
{
    lastError = block ? OSErr(memFullErr) : OSErr(nilHandleErr);
    if (!block || newSize < 0)
        return;
    if (void *moved = std::realloc(*block, newSize ? size_t(newSize) : 1)) {
        *blockOf(block) = {static_cast<Ptr>(moved), newSize};
        lastError = noErr;
    }
}

void HLock(Handle block) { lastError = block ? OSErr(noErr) : OSErr(nilHandleErr); }
void HUnlock(Handle block) { HLock(block); }

OSErr PtrToHand(const void *source, Handle *block, Size size)
{
    if (!block || (!source && size > 0))
        return lastError = paramErr;
    *block = NewHandle(size);
    if (*block && size > 0)
        std::memcpy(**block, source, size_t(size));
    return lastError;
}

OSErr MemError(void) { return lastError; }
