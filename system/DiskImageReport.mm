#include <CoreFoundation/CFPropertyList.h>
#import <Tarvik/support/ArrayRange.h>
#import <system/private/DiskImageReport.h>

#include <algorithm>
#include <string_view>

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

/// Property lists have other forms too, which no tool prints as its report.
bool beginsAsXML(NSData *text)
{
    std::string_view bytes(static_cast<const char *>([text bytes]), [text length]);
    bytes.remove_prefix(std::min(bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n"), bytes.size()));
    return bytes.starts_with("<?xml") || bytes.starts_with("<!DOCTYPE") || bytes.starts_with("<plist");
}

}  // namespace

id diskImageReport(NSData *text)
{
    if (!beginsAsXML(text))
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
