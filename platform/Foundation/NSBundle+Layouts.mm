// gnustep-base's NSBundle does not see the layout X/Contents/Resources with X/Contents/Info.plist at all, and
// takes two folders with one CFBundleIdentifier for one bundle: whichever was opened first answers for both.
// Here each folder is a bundle of its own, and the resources of X/Contents are found as those of the other
// layouts are: by a bundle of the folder Contents/Resources itself, which Foundation knows how to search.
#import <Foundation/Foundation.h>

#include "platform/Foundation/private/HiddenMethod.h"

#import <Tarvik/support/ArrayRange.h>

#include <utility>

namespace {

/// Set while a bundle is being made, when its identifier must not be looked at.
thread_local bool isMaking = false;

template <class Function>
Function original(SEL name)
{
    return tarvik::hiddenMethod<Function>([NSBundle class], name);
}

bool isFolder(NSString *path)
{
    BOOL isDirectory = NO;
    return [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isDirectory] && isDirectory;
}

/// X/Contents, if the bundle has that layout; nil otherwise.
NSString *contentsOf(NSBundle *bundle)
{
    NSString *contents = [[bundle bundlePath] stringByAppendingPathComponent:@"Contents"];
    return isFolder(contents) ? contents : nil;
}

/// The bundle that finds the resources of the Contents layout; nil for the other layouts.
NSBundle *resourcesOf(NSBundle *bundle)
{
    NSString *resources = [contentsOf(bundle) stringByAppendingPathComponent:@"Resources"];
    return resources && isFolder(resources) ? [NSBundle bundleWithPath:resources] : nil;
}

bool isInner(NSBundle *bundle) { return [[bundle bundlePath] hasSuffix:@"/Contents/Resources"]; }

}  // namespace

@implementation NSBundle (Layouts)

- (id)initWithPath:(NSString *)path
{
    static const auto init = original<id (*)(id, SEL, NSString *)>(_cmd);
    const bool was = std::exchange(isMaking, true);
    id bundle = init(self, _cmd, path);
    isMaking = was;
    return bundle;
}

- (NSString *)bundleIdentifier
{
    return isMaking ? nil : [[self infoDictionary] objectForKey:@"CFBundleIdentifier"];
}

+ (NSArray *)allBundles
{
    static const auto all =
        tarvik::hiddenMethod<NSArray *(*)(id, SEL)>(object_getClass([NSBundle class]), _cmd);
    NSMutableArray *bundles = [NSMutableArray array];
    for (NSBundle *bundle : tarvik::each<NSBundle>(all(self, _cmd)))
        if (!isInner(bundle))
            [bundles addObject:bundle];
    return bundles;
}

+ (NSBundle *)bundleWithIdentifier:(NSString *)identifier
{
    for (NSArray *bundles : {[self allBundles], [self allFrameworks]})
        for (NSBundle *bundle : tarvik::each<NSBundle>(bundles))
            if ([[bundle bundleIdentifier] isEqualToString:identifier])
                return bundle;
    return nil;
}

- (NSDictionary *)infoDictionary
{
    static const auto info = original<NSDictionary *(*)(id, SEL)>(_cmd);
    if (!_infoDict && !isInner(self)) {
        NSString *path = [contentsOf(self) stringByAppendingPathComponent:@"Info.plist"];
        if (path)
            _infoDict = [[NSDictionary alloc] initWithContentsOfFile:path];
    }
    return info(self, _cmd);
}

- (NSString *)resourcePath
{
    static const auto path = original<NSString *(*)(id, SEL)>(_cmd);
    NSString *contents = contentsOf(self);
    return contents ? [contents stringByAppendingPathComponent:@"Resources"] : path(self, _cmd);
}

- (NSString *)executablePath
{
    static const auto path = original<NSString *(*)(id, SEL)>(_cmd);
    NSString *contents = contentsOf(self), *name = [[self infoDictionary] objectForKey:@"CFBundleExecutable"];
    if (contents && [name length] > 0)
        for (NSString *folder : {@"MacOS", @"Linux"}) {
            NSString *file =
                [[contents stringByAppendingPathComponent:folder] stringByAppendingPathComponent:name];
            if ([[NSFileManager defaultManager] fileExistsAtPath:file])
                return file;
        }
    return path(self, _cmd);
}

- (NSArray *)localizations
{
    static const auto all = original<NSArray *(*)(id, SEL)>(_cmd);
    NSBundle *inner = resourcesOf(self);
    return inner ? [inner localizations] : all(self, _cmd);
}

- (NSString *)pathForResource:(NSString *)name ofType:(NSString *)type
{
    return [self pathForResource:name ofType:type inDirectory:nil];
}

- (NSString *)pathForResource:(NSString *)name ofType:(NSString *)type inDirectory:(NSString *)folder
{
    static const auto path = original<NSString *(*)(id, SEL, NSString *, NSString *, NSString *)>(_cmd);
    NSBundle *inner = resourcesOf(self);
    return inner ? [inner pathForResource:name ofType:type inDirectory:folder]
                 : path(self, _cmd, name, type, folder);
}

- (NSString *)pathForResource:(NSString *)name
                       ofType:(NSString *)type
                  inDirectory:(NSString *)folder
              forLocalization:(NSString *)localization
{
    static const auto path =
        original<NSString *(*)(id, SEL, NSString *, NSString *, NSString *, NSString *)>(_cmd);
    NSBundle *inner = resourcesOf(self);
    return inner ? [inner pathForResource:name ofType:type inDirectory:folder forLocalization:localization]
                 : path(self, _cmd, name, type, folder, localization);
}

- (NSArray *)pathsForResourcesOfType:(NSString *)type inDirectory:(NSString *)folder
{
    static const auto paths = original<NSArray *(*)(id, SEL, NSString *, NSString *)>(_cmd);
    NSBundle *inner = resourcesOf(self);
    return inner ? [inner pathsForResourcesOfType:type inDirectory:folder] : paths(self, _cmd, type, folder);
}

- (NSArray *)pathsForResourcesOfType:(NSString *)type
                         inDirectory:(NSString *)folder
                     forLocalization:(NSString *)localization
{
    static const auto paths = original<NSArray *(*)(id, SEL, NSString *, NSString *, NSString *)>(_cmd);
    NSBundle *inner = resourcesOf(self);
    return inner ? [inner pathsForResourcesOfType:type inDirectory:folder forLocalization:localization]
                 : paths(self, _cmd, type, folder, localization);
}

@end
