#import <AppKit/AppKit.h>
#import <Tarvik/system/NSString+FileReferences.h>
#import <Tarvik/system/NSString+Processes.h>
#include <Tarvik/system/Processes.h>
#import <Tarvik/text/NSString+Parsing.h>
#import <Tarvik/ui/NSWorkspace+Applications.h>

@implementation NSWorkspace (AppKitX)

- (NSString *)applicationForName:(NSString *)name
                         creator:(NSString *)creator
                      identifier:(NSString *)identifier
{
    FSRef application;
    const OSStatus error = LSFindApplicationForInfo([creator OSType], (CFStringRef)identifier,
                                                    (CFStringRef)name, &application, nullptr);
    return error == noErr ? [NSString stringWithFSRef:&application] : nil;
}

- (NSString *)frontProcessPath
{
    FSRef front;
    return FSGetFrontProcess(&front) ? [NSString stringWithFSRef:&front] : nil;
}

- (NSString *)frontProcessIdentifier
{
    return [[NSBundle bundleWithPath:[self frontProcessPath]] bundleIdentifier];
}

- (BOOL)launchApplication:(NSString *)name withLaunchFlags:(LSLaunchFlags)flags
{
    return name ? [[self fullPathForApplication:name] launchWithLaunchFlags:flags] : NO;
}

@end
