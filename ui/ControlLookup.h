/// \file
/// Controls and views found by their names, and fitted to their content.
///
///     ControlRef save = ControlForControlID(window, 'demo', 7);
///     ControlSizeToFit(save, NULL, NULL);
///
/// Null and what the platform does not find are answered with null, 0 or false. Thread: main.
#pragma once
#include <Carbon/Controls.h>

#ifdef __cplusplus
extern "C" {
#endif

ControlRef ControlForControlID(WindowRef window, OSType signature, SInt32 id);
HIViewRef HIViewFindFromView(HIViewRef view, OSType signature, SInt32 id);  ///< the view itself, or one in it
HIViewRef HIViewFindFromWindow(WindowRef window, OSType signature, SInt32 id);

int32_t
ControlGetWindowRefCon(ControlRef control);  ///< the reference constant of its window, the lowest 32 bits

/// May change what is proposed; false keeps the control as it is.
typedef Boolean (*ControlSizeAdjuster)(const Rect *oldBounds, Rect *proposedBounds, void *userData);
/// Makes the control as large as it needs to be. False when the platform has no best size for it; true also when the adjuster
/// (which may be null) kept it as it is.
Boolean ControlSizeToFit(ControlRef control, ControlSizeAdjuster adjust, void *userData);

/// Does nothing and returns 0.
int32_t WindowDumpControlHierarchy(void);

#ifdef __cplusplus
}
#endif
