/// \file
/// Label colours of files and folders: an index from 0 (none) to 7, kept as byte 9 of the Finder information.
///
/// | index | 0 | 1 | 2 | 3 | 4 | 5 | 6 | 7 |
/// |---|---|---|---|---|---|---|---|---|
/// | value | 0x00 | 0x0C | 0x0E | 0x0A | 0x04 | 0x08 | 0x06 | 0x02 |
/// | colour | none | red | orange | yellow | blue | purple | green | gray |
///
/// The byte is read and written whole: setting a label clears the other flags in it. Callers count on that. Thread: any.
#pragma once
#include <Carbon/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { kLabelColorCount = 8 };
extern const UInt8 kLabelColor[kLabelColorCount];

UInt32 LabelColorValueToIndex(UInt8 value);  ///< 0 when the table lacks it
UInt8 LabelColorIndexToValue(UInt32 index);  ///< 0 above 7

UInt8 FSGetLabelColorValue(const FSRef *ref);  ///< 0 on failure
Boolean FSSetLabelColorValue(const FSRef *ref, UInt8 value);
UInt32 FSGetLabelColorIndex(const FSRef *ref);
Boolean FSSetLabelColorIndex(const FSRef *ref, UInt32 index);  ///< above 7: no label

#ifdef __cplusplus
}
#endif
