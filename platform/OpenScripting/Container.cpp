// A compiled script as data:
//
//     "TVSCRIPT"  version (u32)  flags (u32)  length of the source (u32)  length of the state (u32)  check (u64)
//     the source, UTF-8
//     the state: the properties' values as a flattened record, or nothing
//
// Numbers are little-endian; the check is FNV-1a over everything behind it. The code itself is never stored: it is compiled from the
// source when it is loaded, so that no data from outside reaches the machine unchecked.
#include "private/Component.h"

#include <cstring>

namespace tarvik::osa {

namespace {

constexpr std::string_view kMagic = "TVSCRIPT";
constexpr uint32_t kVersion = 1, kHidesSource = 1;
constexpr size_t kHeaderSize = 32;

uint64_t checkOf(std::string_view bytes)
{
    uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes)
        hash = (hash ^ uint8_t(byte)) * 0x100000001B3;
    return hash;
}

void put(std::string &out, uint64_t number, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out += char(number >> (8 * i));
}

uint64_t take(std::string_view bytes, size_t at, int count)
{
    uint64_t number = 0;
    for (int i = count - 1; i >= 0; --i)
        number = number << 8 | uint8_t(bytes[at + size_t(i)]);
    return number;
}

/// Values that are plain data live on in a stored script.
bool isData(const Value &value, int depth)
{
    switch (value.kind()) {
    case Kind::missing:
    case Kind::boolean:
    case Kind::integer:
    case Kind::real:
    case Kind::type:
    case Kind::constant:
    case Kind::text:
    case Kind::date:
    case Kind::file:
    case Kind::data: return true;
    case Kind::list:
        for (const Value &item : value.list()->items) {
            if (depth > 50 || !isData(item, depth + 1))
                return false;
        }
        return true;
    case Kind::record:
        for (const auto &[name, field] : value.record()->fields) {
            if (depth > 50 || !isData(field, depth + 1))
                return false;
        }
        return true;
    default: return false;
    }
}

std::string state(Machine &machine, const Value &root)
{
    Value values = machine.heap.record();
    const ScriptObject *script = root.script();
    for (size_t i = 0; i < script->slots.size(); ++i) {
        const Name name = script->prototype->slots[i];
        if (name && isData(script->slots[i], 0))
            values.record()->set(name, script->slots[i]);
    }
    if (values.record()->fields.empty())
        return "";
    // By turns name and value, so that no name becomes a keyword.
    Value pairs = machine.heap.list();
    for (const auto &[name, value] : values.record()->fields) {
        pairs.list()->items.push_back(machine.heap.text(machine.heap.names.spelling(name)));
        pairs.list()->items.push_back(value);
    }
    Descriptor desc;
    toDescriptor(machine, pairs, &desc);
    std::string bytes(size_t(AESizeOfFlattenedDesc(&desc)), '\0');
    Size size = 0;
    if (AEFlattenDesc(&desc, bytes.data(), Size(bytes.size()), &size) != noErr)
        return "";
    return bytes;
}

}  // namespace

std::string stored(Machine &machine, const std::string &source, const Value *root, bool hidesSource)
{
    std::string body;
    const std::string properties = root && root->is(Kind::script) ? state(machine, *root) : "";
    body = source + properties;
    std::string out(kMagic);
    put(out, kVersion, 4);
    put(out, hidesSource ? kHidesSource : 0, 4);
    put(out, source.size(), 4);
    put(out, properties.size(), 4);
    put(out, checkOf(body), 8);
    return out + body;
}

Stored loaded(std::string_view bytes)
{
    Stored script;
    if (!bytes.starts_with(kMagic)) {
        Descriptor text;
        // UTF-16 says so with its byte order mark.
        if (bytes.size() >= 2 && (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))) {
            if (AECreateDesc(typeUTF16ExternalRepresentation, bytes.data(), Size(bytes.size()), &text) !=
                noErr)
                throw OSAError(memFullErr);
            const auto source = textOfDescriptor(&text);
            if (!source)
                throw OSAError(errOSABadStorageType);
            script.source = *source;
        } else {
            if (bytes.find('\0') != std::string_view::npos)
                throw OSAError(errOSABadStorageType);
            script.source = bytes;
        }
        return script;
    }
    if (bytes.size() < kHeaderSize)
        throw OSAError(errOSACorruptData);
    if (take(bytes, 8, 4) > kVersion)
        throw OSAError(errOSADataFormatTooNew);
    const uint64_t source = take(bytes, 16, 4), properties = take(bytes, 20, 4);
    if (bytes.size() - kHeaderSize != source + properties ||
        take(bytes, 24, 8) != checkOf(bytes.substr(kHeaderSize)))
        throw OSAError(errOSACorruptData);
    script.hidesSource = take(bytes, 12, 4) & kHidesSource;
    script.source = bytes.substr(kHeaderSize, source);
    script.state = bytes.substr(kHeaderSize + source);
    return script;
}

void restoreState(Machine &machine, const Value &root, const std::string &state)
{
    if (state.empty())
        return;
    Descriptor desc;
    if (AEUnflattenDescFromBytes(state.data(), state.size(), &desc) != noErr ||
        (&desc)->descriptorType != typeAEList)
        throw OSAError(errOSACorruptData);
    const Value pairs = fromDescriptor(machine, &desc);
    ScriptObject *script = root.script();
    const auto &items = pairs.list()->items;
    for (size_t i = 0; i + 1 < items.size(); i += 2) {
        if (!items[i].is(Kind::text))
            throw OSAError(errOSACorruptData);
        const int slot = script->prototype->slotOf(machine.heap.names.of(utf8(items[i])));
        if (slot >= 0)
            script->slots[size_t(slot)] = items[i + 1];
    }
}

}  // namespace tarvik::osa
