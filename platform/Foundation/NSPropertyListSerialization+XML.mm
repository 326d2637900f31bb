// gnustep-base's XML property lists lose text: its writer puts a character above U+FFFF down as the ten
// characters of an escape
// (\UD83D\UDE00), which its reader takes for one character of the low half; text that happens to hold \U0041
// comes back as A; CDATA comes back empty. The reader takes what is no list for one (keys without values, two
// roots, bad numbers), refuses a byte order mark and UTF-16, and neither is quick. The user defaults read and
// write through these methods, so they lost text too. XML goes through the platform's own reader and writer
// here, and so does the reading of the binary form, whose bytes gnustep-base's reader believes. The other
// forms stay with gnustep-base, whose reader of text ends the process with a stack that is full when brackets
// are nested 100,000 deep: such text is refused.
#include "platform/Foundation/private/BinaryPropertyList.h"
#include "platform/Foundation/private/HiddenMethod.h"
#include "platform/Foundation/private/PropertyLists.h"

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

namespace {

using tarvik::plist::Mutability;

constexpr char kTooDeep[] = "nested too deeply";

Mutability mutabilityOf(NSUInteger options)
{
    if (options & NSPropertyListMutableContainersAndLeaves)
        return Mutability::containersAndLeaves;
    return options & NSPropertyListMutableContainers ? Mutability::containers : Mutability::none;
}

NSString *reason(const std::string &why) { return tarvik::nsstring("Property list: " + why); }

NSError *errorOf(const std::string &why)
{
    NSString *text = reason(why) ? reason(why) : @"Property list";
    NSDictionary *about = [NSDictionary
        dictionaryWithObjectsAndKeys:text, NSLocalizedDescriptionKey, text, @"NSDebugDescription", nil];
    return [NSError errorWithDomain:NSCocoaErrorDomain code:0 userInfo:about];
}

enum class Form { xml, binary, other };

Form formOf(NSData *data)
{
    const auto *bytes = static_cast<const uint8_t *>([data bytes]);
    return tarvik::plist::looksLikeXML(bytes, [data length])  ? Form::xml
           : tarvik::plist::looksBinary(bytes, [data length]) ? Form::binary
                                                              : Form::other;
}

id read(NSData *data, Form form, NSUInteger options, NSPropertyListFormat *format, std::string &why)
{
    const auto newList = form == Form::xml ? tarvik::plist::newFromXML : tarvik::plist::newFromBinary;
    id list = newList(static_cast<const uint8_t *>([data bytes]), [data length], mutabilityOf(options), why);
    if (format)
        *format = form == Form::xml ? NSPropertyListXMLFormat_v1_0 : NSPropertyListBinaryFormat_v1_0;
    return [list autorelease];
}

/// Foundation's own class method behind one of the category's.
template <class Function>
Function original(SEL name)
{
    return tarvik::hiddenMethod<Function>(object_getClass([NSPropertyListSerialization class]), name);
}

}  // namespace

@implementation NSPropertyListSerialization (XML)

+ (NSData *)dataFromPropertyList:(id)list
                          format:(NSPropertyListFormat)format
                errorDescription:(NSString **)text
{
    if (format != NSPropertyListXMLFormat_v1_0) {
        static const auto write = original<NSData *(*)(id, SEL, id, NSPropertyListFormat, NSString **)>(_cmd);
        return write(self, _cmd, list, format, text);
    }
    std::string why;
    NSData *data = [tarvik::plist::newXML(list, why) autorelease];
    if (text)
        *text = data ? nil : reason(why);
    return data;
}

+ (NSData *)dataWithPropertyList:(id)list
                          format:(NSPropertyListFormat)format
                         options:(NSPropertyListWriteOptions)options
                           error:(NSError **)error
{
    if (format != NSPropertyListXMLFormat_v1_0) {
        static const auto write =
            original<NSData *(*)(id, SEL, id, NSPropertyListFormat, NSPropertyListWriteOptions, NSError **)>(
                _cmd);
        return write(self, _cmd, list, format, options, error);
    }
    std::string why;
    NSData *data = [tarvik::plist::newXML(list, why) autorelease];
    if (error)
        *error = data ? nil : errorOf(why);
    return data;
}

+ (id)propertyListFromData:(NSData *)data
          mutabilityOption:(NSPropertyListMutabilityOptions)options
                    format:(NSPropertyListFormat *)format
          errorDescription:(NSString **)text
{
    const Form form = formOf(data);
    if (form == Form::other) {
        if (tarvik::plist::isTextTooDeep(data)) {
            if (text)
                *text = reason(kTooDeep);
            return nil;
        }
        static const auto readOther = original<id (*)(id, SEL, NSData *, NSPropertyListMutabilityOptions,
                                                      NSPropertyListFormat *, NSString **)>(_cmd);
        return readOther(self, _cmd, data, options, format, text);
    }
    std::string why;
    id list = read(data, form, options, format, why);
    if (text)
        *text = list ? nil : reason(why);
    return list;
}

+ (id)propertyListWithData:(NSData *)data
                   options:(NSPropertyListReadOptions)options
                    format:(NSPropertyListFormat *)format
                     error:(NSError **)error
{
    const Form form = formOf(data);
    if (form == Form::other) {
        if (tarvik::plist::isTextTooDeep(data)) {
            if (error)
                *error = errorOf(kTooDeep);
            return nil;
        }
        static const auto readOther = original<id (*)(id, SEL, NSData *, NSPropertyListReadOptions,
                                                      NSPropertyListFormat *, NSError **)>(_cmd);
        return readOther(self, _cmd, data, options, format, error);
    }
    std::string why;
    id list = read(data, form, options, format, why);
    if (error)
        *error = list ? nil : errorOf(why);
    return list;
}

@end
