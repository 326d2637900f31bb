/// \file
/// What controls hold: data by part and tag, text and its selection.
///
///     CFStringRef name = ControlCopyString(field);          // the caller releases it
///     CFRange all = CFRangeMake(0, ControlGetLength(field));
///     ControlSetSelectionRange(field, &all);
///
/// Null and a control without such data are answered with null, 0 or false. Thread: main.
#pragma once
#include <Carbon/Controls.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Null also when the data's size changed between the question for it and the reading. The caller releases it.
CFMutableDataRef ControlCopyData(ControlRef control, ControlPartCode part, ResType tag);
Boolean ControlSetData(ControlRef control, CFDataRef data, ControlPartCode part, ResType tag);

CFMutableStringRef ControlCopyString(ControlRef control);  ///< of an edit text; the caller releases it
Boolean ControlSetString(ControlRef control, CFStringRef string);
CFIndex ControlGetLength(ControlRef control);  ///< in UTF-16 units

CFRange ControlGetSelectionRange(ControlRef control);  ///< (0, 0) on failure
/// The range's ends as signed 16-bit values. Returns the platform's status; 0 for null.
OSStatus ControlSetSelectionRange(ControlRef control, const CFRange *range);

#ifdef __cplusplus
}
#endif
