#include "platform/AppleEvents/private/Flattening.h"

#include <cstring>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "numbers are copied as they lie");

namespace tarvik::ae {

namespace {

constexpr uint32_t kMagic = 0x6C664541;  // "AEfl"
constexpr uint16_t kVersion = 1;
constexpr size_t kHeadSize = 16, kDescHeadSize = 16, kEventHeadSize = 16, kCountSize = 8, kKeySize = 8;

class Measure {
public:
    /// Adds a descriptor's length; false when it is too deep.
    bool desc(const AEDesc &desc, int depth = 0)
    {
        size_ += kDescHeadSize;
        const Items *held = itemsOf(&desc);
        if (!held) {
            size_ += bytesOf(&desc).size();
            return true;
        }
        if (depth == kDeepest)
            return false;
        if (held->kind == Kind::event) {
            size_ += kEventHeadSize;
            if (!items(static_cast<const Event *>(held)->attributes, true, depth))
                return false;
        }
        return items(held->items, held->kind != Kind::list, depth);
    }
    size_t size() const { return size_; }

private:
    bool items(const std::vector<Item> &items, bool keyed, int depth)
    {
        size_ += kCountSize + (keyed ? kKeySize * items.size() : 0);
        for (const Item &item : items)
            if (!desc(*item.desc.get(), depth + 1))
                return false;
        return true;
    }
    size_t size_ = 0;
};

class Writer {
public:
    explicit Writer(char *at) : at_(at) {}

    template <class Number>
    void number(Number value)
    {
        std::memcpy(at_, &value, sizeof value);
        at_ += sizeof value;
    }
    void desc(const AEDesc &desc)
    {
        number(uint32_t(desc.descriptorType));
        const Items *held = itemsOf(&desc);
        number(uint32_t(held ? held->kind : Kind::bytes));
        if (!held) {
            const std::string_view bytes = bytesOf(&desc);
            number(uint64_t(bytes.size()));
            if (!bytes.empty())
                std::memcpy(at_, bytes.data(), bytes.size());
            at_ += bytes.size();
            return;
        }
        char *const lengthAt = at_;  // known when the body is written
        number(uint64_t(0));
        if (held->kind == Kind::event) {
            const auto &event = *static_cast<const Event *>(held);
            number(uint32_t(event.eventClass));
            number(uint32_t(event.eventID));
            number(int32_t(event.returnID));
            number(int32_t(event.transactionID));
            items(event.attributes, true);
        }
        items(held->items, held->kind != Kind::list);
        const uint64_t length = uint64_t(at_ - lengthAt) - sizeof length;
        std::memcpy(lengthAt, &length, sizeof length);
    }

private:
    void items(const std::vector<Item> &items, bool keyed)
    {
        number(uint64_t(items.size()));
        for (const Item &item : items) {
            if (keyed) {
                number(uint32_t(item.key));
                number(uint32_t(0));
            }
            desc(*item.desc.get());
        }
    }
    char *at_;
};

/// Reads within bounds: once it has failed, every further read does.
class Reader {
public:
    explicit Reader(std::string_view form) : left_(form) {}

