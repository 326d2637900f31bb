#include <Tarvik/system/Versions.h>

#include <Carbon/Resources.h>
#include <CoreFoundation/CFBase.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr ResType kVersionType = 0x76657273;  // 'vers'
constexpr size_t kLeastSize = 8;              // number, country, two empty strings
constexpr size_t kNumberAndCountry = 6;

const char *stageLetter(UInt8 stage)
{
    switch (stage) {
    case developStage: return "d";
    case alphaStage: return "a";
    case betaStage: return "b";
    default: return "";
    }
}

// Copies a length byte and its text; false when the text runs past the end. Moves on behind it.
bool copyPascal(const UInt8 *&from, const UInt8 *end, UInt8 *to)
{
    if (from == end || end - from < 1 + *from)
        return false;
    std::copy_n(from, 1 + *from, to);
    from += 1 + *from;
    return true;
}

}  // namespace

CFStringRef NumVersionCopyString(const NumVersion *version, Boolean includeNonRelease)
{
    if (!version)
        return nullptr;
    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "%X.%i.%i%s", version->majorRev, version->minorAndBugRev >> 4,
                      version->minorAndBugRev, stageLetter(version->stage));
    if (includeNonRelease)
        std::snprintf(text + length, sizeof text - size_t(length), ".%i", version->nonRelRev);
    return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingASCII);
}

CFStringRef VersRecCopyVersionString(const VersRec *record, Boolean includeNonRelease)
{
    return record ? NumVersionCopyString(&record->numericVersion, includeNonRelease) : nullptr;
}

CFStringRef VersRecCopyShortString(const VersRec *record, CFStringEncoding encoding)
{
    return record ? CFStringCreateWithPascalString(kCFAllocatorDefault, record->shortVersion, encoding)
                  : nullptr;
}

CFStringRef VersRecCopyLongString(const VersRec *record, CFStringEncoding encoding)
{
    return record ? CFStringCreateWithPascalString(kCFAllocatorDefault, record->reserved, encoding) : nullptr;
}

Boolean RFGetVersion(SInt16 resourceID, VersRec *record)
{
    if (!record)
        return false;
    std::memset(record, 0, sizeof *record);
    const Handle resource = Get1Resource(kVersionType, resourceID);
    if (!resource || size_t(GetHandleSize(resource)) < kLeastSize)
        return false;
    const auto *bytes = reinterpret_cast<const UInt8 *>(*resource), *end = bytes + GetHandleSize(resource);
    VersRec read{};
    std::memcpy(&read, bytes, kNumberAndCountry);
    const UInt8 *at = bytes + kNumberAndCountry;
    if (!copyPascal(at, end, read.shortVersion) || !copyPascal(at, end, read.reserved))
        return false;
    *record = read;
    return true;
}
