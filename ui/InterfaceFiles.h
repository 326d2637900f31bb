/// \file
/// Windows and menu bars of interface files.
///
///     WindowRef window = WindowCreateFromNibName(CFSTR("Main"), CFSTR("Preferences"));    // DisposeWindow releases it
///
/// How a file names its windows is told by <Carbon/IBCarbonRuntime.h>. Null or false for null, for a missing file and for a name that is
/// not in it. Thread: main.
#pragma once
#include <Carbon/IBCarbonRuntime.h>

#ifdef __cplusplus
extern "C" {
#endif

Boolean MenuBarSetFromNibName(CFStringRef nibName, CFStringRef menuBarName);     ///< of the main bundle
WindowRef WindowCreateFromNibName(CFStringRef nibName, CFStringRef windowName);  ///< of the main bundle
WindowRef WindowCreateFromNibNameInBundle(CFStringRef nibName, CFStringRef windowName,
                                          CFBundleRef bundle);  ///< null: the main one

#ifdef __cplusplus
}
#endif
