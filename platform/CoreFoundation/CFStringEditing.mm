#include "platform/CoreFoundation/private/Bridging.h"

using namespace tarvik::cf;

namespace {

/// Foundation's search options. Comparison is by characters as they are stored unless non-literal is asked
/// for: the reverse of Foundation's own default.
NSUInteger searchOptions(CFStringCompareFlags flags)
{
    NSUInteger options =
        flags & (NSCaseInsensitiveSearch | NSBackwardsSearch | NSAnchoredSearch | NSNumericSearch);
    // A literal comparison of Foundation's looks at no numbers.
    return flags & (kCFCompareNonliteral | kCFCompareNumerically) ? options : options | NSLiteralSearch;
}

CFRange whole(CFStringRef string) { return CFRangeMake(0, CFStringGetLength(string)); }

}  // namespace

// --- comparing and searching ---------------------------------------------------------------------------

CFComparisonResult CFStringCompare(CFStringRef string1, CFStringRef string2, CFStringCompareFlags options)
{
    return CFStringCompareWithOptions(string1, string2, whole(string1), options);
}

CFComparisonResult CFStringCompareWithOptions(CFStringRef string1, CFStringRef string2, CFRange range1,
                                              CFStringCompareFlags options)
{
    if (!string1 || !string2 || !contains(CFStringGetLength(string1), range1))
        return string1 ? kCFCompareGreaterThan : string2 ? kCFCompareLessThan : kCFCompareEqualTo;
    return answer<CFComparisonResult>(kCFCompareEqualTo, [&] {
        const NSUInteger flags = searchOptions(options) & ~NSUInteger(NSBackwardsSearch | NSAnchoredSearch);
        NSString *one = [ns(string1) substringWithRange:nsRange(range1)], *other = ns(string2);
        if ((options & kCFCompareNumerically) && (options & kCFCompareCaseInsensitive)) {
            // Foundation heeds one of the two only.
            one = [one lowercaseString];
            other = [other lowercaseString];
        }
        return CFComparisonResult([one compare:other options:flags]);
    });
}

Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix)
{
    return CFStringFindWithOptions(string, prefix, whole(string), kCFCompareAnchored, nullptr) ||
           (string && prefix && !CFStringGetLength(prefix));
}

Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix)
{
    return CFStringFindWithOptions(string, suffix, whole(string), kCFCompareAnchored | kCFCompareBackwards,
                                   nullptr) ||
           (string && suffix && !CFStringGetLength(suffix));
}

CFRange CFStringFind(CFStringRef string, CFStringRef what, CFStringCompareFlags options)
{
    CFRange found = CFRangeMake(kCFNotFound, 0);
    CFStringFindWithOptions(string, what, whole(string), options, &found);
    return found;
}

Boolean CFStringFindWithOptions(CFStringRef string, CFStringRef what, CFRange range,
                                CFStringCompareFlags options, CFRange *result)
{
    if (!string || !what || CFStringGetLength(what) == 0 || !contains(CFStringGetLength(string), range))
        return false;
    return answer(false, [&] {
        const NSRange found = [ns(string) rangeOfString:ns(what)
                                                options:searchOptions(options)
                                                  range:nsRange(range)];
        if (found.length == 0)
            return false;
        if (result)
            *result = CFRangeMake(CFIndex(found.location), CFIndex(found.length));
        return true;
    });
}

CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef, CFArrayRef strings, CFStringRef separator)
{
    if (!strings || !separator)
        return nullptr;
    return owned<CFStringRef>([&] { return [ns(strings) componentsJoinedByString:ns(separator)]; });
}

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef, CFStringRef string, CFStringRef separator)
{
    if (!string || !separator)
        return nullptr;
    return owned<CFArrayRef>([&] { return [ns(string) componentsSeparatedByString:ns(separator)]; });
}

// --- changing ------------------------------------------------------------------------------------------

void CFStringAppend(CFMutableStringRef string, CFStringRef text)
{
    if (text)
        perform([&] { [ns(string) appendString:ns(text)]; });
}

void CFStringAppendCharacters(CFMutableStringRef string, const UniChar *characters, CFIndex count)
{
    CFStringRef text = CFStringCreateWithCharacters(nullptr, characters, count);
    CFStringAppend(string, text);
    CFRelease(text);
}

void CFStringAppendCString(CFMutableStringRef string, const char *text, CFStringEncoding encoding)
{
    CFStringRef more = CFStringCreateWithCString(nullptr, text, encoding);
    CFStringAppend(string, more);
    CFRelease(more);
}

