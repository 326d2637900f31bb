#include "platform/Files/private/AppleDouble.h"

#include <algorithm>
#include <cstring>

namespace tarvik::files {
namespace {

constexpr uint32_t kMagic = 0x00051607, kVersion1 = 0x00010000, kVersion2 = 0x00020000;

uint32_t big32(const char *bytes)
{
    const auto *b = reinterpret_cast<const uint8_t *>(bytes);
    return uint32_t(b[0]) << 24 | uint32_t(b[1]) << 16 | uint32_t(b[2]) << 8 | b[3];
}

void put32(std::string &text, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        text += char(value >> shift);
}

}  // namespace

AppleDouble::Entry *AppleDouble::find(uint32_t id)
{
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const Entry &entry) { return entry.id == id; });
    return found == entries.end() ? nullptr : &*found;
}

std::string AppleDouble::header() const
{
    std::string text;
    put32(text, kMagic);
    put32(text, version);
    text.append(reinterpret_cast<const char *>(filler.data()), filler.size());
    text += char(entries.size() >> 8);
    text += char(entries.size());
    for (const Entry &entry : entries) {
        put32(text, entry.id);
        put32(text, entry.offset);
        put32(text, entry.length);
    }
    return text;
}

AppleDoubleState readAppleDouble(std::string_view start, uint64_t fileSize, AppleDouble &file)
{
    if (start.size() < 8 || big32(start.data()) != kMagic)
        return AppleDoubleState::foreign;
    file.version = big32(start.data() + 4);
    if (start.size() < 26 || (file.version != kVersion1 && file.version != kVersion2))
        return AppleDoubleState::broken;
    std::memcpy(file.filler.data(), start.data() + 8, file.filler.size());
    const size_t count = uint8_t(start[24]) << 8 | uint8_t(start[25]);
    if (count > kMostEntries || start.size() < 26 + 12 * count)
        return AppleDoubleState::broken;
    file.entries.clear();
    for (size_t i = 0; i < count; ++i) {
        const char *at = start.data() + 26 + 12 * i;
        file.entries.push_back({big32(at), big32(at + 4), big32(at + 8)});
    }
    std::vector<AppleDouble::Entry> byPlace = file.entries, byId = file.entries;
    std::sort(byPlace.begin(), byPlace.end(),
              [](const auto &a, const auto &b) { return a.offset < b.offset; });
    uint64_t end = file.headerSize();
    for (const auto &entry : byPlace) {
        if (entry.length == 0)
            continue;
        if (entry.offset < end || uint64_t(entry.offset) + entry.length > fileSize)
            return AppleDoubleState::broken;
        end = uint64_t(entry.offset) + entry.length;
    }
    std::sort(byId.begin(), byId.end(), [](const auto &a, const auto &b) { return a.id < b.id; });
    for (size_t i = 1; i < byId.size(); ++i)
        if (byId[i].id == byId[i - 1].id)
            return AppleDoubleState::broken;
    const auto *info = file.find(AppleDouble::finderInfo), *dates = file.find(AppleDouble::dates);
    if ((info && info->length < kFinderInfoSize) || (dates && dates->length < kDatesSize))
        return AppleDoubleState::broken;
    return AppleDoubleState::good;
}

bool layOut(AppleDouble &file)
{
    std::vector<AppleDouble::Entry *> order;
    for (auto &entry : file.entries)
        order.push_back(&entry);
    // A new entry has offset 0 and comes behind those that have a place.
    const auto rank = [](const AppleDouble::Entry *entry) {
        return std::pair(entry->id == AppleDouble::resourceFork,
                         entry->offset == 0 ? UINT32_MAX : entry->offset);
    };
    std::stable_sort(order.begin(), order.end(), [&](auto *a, auto *b) { return rank(a) < rank(b); });
    uint64_t end = file.headerSize();
    for (auto *entry : order) {
        const bool isFixed =
            entry->id == AppleDouble::finderInfo && entry->length > kFinderInfoSize && entry->offset != 0;
        if (isFixed && entry->offset < end)
            return false;
        const uint64_t offset = isFixed ? entry->offset : end;
        end = offset + entry->length;
        if (end > UINT32_MAX)
            return false;
        entry->offset = uint32_t(offset);
    }
    return true;
}

bool isBlankResourceFork(std::string_view start, uint64_t length)
{
    constexpr std::string_view kNote = "This resource fork intentionally left blank";
    return length == 286 && start.size() >= 16 + kNote.size() && start.substr(16, kNote.size()) == kNote;
}

}  // namespace tarvik::files
