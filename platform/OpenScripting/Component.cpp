#include "private/Component.h"

#include "private/Parser.h"

#include <Carbon/AERegistry.h>
#include <Carbon/AppleEvents.h>

#include <algorithm>
#include <new>

using namespace tarvik::osa;

ComponentInstanceRecord::ComponentInstanceRecord()
    : vocabulary(heap.names), host(*this), machine(heap, host, vocabulary)
{
}

ComponentInstanceRecord::~ComponentInstanceRecord()
{
    error = {0};
    entries.clear();
}

OSAID ComponentInstanceRecord::add(Value value)
{
    if (!value)
        return kOSANullScript;
    Entry entry;
    entry.value = std::move(value);
    entries.emplace(next, std::move(entry));
    return next++;
}

ComponentInstanceRecord::Entry *ComponentInstanceRecord::find(OSAID id)
{
    const auto place = entries.find(id);
    return place == entries.end() ? nullptr : &place->second;
}

void ComponentInstanceRecord::keep(const ScriptError &failure, const std::string *source)
{
    error = failure;
    errorStart = errorEnd = 0;
    if (!source || !failure.located)
        return;
    // Bytes of the source into characters.
    const auto characters = [&](uint32_t bytes) {
        const auto end = source->begin() + std::min<size_t>(bytes, source->size());
        return int32_t(std::count_if(source->begin(), end, [](char c) { return (c & 0xC0) != 0x80; }));
    };
    errorStart = characters(failure.range.from);
    errorEnd = characters(failure.range.to);
}

OSAID ComponentInstanceRecord::compile(const std::string &source, SInt32 modeFlags, OSAID context)
{
    Entry *continued = modeFlags & kOSAModeAugmentContext ? find(context) : nullptr;
    const Tree tree = parse(source, heap, vocabulary);
    const bool keeps = modeFlags & (kOSAModeCompileIntoContext | kOSAModeAugmentContext);
    Program *program =
        tarvik::osa::compile(tree, source, heap, continued ? continued->program : nullptr, keeps);
    if (continued) {
        continued->program->release();
        continued->program = program;
        machine.continueContext(continued->value, program);
        return context;
    }
    Entry entry;
    entry.program = program;
    entry.isContext = keeps;
    entry.hidesSource = modeFlags & kOSAModePreventGetSource;
    entry.value = machine.instantiate(program);
    entries.emplace(next, std::move(entry));
    return next++;
}

namespace {

/// Runs a body; what it throws becomes the result.
template <class Body>
OSAError guarded(ComponentInstance component, const std::string *source, Body body)
{
    if (!component)
        return badComponentInstance;
    try {
        return body();
    } catch (const ScriptError &failure) {
        component->keep(failure, source);
        return errOSAScriptError;
    } catch (const OSAError &error) {
        component->keep({error, messageFor(error)}, nullptr);
        return error;
    } catch (const std::bad_alloc &) {
        component->keep({memFullErr, "Out of memory."}, nullptr);
        return memFullErr;
    }
}

const std::string *sourceOf(ComponentInstance component, OSAID id)
{
    const auto *entry = component ? component->find(id) : nullptr;
    return entry && entry->program ? &entry->program->source : nullptr;
}

/// The handler of a script that an event calls, its arguments.
Name handlerFor(Machine &machine, const AppleEvent *event, std::vector<Value> &arguments)
{
    DescType eventClass = 0, eventID = 0, actual;
    Size size;
    if (AEGetAttributePtr(event, keyEventClassAttr, typeType, &actual, &eventClass, 4, &size) != noErr ||
        AEGetAttributePtr(event, keyEventIDAttr, typeType, &actual, &eventID, 4, &size) != noErr)
        throw OSAError(errAENotAppleEvent);
    Descriptor direct;
    if (AEGetParamDesc(event, keyDirectObject, typeWildCard, &direct) == noErr) {
        Value value = fromDescriptor(machine, &direct);
        const bool subroutine = eventClass == code("ascr") && eventID == code("psbr");
        if (subroutine && value.is(Kind::list))
            arguments = value.list()->items;
        else if (value)
            arguments.push_back(value);
    }
    if (eventClass == kCoreEventClass) {
        switch (eventID) {
        case kAEOpenApplication: return Word::run;
        case kAEOpenDocuments: return Word::open;
        case kAEReopenApplication: return Word::reopen;
        case kAEQuitApplication: return Word::quit;
        default: break;
        }
    }
    if (eventClass == code("ascr") && eventID == code("psbr")) {
        Descriptor name;
        if (AEGetParamDesc(event, code("snam"), typeUTF8Text, &name) == noErr)
            return machine.heap.names.of(name.bytes());
    }
    return machine.heap.names.of("«event " + fourCharacters(eventClass) + fourCharacters(eventID) + "»");
}

OSAError executeEvent(ComponentInstance component, const AppleEvent *event, OSAID contextID, OSAID *result)
{
    auto *entry = component->find(contextID);
    if (!entry || !entry->value.is(Kind::script))
        return errOSAInvalidID;
    if (!event)
        return paramErr;
    std::vector<Value> arguments;
    const Name handler = handlerFor(component->machine, event, arguments);
    if (!component->machine.responds(entry->value, handler))
        return errAEEventNotHandled;
    const Value script = entry->value;
    *result = component->add(component->machine.call(script, handler, std::move(arguments)));
    return noErr;
}

OSAError text(std::string_view utf8, DescType type, AEDesc *out)
{
    return makeText(utf8, type ? type : DescType(typeChar), out);
}

}  // namespace