    template <class Number>
    Number number()
    {
        Number value{};
        const std::string_view bytes = take(sizeof value);
        if (!failed_)
            std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    std::string_view take(uint64_t size)
    {
        if (failed_ || size > left_.size()) {
            failed_ = true;
            return {};
        }
        const std::string_view taken = left_.substr(0, size_t(size));
        left_.remove_prefix(size_t(size));
        return taken;
    }
    OwnedDesc desc(int depth = 0)
    {
        const auto type = number<uint32_t>(), kind = number<uint32_t>();
        const std::string_view body = take(number<uint64_t>());
        if (failed_ || kind > uint32_t(Kind::event) || (Kind(kind) != Kind::bytes && depth == kDeepest)) {
            failed_ = true;
            return {};
        }
        if (Kind(kind) == Kind::bytes)
            return checked(type, body);
        OwnedDesc made = Kind(kind) == Kind::event ? newEvent() : newItems(type, Kind(kind));
        made.get()->descriptorType = type;
        Reader inner(body);
        if (Event *event = eventOf(made.get())) {
            event->eventClass = inner.number<uint32_t>();
            event->eventID = inner.number<uint32_t>();
            event->returnID = AEReturnID(inner.number<int32_t>());
            event->transactionID = inner.number<int32_t>();
            inner.items(event->attributes, true, depth);
        }
        inner.items(itemsOf(made.get())->items, Kind(kind) != Kind::list, depth);
        failed_ = inner.failed_ || !inner.left_.empty();
        return made;
    }
    bool whole() const { return !failed_ && left_.empty(); }

private:
    // A list's type on bytes is not what anybody who reads that type expects.
    OwnedDesc checked(DescType type, std::string_view body)
    {
        failed_ = isContainer(type);
        return failed_ ? OwnedDesc() : newValue(type, body);
    }
    void items(std::vector<Item> &items, bool keyed, int depth)
    {
        const uint64_t count = number<uint64_t>();
        const size_t least = kDescHeadSize + (keyed ? kKeySize : 0);
        failed_ = failed_ || count > left_.size() / least;
        if (failed_)
            return;
        items.reserve(size_t(count));
        for (uint64_t i = 0; i < count && !failed_; ++i) {
            AEKeyword key = typeWildCard;
            if (keyed) {
                key = number<uint32_t>();
                number<uint32_t>();
            }
            OwnedDesc value = desc(depth + 1);
            failed_ = failed_ || (keyed && isKnown(items, key));
            items.push_back({key, std::move(value), false});
        }
    }
    // Records are short; a long one from outside must not cost the square of its length.
    bool isKnown(const std::vector<Item> &items, AEKeyword key)
    {
        constexpr size_t kMostFields = 4096;
        return items.size() >= kMostFields || find(items, key);
    }

    std::string_view left_;
    bool failed_ = false;
};

}  // namespace

size_t flattenedSize(const AEDesc &desc)
{
    Measure measure;
    return measure.desc(desc) ? kHeadSize + measure.size() : 0;
}

void flattenInto(const AEDesc &desc, size_t size, char *form)
{
    Writer writer(form);
    writer.number(kMagic);
    writer.number(kVersion);
    writer.number(uint16_t(0));
    writer.number(uint64_t(size));
    writer.desc(desc);
}

bool flatten(const AEDesc &desc, std::vector<char> &form)
{
    const size_t size = flattenedSize(desc), start = form.size();
    if (size == 0)
        return false;
    form.resize(start + size);
    flattenInto(desc, size, form.data() + start);
    return true;
}

OSErr unflatten(std::string_view form, OwnedDesc &desc)
{
    Reader reader(form);
    const auto magic = reader.number<uint32_t>();
    const auto version = reader.number<uint16_t>();
    reader.number<uint16_t>();
    const auto length = reader.number<uint64_t>();
    if (magic != kMagic || version == 0 || length != form.size())
        return errAECorruptData;
    if (version > kVersion)
        return errAENewerVersion;
    desc = reader.desc();
    if (reader.whole())
        return noErr;
    desc.out();
    return errAECorruptData;
}

}  // namespace tarvik::ae

using namespace tarvik::ae;

Size AESizeOfFlattenedDesc(const AEDesc *desc) { return desc ? Size(flattenedSize(*desc)) : 0; }

OSStatus AEFlattenDesc(const AEDesc *desc, Ptr buffer, Size bufferSize, Size *actualSize)
{
    if (!desc || (!buffer && bufferSize > 0))
        return paramErr;
    const size_t size = flattenedSize(*desc);
    if (size == 0)
        return paramErr;
    if (actualSize)
        *actualSize = Size(size);
    if (bufferSize < Size(size))
        return errAEBufferTooSmall;
    flattenInto(*desc, size, buffer);
    return noErr;
}

OSStatus AEUnflattenDesc(const void *buffer, AEDesc *result)
{
    AEInitializeDesc(result);
    if (!buffer)
        return paramErr;
    uint64_t length;
    std::memcpy(&length, static_cast<const char *>(buffer) + 8, sizeof length);
    return AEUnflattenDescFromBytes(buffer, size_t(length), result);
}

OSStatus AEUnflattenDescFromBytes(const void *buffer, size_t bufferSize, AEDesc *result)
{
    AEInitializeDesc(result);
    if (!buffer || !result)
        return paramErr;
    return withMemory([&] {
        tarvik::OwnedDesc desc;
        const OSErr error = unflatten({static_cast<const char *>(buffer), bufferSize}, desc);
        return error ? error : hand(std::move(desc), result);
    });
}
