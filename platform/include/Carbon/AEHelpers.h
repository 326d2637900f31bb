/// AEHelpers.h: descriptors as text, for logs and people.
#pragma once

#include <Carbon/AEDataModel.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Writes the descriptor, and all that it holds, as UTF-8 text with a zero byte into a new handle:
///
///     'aevt'\'odoc'{ '----':[ 'furl'("file:///tmp/a.txt") ], 'srch':'utf8'("Emma"), 'page':12, 'back':true }
///
/// Lists stand in [ ], records in { } (behind their type when it isn't 'reco'), text in quotes with \" \\ \n \t and \xx escapes, 32-bit
/// numbers and booleans as they are, other numbers and codes in their type's brackets, everything else in hexadecimal between $ signs.
OSStatus AEPrintDescToHandle(const AEDesc *desc, Handle *result);

#ifdef __cplusplus
}
#endif
