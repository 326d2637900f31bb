#include "private/ResourceFork.h"

#include <algorithm>
#include <map>

namespace tarvik::resources {
namespace {

constexpr size_t kHeaderSize = 16,
                 kDataStart = 256;  // 112 and 128 bytes for the system and the application lie between
// The map: a copy of the header, a handle, a file number, attributes, offsets of the type and name lists.
constexpr size_t kMapHeaderSize = 28, kTypeListOffset = 24, kNameListOffset = 26;
constexpr size_t kTypeSize = 8, kReferenceSize = 12, kLengthSize = 4, kCountSize = 2;
constexpr uint32_t kMostData = 0xFFFFFF;  // references have 24 bits for an offset
constexpr size_t kMostOffset = 0xFFFE;    // 0xFFFF stands for "no name"

/// Bytes with checked reading: what lies outside is absent.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}
    std::optional<uint32_t> number(size_t at, size_t width) const
    {
        if (at > bytes_.size() || width > bytes_.size() - at)
            return std::nullopt;
        uint32_t value = 0;
        for (size_t i = 0; i < width; ++i)
            value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        return value;
    }
    std::optional<std::string_view> stretch(size_t at, size_t length) const
    {
        if (at > bytes_.size() || length > bytes_.size() - at)
            return std::nullopt;
        return bytes_.substr(at, length);
    }

private:
    std::string_view bytes_;
};

void append(std::string &out, uint64_t value, size_t width)
{
    while (width-- > 0)
        out += char(value >> (8 * width));
}

/// A count is stored less one, so that none is 0xFFFF.
uint32_t counted(uint32_t stored) { return (stored + 1) & 0xFFFF; }

std::optional<Resource> readReference(const Bytes &map, const Bytes &data, uint32_t type, size_t at,
                                      size_t nameList)
{
    const auto id = map.number(at, 2), nameOffset = map.number(at + 2, 2), attributes = map.number(at + 4, 1),
               offset = map.number(at + 5, 3);
    if (!id || !nameOffset || !attributes || !offset || !map.number(at + 8, 4))
        return std::nullopt;
    const auto length = data.number(*offset, kLengthSize);
    const auto bytes = length ? data.stretch(*offset + kLengthSize, *length) : std::nullopt;
    if (!bytes)
        return std::nullopt;
    Resource resource{type, int16_t(*id), uint8_t(*attributes), std::nullopt, std::string(*bytes)};
    if (*nameOffset != 0xFFFF) {
        const auto nameLength = map.number(nameList + *nameOffset, 1);
        const auto name = nameLength ? map.stretch(nameList + *nameOffset + 1, *nameLength) : std::nullopt;
        if (!name)
            return std::nullopt;
        resource.name = std::string(*name);
    }
    return resource;
}

}  // namespace

std::optional<std::vector<Resource>> parseFork(std::string_view bytes)
{
    std::vector<Resource> all;
    if (bytes.empty())
        return all;
    const Bytes fork(bytes);
    const auto dataOffset = fork.number(0, 4), mapOffset = fork.number(4, 4), dataLength = fork.number(8, 4),
               mapLength = fork.number(12, 4);
    if (!mapLength || *dataOffset < kHeaderSize || *mapOffset < kHeaderSize)
        return std::nullopt;
    const auto dataBytes = fork.stretch(*dataOffset, *dataLength),
               mapBytes = fork.stretch(*mapOffset, *mapLength);
    if (!dataBytes || !mapBytes)
        return std::nullopt;
    const Bytes data(*dataBytes), map(*mapBytes);
    const auto typeList = map.number(kTypeListOffset, 2), nameList = map.number(kNameListOffset, 2);
    if (!nameList || *typeList < kMapHeaderSize)
        return std::nullopt;
    const auto typeCount = map.number(*typeList, kCountSize);
    if (!typeCount)
        return std::nullopt;
    // References may not overlap in a sound map, so all of them together fit it; a map that repeats them is refused before it
    // makes a small file large. The same data may be referred to once only for the same reason.
    size_t references = 0, dataRead = 0;
    for (size_t i = 0; i < counted(*typeCount); ++i) {
        const size_t at = *typeList + kCountSize + i * kTypeSize;
        const auto type = map.number(at, 4), count = map.number(at + 4, 2), offset = map.number(at + 6, 2);
        if (!offset)
            return std::nullopt;
        for (size_t j = 0; j < counted(*count); ++j) {
            auto resource =
                readReference(map, data, *type, *typeList + *offset + j * kReferenceSize, *nameList);
            if (!resource || ++references * kReferenceSize > mapBytes->size())
                return std::nullopt;
            dataRead += kLengthSize + resource->data.size();
            if (dataRead > dataBytes->size())
                return std::nullopt;
            all.push_back(std::move(*resource));
        }
    }
    return all;
}

std::optional<std::string> forkOf(const std::vector<Resource> &resources)
{
    std::map<uint32_t, std::vector<const Resource *>> types;
    std::vector<uint32_t> order;  // of first appearance
    for (const Resource &resource : resources) {
        auto &list = types[resource.type];
        if (list.empty())
            order.push_back(resource.type);
        list.push_back(&resource);
    }
    std::string data, references, names, typeList;
    append(typeList, uint32_t(order.size() - 1) & 0xFFFF, kCountSize);
    const size_t referencesStart = kCountSize + order.size() * kTypeSize;
    for (uint32_t type : order) {
        append(typeList, type, 4);
        append(typeList, uint32_t(types[type].size() - 1), kCountSize);
        if (referencesStart + references.size() > kMostOffset)
            return std::nullopt;
        append(typeList, uint32_t(referencesStart + references.size()), 2);
        for (const Resource *resource : types[type]) {
            if (data.size() > kMostData || names.size() > kMostOffset)
                return std::nullopt;
            append(references, uint16_t(resource->id), 2);
            append(references, resource->name ? uint32_t(names.size()) : 0xFFFF, 2);
            append(references, resource->attributes, 1);
            append(references, uint32_t(data.size()), 3);
            append(references, 0, 4);  // the handle, in memory
            if (resource->name) {
                append(names, uint32_t(resource->name->size()), 1);
                names += *resource->name;
            }
            append(data, uint32_t(resource->data.size()), kLengthSize);
            data += resource->data;
        }
    }
    const size_t nameList = kMapHeaderSize + typeList.size() + references.size();
    if (nameList > kMostOffset || data.size() > kMostData + size_t(kMostData))
        return std::nullopt;
    std::string header;
    append(header, kDataStart, 4);
    append(header, uint32_t(kDataStart + data.size()), 4);
    append(header, uint32_t(data.size()), 4);
    append(header, uint32_t(nameList + names.size()), 4);
    std::string fork = header;
    fork.resize(kDataStart);
    fork += data;
    fork += header;
    append(fork, 0, 4 + 2 + 2);  // handle, file number, attributes
    append(fork, uint32_t(kMapHeaderSize), 2);
    append(fork, uint32_t(nameList), 2);
    return fork + typeList + references + names;
}

}  // namespace tarvik::resources
