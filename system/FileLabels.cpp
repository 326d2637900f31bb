#include "FileLabels.h"

#include <algorithm>
#include <iterator>

const UInt8 kLabelColor[kLabelColorCount] = {0x00, 0x0C, 0x0E, 0x0A, 0x04, 0x08, 0x06, 0x02};

namespace {

constexpr size_t kLabelByte = 9;

bool getFinderInfo(const FSRef *ref, FSCatalogInfo &info)
{
    return ref && FSGetCatalogInfo(ref, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr) == noErr;
}

}  // namespace

UInt32 LabelColorValueToIndex(UInt8 value)
{
    const auto *found = std::find(std::begin(kLabelColor), std::end(kLabelColor), value);
    return found == std::end(kLabelColor) ? 0 : UInt32(found - kLabelColor);
}

UInt8 LabelColorIndexToValue(UInt32 index) { return index < kLabelColorCount ? kLabelColor[index] : 0; }

UInt8 FSGetLabelColorValue(const FSRef *ref)
{
    FSCatalogInfo info;
    return getFinderInfo(ref, info) ? info.finderInfo[kLabelByte] : 0;
}

Boolean FSSetLabelColorValue(const FSRef *ref, UInt8 value)
{
    FSCatalogInfo info;
    if (!getFinderInfo(ref, info))
        return false;
    info.finderInfo[kLabelByte] = value;
    return FSSetCatalogInfo(ref, kFSCatInfoFinderInfo, &info) == noErr;
}

UInt32 FSGetLabelColorIndex(const FSRef *ref) { return LabelColorValueToIndex(FSGetLabelColorValue(ref)); }

Boolean FSSetLabelColorIndex(const FSRef *ref, UInt32 index)
{
    return FSSetLabelColorValue(ref, LabelColorIndexToValue(index));
}
