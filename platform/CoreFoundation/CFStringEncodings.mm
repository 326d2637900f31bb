#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/CoreFoundation/private/Text.h"
#include "platform/TextEncoding/private/Encodings.h"

using namespace tarvik::cf;
namespace encodings = tarvik::encodings;

CFStringEncoding CFStringGetSystemEncoding(void) { return encodings::system().identifier; }

CFStringEncoding CFStringGetSmallestEncoding(CFStringRef string)
{
    // The first of these that holds the whole text, in rising order of the bytes that they take.
    const CFStringEncoding candidates[] = {kCFStringEncodingASCII, CFStringGetSystemEncoding(),
                                           kCFStringEncodingMacRoman, kCFStringEncodingISOLatin1,
                                           kCFStringEncodingWindowsLatin1};
    const CFRange whole = CFRangeMake(0, CFStringGetLength(string));
    for (const CFStringEncoding candidate : candidates)
        if (encodings::find(candidate)->maxBytes == 1 &&
            CFStringGetBytes(string, whole, candidate, 0, false, nullptr, 0, nullptr) == whole.length)
            return candidate;
    return kCFStringEncodingUnicode;
}

CFStringEncoding CFStringGetFastestEncoding(CFStringRef string)
{
    // Foundation stores a text in one byte a character where all of it is ASCII, in UTF-16 otherwise.
    const CFRange whole = CFRangeMake(0, CFStringGetLength(string));
    if (CFStringGetBytes(string, whole, kCFStringEncodingASCII, 0, false, nullptr, 0, nullptr) ==
        whole.length)
        return kCFStringEncodingASCII;
    return kCFStringEncodingUnicode;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    const auto *row = encodings::find(encoding);
    return row && length >= 0 ? length * row->maxBytes : CFIndex{kCFNotFound};
}

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding)
{
    return encodings::find(encoding) != nullptr;
}
const CFStringEncoding *CFStringGetListOfAvailableEncodings(void) { return encodings::available().data(); }

CFStringRef CFStringGetNameOfEncoding(CFStringEncoding encoding)
{
    const auto *row = encodings::find(encoding);
    return row ? __CFStringMakeConstantString(row->name) : nullptr;
}

CFStringEncoding CFStringGetMostCompatibleMacStringEncoding(CFStringEncoding encoding)
{
    static constexpr struct {
        CFStringEncoding encoding, mac;
    } kMac[] = {
        {kCFStringEncodingISOLatin2, kCFStringEncodingMacCentralEurRoman},
        {kCFStringEncodingWindowsLatin2, kCFStringEncodingMacCentralEurRoman},
        {kCFStringEncodingDOSLatin2, kCFStringEncodingMacCentralEurRoman},
        {kCFStringEncodingISOLatinCyrillic, kCFStringEncodingMacCyrillic},
        {kCFStringEncodingWindowsCyrillic, kCFStringEncodingMacCyrillic},
        {kCFStringEncodingDOSCyrillic, kCFStringEncodingMacCyrillic},
        {kCFStringEncodingDOSRussian, kCFStringEncodingMacCyrillic},
        {kCFStringEncodingKOI8_R, kCFStringEncodingMacCyrillic},
        {kCFStringEncodingKOI8_U, kCFStringEncodingMacUkrainian},
        {kCFStringEncodingShiftJIS, kCFStringEncodingMacJapanese},
        {kCFStringEncodingDOSJapanese, kCFStringEncodingMacJapanese},
        {kCFStringEncodingEUC_JP, kCFStringEncodingMacJapanese},
        {kCFStringEncodingISO_2022_JP, kCFStringEncodingMacJapanese},
        {kCFStringEncodingBig5, kCFStringEncodingMacChineseTrad},
        {kCFStringEncodingDOSChineseTrad, kCFStringEncodingMacChineseTrad},
        {kCFStringEncodingEUC_CN, kCFStringEncodingMacChineseSimp},
        {kCFStringEncodingGBK_95, kCFStringEncodingMacChineseSimp},
        {kCFStringEncodingGB_18030_2000, kCFStringEncodingMacChineseSimp},
        {kCFStringEncodingEUC_KR, kCFStringEncodingMacKorean},
        {kCFStringEncodingDOSKorean, kCFStringEncodingMacKorean},
        {kCFStringEncodingISOLatinArabic, kCFStringEncodingMacArabic},
        {kCFStringEncodingISOLatinHebrew, kCFStringEncodingMacHebrew},
        {kCFStringEncodingISOLatinGreek, kCFStringEncodingMacGreek},
        {kCFStringEncodingISOLatin5, kCFStringEncodingMacTurkish},
    };
    for (const auto &row : kMac)
        if (row.encoding == encoding)
            return row.mac;
    if (encoding <= 0xFF)
        return encoding;
    return kCFStringEncodingMacRoman;
}

unsigned long CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding)
{
    const auto *row = encodings::find(encoding);
    return row ? row->foundation : 0;
}

CFStringEncoding CFStringConvertNSStringEncodingToEncoding(unsigned long encoding)
{
    const auto *row = encodings::findFoundation(encoding);
    return row ? row->identifier : kCFStringEncodingInvalidId;
}

UInt32 CFStringConvertEncodingToWindowsCodepage(CFStringEncoding encoding)
{
    const auto *row = encodings::find(encoding);
    return row && row->codepage ? row->codepage : kCFStringEncodingInvalidId;
}

CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage)
{
    const auto *row = encodings::findCodepage(codepage);
    return row ? row->identifier : kCFStringEncodingInvalidId;
}

CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef name)
{
    char text[64];
    if (!CFStringGetCString(name, text, sizeof text, kCFStringEncodingASCII))
        return kCFStringEncodingInvalidId;
    const auto *row = encodings::findNamed(text);
    return row ? row->identifier : kCFStringEncodingInvalidId;
}

CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding)
{
    const auto *row = encodings::find(encoding);
    return row && row->ianaName ? __CFStringMakeConstantString(row->ianaName) : nullptr;
}
