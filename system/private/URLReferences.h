// References as file URLs, and back.
#pragma once
#include <Carbon/Files.h>
#include <CoreFoundation/CFURL.h>

namespace tarvik::files {

/// The item that a file URL names, links followed.
bool referenceOfURL(CFURLRef url, FSRef *ref);
/// Owned by the caller; null for an item that is gone.
CFURLRef copyURLOfReference(const FSRef *ref);

}  // namespace tarvik::files