ComponentInstance OpenDefaultComponent(OSType componentType, OSType componentSubType)
{
    if (componentType != kOSAComponentType ||
        (componentSubType != kAppleScriptSubtype && componentSubType != kOSAGenericScriptingComponentSubtype))
        return nullptr;
    try {
        return new ComponentInstanceRecord;
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

OSErr CloseComponent(ComponentInstance component)
{
    if (!component)
        return OSErr(badComponentInstance);
    delete component;
    return noErr;
}

OSAError OSACompile(ComponentInstance component, const AEDesc *sourceData, SInt32 modeFlags, OSAID *scriptID)
{
    std::string source;
    return guarded(component, &source, [&]() -> OSAError {
        if (!sourceData || !scriptID)
            return paramErr;
        const auto text = textOfDescriptor(sourceData);
        if (!text)
            return errOSABadStorageType;
        source = *text;
        if (modeFlags & kOSAModeAugmentContext &&
            !(component->find(*scriptID) && component->find(*scriptID)->program))
            return errOSAInvalidID;
        const OSAID made = component->compile(source, modeFlags, *scriptID);
        if (made != *scriptID && *scriptID != kOSANullScript)
            component->entries.erase(*scriptID);
        *scriptID = made;
        return noErr;
    });
}

OSAError OSALoad(ComponentInstance component, const AEDesc *scriptData, SInt32 modeFlags, OSAID *scriptID)
{
    std::string source;
    return guarded(component, &source, [&]() -> OSAError {
        if (!scriptData || !scriptID)
            return paramErr;
        *scriptID = kOSANullScript;
        const Stored script = loaded(bytesOf(scriptData));
        source = script.source;
        const OSAID made =
            component->compile(script.source, modeFlags & ~kOSAModeAugmentContext, kOSANullScript);
        auto *entry = component->find(made);
        entry->hidesSource = entry->hidesSource || script.hidesSource;
        try {
            restoreState(component->machine, entry->value, script.state);
        } catch (...) {
            component->entries.erase(made);
            throw;
        }
        *scriptID = made;
        return noErr;
    });
}

OSAError OSAStore(ComponentInstance component, OSAID scriptID, DescType desiredType, SInt32 modeFlags,
                  AEDesc *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!result)
            return paramErr;
        AEInitializeDesc(result);
        auto *entry = component->find(scriptID);
        if (!entry)
            return errOSAInvalidID;
        if (desiredType != typeOSAGenericStorage && desiredType != typeAppleScript &&
            desiredType != typeWildCard)
            return errOSABadStorageType;
        if (!entry->program)
            return errOSABadStorageType;
        const std::string bytes = stored(component->machine, entry->program->source, &entry->value,
                                         entry->hidesSource || modeFlags & kOSAModePreventGetSource);
        return AECreateDesc(typeOSAGenericStorage, bytes.data(), Size(bytes.size()), result);
    });
}

OSAError OSAExecute(ComponentInstance component, OSAID scriptID, OSAID, SInt32, OSAID *result)
{
    return guarded(component, sourceOf(component, scriptID), [&]() -> OSAError {
        if (!result)
            return paramErr;
        *result = kOSANullScript;
        auto *entry = component->find(scriptID);
        if (!entry || !entry->value.is(Kind::script))
            return errOSAInvalidID;
        const Value script = entry->value;
        *result = component->add(component->machine.call(script, Word::run, {}));
        component->heap.collectSometimes();
        return noErr;
    });
}

OSAError OSACompileExecute(ComponentInstance component, const AEDesc *source, OSAID contextID,
                           SInt32 modeFlags, OSAID *result)
{
    OSAID script = modeFlags & kOSAModeAugmentContext ? contextID : OSAID(kOSANullScript);
    OSAError error = OSACompile(component, source, modeFlags, &script);
    if (error != noErr)
        return error;
    error = OSAExecute(component, script, contextID, modeFlags, result);
    if (script != contextID)
        OSADispose(component, script);
    return error;
}

