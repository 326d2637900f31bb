#include "platform/Aliases/private/AliasContents.h"

#include <array>
#include <climits>
#include <cstring>

namespace tarvik::aliases {

namespace {

constexpr size_t kHeadLength = 16, kMaxHandle = 128, kMaxName = 64;
constexpr uint16_t kFormat = 1;
constexpr char kMark[] = {'T', 'v', 'A', 'l'};

enum Tag : uint16_t {
    kPath = 1,
    kRelativePath,
    kVolumePath,
    kVolumeUUID,
    kVolumeType,
    kVolumeID,
    kDevice,
    kItem,
    kParent,
    kItemHandle,
    kParentHandle,
    kLikeness
};

template <class Number>
void append(std::string &out, Number number)
{
    for (size_t i = 0; i < sizeof number; ++i)
        out += char(uint64_t(number) >> 8 * i);
}

void appendField(std::string &out, Tag tag, std::string_view bytes)
{
    if (bytes.empty())
        return;
    append(out, uint16_t(tag));
    append(out, uint16_t(bytes.size()));
    out += bytes;
}

std::string packed(const ItemIdentity &item)
{
    std::string out;
    if (item.inode) {
        append(out, item.inode);
        append(out, item.birthSeconds);
        append(out, item.birthNanoseconds);
        append(out, item.kind);
    }
    return out;
}

std::string packed(const KernelHandle &handle)
{
    std::string out;
    if (!handle.bytes.empty()) {
        append(out, handle.type);
        out += handle.bytes;
    }
    return out;
}

/// Takes numbers off the front of a field.
class Reader {
public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    template <class Number>
    bool take(Number &number)
    {
        if (bytes_.size() < sizeof number)
            return false;
        uint64_t value = 0;
        for (size_t i = 0; i < sizeof number; ++i)
            value |= uint64_t(static_cast<unsigned char>(bytes_[i])) << 8 * i;
        number = Number(value);
        bytes_.remove_prefix(sizeof number);
        return true;
    }
    bool take(std::string_view &bytes, size_t length)
    {
        if (bytes_.size() < length)
            return false;
        bytes = bytes_.substr(0, length);
        bytes_.remove_prefix(length);
        return true;
    }
    std::string_view rest() const { return bytes_; }

private:
    std::string_view bytes_;
};

bool unpack(std::string_view bytes, ItemIdentity &item)
{
    Reader reader(bytes);
    return reader.take(item.inode) && reader.take(item.birthSeconds) && reader.take(item.birthNanoseconds) &&
           reader.take(item.kind) && reader.rest().empty();
}

bool unpack(std::string_view bytes, KernelHandle &handle)
{
    Reader reader(bytes);
    if (!reader.take(handle.type) || reader.rest().empty() || reader.rest().size() > kMaxHandle)
        return false;
    handle.bytes = reader.rest();
    return true;
}

template <class Number>
bool unpackNumber(std::string_view bytes, Number &number)
{
    Reader reader(bytes);
    return reader.take(number) && reader.rest().empty();
}

bool unpackText(std::string_view bytes, std::string &text)
{
    text = bytes;
    return bytes.size() <= kMaxName && bytes.find('\0') == bytes.npos && bytes.find('/') == bytes.npos;
}

/// A path without a part that could lead elsewhere; a relative one may start with parts "..".
bool unpackPath(std::string_view bytes, bool absolute, std::string &path)
{
    if (bytes.empty() || bytes.size() >= PATH_MAX || bytes.find('\0') != bytes.npos ||
        (bytes[0] == '/') != absolute)
        return false;
    path = bytes;
    if (path == "/")
        return true;
    bool atStart = !absolute;
    for (size_t at = absolute; at <= bytes.size();) {
        const size_t end = std::min(bytes.find('/', at), bytes.size());
        const std::string_view part = bytes.substr(at, end - at);
        if (part.empty() || part.size() > NAME_MAX || part == "." || (part == ".." && !atStart))
            return false;
        atStart = atStart && part == "..";
        at = end + 1;
    }
    return true;
}

bool unpackField(uint16_t tag, std::string_view bytes, AliasContents &contents)
{
    switch (tag) {
    case kPath: return unpackPath(bytes, true, contents.path);
    case kRelativePath: return unpackPath(bytes, false, contents.relativePath);
    case kVolumePath: return unpackPath(bytes, true, contents.volumePath);
    case kVolumeUUID: return unpackText(bytes, contents.volume.uuid);
    case kVolumeType: return unpackText(bytes, contents.volume.type);
    case kVolumeID: return unpackNumber(bytes, contents.volume.fsid);
    case kDevice: return unpackNumber(bytes, contents.device);
    case kItem: return unpack(bytes, contents.item);
    case kParent: return unpack(bytes, contents.parent);
    case kItemHandle: return unpack(bytes, contents.itemHandle);
    case kParentHandle: return unpack(bytes, contents.parentHandle);
    case kLikeness: {
        Reader reader(bytes);
        return reader.take(contents.size) && reader.take(contents.modifiedSeconds) &&
               reader.take(contents.modifiedNanoseconds) && reader.rest().empty();
    }
    default: return true;  // of a later version
    }
}

}  // namespace

uint32_t fieldsSum(std::string_view fields)
{
    // tables[k][b]: what a byte b does to the sum when k zero bytes follow it. Four bytes are taken at a
    // time.
    static constexpr auto tables = [] {
        std::array<std::array<uint32_t, 256>, 4> made{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t value = i;
            for (int bit = 0; bit < 8; ++bit)
                value = value & 1 ? value >> 1 ^ 0xEDB88320 : value >> 1;
            made[0][i] = value;
        }
        for (size_t k = 1; k < made.size(); ++k)
            for (uint32_t i = 0; i < 256; ++i)
                made[k][i] = made[0][made[k - 1][i] & 0xFF] ^ made[k - 1][i] >> 8;
        return made;
    }();
    const auto byte = [&](size_t i) { return uint32_t(static_cast<unsigned char>(fields[i])); };
    uint32_t value = ~0u;
    for (; fields.size() >= 4; fields.remove_prefix(4)) {
        value ^= byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
        value = tables[3][value & 0xFF] ^ tables[2][value >> 8 & 0xFF] ^ tables[1][value >> 16 & 0xFF] ^
                tables[0][value >> 24];
    }
    for (size_t i = 0; i < fields.size(); ++i)
        value = tables[0][(value ^ byte(i)) & 0xFF] ^ value >> 8;
    return ~value;
}

std::optional<std::string> encode(const AliasContents &contents, uint32_t userType)
{
    std::string fields, number;
    appendField(fields, kPath, contents.path);
    appendField(fields, kRelativePath, contents.relativePath);
    appendField(fields, kVolumePath, contents.volumePath);
    appendField(fields, kVolumeUUID, contents.volume.uuid);
    appendField(fields, kVolumeType, contents.volume.type);
    append(number, contents.volume.fsid);
    appendField(fields, kVolumeID, number);
    number.clear();
    append(number, contents.device);
    appendField(fields, kDevice, number);
    appendField(fields, kItem, packed(contents.item));
    appendField(fields, kParent, packed(contents.parent));
    appendField(fields, kItemHandle, packed(contents.itemHandle));
    appendField(fields, kParentHandle, packed(contents.parentHandle));
    number.clear();
    append(number, contents.size);
    append(number, contents.modifiedSeconds);
    append(number, contents.modifiedNanoseconds);
    appendField(fields, kLikeness, number);

    const size_t length = kHeadLength + fields.size();
    if (length > UINT16_MAX)
        return std::nullopt;
    std::string record;
    record.reserve(length);
    append(record, userType);
    append(record, uint16_t(length));
    append(record, kFormat);
    record.append(kMark, sizeof kMark);
    append(record, fieldsSum(fields));
    return record + fields;
}

std::optional<AliasContents> decode(std::string_view record)
{
    Reader head(record);
    uint32_t userType, sum;
    uint16_t length, format;
    std::string_view mark, fields;
    if (!head.take(userType) || !head.take(length) || !head.take(format) || !head.take(mark, sizeof kMark) ||
        !head.take(sum) || length < kHeadLength || !head.take(fields, length - kHeadLength) ||
        format != kFormat || mark != std::string_view(kMark, sizeof kMark) || sum != fieldsSum(fields))
        return std::nullopt;
    AliasContents contents;
    for (Reader reader(fields); !reader.rest().empty();) {
        uint16_t tag, size;
        std::string_view bytes;
        if (!reader.take(tag) || !reader.take(size) || !reader.take(bytes, size) ||
            !unpackField(tag, bytes, contents))
            return std::nullopt;
    }
    if (contents.path.empty())
        return std::nullopt;
    return contents;
}

}  // namespace tarvik::aliases
