#import "platform/AppKit/private/CommandRelay.h"
#import "platform/AppKit/private/WindowReference.h"

#import <AppKit/AppKit.h>
#include <Carbon/Controls.h>
#include <Carbon/IBCarbonRuntime.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <cstdlib>

/// The File's Owner of the files loaded here: it has every outlet, and remembers what each led to.
@interface InterfaceOwner : NSObject {
    NSMutableDictionary *mOutlets;
}
- (NSDictionary *)outlets;  ///< by name, the first letter a capital
@end

@implementation InterfaceOwner

- (id)init
{
    if ((self = [super init]))
        mOutlets = [[NSMutableDictionary alloc] init];
    return self;
}

- (void)dealloc
{
    [mOutlets release];
    [super dealloc];
}

- (NSDictionary *)outlets
{
    return mOutlets;
}

- (BOOL)respondsToSelector:(SEL)selector
{
    NSString *name = NSStringFromSelector(selector);
    return [super respondsToSelector:selector] || ([name hasPrefix:@"set"] && [name hasSuffix:@":"]);
}

- (NSMethodSignature *)methodSignatureForSelector:(SEL)selector
{
    NSMethodSignature *known = [super methodSignatureForSelector:selector];
    return known ? known : [NSMethodSignature signatureWithObjCTypes:"v@:@"];
}

- (void)forwardInvocation:(NSInvocation *)invocation
{
    NSString *setter = NSStringFromSelector([invocation selector]);
    if (![setter hasPrefix:@"set"] || ![setter hasSuffix:@":"])
        return;
    id value = nil;
    [invocation getArgument:&value atIndex:2];
    if (value)
        [mOutlets setObject:value forKey:[setter substringWithRange:NSMakeRange(3, [setter length] - 4)]];
}

@end

struct OpaqueIBNibRef {
    tarvik::Retained<NSString *> path;
};

namespace {

NSString *asOutlet(NSString *name)
{
    return [name length] ? [[[name substringToIndex:1] uppercaseString]
                               stringByAppendingString:[name substringFromIndex:1]]
                         : @"";
}

/// Four characters as a code; nothing for another number of them.
std::optional<OSType> codeOf(NSString *text)
{
    NSData *bytes = [text dataUsingEncoding:NSMacOSRomanStringEncoding];
    if ([bytes length] != 4)
        return std::nullopt;
    const auto *c = static_cast<const uint8_t *>([bytes bytes]);
    return OSType(c[0]) << 24 | OSType(c[1]) << 16 | OSType(c[2]) << 8 | c[3];
}

/// "Control demo 7" and "Command save" are what a view is called, the latter a menu item too.
void nameObject(NSString *outlet, id object)
{
    NSArray *words = [outlet componentsSeparatedByString:@" "];
    const std::optional<OSType> code = [words count] > 1 ? codeOf([words objectAtIndex:1]) : std::nullopt;
    if (!code)
        return;
    const bool isView = [object isKindOfClass:[NSView class]];
    if ([[words objectAtIndex:0] isEqual:@"Control"] && [words count] == 3 && isView) {
        const ControlID name = {*code, SInt32([[words objectAtIndex:2] intValue])};
        SetControlID([(NSView *)object controlRef], &name);
    } else if ([[words objectAtIndex:0] isEqual:@"Command"] && [words count] == 2) {
        if (isView)
            SetControlCommandID([(NSView *)object controlRef], *code);
        else if ([object isKindOfClass:[NSMenuItem class]])
            RelayCommand(object, *code);
    }
}

/// Loads the file and hands out the object of the name; the others go, windows among them unseen.
template <class Take>
OSStatus takeFromNib(IBNibRef nib, CFStringRef name, Class type, Take &&take)
{
    if (!nib || !name)
        return paramErr;
    OSStatus status = kIBCarbonRuntimeCantFindObject;
    tarvik::attempt([&] {
        [NSApplication sharedApplication];
        const auto owner = tarvik::adopt([[InterfaceOwner alloc] init]);
        NSMutableArray *objects = [NSMutableArray array];
        NSDictionary *context = [NSDictionary
            dictionaryWithObjectsAndKeys:owner.get(), NSNibOwner, objects, NSNibTopLevelObjects, nil];
        if (![NSBundle loadNibFile:nib->path.get() externalNameTable:context withZone:nullptr])
            return;
        NSDictionary *outlets = [owner.get() outlets];
        for (NSString *outlet : tarvik::each<NSString>([outlets allKeys]))
            nameObject(outlet, [outlets objectForKey:outlet]);
        id found = [outlets objectForKey:asOutlet((NSString *)name)];
        if (found)
            status = [found isKindOfClass:type] ? OSStatus(noErr)
                                                : OSStatus(kIBCarbonRuntimeObjectNotOfRequestedType);
        if (status == noErr)
            take(found, owner.get());
        for (NSObject *object : tarvik::each([[objects copy] autorelease])) {
            if (status != noErr || object != found) {
                if ([object isKindOfClass:[NSWindow class]])
                    [(NSWindow *)object setReleasedWhenClosed:NO], [(NSWindow *)object close];
            }
            [object release];  // the loader's reference, which is the caller's to release
        }
    });
    return status;
}

}  // namespace

OSStatus CreateNibReferenceWithCFBundle(CFBundleRef bundle, CFStringRef nibName, IBNibRef *outNib)
{
    if (!bundle || !nibName || !outNib)
        return paramErr;
    OSStatus status = kIBCarbonRuntimeCantFindNibFile;
    tarvik::attempt([&] {
        for (NSString *type : {@"xib", @"nib", @"gorm"}) {
            if (NSString *path = [(NSBundle *)bundle pathForResource:(NSString *)nibName ofType:type]) {
                *outNib = new OpaqueIBNibRef{tarvik::retain(path)};
                status = noErr;
                return;
            }
        }
    });
    return status;
}

OSStatus CreateNibReference(CFStringRef nibName, IBNibRef *outNib)
{
    return CreateNibReferenceWithCFBundle(CFBundleGetMainBundle(), nibName, outNib);
}

void DisposeNibReference(IBNibRef nib) { delete nib; }

OSStatus CreateWindowFromNib(IBNibRef nib, CFStringRef name, WindowRef *outWindow)
{
    if (!outWindow)
        return paramErr;
    return takeFromNib(nib, name, [NSWindow class], [&](NSWindow *window, InterfaceOwner *owner) {
        [window retain];
        [window setReleasedWhenClosed:NO];
        [window orderOut:nil];
        *outWindow = ReferenceOfWindow(window);
        (*outWindow)->owned = true;
        (*outWindow)->fileOwner = tarvik::retain<NSObject>(owner);
    });
}

OSStatus SetMenuBarFromNib(IBNibRef nib, CFStringRef name)
{
    return takeFromNib(nib, name, [NSMenu class], [](NSMenu *menu, InterfaceOwner *owner) {
        static tarvik::Retained<InterfaceOwner *> ownerOfMenuBar;
        [NSApp setMainMenu:menu];
        ownerOfMenuBar = tarvik::retain(owner);
    });
}
