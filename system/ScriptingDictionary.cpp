#include "ScriptingDictionary.h"

#include <Tarvik/support/CFOwned.h>
#include <Tarvik/support/OwnedDesc.h>

#include <Carbon/AERegistry.h>
#include <Carbon/AppleEvents.h>
#include <CoreFoundation/CFBundle.h>

#include <map>
#include <string>
#include <vector>

namespace {

using tarvik::CFOwned;
using tarvik::OwnedDesc;

constexpr DescType kFormUserProperty = 0x75737270;     // 'usrp'
constexpr AEEventClass kSubroutineClass = 0x61736372;  // 'ascr'
constexpr AEEventID kSubroutine = 0x70736272;          // 'psbr'
constexpr AEKeyword kSubroutineName = 0x736E616D;      // 'snam'
enum { kCantGet = -1728, kCantSet = -10006 };

struct Property {
    ScriptingPropertyGetter getter;
    ScriptingPropertySetter setter;
    void *context;
};
struct Command {
    ScriptingCommand function;
    void *context;
};

std::map<std::string, Property> &properties()
{
    static std::map<std::string, Property> all;
    return all;
}
std::map<std::string, Command> &commands()
{
    static std::map<std::string, Command> all;
    return all;
}

std::string folded(std::string name)
{
    for (char &c : name)
        c = char(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return name;
}

std::string textOf(CFStringRef text)
{
    std::vector<char> buffer(text ? size_t(CFStringGetLength(text)) * 4 + 1 : 1);
    return text && CFStringGetCString(text, buffer.data(), CFIndex(buffer.size()), kCFStringEncodingUTF8)
               ? buffer.data()
               : "";
}

std::string textOf(const AEDesc *desc)
{
    OwnedDesc text;
    if (AECoerceDesc(desc, typeUTF8Text, text.out()) != noErr)
        return "";
    std::string bytes(size_t(AEGetDescDataSize(text.get())), '\0');
    AEGetDescData(text.get(), bytes.data(), Size(bytes.size()));
    return bytes;
}

OSErr makeText(const std::string &text, AEDesc *value)
{
    return AECreateDesc(typeUTF8Text, text.data(), Size(text.size()), value);
}

// The standard properties.

OSErr copyName(AEDesc *value, void *)
{
    const CFTypeRef name =
        CFBundleGetMainBundle()
            ? CFBundleGetValueForInfoDictionaryKey(CFBundleGetMainBundle(), CFSTR("CFBundleName"))
            : nullptr;
    if (!name || CFGetTypeID(name) != CFStringGetTypeID())
        return kCantGet;
    return makeText(textOf(static_cast<CFStringRef>(name)), value);
}

OSErr copyVersion(AEDesc *value, void *)
{
    const CFTypeRef version = CFBundleGetMainBundle()
                                  ? CFBundleGetValueForInfoDictionaryKey(CFBundleGetMainBundle(),
                                                                         CFSTR("CFBundleShortVersionString"))
                                  : nullptr;
    if (!version || CFGetTypeID(version) != CFStringGetTypeID())
        return kCantGet;
    return makeText(textOf(static_cast<CFStringRef>(version)), value);
}

/// The property that an object specifier of the application itself names; null for anything else.
const Property *propertyOf(const AppleEvent *event)
{
    OwnedDesc specifier, container, key;
    DescType form = 0;
    if (AEGetParamDesc(event, keyDirectObject, typeWildCard, specifier.out()) != noErr ||
        !AECheckIsRecord(specifier.get()))
        return nullptr;
    if (AEGetKeyDesc(specifier.get(), keyAEContainer, typeWildCard, container.out()) == noErr &&
        container->descriptorType != typeNull)
        return nullptr;
    if (AEGetKeyPtr(specifier.get(), keyAEKeyForm, typeEnumerated, nullptr, &form, sizeof form, nullptr) !=
            noErr ||
        AEGetKeyDesc(specifier.get(), keyAEKeyData, typeWildCard, key.out()) != noErr)
        return nullptr;
    std::string name;
    if (form == kFormUserProperty) {
        name = folded(textOf(key.get()));
    } else if (form == formPropertyID) {
        DescType code = 0;
        AEGetDescData(key.get(), &code, sizeof code);
        // A term of the language stands under its code.
        name = code == pName             ? "name"
               : code == pVersion        ? "version"
               : code == pIsFrontProcess ? "frontmost"
                                         : "";
    }
    const auto place = properties().find(name);
    return place == properties().end() ? nullptr : &place->second;
}

OSErr getData(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    const Property *property = propertyOf(event);
    if (!property)
        return kCantGet;
    OwnedDesc value;
    if (const OSErr error = property->getter(value.out(), property->context))
        return error;
    return reply->descriptorType == typeNull ? OSErr(noErr)
                                             : AEPutParamDesc(reply, keyDirectObject, value.get());
}

OSErr setData(const AppleEvent *event, AppleEvent *, SRefCon)
{
    const Property *property = propertyOf(event);
    OwnedDesc value;
    if (!property || !property->setter)
        return kCantSet;
    if (const OSErr error = AEGetParamDesc(event, keyAEData, typeWildCard, value.out()))
        return error;
    return property->setter(value.get(), property->context);
}

OSErr callSubroutine(const AppleEvent *event, AppleEvent *reply, SRefCon)
{
    OwnedDesc name, arguments, result;
    if (const OSErr error = AEGetParamDesc(event, kSubroutineName, typeUTF8Text, name.out()))
        return error;
    const auto place = commands().find(folded(textOf(name.get())));
    if (place == commands().end())
        return errAEEventNotHandled;
    if (AEGetParamDesc(event, keyDirectObject, typeAEList, arguments.out()) != noErr)
        AECreateList(nullptr, 0, false, arguments.out());
    if (const OSErr error = place->second.function(arguments.get(), result.out(), place->second.context))
        return error;
    if (reply->descriptorType == typeNull || result->descriptorType == typeNull)
        return noErr;
    return AEPutParamDesc(reply, keyDirectObject, result.get());
}

struct Handler {
    AEEventClass eventClass;
    AEEventID eventID;
    AEEventHandlerProcPtr function;
};
constexpr Handler kHandlers[] = {{kAECoreSuite, kAEGetData, getData},
                                 {kAECoreSuite, kAESetData, setData},
                                 {kSubroutineClass, kSubroutine, callSubroutine}};

}  // namespace

Boolean ScriptingInstallDictionary(void)
{
    for (const Handler &handler : kHandlers) {
        if (AEInstallEventHandler(handler.eventClass, handler.eventID, handler.function, 0, false) != noErr) {
            ScriptingRemoveDictionary();
            return false;
        }
    }
    properties().insert(
        {{"name", {copyName, nullptr, nullptr}}, {"version", {copyVersion, nullptr, nullptr}}});
    return true;
}

void ScriptingRemoveDictionary(void)
{
    for (const Handler &handler : kHandlers)
        AERemoveEventHandler(handler.eventClass, handler.eventID, handler.function, false);
    properties().clear();
    commands().clear();
}

Boolean ScriptingRegisterProperty(CFStringRef name, ScriptingPropertyGetter getter,
                                  ScriptingPropertySetter setter, void *context)
{
    if (!name || !getter)
        return false;
    properties()[folded(textOf(name))] = {getter, setter, context};
    return true;
}

Boolean ScriptingRegisterCommand(CFStringRef name, ScriptingCommand command, void *context)
{
    if (!name || !command)
        return false;
    commands()[folded(textOf(name))] = {command, context};
    return true;
}
