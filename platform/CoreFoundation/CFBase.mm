#include "platform/CoreFoundation/private/Bridging.h"

#import <Tarvik/support/Bridge.h>

#include <cstdio>
#include <cstdlib>

using namespace tarvik::cf;

struct __CFAllocator {
    bool frees;
};

namespace {
constexpr __CFAllocator systemAllocator{true}, nullAllocator{false};

struct Type {
    Class type;
    const char *name;
};

/// The types by their identifiers; a class that is a kind of another one stands before it.
const Type *types()
{
    static const Type table[] = {
        {Nil, nullptr},
        {[NSString class], "CFString"},
        {[NSArray class], "CFArray"},
        {[NSDictionary class], "CFDictionary"},
        {[NSData class], "CFData"},
        {[[NSNumber numberWithBool:YES] class], "CFBoolean"},
        {[NSNumber class], "CFNumber"},
        {[NSDate class], "CFDate"},
        {[NSURL class], "CFURL"},
        {[NSUUID class], "CFUUID"},
        {[NSBundle class], "CFBundle"},
        {[NSNull class], "CFNull"},
        {Nil, nullptr},
    };
    return table;
}

enum : CFTypeID {
    stringType = 1,
    arrayType,
    dictionaryType,
    dataType,
    booleanType,
    numberType,
    dateType,
    urlType,
    uuidType,
    bundleType,
    nullType,
    pastTypes
};
}  // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = &systemAllocator;
const CFAllocatorRef kCFAllocatorMalloc = &systemAllocator;
const CFAllocatorRef kCFAllocatorNull = &nullAllocator;

// Objects that exist from the start: a host may use them in its own static initialisers.
const CFNullRef kCFNull = made<CFNullRef>([] { return [[NSNull null] retain]; });
const CFBooleanRef kCFBooleanTrue = made<CFBooleanRef>([] { return [[NSNumber numberWithBool:YES] retain]; });
const CFBooleanRef kCFBooleanFalse = made<CFBooleanRef>([] { return [[NSNumber numberWithBool:NO] retain]; });

namespace tarvik::cf {
void deallocate(CFAllocatorRef deallocator, const void *buffer)
{
    if (!deallocator || deallocator->frees)
        free(const_cast<void *>(buffer));
}
}  // namespace tarvik::cf

CFTypeRef CFRetain(CFTypeRef object) { return [ns(object) retain]; }

void CFRelease(CFTypeRef object)
{
    if ([ns(object) retainCount] == 1)
        perform([&] { [ns(object) release]; });  // the last one: deallocation may autorelease
    else
        [ns(object) release];
}

CFIndex CFGetRetainCount(CFTypeRef object) { return CFIndex([ns(object) retainCount]); }

Boolean CFEqual(CFTypeRef object1, CFTypeRef object2)
{
    if (object1 == object2)
        return true;
    if (!object1 || !object2)
        return false;
    return answer(false, [&] {
        if (![ns(object1) isEqual:ns(object2)])
            return false;
        // Foundation takes a composed and a decomposed character for equal; here they are two texts.
        return ![ns(object1) isKindOfClass:[NSString class]] || [ns(object1) length] == [ns(object2) length];
    });
}

CFHashCode CFHash(CFTypeRef object)
{
    return answer<CFHashCode>(0, [&] { return [ns(object) hash]; });
}

CFTypeID CFGetTypeID(CFTypeRef object)
{
    return answer<CFTypeID>(0, [&] {
        for (CFTypeID type = 1; object && type < pastTypes; ++type)
            if ([ns(object) isKindOfClass:types()[type].type])
                return type;
        return CFTypeID(0);
    });
}

CFStringRef CFCopyDescription(CFTypeRef object)
{
    return made<CFStringRef>([&] { return [[ns(object) description] copy]; });
}

CFStringRef CFCopyTypeIDDescription(CFTypeID type)
{
    if (type == 0 || type >= pastTypes)
        return nullptr;
    return made<CFStringRef>([&] { return [[NSString alloc] initWithUTF8String:types()[type].name]; });
}

void CFShow(CFTypeRef object)
{
    perform([&] {
        NSString *text = object ? [ns(object) description] : @"(null)";
        if (auto utf8 = tarvik::utf8(text))
            fprintf(stderr, "%s\n", utf8->c_str());
        else  // half a surrogate pair: what ASCII can say of it
            fprintf(stderr, "%.*s\n", int([text length]),
                    (const char *)[[text dataUsingEncoding:NSASCIIStringEncoding
                                      allowLossyConversion:YES] bytes]);
    });
}

CFTypeID CFNullGetTypeID(void) { return nullType; }
CFTypeID CFStringGetTypeID(void) { return stringType; }
CFTypeID CFArrayGetTypeID(void) { return arrayType; }
CFTypeID CFDictionaryGetTypeID(void) { return dictionaryType; }
CFTypeID CFDataGetTypeID(void) { return dataType; }
CFTypeID CFBooleanGetTypeID(void) { return booleanType; }
CFTypeID CFNumberGetTypeID(void) { return numberType; }
CFTypeID CFDateGetTypeID(void) { return dateType; }
CFTypeID CFURLGetTypeID(void) { return urlType; }
CFTypeID CFUUIDGetTypeID(void) { return uuidType; }
CFTypeID CFBundleGetTypeID(void) { return bundleType; }
