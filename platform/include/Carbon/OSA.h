/// OSA.h: the Open Scripting Architecture: scripts as text or data, compiled, run, and their results handed out.
///
///     AEDesc source, text;
///     OSAID script = kOSANullScript, result = kOSANullScript;
///     AECreateDesc(typeChar, "2 + 3", 5, &source);
///     OSACompile(scripting, &source, kOSAModeNull, &script);
///     OSAExecute(scripting, script, kOSANullScript, kOSAModeNull, &result);
///     OSADisplay(scripting, result, typeChar, kOSAModeDisplayForHumans, &text);     // "5"
///
/// The language is that of docs/scripts.md. An OSAID stands for a script, a context (a script whose variables go on living from one
/// compilation to the next) or a value, in one component instance; OSADispose frees it, closing the instance frees all.
///
///   results   noErr; errOSAScriptError: the script failed, compiling or running: OSAScriptError tells how and where;
///             errOSAInvalidID; errOSABadStorageType and errOSACorruptData: data that is no script; badComponentInstance for null;
///             paramErr
///   text      'TEXT', in the system's encoding (UTF-8)
///   threads   an instance is used by one thread at a time
#pragma once

#include <Carbon/AEDataModel.h>
#include <Carbon/Components.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef ComponentResult OSAError;
typedef UInt32 OSAID;

enum {
    kOSAComponentType              = 0x6F736120, ///< 'osa '
    kAppleScriptSubtype            = 0x61736372, ///< 'ascr'
    kOSAGenericScriptingComponentSubtype = 0x73637074, ///< 'scpt'
    typeOSAGenericStorage          = 0x73637074, ///< 'scpt': a compiled script, or its source
    typeAppleScript                = kAppleScriptSubtype,
    kOSANullScript                 = 0
};

enum {
    kOSANullMode                   = 0,
    kOSAModeNull                   = 0,
    kOSAModePreventGetSource       = 0x00000001,
    kOSAModeCompileIntoContext     = 0x00000002, ///< the script's variables stay when it has run
    kOSAModeAugmentContext         = 0x00000004, ///< compiles into the context that is there already
    kOSAModeDisplayForHumans       = 0x00000008  ///< text without quotes, lists without braces
};

/// What OSAScriptError tells.
enum {
    kOSAErrorNumber          = 0x6572726E, ///< 'errn': SInt32
    kOSAErrorMessage         = 0x65727273, ///< 'errs': text
    kOSAErrorBriefMessage    = 0x65727262, ///< 'errb': text
    kOSAErrorApp             = 0x65726170, ///< 'erap': text: the program's name
    kOSAErrorPartialResult   = 0x70746C72, ///< 'ptlr': a value
    kOSAErrorOffendingObject = 0x65726F62, ///< 'erob': a value
    kOSAErrorRange           = 0x65726E67, ///< 'erng': typeOSAErrorRange: the place in the source
    typeOSAErrorRange        = 0x65726E67, ///< a record of the two below
    keyOSASourceStart        = 0x73726373, ///< 'srcs': SInt32, in characters from 0
    keyOSASourceEnd          = 0x73726365  ///< 'srce': SInt32, behind the last character
};

/// What OSAGetScriptInfo tells.
enum {
    kOSAScriptIsModified        = 0x6D6F6469, ///< 'modi'
    kOSAScriptIsTypeCompiledScript = 0x63736372, ///< 'cscr'
    kOSAScriptIsTypeScriptValue = 0x76616C75, ///< 'valu'
    kOSAScriptIsTypeScriptContext = 0x636E7478, ///< 'cntx'
    kOSAScriptBestType          = 0x62657374, ///< 'best': the type that a value becomes with typeWildCard
    kOSACanGetSource            = 0x67737263  ///< 'gsrc'
};

enum {
    errOSASystemError      = -1750,
    errOSAInvalidID        = -1751,
    errOSABadStorageType   = -1752,
    errOSAScriptError      = -1753,
    errOSABadSelector      = -1754,
    errOSASourceNotAvailable = -1756,
    errOSADataFormatTooNew = -1759,
    errOSACorruptData      = -1702,
    errOSACantAssign       = -10006,
    errOSAGeneralError     = -2700
};

/// Called now and then while a script runs. An error stops the script, whatever `try` it is in.
typedef OSErr (*OSAActiveProcPtr)(SRefCon refCon);
typedef OSAActiveProcPtr OSAActiveUPP;
static inline OSAActiveUPP NewOSAActiveUPP(OSAActiveProcPtr function) { return function; }
static inline void DisposeOSAActiveUPP(OSAActiveUPP function) { (void)function; }

