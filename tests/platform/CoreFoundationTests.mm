// Core Foundation as a host sees it: results, ownership, and what it does with text that a conversion can't
// hold.
#import <Foundation/Foundation.h>

#include <CoreFoundation/CoreFoundation.h>
#include <Tarvik/support/Pool.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// An owned reference that is released at the end of the scope.
template <class Ref>
class Owned {
public:
    Owned(Ref ref) : ref_(ref) {}
    ~Owned() { CFRelease(ref_); }
    Owned(const Owned &) = delete;
    operator Ref() const { return ref_; }

private:
    Ref ref_;
};

std::string utf8(CFStringRef string)
{
    char text[2048];
    return CFStringGetCString(string, text, sizeof text, kCFStringEncodingUTF8) ? text : "(none)";
}

Owned<CFStringRef> string(const char *text)
{
    return CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8);
}

std::string bytesOf(CFDataRef data)
{
    return data ? std::string(reinterpret_cast<const char *>(CFDataGetBytePtr(data)),
                              size_t(CFDataGetLength(data)))
                : "(none)";
}

// --- strings -------------------------------------------------------------------------------------------

TEST(CFString, ConvertsBetweenEncodings)
{
    const struct {
        const char *utf8;
        CFStringEncoding encoding;
        std::string bytes;
    } cases[] = {
        {"Grüße €", kCFStringEncodingMacRoman,
         "Gr\x9F\xA7"
         "e \xDB"},
        {"Grüße €", kCFStringEncodingWindowsLatin1,
         "Gr\xFC\xDF"
         "e \x80"},
        {"日本", kCFStringEncodingShiftJIS, "\x93\xFA\x96\x7B"},
        {"日本", kCFStringEncodingEUC_JP, "\xC6\xFC\xCB\xDC"},
        {"日本", kCFStringEncodingISO_2022_JP, "\x1B$BF|K\\\x1B(B"},
        {"Привет", kCFStringEncodingKOI8_R, "\xF0\xD2\xC9\xD7\xC5\xD4"},
        {"é\\", kCFStringEncodingNonLossyASCII, "\\351\\\\"},
        {"日", kCFStringEncodingNonLossyASCII, "\\u65e5"},
        {"a😀", kCFStringEncodingUTF16BE, std::string("\0a\xD8\x3D\xDE\0", 6)},
        {"a😀", kCFStringEncodingUTF32LE, std::string("a\0\0\0\0\xF6\x01\0", 8)},
    };
    for (const auto &[text, encoding, bytes] : cases) {
        SCOPED_TRACE(text);
        const auto one = string(text);
        Owned<CFDataRef> data(CFStringCreateExternalRepresentation(nullptr, one, encoding, 0));
        EXPECT_EQ(bytesOf(data), bytes);
        Owned<CFStringRef> back(CFStringCreateFromExternalRepresentation(nullptr, data, encoding));
        EXPECT_EQ(utf8(back), text);
    }
}

TEST(CFString, RefusesBytesThatAreNoText)
{
    const struct {
        std::string bytes;
        CFStringEncoding encoding;
    } cases[] = {
        {"\xC0\x80", kCFStringEncodingUTF8},
        {"\xED\xA0\x80", kCFStringEncodingUTF8},
        {"\xF4\x90\x80\x80", kCFStringEncodingUTF8},
        {"ab\xE2\x82", kCFStringEncodingUTF8},
        {"\x80", kCFStringEncodingASCII},
        {"abc", kCFStringEncodingUnicode},
        {std::string("\0\x11\0\0", 4), kCFStringEncodingUTF32BE},
        {"\x81", kCFStringEncodingShiftJIS},
        {"a", 0x7777},
    };
    for (const auto &[bytes, encoding] : cases)
        EXPECT_EQ(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8 *>(bytes.data()),
                                          CFIndex(bytes.size()), encoding, false),
                  nullptr);
}

