/// \file
/// Who runs this process. Thread: one at a time (the C library's look-ups are not reentrant).
#pragma once
#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Whether the effective user is 0.
Boolean UserIsRoot(void);
/// Whether the login name (getlogin) stands in the group's member list, byte for byte. False for null, without a
/// login name, and for an unknown group. A user whose primary group it is, but who is not listed, does not count.
Boolean UserIsBelongToGroup(const char *groupName);

#ifdef __cplusplus
}
#endif
