/// \file
/// The classic version records: numeric versions, 'vers' resources.
///
///     NumVersion version = {.nonRelRev = 3, .stage = betaStage, .minorAndBugRev = 0x45, .majorRev = 0x10};
///     NumVersionCopyString(&version, true)    -> "10.4.69b.3"
///
/// The strings are the caller's to release. Null for null. Thread: any; RFGetVersion as the Resource Manager.
#pragma once
#include <Carbon/MacTypes.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Major, minor and bug, then the stage's letter (d, a, b; nothing for a final version or an unknown stage), then, when asked
/// for, a point and the non-release revision. The major's digits are hexadecimal, so that coded decimals read as decimals; the
/// bug is the whole minor-and-bug byte, in decimal: 1.2.3 reads "1.2.35". Readers know it so.
CFStringRef NumVersionCopyString(const NumVersion *version, Boolean includeNonRelease);
/// The same of the record's numeric version.
CFStringRef VersRecCopyVersionString(const VersRec *record, Boolean includeNonRelease);
/// The record's short version, decoded; null when its bytes are not of that encoding.
CFStringRef VersRecCopyShortString(const VersRec *record, CFStringEncoding encoding);
/// The record's long version.
CFStringRef VersRecCopyLongString(const VersRec *record, CFStringEncoding encoding);

/// Reads the 'vers' resource of a number from the current resource file (no other). False, the record zero, when it is missing,
/// shorter than 8 bytes, or has a string that runs past its end; false for a null record.
Boolean RFGetVersion(SInt16 resourceID, VersRec *record);

#ifdef __cplusplus
}
#endif
