/// \file
/// Scripts run from source text and from files, by the default scripting component.
///
///     AEDesc text, result;
///     OSStatus status = OSAExecuteScriptString(CFSTR("words of \"a b\""), &text, &result);
///     -> 0; text: "a, b"; result: a list of two texts
///
/// Text and result may be null. They are set to null descriptors before any work and are the caller's to dispose of with AEDisposeDesc. The
/// text is the result as people read it, or the message of the error (errOSAScriptError). Status:
///
///   0       the script has run
///   -1753   errOSAScriptError: it does not compile (of source text), or failed
///   -4960   before it could run: null, empty or unconvertible source, no file, no script in it, no component
///
/// A script file is a compiled script (`tarvik script -o`) or source text. Thread: any; a script runs on the caller's.
#pragma once
#include <Carbon/Files.h>
#include <Carbon/OSA.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { kOSAScriptUnavailable = -4960 };

/// The script in a file, disposed of with OSADispose; kOSANullScript for null, and when there is none.
OSAID OSALoadFileFromURL(ComponentInstance component, CFURLRef url);
OSAID OSALoadFileFromRef(ComponentInstance component, const FSRef *ref);

OSStatus OSAExecuteScriptString(CFStringRef source, AEDesc *text, AEDesc *result);

/// With an event the script's handler for it is called, otherwise it is run.
OSStatus OSAExecuteScriptFileURL(CFURLRef url, const AppleEvent *event, AEDesc *text, AEDesc *result);
OSStatus OSARunScriptFileURL(CFURLRef url, AEDesc *text, AEDesc *result);
OSStatus OSAExecuteScriptFileRef(const FSRef *ref, const AppleEvent *event, AEDesc *text, AEDesc *result);
OSStatus OSARunScriptFileRef(const FSRef *ref, AEDesc *text, AEDesc *result);

#ifdef __cplusplus
}
#endif
