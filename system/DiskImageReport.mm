#include <CoreFoundation/CFPropertyList.h>
#import <Tarvik/support/ArrayRange.h>
#import <system/private/DiskImageReport.h>

namespace tarvik {
namespace {

/// The value under a key, if the container is a dictionary and the value of the class wanted; else nil.
template <class T>
T *value(id container, NSString *key)
{
    id found = [container isKindOfClass:[NSDictionary class]] ? [container objectForKey:key] : nil;
    return [found isKindOfClass:[T class]] ? found : nil;
}

NSString *firstMountPoint(id image)
{
    for (NSObject *entity : each(value<NSArray>(image, @"system-entities")))
        if (NSString *point = value<NSString>(entity, @"mount-point"))
            return point;
    return nil;
}

}  // namespace

id diskImageReport(NSData *text)
{
    if (!text)
        return nil;
    const CFPropertyListRef report = CFPropertyListCreateFromXMLData(
        kCFAllocatorDefault, reinterpret_cast<CFDataRef>(text), kCFPropertyListImmutable, nullptr);
    return [reinterpret_cast<id>(const_cast<void *>(report)) autorelease];
}

NSMutableDictionary *mountTable(id report)
{
    NSMutableDictionary *table = [NSMutableDictionary dictionary];
    for (NSObject *image : each(value<NSArray>(report, @"images"))) {
        NSString *path = value<NSString>(image, @"image-path");
        NSString *point = path ? firstMountPoint(image) : nil;
        if (point)
            [table setObject:path forKey:point];
    }
    return table;
}

}  // namespace tarvik
