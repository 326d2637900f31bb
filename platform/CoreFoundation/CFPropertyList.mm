#include "platform/CoreFoundation/private/Bridging.h"
#include "platform/Foundation/private/PropertyLists.h"

#import <Tarvik/support/Bridge.h>

using namespace tarvik::cf;
namespace plist = tarvik::plist;

namespace {

plist::Mutability mutabilityOf(CFOptionFlags option)
{
    if (option & kCFPropertyListMutableContainersAndLeaves)
        return plist::Mutability::containersAndLeaves;
    return option & kCFPropertyListMutableContainers ? plist::Mutability::containers
                                                     : plist::Mutability::none;
}

}  // namespace

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption, CFStringRef *errorString)
{
    std::string why;
    auto list = made<CFPropertyListRef>(
        [&] { return plist::newFromData(ns(xmlData), mutabilityOf(mutabilityOption), why); });
    if (errorString) {
        *errorString = nullptr;
        if (!list)
            *errorString = made<CFStringRef>([&] {
                NSString *text = tarvik::nsstring(why);
                return [text ? text : @"no property list" copy];
            });
    }
    return list;
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef, CFPropertyListRef propertyList)
{
    std::string why;
    return made<CFDataRef>([&] { return plist::newXML(ns(propertyList), why); });
}

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef, CFPropertyListRef propertyList,
                                               CFOptionFlags mutabilityOption)
{
    std::string why;
    return made<CFPropertyListRef>(
        [&] { return plist::newDeepCopy(ns(propertyList), mutabilityOf(mutabilityOption), why); });
}

Boolean CFPropertyListIsValid(CFPropertyListRef propertyList, CFPropertyListFormat)
{
    CFPropertyListRef copy = CFPropertyListCreateDeepCopy(nullptr, propertyList, kCFPropertyListImmutable);
    CFRelease(copy);
    return copy != nullptr;
}
