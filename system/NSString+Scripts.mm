#import "NSString+Scripts.h"

#import "Scripts.h"

#import <Foundation/NSURL.h>

namespace {

/// Null for a path that makes no URL.
CFURLRef urlOf(NSString *path) { return [path length] ? (CFURLRef)[NSURL fileURLWithPath:path] : nullptr; }

}  // namespace

@implementation NSString (FoundationXScripts)

- (OSAID)loadOSAFile:(ComponentInstance)component
{
    return OSALoadFileFromURL(component, urlOf(self));
}

- (OSStatus)executeOSAScript:(AEDesc *)text returned:(AEDesc *)result
{
    return OSAExecuteScriptString((CFStringRef)self, text, result);
}

- (OSStatus)executeOSAScriptFile:(const AppleEvent *)event result:(AEDesc *)text returned:(AEDesc *)result
{
    return OSAExecuteScriptFileURL(urlOf(self), event, text, result);
}

- (OSStatus)runOSAScriptFile:(AEDesc *)text returned:(AEDesc *)result
{
    return [self executeOSAScriptFile:nullptr result:text returned:result];
}

@end
