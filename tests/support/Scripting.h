// Scripts run through the scripting component, their result as one line of text.
#pragma once
#include <Carbon/OSA.h>

#include <string>
#include <string_view>

class Scripting {
public:
    Scripting() : component_(OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype)) {}
    ~Scripting() { CloseComponent(component_); }
    ComponentInstance get() const { return component_; }

    /// What the script gives, as a script would write it, or "error NUMBER: MESSAGE [START,END]".
    std::string run(std::string_view source, SInt32 mode = kOSAModeNull)
    {
        AEDesc desc;
        AECreateDesc(typeUTF8Text, source.data(), Size(source.size()), &desc);
        OSAID script = kOSANullScript, value = kOSANullScript;
        OSAError error = OSACompile(component_, &desc, kOSAModeNull, &script);
        AEDisposeDesc(&desc);
        if (!error)
            error = OSAExecute(component_, script, kOSANullScript, kOSAModeNull, &value);
        std::string text;
        if (error == errOSAScriptError)
            text = "error " + part(kOSAErrorNumber) + ": " + part(kOSAErrorMessage);
        else if (error)
            text = "status " + std::to_string(error);
        else if (value)
            text = display(value, mode);
        OSADispose(component_, script);
        OSADispose(component_, value);
        return text;
    }
    std::string display(OSAID value, SInt32 mode = kOSAModeNull)
    {
        AEDesc desc;
        OSADisplay(component_, value, typeUTF8Text, mode, &desc);
        return taken(desc);
    }
    /// What the latest error says.
    std::string part(OSType selector)
    {
        AEDesc desc;
        if (OSAScriptError(component_, selector, typeUTF8Text, &desc) != noErr)
            return "";
        return taken(desc);
    }
    /// Where it was: the characters of the source.
    std::string place(std::string_view source)
    {
        AEDesc range;
        SInt32 start = 0, end = 0;
        OSAScriptError(component_, kOSAErrorRange, typeOSAErrorRange, &range);
        AEGetParamPtr(&range, keyOSASourceStart, typeSInt32, nullptr, &start, sizeof start, nullptr);
        AEGetParamPtr(&range, keyOSASourceEnd, typeSInt32, nullptr, &end, sizeof end, nullptr);
        AEDisposeDesc(&range);
        // Characters, not bytes.
        const auto byte = [&](SInt32 character) {
            size_t at = 0;
            while (at < source.size() && (character > 0 || (source[at] & 0xC0) == 0x80))
                character -= (source[at++] & 0xC0) != 0x80;
            return at;
        };
        return std::string(source.substr(byte(start), byte(end) - byte(start)));
    }
    static std::string taken(AEDesc &desc)
    {
        std::string bytes(size_t(AEGetDescDataSize(&desc)), '\0');
        AEGetDescData(&desc, bytes.data(), Size(bytes.size()));
        AEDisposeDesc(&desc);
        return bytes;
    }

private:
    ComponentInstance component_;
};