void CFStringAppendPascalString(CFMutableStringRef string, ConstStr255Param text, CFStringEncoding encoding)
{
    CFStringRef more = CFStringCreateWithPascalString(nullptr, text, encoding);
    CFStringAppend(string, more);
    CFRelease(more);
}

void CFStringAppendFormat(CFMutableStringRef string, CFDictionaryRef formatOptions, CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringAppendFormatAndArguments(string, formatOptions, format, arguments);
    va_end(arguments);
}

void CFStringAppendFormatAndArguments(CFMutableStringRef string, CFDictionaryRef formatOptions,
                                      CFStringRef format, va_list arguments)
{
    CFStringRef text = CFStringCreateWithFormatAndArguments(nullptr, formatOptions, format, arguments);
    CFStringAppend(string, text);
    CFRelease(text);
}

void CFStringInsert(CFMutableStringRef string, CFIndex index, CFStringRef text)
{
    CFStringReplace(string, CFRangeMake(index, 0), text);
}

void CFStringDelete(CFMutableStringRef string, CFRange range)
{
    CFStringReplace(string, range, CFStringRef(@""));
}

void CFStringReplace(CFMutableStringRef string, CFRange range, CFStringRef text)
{
    if (text && contains(CFStringGetLength(string), range))
        perform([&] { [ns(string) replaceCharactersInRange:nsRange(range) withString:ns(text)]; });
}

void CFStringReplaceAll(CFMutableStringRef string, CFStringRef text)
{
    if (text)
        perform([&] { [ns(string) setString:ns(text)]; });
}

CFIndex CFStringFindAndReplace(CFMutableStringRef string, CFStringRef what, CFStringRef with, CFRange range,
                               CFStringCompareFlags options)
{
    if (!string || !what || !with || CFStringGetLength(what) == 0 ||
        !contains(CFStringGetLength(string), range))
        return 0;
    return answer<CFIndex>(0, [&] {
        return CFIndex([ns(string) replaceOccurrencesOfString:ns(what)
                                                   withString:ns(with)
                                                      options:searchOptions(options)
                                                        range:nsRange(range)]);
    });
}

void CFStringPad(CFMutableStringRef string, CFStringRef pad, CFIndex length, CFIndex indexIntoPad)
{
    const CFIndex now = CFStringGetLength(string), padLength = CFStringGetLength(pad);
    if (!string || length < 0)
        return;
    if (length <= now) {
        CFStringDelete(string, CFRangeMake(length, now - length));
        return;
    }
    if (padLength == 0 || indexIntoPad < 0)
        return;
    perform([&] {
        NSMutableString *fill = [NSMutableString string];
        for (CFIndex at = indexIntoPad % padLength; CFIndex([fill length]) < length - now; at = 0)
            [fill appendString:at ? [ns(pad) substringFromIndex:NSUInteger(at)] : ns(pad)];
        [ns(string) appendString:[fill substringToIndex:NSUInteger(length - now)]];
    });
}

void CFStringTrim(CFMutableStringRef string, CFStringRef text)
{
    const CFIndex length = CFStringGetLength(text);
    if (length == 0)
        return;
    while (CFStringHasPrefix(string, text))
        CFStringDelete(string, CFRangeMake(0, length));
    while (CFStringHasSuffix(string, text))
        CFStringDelete(string, CFRangeMake(CFStringGetLength(string) - length, length));
}

void CFStringTrimWhitespace(CFMutableStringRef string)
{
    perform([&] {
        NSCharacterSet *white = [NSCharacterSet whitespaceAndNewlineCharacterSet];
        [ns(string) setString:[ns(string) stringByTrimmingCharactersInSet:white]];
    });
}

void CFStringLowercase(CFMutableStringRef string, const void *)
{
    perform([&] { [ns(string) setString:[ns(string) lowercaseString]]; });
}

void CFStringUppercase(CFMutableStringRef string, const void *)
{
    perform([&] { [ns(string) setString:[ns(string) uppercaseString]]; });
}

void CFStringCapitalize(CFMutableStringRef string, const void *)
{
    perform([&] { [ns(string) setString:[ns(string) capitalizedString]]; });
}

void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm form)
{
    perform([&] {
        NSString *normal = ns(string);
        switch (form) {
        case kCFStringNormalizationFormD: normal = [normal decomposedStringWithCanonicalMapping]; break;
        case kCFStringNormalizationFormKD: normal = [normal decomposedStringWithCompatibilityMapping]; break;
        case kCFStringNormalizationFormC: normal = [normal precomposedStringWithCanonicalMapping]; break;
        case kCFStringNormalizationFormKC: normal = [normal precomposedStringWithCompatibilityMapping]; break;
        }
        [ns(string) setString:normal];
    });
}
