// Values as descriptors and back.
#include "private/Component.h"

#include <Carbon/AERegistry.h>
#include <Carbon/Files.h>

#include <algorithm>
#include <cstring>

namespace tarvik::osa {

namespace {

constexpr int kDeepest = 100;
// 1904-01-01 to 1970-01-01
constexpr int64_t kEpochDifference = 2082844800;

void check(OSErr error)
{
    if (error == memFullErr)
        raise(error::outOfMemory, "Out of memory.");
    if (error != noErr)
        raise(error, messageFor(error));
}

void make(DescType type, const void *data, size_t size, AEDesc *out)
{
    check(AECreateDesc(type, data, Size(size), out));
}

std::string fileURL(const std::string &path)
{
    std::string url = "file://";
    char hex[4];
    for (const char c : path) {
        if (std::isalnum(uint8_t(c)) || std::strchr("/-_.~", c)) {
            url += c;
        } else {
            std::snprintf(hex, sizeof hex, "%%%02X", uint8_t(c));
            url += hex;
        }
    }
    return url;
}

std::optional<std::string> pathOfURL(std::string_view url)
{
    if (!url.starts_with("file://"))
        return std::nullopt;
    url.remove_prefix(7);
    if (url.starts_with("localhost"))
        url.remove_prefix(9);
    std::string path;
    for (size_t i = 0; i < url.size(); ++i) {
        unsigned byte = 0;
        if (url[i] == '%' && i + 2 < url.size() && std::isxdigit(uint8_t(url[i + 1])) &&
            std::isxdigit(uint8_t(url[i + 2]))) {
            std::sscanf(std::string(url.substr(i + 1, 2)).c_str(), "%2x", &byte);
            path += char(byte);
            i += 2;
        } else {
            path += url[i];
        }
    }
    return path.find('\0') == std::string::npos ? std::optional(path) : std::nullopt;
}

void listDescriptor(Machine &machine, const std::vector<Value> &items, AEDesc *out, int depth)
{
    check(AECreateList(nullptr, 0, false, out));
    for (const Value &item : items) {
        Descriptor inner;
        toDescriptor(machine, item, &inner, depth + 1);
        check(AEPutDesc(out, 0, &inner));
    }
}

void recordDescriptor(Machine &machine, const Record *record, AEDesc *out, int depth)
{
    check(AECreateList(nullptr, 0, true, out));
    std::vector<Value> others;
    for (const auto &[name, value] : record->fields) {
        if (const uint32_t keyword = propertyCode(name, machine.heap.names)) {
            Descriptor inner;
            toDescriptor(machine, value, &inner, depth + 1);
            check(AEPutParamDesc(out, keyword, &inner));
        } else {
            others.push_back(machine.heap.text(machine.heap.names.spelling(name)));
            others.push_back(value);
        }
    }
    if (!others.empty()) {
        Descriptor list;
        listDescriptor(machine, others, &list, depth + 1);
        check(AEPutParamDesc(out, keyASUserRecordFields, &list));
    }
}

/// `item 2 of x` for an application, as an object specifier.
void specifierDescriptor(Machine &machine, const Reference *reference, AEDesc *out, int depth)
{
    check(AECreateList(nullptr, 0, true, out));
    const Specifier &spec = reference->specifier;
    DescType want = spec.code, form = formAbsolutePosition;
    Descriptor key, container;
    if (spec.form == Specifier::property) {
        want = cProperty;
        if (const uint32_t known = propertyCode(spec.name, machine.heap.names)) {
            form = formPropertyID;
            make(typeType, &known, 4, &key);
        } else {
            form = code("usrp");
            const std::string &name = machine.heap.names.spelling(spec.name);
            make(typeChar, name.data(), name.size(), &key);
        }
    } else if (spec.form == Specifier::named || spec.form == Specifier::id || spec.form == Specifier::index) {
        form = spec.form == Specifier::named ? DescType(formName)
               : spec.form == Specifier::id  ? DescType(formUniqueID)
                                             : DescType(formAbsolutePosition);
        toDescriptor(machine, reference->from, &key, depth + 1);
    } else {
        const DescType ordinal = spec.form == Specifier::every    ? code("all ")
                                 : spec.form == Specifier::some   ? code("any ")
                                 : spec.form == Specifier::middle ? code("midd")
                                                                  : code("all ");
        make(code("abso"), &ordinal, 4, &key);
    }
    if (reference->container.is(Kind::reference))
        specifierDescriptor(machine, reference->container.reference(), &container, depth + 1);
    if (depth > kDeepest)
        raise(error::stackOverflow, "Stack overflow.");
    check(AEPutParamPtr(out, keyAEDesiredClass, typeType, &want, 4));
    check(AEPutParamPtr(out, keyAEKeyForm, typeEnumerated, &form, 4));
    check(AEPutParamDesc(out, keyAEKeyData, &key));
    check(AEPutParamDesc(out, keyAEContainer, &container));
    out->descriptorType = typeObjectSpecifier;
}

}  // namespace

std::string bytesOf(const AEDesc *desc)
{
    std::string bytes(size_t(AEGetDescDataSize(desc)), '\0');
    AEGetDescData(desc, bytes.data(), Size(bytes.size()));
    return bytes;
}

std::string Descriptor::bytes() const { return bytesOf(&desc_); }

OSErr makeText(std::string_view utf8, DescType type, AEDesc *out)
{
    if (type == typeWildCard || type == typeChar)
        return AECreateDesc(typeChar, utf8.data(), Size(utf8.size()), out);
    Descriptor text;
    if (const OSErr error = AECreateDesc(typeUTF8Text, utf8.data(), Size(utf8.size()), &text))
        return error;
    return AECoerceDesc(&text, type, out);
}

std::optional<std::string> textOfDescriptor(const AEDesc *desc)
{
    switch (desc->descriptorType) {
    case typeChar:
    case typeUTF8Text: return bytesOf(desc);
    case typeUnicodeText:
    case typeUTF16ExternalRepresentation:
    case typeIntlText: {
        Descriptor text;
        if (AECoerceDesc(desc, typeUTF8Text, &text) != noErr)
            return std::nullopt;
        return text.bytes();
    }
    default: return std::nullopt;
    }
}

void toDescriptor(Machine &machine, const Value &value, AEDesc *out, int depth)
{
    AEInitializeDesc(out);
    if (depth > kDeepest)
        raise(error::stackOverflow, "Stack overflow.");
    switch (value.kind()) {
    case Kind::none: return;
    case Kind::missing: {
        const uint32_t code = type::missing;
        return make(typeType, &code, 4, out);
    }
    case Kind::boolean: {
        const Boolean truth = value.boolean();
        return make(typeBoolean, &truth, 1, out);
    }
    case Kind::integer: {
        const int64_t whole = value.integer();
        const int32_t number = int32_t(whole);
        if (number == whole)
            return make(typeSInt32, &number, 4, out);
        return make(typeSInt64, &whole, 8, out);
    }
    case Kind::real: {
        const double number = value.real();
        return make(typeIEEE64BitFloatingPoint, &number, 8, out);
    }
    case Kind::type: {
        const uint32_t code = value.code();
        return make(typeType, &code, 4, out);
    }
    case Kind::constant: {
        const uint32_t code = value.code();
        return make(typeEnumerated, &code, 4, out);
    }
    case Kind::text: {
        const std::string text = utf8(value);
        return make(typeChar, text.data(), text.size(), out);
    }
    case Kind::list: return listDescriptor(machine, value.list()->items, out, depth);
    case Kind::record: return recordDescriptor(machine, value.record(), out, depth);
    case Kind::date: {
        const int64_t seconds = value.date()->seconds + kEpochDifference;
        return make(typeLongDateTime, &seconds, 8, out);
    }
    case Kind::file: {
        const std::string url = fileURL(value.file()->path);
        make(typeFileURL, url.data(), url.size(), out);
        if (value.file()->isAlias) {
            Descriptor alias;
            if (AECoerceDesc(out, typeAlias, &alias) == noErr) {
                AEDisposeDesc(out);
                *out = alias.release();
            }
        }
        return;
    }
    case Kind::data:
        return make(value.data()->type, value.data()->bytes.data(), value.data()->bytes.size(), out);
    case Kind::application:
        return make(code("apnm"), value.application()->name.data(), value.application()->name.size(), out);
    case Kind::script: {
        const ScriptObject *script = value.script();
        const std::string bytes = stored(machine, script->prototype->program->source, &value, false);
        return make(typeOSAGenericStorage, bytes.data(), bytes.size(), out);
    }
    case Kind::reference: {
        const Value *root = &value;
        while (root->is(Kind::reference))
            root = &root->reference()->container;
        if (root->is(Kind::application))
            return specifierDescriptor(machine, value.reference(), out, depth);
        return toDescriptor(machine, machine.contentsOf(value), out, depth + 1);
    }
    default: machine.cantMake(value, "data");
    }
}

Value fromDescriptor(Machine &machine, const AEDesc *desc, int depth)
{
    if (depth > kDeepest)
        raise(error::stackOverflow, "Stack overflow.");
    Heap &heap = machine.heap;
    const auto number = [&](DescType type, auto initial) {
        Descriptor coerced;
        check(AECoerceDesc(desc, type, &coerced));
        check(AEGetDescDataSize(&coerced) == Size(sizeof initial) ? OSErr(noErr) : OSErr(errAECoercionFail));
        AEGetDescData(&coerced, &initial, sizeof initial);
        return initial;
    };
    const auto four = [&]() -> uint32_t {
        uint32_t code = 0;
        AEGetDescData(desc, &code, 4);
        return code;
    };
    switch (desc->descriptorType) {
    case typeNull: return {};
    case typeTrue: return Value::of(true);
    case typeFalse: return Value::of(false);
    case typeBoolean: {
        char truth = 0;
        AEGetDescData(desc, &truth, 1);
        return Value::of(truth != 0);
    }
    case typeSInt16:
    case typeUInt16:
    case typeSInt32:
    case typeUInt32:
    case typeSInt64:
    case typeUInt64: {
        const double value = number(typeIEEE64BitFloatingPoint, double());
        return value >= -2147483648.0 && value <= 2147483647.0 ? Value::of(int64_t(value)) : Value::of(value);
    }
    case typeIEEE32BitFloatingPoint:
    case typeIEEE64BitFloatingPoint: return Value::of(number(typeIEEE64BitFloatingPoint, double()));
    case typeType:
    case typeKeyword:
    case typeProperty: return four() == type::missing ? Value::missing() : Value::type(four());
    case typeEnumerated: return Value::constant(four());
    case typeLongDateTime: {
        int64_t seconds = 0;
        if (AEGetDescDataSize(desc) != 8)
            break;
        AEGetDescData(desc, &seconds, 8);
        return heap.date(std::clamp(seconds, -(int64_t(1) << 50), int64_t(1) << 50) - kEpochDifference);
    }
    case typeAEList: {
        long count = 0;
        check(AECountItems(desc, &count));
        std::vector<Value> items;
        for (long i = 1; i <= count; ++i) {
            Descriptor item;
            AEKeyword keyword;
            check(AEGetNthDesc(desc, i, typeWildCard, &keyword, &item));
            items.push_back(fromDescriptor(machine, &item, depth + 1));
            if (!items.back())
                items.back() = Value::missing();
        }
        return heap.list(std::move(items));
    }
    case typeFileURL:
        if (const auto path = pathOfURL(bytesOf(desc)))
            return heap.file(false, *path);
        break;
    case typeAlias:
    case typeFSRef: {
        Descriptor url;
        if (AECoerceDesc(desc, typeFileURL, &url) == noErr) {
            if (const auto path = pathOfURL(url.bytes()))
                return desc->descriptorType == typeAlias ? machine.alias(*path) : heap.file(false, *path);
        }
        break;
    }
    case code("apnm"): return heap.application(bytesOf(desc));
    // A script from outside stays data until somebody runs it: to make one runs what its properties begin with.
    case typeOSAGenericStorage: return heap.data(typeOSAGenericStorage, bytesOf(desc));
    default:
        if (auto text = textOfDescriptor(desc))
            return heap.text(*text);
        if (AECheckIsRecord(desc)) {
            Value record = heap.record();
            long count = 0;
            check(AECountItems(desc, &count));
            for (long i = 1; i <= count; ++i) {
                Descriptor item;
                AEKeyword keyword = 0;
                check(AEGetNthDesc(desc, i, typeWildCard, &keyword, &item));
                Value value = fromDescriptor(machine, &item, depth + 1);
                if (!value)
                    value = Value::missing();
                if (keyword == keyASUserRecordFields && value.is(Kind::list)) {
                    const auto &pairs = value.list()->items;
                    for (size_t k = 0; k + 1 < pairs.size(); k += 2) {
                        if (pairs[k].is(Kind::text))
                            record.record()->set(heap.names.of(utf8(pairs[k])), pairs[k + 1]);
                    }
                } else {
                    record.record()->set(propertyOf(keyword, heap.names), value);
                }
            }
            return record;
        }
    }
    return heap.data(desc->descriptorType, bytesOf(desc));
}

}  // namespace tarvik::osa
