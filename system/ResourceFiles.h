/// \file
/// Opening a file's resource fork as the current resource file.
///
///     ResFileRefNum resources = RFOpen(&file, true);
///     if (resources != -1) { ... AddResource(handle, 'TEXT', 128, title); }
///     RFClose(&resources);
///
/// Thread: main.
#pragma once
#include <Carbon/Files.h>
#include <Carbon/Resources.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Opens it for reading, or with the flag makes it when it is missing and opens it for writing too; it becomes the current
/// resource file. -1 for a null reference, and when it can't be opened (a file without resources, for reading).
ResFileRefNum RFOpen(const FSRef *ref, Boolean create);
/// Closes it, and sets the caller's number to -1; -1 is left alone.
void RFClose(ResFileRefNum *refNum);

#ifdef __cplusplus
}
#endif