/// Loads a compiled script (OSAStore), or source text as a file holds it: UTF-8, or UTF-16 with a byte order mark.
OSAError OSALoad(ComponentInstance component, const AEDesc *scriptData, SInt32 modeFlags, OSAID *resultingScriptID);
/// The compiled script, with the values that its properties have, as typeOSAGenericStorage. With kOSAModePreventGetSource OSAGetSource
/// will not hand its source out.
OSAError OSAStore(ComponentInstance component, OSAID scriptID, DescType desiredType, SInt32 modeFlags, AEDesc *resultingScriptData);
/// Compiles text ('TEXT', 'utf8', 'utxt'). The identifier that stands in the result is disposed of, with kOSAModeAugmentContext
/// it is the context to continue.
OSAError OSACompile(ComponentInstance component, const AEDesc *sourceData, SInt32 modeFlags, OSAID *previousAndResultingScriptID);
/// Runs a script: its run handler, or its statements. The result is kOSANullScript when it gives none. A context's variables
/// are seen by the script when it has been compiled into it.
OSAError OSAExecute(ComponentInstance component, OSAID compiledScriptID, OSAID contextID, SInt32 modeFlags, OSAID *resultingScriptValueID);
OSAError OSACompileExecute(ComponentInstance component, const AEDesc *sourceData, OSAID contextID, SInt32 modeFlags, OSAID *resultingScriptValueID);
OSAError OSALoadExecute(ComponentInstance component, const AEDesc *scriptData, OSAID contextID, SInt32 modeFlags, OSAID *resultingScriptValueID);
/// Compiles, runs, displays.
OSAError OSADoScript(ComponentInstance component, const AEDesc *sourceData, OSAID contextID, DescType desiredType, SInt32 modeFlags, AEDesc *resultingText);
/// Runs the handler for the event: run, open, quit, reopen, idle for the events of 'aevt', the handler that a subroutine event ('ascr',
/// 'psbr') names, and a handler written «event ...». errAEEventNotHandled when the script has none.
OSAError OSAExecuteEvent(ComponentInstance component, const AppleEvent *theAppleEvent, OSAID contextID, SInt32 modeFlags, OSAID *resultingScriptValueID);
/// The same; what the handler gives back goes into the reply, and so does its error.
OSAError OSADoEvent(ComponentInstance component, const AppleEvent *theAppleEvent, OSAID contextID, SInt32 modeFlags, AppleEvent *reply);
/// A context of its own, without a script.
OSAError OSAMakeContext(ComponentInstance component, const AEDesc *contextName, OSAID parentContext, OSAID *resultingContextID);

/// A value as text, as a script would write it, or for people.
OSAError OSADisplay(ComponentInstance component, OSAID scriptValueID, DescType desiredType, SInt32 modeFlags, AEDesc *resultingText);
/// The source of a script; a value as a script would write it.
OSAError OSAGetSource(ComponentInstance component, OSAID scriptID, DescType desiredType, AEDesc *resultingSourceData);
/// What the latest failing call of this instance met. errOSABadSelector.
OSAError OSAScriptError(ComponentInstance component, OSType selector, DescType desiredType, AEDesc *resultingErrorDescription);

/// A value as a descriptor and back. Labels of records that are no terms go into the list keyASUserRecordFields, by turns name and value.
OSAError OSACoerceToDesc(ComponentInstance component, OSAID scriptID, DescType desiredType, SInt32 modeFlags, AEDesc *result);
OSAError OSACoerceFromDesc(ComponentInstance component, const AEDesc *scriptData, SInt32 modeFlags, OSAID *resultingScriptID);
enum { keyASUserRecordFields = 0x75737266 /* 'usrf' */ };

OSAError OSACopyID(ComponentInstance component, OSAID fromID, OSAID *toID);
/// kOSANullScript is left alone.
OSAError OSADispose(ComponentInstance component, OSAID scriptID);
OSAError OSAGetScriptInfo(ComponentInstance component, OSAID scriptID, OSType selector, long *result);
/// The component's name: 'TEXT'.
OSAError OSAScriptingComponentName(ComponentInstance component, AEDesc *resultingScriptingComponentName);

/// Null removes it.
OSAError OSASetActiveProc(ComponentInstance component, OSAActiveUPP activeProc, SRefCon refCon);
OSAError OSAGetActiveProc(ComponentInstance component, OSAActiveUPP *activeProc, SRefCon *refCon);

/// Called at most once, when a script first shows a dialog or uses the clipboard and nothing in the process can: a host that does without
/// windows loads the library that has them (libtarvik-ui) there. Null removes it.
typedef void (*OSAInteractionLoader)(void);
void OSASetInteractionLoader(OSAInteractionLoader loader);

#ifdef __cplusplus
}
#endif
