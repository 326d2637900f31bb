/// \file
/// What scripts of other programs can ask a host for, and tell it.
///
///     ScriptingInstallDictionary();
///     ScriptingRegisterProperty(CFSTR("title"), copyTitle, setTitle, document);
///     ScriptingRegisterCommand(CFSTR("add"), add, NULL);
///
///     tell application "Shelf"
///         set its title to "Winter"
///         add(3, 4) + (length of (get title))
///     end tell
///
/// The standard properties are name and version, of the main bundle. Scripts get those, `running`, `frontmost`, `activate` and `open` of any program, without
/// a dictionary; everything else stays unanswered until the host registers it, and `quit` is the host's own handler (AppleEventInstallHandler), as are better
/// answers to the others. Names are compared without regard to case. A later registration of a name takes the place of an earlier one. Thread: main; the functions are called there.
#pragma once
#include <Carbon/AEDataModel.h>
#include <CoreFoundation/CFString.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Fills the descriptor, which the caller disposes of. An error is the script's.
typedef OSErr (*ScriptingPropertyGetter)(AEDesc *value, void *context);
typedef OSErr (*ScriptingPropertySetter)(const AEDesc *value, void *context);
/// The arguments are a list. The result may stay the null descriptor.
typedef OSErr (*ScriptingCommand)(const AEDescList *arguments, AEDesc *result, void *context);

/// Installs the handlers: get and set data of the core suite, subroutine calls. False when one can't be installed.
Boolean ScriptingInstallDictionary(void);
/// Removes them, and all that was registered.
void ScriptingRemoveDictionary(void);

/// False for a null name or getter. A null setter makes a property that is only read.
Boolean ScriptingRegisterProperty(CFStringRef name, ScriptingPropertyGetter getter,
                                  ScriptingPropertySetter setter, void *context);
/// False for a null name or function.
Boolean ScriptingRegisterCommand(CFStringRef name, ScriptingCommand command, void *context);

#ifdef __cplusplus
}
#endif