TEST(CFString, ExternalRepresentationCarriesAByteOrderMark)
{
    Owned<CFDataRef> data(
        CFStringCreateExternalRepresentation(nullptr, CFSTR("a"), kCFStringEncodingUnicode, 0));
    EXPECT_EQ(bytesOf(data), std::string("\xFF\xFE"
                                         "a\0",
                                         4));
    const UInt8 big[] = {0xFE, 0xFF, 0, 'a'}, marked[] = {0xEF, 0xBB, 0xBF, 'a'};
    Owned<CFStringRef> fromBig(CFStringCreateWithBytes(nullptr, big, 4, kCFStringEncodingUnicode, true));
    Owned<CFStringRef> fromMarked(CFStringCreateWithBytes(nullptr, marked, 4, kCFStringEncodingUTF8, true));
    EXPECT_EQ(utf8(fromBig), "a");
    EXPECT_EQ(utf8(fromMarked), "a");
}

TEST(CFString, GetBytesStopsOrSubstitutes)
{
    const auto text = string("aé😀b");
    UInt8 buffer[16] = {};
    CFIndex used = -1;
    const CFRange whole = CFRangeMake(0, CFStringGetLength(text));
    EXPECT_EQ(CFStringGetBytes(text, whole, kCFStringEncodingASCII, 0, false, buffer, sizeof buffer, &used),
              1);
    EXPECT_EQ(used, 1);
    EXPECT_EQ(CFStringGetBytes(text, whole, kCFStringEncodingASCII, '?', false, buffer, sizeof buffer, &used),
              5);
    EXPECT_EQ(std::string(buffer, buffer + used), "a??b") << "a pair is one character";
    EXPECT_EQ(
        CFStringGetBytes(text, whole, kCFStringEncodingMacRoman, '?', false, buffer, sizeof buffer, &used),
        5);
    EXPECT_EQ(std::string(buffer, buffer + used), "a\x8E?b");
    EXPECT_EQ(CFStringGetBytes(text, whole, kCFStringEncodingUTF8, 0, false, buffer, 6, &used), 2)
        << "no half character";
    EXPECT_EQ(used, 3);
    EXPECT_EQ(CFStringGetBytes(text, whole, kCFStringEncodingUTF8, 0, false, nullptr, 0, &used), 5);
    EXPECT_EQ(used, 8);
    EXPECT_EQ(
        CFStringGetBytes(text, whole, kCFStringEncodingISO_2022_JP, '?', false, buffer, sizeof buffer, &used),
        5);
    const UniChar half[] = {'a', 0xD83D};
    Owned<CFStringRef> lone(CFStringCreateWithCharacters(nullptr, half, 2));
    EXPECT_EQ(CFStringGetBytes(lone, CFRangeMake(0, 2), kCFStringEncodingUTF8, '?', false, buffer,
                               sizeof buffer, &used),
              2);
    EXPECT_EQ(std::string(buffer, buffer + used), "a?");
    const UniChar marked[] = {0xFEFF, 0xD83D};
    Owned<CFStringRef> odd(CFStringCreateWithCharacters(nullptr, marked, 2));
    Owned<CFMutableStringRef> copy(CFStringCreateMutableCopy(nullptr, 0, odd));
    EXPECT_TRUE(CFEqual(copy, odd));
}

TEST(CFString, CStringsAndPascalStringsFitOrFail)
{
    const auto text = string("né");
    char buffer[8];
    EXPECT_TRUE(CFStringGetCString(text, buffer, 4, kCFStringEncodingUTF8));
    EXPECT_FALSE(CFStringGetCString(text, buffer, 3, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingASCII));
    EXPECT_FALSE(CFStringGetCString(nullptr, buffer, sizeof buffer, kCFStringEncodingASCII));

    Str255 pascal;
    EXPECT_TRUE(CFStringGetPascalString(text, pascal, sizeof pascal, kCFStringEncodingMacRoman));
    EXPECT_EQ(std::string(pascal, pascal + 3), "\x02n\x8E");
    Owned<CFStringRef> back(CFStringCreateWithPascalString(nullptr, pascal, kCFStringEncodingMacRoman));
    EXPECT_EQ(utf8(back), "né");
    const auto longText = string(std::string(256, 'x').c_str());
    EXPECT_FALSE(CFStringGetPascalString(longText, pascal, 1000, kCFStringEncodingMacRoman));
}

