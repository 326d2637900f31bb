/// FileTrees.h: an addition of this platform: what a whole tree of files takes up, at about the price of looking at each once.
#pragma once

#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The logical sizes of both forks of the item at a path or, of a folder, of everything below it, added up. A link below it counts as itself,
/// a companion only as what it holds of its item's fork, what can't be looked at as nothing. Receivers may be null. fnfErr, ...
OSErr FSGetForkSizes(const UInt8 *path, UInt64 *dataLogicalSize, UInt64 *rsrcLogicalSize);

#ifdef __cplusplus
}
#endif