OSAError OSALoadExecute(ComponentInstance component, const AEDesc *scriptData, OSAID contextID,
                        SInt32 modeFlags, OSAID *result)
{
    OSAID script = kOSANullScript;
    OSAError error = OSALoad(component, scriptData, modeFlags, &script);
    if (error != noErr)
        return error;
    error = OSAExecute(component, script, contextID, modeFlags, result);
    OSADispose(component, script);
    return error;
}

OSAError OSADoScript(ComponentInstance component, const AEDesc *source, OSAID contextID, DescType desiredType,
                     SInt32 modeFlags, AEDesc *resultingText)
{
    if (!resultingText)
        return paramErr;
    AEInitializeDesc(resultingText);
    OSAID result = kOSANullScript;
    OSAError error =
        OSACompileExecute(component, source, contextID, modeFlags & ~kOSAModeDisplayForHumans, &result);
    if (error == errOSAScriptError)
        OSAScriptError(component, kOSAErrorMessage, desiredType, resultingText);
    if (error == noErr && result != kOSANullScript) {
        error = OSADisplay(component, result, desiredType, modeFlags, resultingText);
        OSADispose(component, result);
    }
    return error;
}

OSAError OSAExecuteEvent(ComponentInstance component, const AppleEvent *event, OSAID contextID, SInt32,
                         OSAID *result)
{
    return guarded(component, sourceOf(component, contextID), [&]() -> OSAError {
        if (!result)
            return paramErr;
        *result = kOSANullScript;
        return executeEvent(component, event, contextID, result);
    });
}

OSAError OSADoEvent(ComponentInstance component, const AppleEvent *event, OSAID contextID, SInt32 modeFlags,
                    AppleEvent *reply)
{
    OSAID result = kOSANullScript;
    const OSAError error = OSAExecuteEvent(component, event, contextID, modeFlags, &result);
    const bool answers = reply && reply->descriptorType != typeNull;
    if (error == errOSAScriptError && answers) {
        AEDesc part;
        if (OSAScriptError(component, kOSAErrorNumber, typeSInt32, &part) == noErr) {
            AEPutParamDesc(reply, keyErrorNumber, &part);
            AEDisposeDesc(&part);
        }
        if (OSAScriptError(component, kOSAErrorMessage, typeChar, &part) == noErr) {
            AEPutParamDesc(reply, keyErrorString, &part);
            AEDisposeDesc(&part);
        }
    }
    if (error == noErr && result != kOSANullScript) {
        AEDesc value;
        if (answers && OSACoerceToDesc(component, result, typeWildCard, kOSAModeNull, &value) == noErr) {
            AEPutParamDesc(reply, keyDirectObject, &value);
            AEDisposeDesc(&value);
        }
        OSADispose(component, result);
    }
    return error;
}

OSAError OSAMakeContext(ComponentInstance component, const AEDesc *, OSAID, OSAID *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!result)
            return paramErr;
        *result = component->compile("", kOSAModeCompileIntoContext, kOSANullScript);
        return noErr;
    });
}

OSAError OSADisplay(ComponentInstance component, OSAID id, DescType desiredType, SInt32 modeFlags,
                    AEDesc *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!result)
            return paramErr;
        AEInitializeDesc(result);
        auto *entry = component->find(id);
        if (!entry)
            return errOSAInvalidID;
        Machine &machine = component->machine;
        return text(modeFlags & kOSAModeDisplayForHumans ? displayForPeople(machine, entry->value)
                                                         : machine.display(entry->value),
                    desiredType, result);
    });
}

OSAError OSAGetSource(ComponentInstance component, OSAID id, DescType desiredType, AEDesc *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!result)
            return paramErr;
        AEInitializeDesc(result);
        auto *entry = component->find(id);
        if (!entry)
            return errOSAInvalidID;
        if (entry->hidesSource)
            return errOSASourceNotAvailable;
        return text(entry->program ? entry->program->source : component->machine.display(entry->value),
                    desiredType, result);
    });
}