TEST(CFString, ConstantsAreOneObjectWithDirectPointers)
{
    CFStringRef once = __CFStringMakeConstantString("Größe"), again = __CFStringMakeConstantString("Größe");
    EXPECT_EQ(once, again);
    CFRelease(once);  // has no effect
    EXPECT_EQ(utf8(again), "Größe");
    EXPECT_TRUE(CFEqual(again, CFSTR("Größe")));
    EXPECT_EQ(CFHash(again), CFHash(CFSTR("Größe")));
    EXPECT_EQ(utf8(__CFStringMakeConstantString("\x8E")), "é") << "MacRoman";

    EXPECT_STREQ(CFStringGetCStringPtr(CFSTR("plain"), kCFStringEncodingMacRoman), "plain");
    EXPECT_EQ(CFStringGetCStringPtr(again, kCFStringEncodingMacRoman), nullptr);
    const unsigned char *pascal = CFStringGetPascalStringPtr(CFSTR("plain"), kCFStringEncodingMacRoman);
    ASSERT_NE(pascal, nullptr);
    EXPECT_EQ(std::string(pascal, pascal + 6), "\x05plain");
}

TEST(CFString, ComparesLiterallyUnlessToldOtherwise)
{
    const auto composed = string("é"), decomposed = string("e\u0301");
    EXPECT_FALSE(CFEqual(composed, decomposed));
    EXPECT_NE(CFStringCompare(composed, decomposed, 0), kCFCompareEqualTo);
    EXPECT_EQ(CFStringCompare(composed, decomposed, kCFCompareNonliteral), kCFCompareEqualTo);
    EXPECT_EQ(
        CFStringCompare(CFSTR("file9"), CFSTR("FILE10"), kCFCompareNumerically | kCFCompareCaseInsensitive),
        kCFCompareLessThan);
    const CFRange found =
        CFStringFind(CFSTR("abcabc"), CFSTR("BC"), kCFCompareCaseInsensitive | kCFCompareBackwards);
    EXPECT_EQ(found.location, 4);
    EXPECT_EQ(CFStringFind(CFSTR("abc"), CFSTR("x"), 0).location, kCFNotFound);
    EXPECT_TRUE(CFStringHasPrefix(CFSTR("abc"), CFSTR("ab")));
    EXPECT_FALSE(CFStringHasSuffix(CFSTR("abc"), CFSTR("ab")));
}

TEST(CFString, EditsInPlace)
{
    Owned<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
    CFStringAppendFormat(text, nullptr, CFSTR("%@ is %d"), CFSTR("six"), 6);
    CFStringInsert(text, 0, CFSTR("["));
    CFStringPad(text, CFSTR("abc"), 14, 1);
    EXPECT_EQ(utf8(text), "[six is 6bcabc");
    EXPECT_EQ(CFStringFindAndReplace(text, CFSTR("b"), CFSTR("--"), CFRangeMake(0, 14), 0), 2);
    EXPECT_EQ(utf8(text), "[six is 6--ca--c");
    CFStringPad(text, nullptr, 4, 0);
    EXPECT_EQ(utf8(text), "[six");
    CFStringDelete(text, CFRangeMake(3, 9));  // beyond the end: nothing
    CFStringReplaceAll(text, CFSTR("--a--b---"));
    CFStringTrim(text, CFSTR("--"));
    EXPECT_EQ(utf8(text), "a--b-");
    EXPECT_EQ(CFStringGetIntValue(CFSTR("  -99999999999x")), INT32_MIN);
    EXPECT_EQ(CFStringGetDoubleValue(CFSTR(" 2.5e3 apples")), 2500);
}

TEST(CFString, KnowsItsEncodings)
{
    const CFStringEncoding *list = CFStringGetListOfAvailableEncodings();
    EXPECT_EQ(list[0], CFStringEncoding(kCFStringEncodingMacRoman));
    size_t count = 0;
    for (; list[count] != kCFStringEncodingInvalidId; ++count) {
        EXPECT_TRUE(CFStringIsEncodingAvailable(list[count]));
        EXPECT_NE(CFStringGetNameOfEncoding(list[count]), nullptr);
        if (const unsigned long foundation = CFStringConvertEncodingToNSStringEncoding(list[count])) {
            EXPECT_EQ(CFStringConvertNSStringEncodingToEncoding(foundation), list[count]);
        }
        if (CFStringRef name = CFStringConvertEncodingToIANACharSetName(list[count])) {
            EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(name), list[count]) << utf8(name);
        }
    }
    EXPECT_GT(count, 50U);
    EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(CFSTR("Shift_JIS")),
              CFStringEncoding(kCFStringEncodingShiftJIS));
    EXPECT_EQ(CFStringConvertWindowsCodepageToEncoding(1252),
              CFStringEncoding(kCFStringEncodingWindowsLatin1));
    EXPECT_EQ(CFStringGetSmallestEncoding(CFSTR("abc")), CFStringEncoding(kCFStringEncodingASCII));
}

