#import <Foundation/Foundation.h>
#import <Tarvik/core/Guard.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/text/PropertyLists.h>

#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFURLAccess.h>

namespace {

/// A list parsed from data, owned; says why there is none on the console log.
id newParsed(NSData *data, const char *method)
{
    CFStringRef error = nullptr;
    id list = (id)CFPropertyListCreateFromXMLData(kCFAllocatorDefault, CFDataRef(data),
                                                  kCFPropertyListImmutable, &error);
    if (error) {
        NSLog(@"%s error:%@", method, (NSString *)error);
        CFRelease(error);
    }
    return list;
}

/// What the initialisers from data of both classes do. `take` makes the receiver of a list of its kind. The
/// receiver is released where there is none.
template <class Take>
id fromXML(id receiver, NSData *data, Class kind, const char *method, unsigned long line, Take &&take)
{
    id made = nil;
    const bool ok = tarvik::guarded(method, line, [&] {
        auto list = tarvik::adopt<NSObject>(data ? newParsed(data, method) : nil);
        if ([list.get() isKindOfClass:kind])
            made = take(list.get());
    });
    if (!ok)
        return nil;
    if (!made)
        [receiver release];
    return made;
}

/// The data of the property-list file of a resource; nil when there is none.
NSData *resource(NSString *name, NSBundle *bundle)
{
    NSString *path = name ? [bundle ? bundle : [NSBundle mainBundle] pathForResource:name ofType:@""] : nil;
    return path ? [NSData dataWithContentsOfFile:path] : nil;
}

}  // namespace

@implementation NSArray (FoundationXPropertyLists)

- (id)initWithXMLData:(NSData *)data
{
    return fromXML(self, data, [NSArray class], "-[NSArray(FoundationX) initWithXMLData:]", __LINE__,
                   [&](id list) { return [self initWithArray:list]; });
}

+ (id)arrayWithXMLData:(NSData *)data
{
    return [[[self alloc] initWithXMLData:data] autorelease];
}

- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    return [self initWithXMLData:resource(name, bundle)];
}

+ (id)arrayWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    return [[[self alloc] initWithResource:name ofBundle:bundle] autorelease];
}

@end

@implementation NSDictionary (FoundationXPropertyLists)

- (id)initWithXMLData:(NSData *)data
{
    return fromXML(self, data, [NSDictionary class], "-[NSDictionary(FoundationX) initWithXMLData:]",
                   __LINE__, [&](id list) { return [self initWithDictionary:list]; });
}

+ (id)dictionaryWithXMLData:(NSData *)data
{
    return [[[self alloc] initWithXMLData:data] autorelease];
}

- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    return [self initWithXMLData:resource(name, bundle)];
}

+ (id)dictionaryWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    return [[[self alloc] initWithResource:name ofBundle:bundle] autorelease];
}

@end

@implementation NSData (FoundationXPropertyLists)

- (id)initWithPropertyList:(id)list
{
    auto xml = tarvik::adopt((NSData *)CFPropertyListCreateXMLData(kCFAllocatorDefault, list));
    if (!xml) {
        [self release];
        return nil;
    }
    return [self initWithData:xml.get()];
}

+ (id)dataWithPropertyList:(id)list
{
    return [[[self alloc] initWithPropertyList:list] autorelease];
}

@end

@implementation NSObject (FoundationXPropertyLists)

- (id)propertyListDeepCopy:(unsigned)mutability
{
    return (id)CFPropertyListCreateDeepCopy(kCFAllocatorDefault, self, mutability);
}

- (id)propertyListMutableCopy
{
    return [self propertyListDeepCopy:kCFPropertyListMutableContainersAndLeaves];
}

@end

CFMutableDictionaryRef CFDictionaryCreateMutableWithContentsOfURL(CFURLRef url)
{
    CFDataRef data = nullptr;
    SInt32 code = 0;
    if (!url ||
        !CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, url, &data, nullptr, nullptr, &code) ||
        code != 0)
        return nullptr;
    CFStringRef error = nullptr;
    CFPropertyListRef list = nullptr;
    if (CFDataGetLength(data) > 0)
        list = CFPropertyListCreateFromXMLData(kCFAllocatorDefault, data,
                                               kCFPropertyListMutableContainersAndLeaves, &error);
    CFRelease(data);
    if (error) {
        CFStringRef message = CFStringCreateWithFormat(kCFAllocatorDefault, nullptr,
                                                       CFSTR("CFPropertyListCreateFromXMLData:%@"), error);
        CFShow(message);
        CFRelease(message);
        CFRelease(error);
    }
    if (list && CFGetTypeID(list) != CFDictionaryGetTypeID()) {
        CFRelease(list);
        list = nullptr;
    }
    return CFMutableDictionaryRef(list);
}

CFMutableDictionaryRef CFDictionaryCreateMutableWithResource(CFStringRef name, CFStringRef type,
                                                             CFStringRef subDirectory, CFBundleRef bundle)
{
    CFBundleRef of = bundle ? bundle : CFBundleGetMainBundle();
    CFURLRef url = of ? CFBundleCopyResourceURL(of, name, type, subDirectory) : nullptr;
    if (!url)
        return nullptr;
    CFMutableDictionaryRef dictionary = CFDictionaryCreateMutableWithContentsOfURL(url);
    CFRelease(url);
    return dictionary;
}

Boolean CFDictionaryWriteToURL(CFDictionaryRef dictionary, CFURLRef url)
{
    if (!dictionary || !url)
        return false;
    CFDataRef xml = CFPropertyListCreateXMLData(kCFAllocatorDefault, dictionary);
    if (!xml)
        return false;
    SInt32 code = 0;
    const bool written = CFURLWriteDataAndPropertiesToResource(url, xml, nullptr, &code) && code == 0;
    CFRelease(xml);
    return written;
}
