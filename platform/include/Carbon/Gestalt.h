/// \file
/// The Gestalt Manager: facts about the running system, asked by four-character selector.
///
///     SInt32 version = 0;
///     if (Gestalt(gestaltSystemVersion, &version) == noErr) ...   // 0x1068
///
/// Built-in selectors:
/// | selector | answer |
/// |---|---|
/// | 'sysv' | the packed version (BCD 0xMMmb) of the system whose calls the platform floor gives |
/// | 'sysa' | the processor's architecture: gestaltIntel, gestaltPowerPC, gestalt68k; gestaltUnknownErr on others |
///
/// Thread: any; the selectors are to be replaced before other threads ask.
#pragma once
#include <Carbon/MacErrors.h>
#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    gestaltSystemVersion = 0x73797376,    ///< 'sysv'
    gestaltSysArchitecture = 0x73797361,  ///< 'sysa'
};

/// Responses to gestaltSysArchitecture.
enum {
    gestalt68k = 1,
    gestaltPowerPC = 2,
    gestaltIntel = 10,
};

enum {
    gestaltUnknownErr = -5550,       ///< the selector's function could not answer
    gestaltUndefSelectorErr = -5551, ///< no such selector
    gestaltDupSelectorErr = -5552,   ///< NewGestalt: the selector exists already
};

/// Answers one selector: stores the response and returns noErr, or returns an error.
typedef OSErr (*SelectorFunctionProcPtr)(OSType selector, SInt32 *response);
typedef SelectorFunctionProcPtr SelectorFunctionUPP;

/// Asks for a selector. gestaltUndefSelectorErr, the response untouched, when nobody answers it; paramErr for a null response.
OSErr Gestalt(OSType selector, SInt32 *response);
/// Adds a selector of the host's own; gestaltDupSelectorErr when it exists.
OSErr NewGestalt(OSType selector, SelectorFunctionUPP function);
/// Puts a function in the place of a selector's own, which is handed out; gestaltUndefSelectorErr when there is none.
OSErr ReplaceGestalt(OSType selector, SelectorFunctionUPP function, SelectorFunctionUPP *oldFunction);

#ifdef __cplusplus
}
#endif
