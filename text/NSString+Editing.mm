#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/NSString+Editing.h>

#include "text/private/Occurrence.h"
#include "text/private/OwnText.h"
#include "text/private/Units.h"

#include <ranges>
#include <vector>

namespace {

bool deleteAnchored(NSMutableString *text, NSString *what, NSStringCompareOptions end)
{
    bool deleted = false;
    tarvik::attempt([&] {
        if (const auto found = tarvik::occurrence(text, what, NSLiteralSearch | NSAnchoredSearch | end)) {
            [text deleteCharactersInRange:*found];
            deleted = true;
        }
    });
    return deleted;
}

/// Where the text stands, from the last place to the first, as the replacing goes. Nothing is replaced meanwhile: a search
/// never looks behind the place where it begins. Unit for unit and without the platform's search, which loses its place in
/// decomposed text when it goes backwards, and looks through the whole text each time when it goes unit for unit.
std::vector<size_t> placesFromTheEnd(const std::u16string &text, const std::u16string &what)
{
    std::vector<size_t> places;
    if (what.empty())
        return places;
    for (size_t end = text.size(); end >= what.size();) {
        end = text.rfind(what, end - what.size());
        if (end == text.npos)
            break;
        places.push_back(end);
    }
    return places;
}

}  // namespace

@implementation NSMutableString (FoundationXEditing)

- (void)empty
{
    tarvik::attempt([self] { [self setString:@""]; });
}

- (void)setUTF8String:(const char *)text
{
    NSString *contents = text ? tarvik::nsstring(text) : nil;
    if (contents)
        tarvik::attempt([&] { [self setString:contents]; });
}

- (void)setLength:(uint32_t)length withFillString:(NSString *)fill
{
    NSString *piece = [fill length] ? [[fill copy] autorelease] : @" ";
    tarvik::attempt([&] {
        while ([self length] < length)
            [self appendString:piece];
        if ([self length] > length)
            [self deleteCharactersInRange:NSMakeRange(length, [self length] - length)];
    });
}

- (BOOL)deleteIfEndWith:(NSString *)text
{
    return deleteAnchored(self, text, NSBackwardsSearch);
}

- (BOOL)deleteIfStartWith:(NSString *)text
{
    return deleteAnchored(self, text, 0);
}

- (NSMutableString *)deleteToSubstring:(NSString *)text
{
    NSMutableString *front = nil;
    const bool ok = tarvik::attempt([&] {
        const auto found = tarvik::occurrence(self, text, 0);
        if (!found)
            return;
        front = [[[self substringToIndex:found->location] mutableCopy] autorelease];
        [self deleteCharactersInRange:NSMakeRange(0, NSMaxRange(*found))];
    });
    return ok ? front : nil;
}

- (uint32_t)find:(NSString *)text andReplaceAll:(NSString *)replacement
{
    if (!text || !replacement)
        return 0;
    tarvik::Pool pool;
    return tarvik::guarded("-[NSMutableString(FoundationX) find:andReplaceAll:]", __LINE__, uint32_t(0), [&] {
        const std::u16string what = tarvik::units(text);
        const auto found = placesFromTheEnd(tarvik::units(self), what);
        if (found.empty())
            return uint32_t(0);
        NSString *source = [[self copy] autorelease], *with = [[replacement copy] autorelease];
        tarvik::Splice splice(source);
        NSUInteger at = 0;
        for (size_t place : std::views::reverse(found)) {
            splice.keep(at, place);
            splice.add(with);
            at = place + what.size();
        }
        splice.keep(at, [source length]);
        [self setString:splice.result()];
        return uint32_t(found.size());
    });
}

- (BOOL)filterChracters:(int (*)(int))isInClass
{
    const auto bytes = tarvik::ownText(self);
    if (!isInClass || !bytes)
        return NO;
    bool isChanged = false;
    tarvik::Pool pool;
    return tarvik::attempt([&] {
               const size_t length = [self length];  // never more than the bytes
               std::vector<bool> kept(length);
               size_t count = 0;
               for (size_t i = length; i-- > 0;)
                   count += kept[i] = isInClass(static_cast<signed char>((*bytes)[i])) != 0;
               if (count == length)
                   return;
               tarvik::Splice splice([[self copy] autorelease]);
               for (size_t from = 0, to = 0; from < length; from = to) {
                   for (to = from + 1; to < length && kept[to] == kept[from];)
                       ++to;
                   if (kept[from])
                       splice.keep(from, to);
               }
               [self setString:splice.result()];
               isChanged = true;
           }) &&
           isChanged;
}

- (void)appendPathComponent:(NSString *)component
{
    if ([component length])
        tarvik::attempt([&] { [self setString:[self stringByAppendingPathComponent:component]]; });
}

@end

// Copies by `mutableCopy`: `stringWithString:` drops U+FEFF in the first place and is nil for half a surrogate pair.
@implementation NSString (FoundationXEditing)

- (NSMutableString *)chractersFilteredString:(int (*)(int))isInClass
{
    NSMutableString *copy = [[self mutableCopy] autorelease];
    [copy filterChracters:isInClass];
    return copy;
}

- (NSMutableString *)find:(NSString *)text andReplaceAllString:(NSString *)replacement
{
    NSMutableString *copy = [[self mutableCopy] autorelease];
    [copy find:text andReplaceAll:replacement];
    return copy;
}

- (NSMutableString *)stringBySetLength:(uint32_t)length withFillString:(NSString *)fill
{
    NSMutableString *copy = [[self mutableCopy] autorelease];
    [copy setLength:length withFillString:fill];
    return copy;
}

@end
