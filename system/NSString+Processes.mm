#import <Tarvik/system/FileForks.h>
#import <Tarvik/system/NSString+FileReferences.h>
#import <Tarvik/system/NSString+ItemInfo.h>
#import <Tarvik/system/NSString+Processes.h>
#import <Tarvik/system/Processes.h>

@implementation NSString (FoundationXProcesses)

- (BOOL)isMachOBinary
{
    FSRef ref;
    return [self getFSRef:&ref] && FSIsMachOBinary(&ref);
}

- (BOOL)isRunningProcess
{
    FSRef ref;
    return [self getFSRef:&ref] && FSIsRunningProcess(&ref);
}

- (BOOL)isFrontProcess
{
    FSRef ref;
    return [self getFSRef:&ref] && FSIsFrontProcess(&ref);
}

- (BOOL)activateProcess
{
    FSRef ref;
    return [self getFSRef:&ref] && FSSetFrontProcess(&ref);
}

- (BOOL)getProcessSerialNumber:(ProcessSerialNumber *)number
{
    FSRef ref;
    if (!number)
        return NO;
    return FSGetProcessSerialNumber([self getFSRef:&ref] ? &ref : nullptr, number);
}

- (NSString *)applicationOfRole:(LSRolesMask)role
{
    FSRef ref, application;
    const bool found =
        [self getFSRef:&ref] && LSGetApplicationForItem(&ref, role, &application, nullptr) == noErr;
    return found ? [NSString stringWithFSRef:&application] : nil;
}

- (BOOL)launchWithLaunchFlags:(LSLaunchFlags)flags
{
    FSRef ref;
    if (![self getFSRef:&ref])
        return NO;
    LSLaunchFSRefSpec spec = {};
    if ([self isApplication]) {
        spec.appRef = &ref;
    } else {
        spec.numDocs = 1;
        spec.itemRefs = &ref;
    }
    spec.launchFlags = flags;
    return LSOpenFromRefSpec(&spec, nullptr) == noErr;
}

@end
