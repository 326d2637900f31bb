/// CFPropertyList.h: trees of dictionaries (with string keys), arrays, strings, numbers, booleans, dates and data.
///
/// Text is XML property-list text, version 1.0. Reading takes hostile text: documents nested deeper than 512 levels, documents
/// that declare entities, and everything that is no property list are refused; nothing is fetched from anywhere.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

CF_EXTERN_C_BEGIN

typedef CFOptionFlags CFPropertyListMutabilityOptions;
enum {
    kCFPropertyListImmutable                  = 0,
    kCFPropertyListMutableContainers          = 1,
    kCFPropertyListMutableContainersAndLeaves = 2
};

typedef CFIndex CFPropertyListFormat;
enum {
    kCFPropertyListOpenStepFormat    = 1,
    kCFPropertyListXMLFormat_v1_0    = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200
};

/// Reads XML property-list text (UTF-8, or UTF-16 and others as the XML declaration and byte order mark say).
/// Null on failure, with a text for people under errorString (owned by the caller) unless that is null.
CF_EXPORT CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData, CFOptionFlags mutabilityOption, CFStringRef *errorString);
/// Writes XML property-list text, UTF-8. Null for null and for a tree with something in it that a property list can't hold.
CF_EXPORT CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList);
/// A copy of the whole tree, mutable as the option says. Null for what is no property list.
CF_EXPORT CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef propertyList, CFOptionFlags mutabilityOption);
CF_EXPORT Boolean CFPropertyListIsValid(CFPropertyListRef propertyList, CFPropertyListFormat format);

CF_EXTERN_C_END
