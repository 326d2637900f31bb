/// \file
/// What is on the clipboard.
///
///     CFStringRef copied = ScrapCopyString(ScrapGetCurrentScrap());    // the caller releases it
///
/// Null when there is no such flavor, or nothing in it. Thread: main.
#pragma once
#include <Carbon/Scrap.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

ScrapRef ScrapGetCurrentScrap(void);
CFMutableDataRef ScrapCopyDataOfFlavor(ScrapRef scrap, ScrapFlavorType flavor);  ///< the caller releases it
CFMutableStringRef ScrapCopyString(ScrapRef scrap);  ///< the text; the caller releases it

#ifdef __cplusplus
}
#endif