// --- collections ---------------------------------------------------------------------------------------

struct Counted {
    int retains = 0;
};
const void *retainCounted(CFAllocatorRef, const void *value)
{
    ++static_cast<Counted *>(const_cast<void *>(value))->retains;
    return value;
}
void releaseCounted(CFAllocatorRef, const void *value)
{
    --static_cast<Counted *>(const_cast<void *>(value))->retains;
}
Boolean equalStrings(const void *a, const void *b)
{
    return strcmp(static_cast<const char *>(a), static_cast<const char *>(b)) == 0;
}
CFHashCode hashString(const void *value) { return CFHashCode(*static_cast<const char *>(value)); }

TEST(CFArray, KeepsPointersAsItsCallbacksSay)
{
    Counted counted;
    const CFArrayCallBacks callBacks = {0, retainCounted, releaseCounted, nullptr, nullptr};
    {
        Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &callBacks));
        CFArrayAppendValue(array, &counted);
        CFArrayAppendValue(array, &counted);
        EXPECT_EQ(counted.retains, 2);
        CFArraySetValueAtIndex(array, 0, &counted);
        CFArrayRemoveValueAtIndex(array, 1);
        EXPECT_EQ(counted.retains, 1);
        Owned<CFArrayRef> copy(CFArrayCreateCopy(nullptr, array));
        EXPECT_EQ(counted.retains, 2);
        EXPECT_TRUE(CFEqual(copy, array));
    }
    EXPECT_EQ(counted.retains, 0);

    Owned<CFMutableArrayRef> plain(CFArrayCreateMutable(nullptr, 0, nullptr));
    for (intptr_t i : {3, 0, 2})
        CFArrayAppendValue(plain, reinterpret_cast<void *>(i));
    CFArraySortValues(
        plain, CFRangeMake(0, 3),
        [](const void *a, const void *b, void *) -> CFComparisonResult { return a < b ? -1 : a > b; },
        nullptr);
    EXPECT_EQ(CFArrayGetValueAtIndex(plain, 0), nullptr);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(plain, CFRangeMake(0, 3), reinterpret_cast<void *>(3)), 2);
    EXPECT_EQ(CFArrayGetValueAtIndex(plain, 3), nullptr);
    Owned<CFStringRef> description(CFCopyDescription(plain));  // sends no message to the pointers
}

TEST(CFArray, IsAnNSArray)
{
    tarvik::Pool pool;
    const void *values[] = {CFSTR("b"), CFSTR("a")};
    Owned<CFArrayRef> array(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
    EXPECT_TRUE(CFEqual(array, ([NSArray arrayWithObjects:@"b", @"a", nil])));
    EXPECT_EQ(CFGetTypeID(array), CFArrayGetTypeID());
    Owned<CFMutableArrayRef> more(CFArrayCreateMutableCopy(nullptr, 0, array));
    CFArrayInsertValueAtIndex(more, 9, CFSTR("c"));  // beyond the end: nothing
    CFArrayAppendArray(more, array, CFRangeMake(1, 1));
    CFArrayExchangeValuesAtIndices(more, 0, 2);
    EXPECT_TRUE(CFEqual(more, ([NSArray arrayWithObjects:@"a", @"a", @"b", nil])));
    EXPECT_EQ(CFArrayGetCountOfValue(more, CFRangeMake(0, 3), CFSTR("a")), 2);
}

TEST(CFDictionary, KeepsPointersAsItsCallbacksSay)
{
    Counted counted;
    const CFDictionaryKeyCallBacks keys = {0, nullptr, nullptr, nullptr, equalStrings, hashString};
    const CFDictionaryValueCallBacks values = {0, retainCounted, releaseCounted, nullptr, nullptr};
    {
        Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(nullptr, 0, &keys, &values));
        const std::string one = "key", other = "key";
        CFDictionarySetValue(dictionary, one.c_str(), &counted);
        CFDictionarySetValue(dictionary, other.c_str(), &counted);
        CFDictionaryAddValue(dictionary, other.c_str(), &counted);
        CFDictionaryReplaceValue(dictionary, "absent", &counted);
        EXPECT_EQ(CFDictionaryGetCount(dictionary), 1);
        EXPECT_EQ(counted.retains, 1);
        CFDictionarySetValue(dictionary, "null", &counted);
        CFDictionaryRemoveValue(dictionary, "key");
        EXPECT_EQ(CFDictionaryGetCountOfValue(dictionary, &counted), 1);
    }
    EXPECT_EQ(counted.retains, 0);

    Owned<CFMutableDictionaryRef> numbers(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    CFDictionarySetValue(numbers, nullptr, reinterpret_cast<void *>(7));
    CFDictionarySetValue(numbers, reinterpret_cast<void *>(1), nullptr);
    const void *found = numbers;
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(numbers, reinterpret_cast<void *>(1), &found));
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(CFDictionaryGetValue(numbers, nullptr), reinterpret_cast<void *>(7));
}

