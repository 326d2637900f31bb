#include "platform/AppleEvents/private/Coercions.h"

#include <Carbon/AEHelpers.h>
#include <Carbon/MacMemory.h>

#include <cstdio>

namespace tarvik::ae {

namespace {

class Printer {
public:
    void desc(const AEDesc &desc)
    {
        const Items *held = itemsOf(&desc);
        if (!held)
            return value(desc);
        if (held->kind == Kind::list)
            return items(held->items, "[ ", " ]", false);
        if (held->kind == Kind::event) {
            code(static_cast<const Event *>(held)->eventClass);
            text_ += '\\';
            code(static_cast<const Event *>(held)->eventID);
        } else if (desc.descriptorType != typeAERecord) {
            code(desc.descriptorType);
        }
        items(held->items, "{ ", " }", true);
    }
    const std::string &text() const { return text_; }

private:
    void items(const std::vector<Item> &items, const char *open, const char *close, bool keyed)
    {
        text_ += open;
        for (size_t i = 0; i < items.size(); ++i) {
            if (i > 0)
                text_ += ", ";
            if (keyed) {
                code(items[i].key);
                text_ += ':';
            }
            desc(*items[i].desc.get());
        }
        text_ += close;
    }

    void value(const AEDesc &desc)
    {
        const std::string_view bytes = bytesOf(&desc);
        if (desc.descriptorType == typeNull) {
            text_ += "null()";
            return;
        }
        const auto known = isScalar(desc.descriptorType)
                               ? coerceScalar(desc.descriptorType, bytes, typeUTF8Text)
                               : std::nullopt;
        const bool isPlain =
            known && (desc.descriptorType == typeSInt32 || desc.descriptorType == typeBoolean ||
                      desc.descriptorType == typeTrue || desc.descriptorType == typeFalse);
        if (isPlain) {
            text_ += bytesOf(known->get());
            return;
        }
        code(desc.descriptorType);
        text_ += '(';
        contents(desc.descriptorType, bytes, known);
        text_ += ')';
    }

    void contents(DescType type, std::string_view bytes, const std::optional<OwnedDesc> &known)
    {
        const bool isURL = type == typeFileURL || type == typeApplicationURL;
        if (isURL || (known && textOf(type, bytes)))
            quoted(isURL ? bytes : bytesOf(known->get()), '"');
        else if (known)
            quoted(bytesOf(known->get()),
                   bytes.size() == sizeof(OSType) && coerceScalar(type, bytes, typeType) ? '\'' : '\0');
        else
            hexadecimal(bytes);
    }

    void code(OSType code)
    {
        const OwnedDesc desc = newValue(typeType, {reinterpret_cast<const char *>(&code), sizeof code});
        const auto letters = coerceScalar(typeType, bytesOf(desc.get()), typeUTF8Text);
        quoted(letters ? bytesOf(letters->get()) : "????", '\'');
    }

    void quoted(std::string_view text, char quote)
    {
        if (quote)
            text_ += quote;
        for (const char c : text) {
            if (c == '\n' || c == '\t')
                (text_ += '\\') += c == '\n' ? 'n' : 't';
            else if (uint8_t(c) < ' ' || c == 0x7F)
                (text_ += '\\') += {kDigits[uint8_t(c) >> 4], kDigits[uint8_t(c) & 15]};
            else if (quote && (c == quote || c == '\\'))
                (text_ += '\\') += c;
            else
                text_ += c;
        }
        if (quote)
            text_ += quote;
    }

    void hexadecimal(std::string_view bytes)
    {
        text_ += '$';
        for (const char c : bytes)
            text_ += {kDigits[uint8_t(c) >> 4], kDigits[uint8_t(c) & 15]};
        text_ += '$';
    }

    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text_;
};

}  // namespace

}  // namespace tarvik::ae

using namespace tarvik::ae;

OSStatus AEPrintDescToHandle(const AEDesc *desc, Handle *result)
{
    if (!desc || !result)
        return paramErr;
    *result = nullptr;
    return withMemory([&] {
        Printer printer;
        printer.desc(*desc);
        return PtrToHand(printer.text().c_str(), result, Size(printer.text().size()) + 1);
    });
}
