#include "platform/CoreFoundation/private/Text.h"
#include "platform/Foundation/private/BinaryPropertyList.h"

#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tarvik::plist {
namespace {

constexpr std::string_view kMagic = "bplist";
constexpr size_t kHeader = 8;  // the magic and a version
constexpr size_t kTrailer = 32;
constexpr unsigned kArray = 0xA, kDictionary = 0xD;
constexpr uint64_t kMostShared = 1'000'000;
constexpr double kLatestDate = 0x1p53;  // seconds that a double tells apart

using Owned = Retained<id>;
Owned owned(id object) { return Owned::adopting(object); }

struct Malformed : std::runtime_error {
    using runtime_error::runtime_error;
};

class Reader {
public:
    Reader(const uint8_t *bytes, size_t count, Mutability mutability);

    /// Owned by the caller.
    id root()
    {
        measure(root_, 0);
        return object(root_).release();
    }

private:
    struct Entry {
        uint64_t size =
            0;  ///< in objects, each counted as often as it stands in the list; 0: not measured yet
        int height = 0;
        bool isOpen = false;
        Owned object;
    };
    /// What follows a marker: so many bytes, units or references from `at` on.
    struct Contents {
        uint64_t at, count;
    };

    /// Sees to it that the list ends, before any of it is made.
    void measure(uint64_t number, int depth);
    Entry &entryOf(uint64_t number);
    uint64_t offsetOf(uint64_t number) const;
    uint64_t reference(uint64_t at, uint64_t index) const;

    Owned object(uint64_t number);
    id newObject(uint64_t offset);
    id newInteger(uint64_t at, size_t width) const;
    id newReal(uint64_t at, size_t width) const;
    id newDate(uint64_t at) const;
    id newData(const Contents &contents) const;
    id newASCII(const Contents &contents) const;
    id newUnicode(const Contents &contents) const;
    id newArray(const Contents &contents);
    id newDictionary(const Contents &contents);
    id mutableIfAsked(id string) const;

    struct Members {
        Members(Reader &reader, uint64_t at, uint64_t count)
        {
            for (uint64_t i = 0; i < count; ++i) {
                owners.push_back(reader.object(reader.reference(at, i)));
                borrowed.push_back(owners.back().get());
            }
        }
        std::vector<Owned> owners;
        std::vector<id> borrowed;
    };
    Contents contents(uint64_t offset, uint64_t width) const;
    const uint8_t *bytes(uint64_t at, uint64_t count) const;
    uint64_t number(uint64_t at, size_t width) const;

    const uint8_t *const bytes_;
    uint64_t end_;  ///< of the objects
    Mutability mutability_;
    size_t offsetWidth_, referenceWidth_;
    uint64_t root_, offsets_;
    uint64_t mostObjects_;  ///< a reference takes a byte, so only containers within shared ones are more
    std::vector<Entry> entries_;
};

Reader::Reader(const uint8_t *bytes, size_t count, Mutability mutability)
    : bytes_(bytes), end_(count), mutability_(mutability), mostObjects_(count + kMostShared)
{
    if (count < kHeader + kTrailer)
        throw Malformed("cut short");
    const uint64_t trailer = count - kTrailer;
    offsetWidth_ = bytes[trailer + 6];
    referenceWidth_ = bytes[trailer + 7];
    const uint64_t objects = number(trailer + 8, 8);
    root_ = number(trailer + 16, 8);
    offsets_ = number(trailer + 24, 8);
    if (offsetWidth_ < 1 || offsetWidth_ > 8 || referenceWidth_ < 1 || referenceWidth_ > 8 ||
        offsets_ < kHeader || offsets_ > trailer || objects > (trailer - offsets_) / offsetWidth_)
        throw Malformed("a trailer that can't be right");
    entries_.resize(objects);
}

const uint8_t *Reader::bytes(uint64_t at, uint64_t count) const
{
    if (at > end_ || count > end_ - at)
        throw Malformed("an object beyond the end");
    return bytes_ + at;
}

uint64_t Reader::number(uint64_t at, size_t width) const
{
    const uint8_t *from = bytes(at, width);
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i)
        value = value << 8 | from[i];
    return value;
}

/// `width`: of what is counted, in bytes.
Reader::Contents Reader::contents(uint64_t offset, uint64_t width) const
{
    uint64_t at = offset + 1, count = *bytes(offset, 1) & 0xF;
    if (count == 0xF) {
        const uint8_t marker = *bytes(at, 1);
        if (marker >> 4 != 0x1 || (marker & 0xF) > 3)
            throw Malformed("a size that is no number");
        const size_t size = size_t(1) << (marker & 0xF);
        count = number(at + 1, size);
        at += 1 + size;
    }
    if (count > end_ / width)
        throw Malformed("an object beyond the end");
    bytes(at, count * width);
    return {at, count};
}

Reader::Entry &Reader::entryOf(uint64_t number)
{
    if (number >= entries_.size())
        throw Malformed("a reference to no object");
    return entries_[number];
}

uint64_t Reader::offsetOf(uint64_t number) const
{
    return this->number(offsets_ + number * offsetWidth_, offsetWidth_);
}

uint64_t Reader::reference(uint64_t at, uint64_t index) const
{
    return number(at + index * referenceWidth_, referenceWidth_);
}

