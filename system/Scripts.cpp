#include "Scripts.h"

#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/support/Owned.h>
#include <Tarvik/text/EncodingConversion.h>

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFURLAccess.h>

#include <cstdlib>

namespace {

using tarvik::CFOwned;

struct ComponentTraits {
    using Value = ComponentInstance;
    static Value empty() { return nullptr; }
    static void close(Value component) { CloseComponent(component); }
};
using Component = tarvik::Handle<ComponentTraits>;

Component openComponent() { return Component(OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype)); }

void initialise(AEDesc *text, AEDesc *result)
{
    if (text)
        AEInitializeDesc(text);
    if (result)
        AEInitializeDesc(result);
}

/// What the caller is told of a run: the error's message, or the value for people.
void describe(ComponentInstance component, OSAError status, OSAID value, AEDesc *text)
{
    if (!text)
        return;
    if (status == errOSAScriptError)
        OSAScriptError(component, kOSAErrorMessage, typeWildCard, text);
    else if (status == noErr && value != kOSANullScript)
        OSADisplay(component, value, typeWildCard, kOSAModeDisplayForHumans, text);
}

}  // namespace

OSAID OSALoadFileFromURL(ComponentInstance component, CFURLRef url)
{
    CFDataRef contents = nullptr;
    SInt32 error = 0;
    if (!component || !url ||
        !CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, url, &contents, nullptr, nullptr,
                                                  &error))
        return kOSANullScript;
    const CFOwned<CFDataRef> data(contents);
    AEDesc desc;
    if (AECreateDesc(typeOSAGenericStorage, CFDataGetBytePtr(data.get()), Size(CFDataGetLength(data.get())),
                     &desc) != noErr)
        return kOSANullScript;
    OSAID script = kOSANullScript;
    if (OSALoad(component, &desc, kOSAModeNull, &script) != noErr)
        script = kOSANullScript;
    AEDisposeDesc(&desc);
    return script;
}

OSAID OSALoadFileFromRef(ComponentInstance component, const FSRef *ref)
{
    const CFOwned<CFURLRef> url(ref ? CFURLCreateFromFSRef(kCFAllocatorDefault, ref) : nullptr);
    return url ? OSALoadFileFromURL(component, url.get()) : OSAID(kOSANullScript);
}

OSStatus OSAExecuteScriptString(CFStringRef source, AEDesc *text, AEDesc *result)
{
    initialise(text, result);
    if (!source)
        return kOSAScriptUnavailable;
    const Component component = openComponent();
    if (!component)
        return kOSAScriptUnavailable;
    ByteCount readBytes = 0, length = 0;
    OSStatus converted = noErr;
    const tarvik::Owned<char, std::free> bytes(CFStringAllocTECConvertedText(
        source, CFStringGetSystemEncoding(), 0, &readBytes, &length, &converted));
    if (!bytes || converted != noErr || length == 0)
        return kOSAScriptUnavailable;
    AEDesc desc;
    if (AECreateDesc(typeText, bytes.get(), Size(length), &desc) != noErr)
        return kOSAScriptUnavailable;
    OSAID script = kOSANullScript, value = kOSANullScript;
    OSAError status = OSACompile(component.get(), &desc, kOSAModeNull, &script);
    if (status == noErr) {
        status = OSAExecute(component.get(), script, kOSANullScript, kOSAModeNull, &value);
        if (result && value != kOSANullScript)
            OSACoerceToDesc(component.get(), value, typeWildCard, kOSAModeNull, result);
    }
    describe(component.get(), status, value, text);
    AEDisposeDesc(&desc);
    OSADispose(component.get(), script);
    OSADispose(component.get(), value);
    return status;
}

OSStatus OSAExecuteScriptFileURL(CFURLRef url, const AppleEvent *event, AEDesc *text, AEDesc *result)
{
    initialise(text, result);
    if (!url)
        return kOSAScriptUnavailable;
    const Component component = openComponent();
    const OSAID script = component ? OSALoadFileFromURL(component.get(), url) : OSAID(kOSANullScript);
    if (script == kOSANullScript)
        return kOSAScriptUnavailable;
    OSAID value = kOSANullScript;
    const OSAError status = event ? OSAExecuteEvent(component.get(), event, script, kOSAModeNull, &value)
                                  : OSAExecute(component.get(), script, kOSANullScript, kOSAModeNull, &value);
    describe(component.get(), status, value, text);
    if (result)
        OSACoerceToDesc(component.get(), value, typeWildCard, kOSAModeNull, result);
    OSADispose(component.get(), script);
    OSADispose(component.get(), value);
    return status;
}

OSStatus OSARunScriptFileURL(CFURLRef url, AEDesc *text, AEDesc *result)
{
    return OSAExecuteScriptFileURL(url, nullptr, text, result);
}

OSStatus OSAExecuteScriptFileRef(const FSRef *ref, const AppleEvent *event, AEDesc *text, AEDesc *result)
{
    const CFOwned<CFURLRef> url(ref ? CFURLCreateFromFSRef(kCFAllocatorDefault, ref) : nullptr);
    return OSAExecuteScriptFileURL(url.get(), event, text, result);
}

OSStatus OSARunScriptFileRef(const FSRef *ref, AEDesc *text, AEDesc *result)
{
    return OSAExecuteScriptFileRef(ref, nullptr, text, result);
}
