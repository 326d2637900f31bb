/// \file
/// Opening URLs with their default applications.
#pragma once
#include <Carbon/LSOpen.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Opens the one URL with its default application; true when that was started, which is not waited for. False for what is no URL.
Boolean CFURLOpenWithLSLaunchFlags(CFURLRef url, LSLaunchFlags flags);

#ifdef __cplusplus
}
#endif
