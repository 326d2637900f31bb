/// \file
/// Command lines for the shell, through the C library's `system`.
///
///     CFString_system(CFSTR("exit 3"))                                                        -> 3 << 8
///     CFStringApplySystemCommand(CFSTR("-l /tmp"), CFSTR("ls"), CFSTR("> /tmp/list"))         runs "ls -l /tmp > /tmp/list"
///
/// The shell sees the text as it stands: nothing is quoted. Never put a file's name, or anything else from outside, into
/// one; a CommandTool takes its arguments as they are.
/// Results are `system`'s own (a wait status, WEXITSTATUS and company); -1 when nothing was run.
#pragma once
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Runs the command. The text is handed over in UTF-8 as long as that takes two bytes a UTF-16 unit at most, otherwise in
/// the system's encoding or in the first available one that can hold it. -1 for null and for a text that none can.
int CFString_system(CFStringRef command);
/// Runs prefix, command and suffix joined by single blanks; null for the prefix or the suffix leaves it out.
/// -1 for a null command.
int CFStringApplySystemCommand(CFStringRef command, CFStringRef prefix, CFStringRef suffix);

#ifdef __cplusplus
}
#endif
