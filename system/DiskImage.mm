#include <Tarvik/core/Guard.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/system/CommandTool.h>
#import <Tarvik/system/DiskImage.h>
#include <Workspace/SharedWorkspace.h>
#import <system/private/DiskImageReport.h>

#include <utility>

NSString *const kDiskImageEditorPath = @"/usr/bin/hdiutil";
NSString *const kDiskImageMounterPath = @"/usr/bin/hdid";

namespace {

// The lines that the log names, wherever the code has moved.
constexpr unsigned long kCreateLine = 174, kMountLine = 200;

/// What the tool wrote to standard output, whatever its exit status; nil when it could not be run.
tarvik::Retained<NSData *> outputOf(NSString *path, NSArray *arguments)
{
    const auto tool = tarvik::adopt([[CommandTool alloc] initWithPath:path]);
    [tool.get() setArguments:arguments];
    [tool.get() setReadStandardOutput:YES];
    return [tool.get() run:NO] ? tarvik::retain<NSData>([tool.get() standardOutputData])
                               : tarvik::Retained<NSData *>();
}

void logToConsole(const char *method, NSData *output)
{
    NSLog(@"%s\n%@\n", method,
          [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease]);
}

}  // namespace

@implementation DiskImage

// ---- What is mounted

+ (id)frameworkInfomation
{
    const auto output = outputOf(kDiskImageEditorPath, [NSArray arrayWithObjects:@"info", @"-plist", nil]);
    return output ? tarvik::diskImageReport(output.get()) : nil;
}

+ (NSMutableDictionary *)mountingVolumes
{
    return tarvik::mountTable([self frameworkInfomation]);
}

+ (NSString *)filepathOfMountingVolume:(NSString *)mountPoint
{
    return mountPoint ? [[self mountingVolumes] objectForKey:mountPoint] : nil;
}

+ (NSString *)mountingVolumeOfFilepath:(NSString *)path
{
    if (!path)
        return nil;
    NSDictionary *mounted = [self mountingVolumes];
    // Letter by letter: to isEqual: the normal forms of a name are one, and here they are names of two files.
    for (NSString *point : tarvik::each<NSString>([mounted allKeys]))
        if ([[mounted objectForKey:point] compare:path options:NSLiteralSearch] == NSOrderedSame)
            return point;
    return nil;
}

// ---- Creation

+ (id)diskImageWithFilepath:(NSString *)path
{
    return [[[self alloc] initWithFilepath:path] autorelease];
}

+ (id)diskImageWithMountingVolume:(NSString *)mountPoint
{
    return [[[self alloc] initWithMountingVolume:mountPoint] autorelease];
}

- (id)init
{
    NSLog(@"%s You can't use this message.", "-[DiskImage init]");
    return nil;
}

- (id)initWithFilepath:(NSString *)path
{
    if (!(self = [super init]))
        return nil;
    mFilePath = path ? [[NSString alloc] initWithString:path] : nil;
    if (!mFilePath) {
        [self release];
        return nil;
    }
    return self;
}

- (id)initWithMountingVolume:(NSString *)mountPoint
{
    return [self initWithFilepath:[DiskImage filepathOfMountingVolume:mountPoint]];
}

- (void)dealloc
{
    [mFilePath release];
    [super dealloc];
}

- (NSString *)description
{
    return [NSString stringWithFormat:@"DiskImage 0x%08X {filepath=%@, mountPoint=%@}",
                                      static_cast<unsigned>(reinterpret_cast<uintptr_t>(self)),
                                      [self filepath], [self mountPoint]];
}

// ---- Settings

- (BOOL)logToConsole
{
    return mLogToConsole;
}
- (void)setLogToConsole:(BOOL)flag
{
    mLogToConsole = flag;
}

- (NSString *)filepath
{
    return mFilePath;
}

- (void)setFilepath:(NSString *)path
{
    NSString *copy = path ? [[NSString alloc] initWithString:path] : nil;
    if (copy)
        [std::exchange(mFilePath, copy) release];
}

- (NSString *)mountPoint
{
    return [DiskImage mountingVolumeOfFilepath:mFilePath];
}

// ---- Work

- (BOOL)createFromDirectory:(NSString *)folder
{
    if (!folder)
        return NO;
    return tarvik::guarded("-[DiskImage createFromDirectory:]", kCreateLine, NO, [&]() -> BOOL {
        const auto output =
            outputOf(kDiskImageEditorPath,
                     [NSArray arrayWithObjects:@"create", @"-srcfolder", folder, self->mFilePath, nil]);
        if (output && self->mLogToConsole)
            logToConsole("-[DiskImage createFromDirectory:]", output.get());
        return bool(output);
    });
}

- (NSString *)mount
{
    if (NSString *mounted = [self mountPoint])
        return mounted;
    tarvik::guarded("-[DiskImage mount]", kMountLine, [&] {
        const auto output = outputOf(kDiskImageMounterPath, [NSArray arrayWithObject:self->mFilePath]);
        if (output && self->mLogToConsole)
            logToConsole("-[DiskImage mount]", output.get());
    });
    return [self mountPoint];
}

- (BOOL)unmount
{
    if (NSString *mounted = [self mountPoint])
        [SharedWorkspace() unmountAndEjectDeviceAtPath:mounted];
    return [self mountPoint] == nil;
}

@end
