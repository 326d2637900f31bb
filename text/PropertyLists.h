/// \file
/// Property lists: dictionaries and arrays from XML, files and bundle resources, and back.
///
///     NSData *xml = [NSData dataWithPropertyList:list];
///     NSArray *rows = [NSArray arrayWithXMLData:xml];             // nil when it is not an array's
///     CFMutableDictionaryRef options = CFDictionaryCreateMutableWithResource(CFSTR("Options"), CFSTR("plist"), NULL, NULL);
///
/// What is read is checked by the platform's reader: hostile or damaged text gives the failure, never a crash.
/// Names with `init`, `copy`, `Create` hand out an owned object. Nil arguments give the failure.
/// Thread: any; messages about text that can't be read go to the console log (NSLog) or standard error (CFShow).
#pragma once
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __OBJC__
#import <Foundation/NSArray.h>
#import <Foundation/NSData.h>
#import <Foundation/NSDictionary.h>

@class NSBundle;

@interface NSArray (FoundationXPropertyLists)
/// From XML property-list data. Nil for nil, for a list whose root is no array, and for text that is none: then
/// "-[NSArray(FoundationX) initWithXMLData:] error:REASON" is on the console log.
- (id)initWithXMLData:(NSData *)data;
+ (id)arrayWithXMLData:(NSData *)data;
/// From the property-list file NAME (extension included) of a bundle's resources; a nil bundle means the main one.
- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;
+ (id)arrayWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;
@end

@interface NSDictionary (FoundationXPropertyLists)
/// As the array's.
- (id)initWithXMLData:(NSData *)data;
+ (id)dictionaryWithXMLData:(NSData *)data;
- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;
+ (id)dictionaryWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;
@end

@interface NSData (FoundationXPropertyLists)
/// The XML text of a property list; nil for nil and for what a property list can't hold.
- (id)initWithPropertyList:(id)list;
+ (id)dataWithPropertyList:(id)list;
@end

@interface NSObject (FoundationXPropertyLists)
/// A deep copy of a property list, owned by the caller. Option 0: immutable, 1: mutable containers, 2: mutable leaves too.
/// Nil for what a property list can't hold.
- (id)propertyListDeepCopy:(unsigned)mutability;
/// The same with option 2.
- (id)propertyListMutableCopy;
@end
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// Reads the XML property list at a URL, containers and leaves mutable. Null when nothing can be read, when its root is no dictionary,
/// and for text that is none: then "CFPropertyListCreateFromXMLData:REASON" is on standard error.
CFMutableDictionaryRef CFDictionaryCreateMutableWithContentsOfURL(CFURLRef url);
/// The same for a bundle's resource; a null bundle means the main one.
CFMutableDictionaryRef CFDictionaryCreateMutableWithResource(CFStringRef name, CFStringRef type,
                                                             CFStringRef subDirectory, CFBundleRef bundle);
/// Writes a dictionary as XML property-list text: the file is replaced whole, or left as it was (false).
Boolean CFDictionaryWriteToURL(CFDictionaryRef dictionary, CFURLRef url);

#ifdef __cplusplus
}
#endif