// --- the rest ------------------------------------------------------------------------------------------

TEST(CFNumber, ConvertsOrSaysThatItDoesNotFit)
{
    const auto read = [](CFNumberRef number, CFNumberType type) {
        int64_t raw = 0;
        const bool exact = CFNumberGetValue(number, type, &raw);
        return std::pair(exact, type == kCFNumberSInt16Type ? int64_t(int16_t(raw)) : raw);
    };
    const double wide = 70000.5;
    Owned<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberDoubleType, &wide));
    EXPECT_EQ(read(number, kCFNumberSInt16Type), std::pair(false, int64_t(32767)));
    EXPECT_EQ(read(number, kCFNumberSInt64Type), std::pair(false, int64_t(70000)));
    EXPECT_TRUE(CFNumberIsFloatType(number));
    const int8_t small = -3;
    Owned<CFNumberRef> integer(CFNumberCreate(nullptr, kCFNumberSInt8Type, &small));
    EXPECT_EQ(read(integer, kCFNumberLongType), std::pair(true, int64_t(-3)));
    EXPECT_EQ(CFNumberCompare(integer, number, nullptr), kCFCompareLessThan);
    EXPECT_NE(CFGetTypeID(integer), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue) && !CFBooleanGetValue(kCFBooleanFalse));
}

TEST(CFUUID, RoundTripsThroughTextAndBytes)
{
    Owned<CFUUIDRef> uuid(CFUUIDCreateFromString(nullptr, CFSTR("68753a44-4d6f-1226-9c60-0050e4c00067")));
    EXPECT_EQ(CFUUIDGetUUIDBytes(uuid).byte15, 0x67);
    Owned<CFUUIDRef> same(CFUUIDCreateFromUUIDBytes(nullptr, CFUUIDGetUUIDBytes(uuid)));
    Owned<CFStringRef> text(CFUUIDCreateString(nullptr, same));
    EXPECT_EQ(utf8(text), "68753A44-4D6F-1226-9C60-0050E4C00067");
    EXPECT_EQ(CFUUIDCreateFromString(nullptr, CFSTR("not one")), nullptr);
    Owned<CFUUIDRef> a(CFUUIDCreate(nullptr)), b(CFUUIDCreate(nullptr));
    EXPECT_FALSE(CFEqual(a, b));
}

TEST(CFData, RefusesRangesBeyondItsEnd)
{
    Owned<CFMutableDataRef> data(CFDataCreateMutable(nullptr, 0));
    CFDataAppendBytes(data, reinterpret_cast<const UInt8 *>("hello"), 5);
    UInt8 buffer[8] = "~~~~~~~";
    CFDataGetBytes(data, CFRangeMake(3, 5), buffer);
    EXPECT_EQ(buffer[0], '~');
    CFDataReplaceBytes(data, CFRangeMake(0, 1), reinterpret_cast<const UInt8 *>("JJ"), 2);
    CFDataDeleteBytes(data, CFRangeMake(5, 1));
    CFDataIncreaseLength(data, 1);
    EXPECT_EQ(bytesOf(data), std::string("JJell\0", 6));
}

}  // namespace
