// The system's error numbers as the File Manager's.
#pragma once
#include <Carbon/MacTypes.h>

namespace tarvik::files {
/// noErr for 0, ioErr for a number without a counterpart.
OSErr fileError(int systemError);
}  // namespace tarvik::files
