/// Components.h: components, here the scripting component, opened by what they do.
///
///     ComponentInstance scripting = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
///     ...
///     CloseComponent(scripting);
#pragma once

#include <Carbon/MacErrors.h>
#include <Carbon/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ComponentInstanceRecord *ComponentInstance;
typedef SInt32 ComponentResult;

enum {
    invalidComponentID = -3000,
    badComponentInstance = (int)0x80008001
};

/// A new instance of the component of that type and subtype ('osa ' with 'ascr' or 'scpt': the scripting component); null without one.
/// An instance is used by one thread at a time.
ComponentInstance OpenDefaultComponent(OSType componentType, OSType componentSubType);
/// Ends the instance and all that it holds. badComponentInstance for null.
OSErr CloseComponent(ComponentInstance component);

#ifdef __cplusplus
}
#endif
