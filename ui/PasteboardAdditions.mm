#import <AppKit/NSDragging.h>
#import <AppKit/NSPasteboard.h>
#import <Foundation/NSArray.h>
#import <Tarvik/ui/PasteboardAdditions.h>

namespace {

/// The dragging pasteboard when it holds the type.
NSPasteboard *pasteboardWith(id object, NSString *type)
{
    if (!type || ![object respondsToSelector:@selector(draggingPasteboard)])
        return nil;
    NSPasteboard *pasteboard = [object draggingPasteboard];
    return [[pasteboard types] containsObject:type] ? pasteboard : nil;
}

}  // namespace

@implementation NSObject (PasteboardAdditions)
- (NSData *)pasteboardDataForType:(NSString *)type
{
    return [pasteboardWith(self, type) dataForType:type];
}
- (id)pasteboardPropertyListForType:(NSString *)type
{
    return [pasteboardWith(self, type) propertyListForType:type];
}
- (NSString *)pasteboardStringForType:(NSString *)type
{
    return [pasteboardWith(self, type) stringForType:type];
}
@end
