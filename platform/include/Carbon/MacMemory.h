/// MacMemory.h: the Memory Manager's handles: blocks of memory whose length can be asked and changed.
///
///     Handle block = NewHandle(16);       // *block: its bytes
///     SetHandleSize(block, 4096);         // *block may have moved
///     DisposeHandle(block);
///
/// Blocks never move by themselves, so locking changes nothing. Memory is the C allocator's, and a handle belongs to whoever made
/// it. Thread: any, one at a time for each handle; MemError is each thread's own.
#pragma once

#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

Handle NewHandle(Size byteCount);      ///< uninitialised; null (memFullErr) without memory and for a negative count
Handle NewHandleClear(Size byteCount); ///< the same, of zeros
void   DisposeHandle(Handle block);    ///< null is ignored
Size   GetHandleSize(Handle block);    ///< 0 for null (nilHandleErr)
void   SetHandleSize(Handle block, Size newSize); ///< keeps the bytes that fit; MemError tells whether it could
void   HLock(Handle block);
void   HUnlock(Handle block);
/// A new handle with a copy of the bytes.
OSErr PtrToHand(const void *source, Handle *block, Size size);
/// The error of this thread's latest call above.
OSErr MemError(void);

#ifdef __cplusplus
}
#endif