void Reader::measure(uint64_t number, int depth)
{
    Entry &entry = entryOf(number);
    if (entry.isOpen)
        throw Malformed("an object that contains itself");
    if (depth + entry.height > kDeepest)
        throw Malformed("nested too deeply");
    if (entry.size > 0)
        return;
    const uint64_t offset = offsetOf(number);
    const unsigned kind = *bytes(offset, 1) >> 4;
    uint64_t size = 1;
    if (kind == kArray || kind == kDictionary) {
        entry.isOpen = true;
        const Contents members = contents(offset, kind == kArray ? referenceWidth_ : 2 * referenceWidth_);
        for (uint64_t i = 0, count = kind == kArray ? members.count : 2 * members.count; i < count; ++i) {
            const uint64_t member = reference(members.at, i);
            measure(member, depth + 1);
            if ((size += entries_[member].size) > mostObjects_)
                throw Malformed("too many objects");
            entry.height = std::max(entry.height, entries_[member].height + 1);
        }
        entry.isOpen = false;
    }
    entry.size = size;
}

/// What may be changed is made anew wherever it stands.
Owned Reader::object(uint64_t number)
{
    Entry &entry = entries_[number];
    if (!entry.object)
        entry.object = owned(newObject(offsetOf(number)));
    return mutability_ == Mutability::none ? entry.object : std::exchange(entry.object, Owned());
}

id Reader::newObject(uint64_t offset)
{
    const uint8_t marker = *bytes(offset, 1);
    const unsigned low = marker & 0xF;
    switch (marker >> 4) {
    case 0x0:
        if (low == 8 || low == 9)
            return [[NSNumber numberWithBool:low == 9] retain];
        break;
    case 0x1:
        if (low <= 4)
            return newInteger(offset + 1, size_t(1) << low);
        break;
    case 0x2:
        if (low == 2 || low == 3)
            return newReal(offset + 1, size_t(1) << low);
        break;
    case 0x3:
        if (low == 3)
            return newDate(offset + 1);
        break;
    case 0x4: return newData(contents(offset, 1));
    case 0x5: return newASCII(contents(offset, 1));
    case 0x6: return newUnicode(contents(offset, 2));
    case kArray: return newArray(contents(offset, referenceWidth_));
    case kDictionary: return newDictionary(contents(offset, 2 * referenceWidth_));
    }
    throw Malformed("an object that no property list holds");
}

/// Up to 4 bytes are unsigned, 8 are signed; 16 hold what 64 bits hold, signed or not.
id Reader::newInteger(uint64_t at, size_t width) const
{
    if (width < 16) {
        const uint64_t value = number(at, width);
        return [[NSNumber alloc] initWithLongLong:int64_t(value)];
    }
    const uint64_t high = number(at, 8), value = number(at + 8, 8);
    if (high == 0)
        return [[NSNumber alloc] initWithUnsignedLongLong:value];
    if (high == UINT64_MAX && int64_t(value) < 0)
        return [[NSNumber alloc] initWithLongLong:int64_t(value)];
    throw Malformed("an integer of more than 64 bits");
}

id Reader::newReal(uint64_t at, size_t width) const
{
    const uint64_t value = number(at, width);
    if (width == 4)
        return [[NSNumber alloc] initWithFloat:std::bit_cast<float>(uint32_t(value))];
    return [[NSNumber alloc] initWithDouble:std::bit_cast<double>(value)];
}

id Reader::newDate(uint64_t at) const
{
    const double seconds = std::bit_cast<double>(number(at, 8));
    if (!(std::abs(seconds) <= kLatestDate))
        throw Malformed("no date");
    return [[NSDate alloc] initWithTimeIntervalSinceReferenceDate:seconds];
}

id Reader::newData(const Contents &contents) const
{
    Class type = mutability_ == Mutability::containersAndLeaves ? [NSMutableData class] : [NSData class];
    return [[type alloc] initWithBytes:bytes_ + contents.at length:contents.count];
}

id Reader::newASCII(const Contents &contents) const
{
    const uint8_t *from = bytes_ + contents.at;
    if (std::any_of(from, from + contents.count, [](uint8_t byte) { return byte >= 0x80; }))
        throw Malformed("ASCII text with other bytes in it");
    return mutableIfAsked([[NSString alloc] initWithBytes:from
                                                   length:contents.count
                                                 encoding:NSASCIIStringEncoding]);
}

id Reader::newUnicode(const Contents &contents) const
{
    std::u16string units(contents.count, u'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = char16_t(number(contents.at + 2 * i, 2));
    return mutableIfAsked(cf::newString(units));
}

/// Takes the string.
id Reader::mutableIfAsked(id string) const
{
    if (mutability_ != Mutability::containersAndLeaves)
        return string;
    return [owned(string).get() mutableCopy];
}

id Reader::newArray(const Contents &contents)
{
    const auto members = Members(*this, contents.at, contents.count);
    Class type = mutability_ == Mutability::none ? [NSArray class] : [NSMutableArray class];
    return [[type alloc] initWithObjects:members.borrowed.data() count:contents.count];
}

id Reader::newDictionary(const Contents &contents)
{
    const auto keys = Members(*this, contents.at, contents.count),
               values = Members(*this, contents.at + contents.count * referenceWidth_, contents.count);
    for (id key : keys.borrowed)
        if (![key isKindOfClass:[NSString class]])
            throw Malformed("a key that is no text");
    Class type = mutability_ == Mutability::none ? [NSDictionary class] : [NSMutableDictionary class];
    return [[type alloc] initWithObjects:values.borrowed.data()
                                 forKeys:keys.borrowed.data()
                                   count:contents.count];
}

}  // namespace

bool looksBinary(const uint8_t *bytes, size_t count)
{
    return count >= kMagic.size() && std::equal(kMagic.begin(), kMagic.end(), bytes);
}

id newFromBinary(const uint8_t *bytes, size_t count, Mutability mutability, std::string &why)
{
    try {
        return Reader(bytes, count, mutability).root();
    } catch (const Malformed &failure) {
        why = failure.what();
        return nil;
    }
}

}  // namespace tarvik::plist