OSAError OSAScriptError(ComponentInstance component, OSType selector, DescType desiredType, AEDesc *result)
{
    if (!component)
        return badComponentInstance;
    if (!result)
        return paramErr;
    AEInitializeDesc(result);
    const ScriptError error = component->error;
    const auto value = [&](const Value &held) -> OSAError {
        try {
            Descriptor desc;
            toDescriptor(component->machine, held, &desc);
            return desiredType == typeWildCard ? (*result = desc.release(), OSAError(noErr))
                                               : OSAError(AECoerceDesc(&desc, desiredType, result));
        } catch (const ScriptError &) {
            return errAECoercionFail;
        }
    };
    switch (selector) {
    case kOSAErrorNumber: return value(Value::of(int64_t(error.number)));
    case kOSAErrorMessage:
    case kOSAErrorBriefMessage: return text(error.message, desiredType, result);
    case kOSAErrorApp: return text(component->host.programName(), desiredType, result);
    case kOSAErrorPartialResult: return error.partial ? value(error.partial) : OSAError(errAEDescNotFound);
    case kOSAErrorOffendingObject:
        return error.offending ? value(error.offending) : OSAError(errAEDescNotFound);
    case kOSAErrorRange: {
        OSErr failure = AECreateList(nullptr, 0, true, result);
        const SInt32 start = component->errorStart, end = component->errorEnd;
        if (!failure)
            failure = AEPutParamPtr(result, keyOSASourceStart, typeSInt32, &start, sizeof start);
        if (!failure)
            failure = AEPutParamPtr(result, keyOSASourceEnd, typeSInt32, &end, sizeof end);
        if (!failure && desiredType != typeAERecord)
            result->descriptorType = typeOSAErrorRange;
        return failure;
    }
    default: return errOSABadSelector;
    }
}

OSAError OSACoerceToDesc(ComponentInstance component, OSAID id, DescType desiredType, SInt32, AEDesc *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!result)
            return paramErr;
        AEInitializeDesc(result);
        auto *entry = component->find(id);
        if (!entry)
            return errOSAInvalidID;
        Descriptor desc;
        toDescriptor(component->machine, entry->value, &desc);
        if (desiredType == typeWildCard) {
            *result = desc.release();
            return noErr;
        }
        return AECoerceDesc(&desc, desiredType, result);
    });
}

OSAError OSACoerceFromDesc(ComponentInstance component, const AEDesc *data, SInt32, OSAID *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!data || !result)
            return paramErr;
        *result = component->add(fromDescriptor(component->machine, data));
        return noErr;
    });
}

OSAError OSACopyID(ComponentInstance component, OSAID from, OSAID *to)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        if (!to)
            return paramErr;
        auto *entry = component->find(from);
        if (!entry)
            return errOSAInvalidID;
        ComponentInstanceRecord::Entry copy;
        copy.value = component->machine.copied(entry->value);
        if ((copy.program = entry->program))
            copy.program->retain();
        copy.isContext = entry->isContext;
        copy.hidesSource = entry->hidesSource;
        component->entries.emplace(component->next, std::move(copy));
        *to = component->next++;
        return noErr;
    });
}

OSAError OSADispose(ComponentInstance component, OSAID id)
{
    if (!component)
        return badComponentInstance;
    if (id == kOSANullScript)
        return noErr;
    if (!component->entries.erase(id))
        return errOSAInvalidID;
    component->heap.collectSometimes();
    return noErr;
}

OSAError OSAGetScriptInfo(ComponentInstance component, OSAID id, OSType selector, long *result)
{
    return guarded(component, nullptr, [&]() -> OSAError {
        auto *entry = component->find(id);
        if (!entry)
            return errOSAInvalidID;
        if (!result)
            return paramErr;
        switch (selector) {
        case kOSAScriptIsTypeCompiledScript: *result = entry->program && !entry->isContext; return noErr;
        case kOSAScriptIsTypeScriptContext: *result = entry->program && entry->isContext; return noErr;
        case kOSAScriptIsTypeScriptValue: *result = !entry->program; return noErr;
        case kOSACanGetSource: *result = !entry->hidesSource; return noErr;
        case kOSAScriptIsModified: *result = 0; return noErr;
        case kOSAScriptBestType: {
            Descriptor desc;
            toDescriptor(component->machine, entry->value, &desc);
            *result = long((&desc)->descriptorType);
            return noErr;
        }
        default: return errOSABadSelector;
        }
    });
}

OSAError OSAScriptingComponentName(ComponentInstance component, AEDesc *result)
{
    if (!component)
        return badComponentInstance;
    return result ? OSAError(text("AppleScript", typeChar, result)) : OSAError(paramErr);
}

OSAError OSASetActiveProc(ComponentInstance component, OSAActiveUPP active, SRefCon refCon)
{
    if (!component)
        return badComponentInstance;
    component->active = active;
    component->activeRefCon = refCon;
    return noErr;
}

OSAError OSAGetActiveProc(ComponentInstance component, OSAActiveUPP *active, SRefCon *refCon)
{
    if (!component)
        return badComponentInstance;
    if (active)
        *active = component->active;
    if (refCon)
        *refCon = component->activeRefCon;
    return noErr;
}
