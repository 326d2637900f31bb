// gnustep-base's NSBundle does not see the layout X/Contents/Resources with X/Contents/Info.plist at all, and
// takes two folders with one CFBundleIdentifier for one bundle: whichever was opened first answers for both.
// Here each folder is a bundle of its own, and the resources of X/Contents are found as those of the other
// layouts are: by a bundle of the folder Contents/Resources itself, which Foundation knows how to search.
//
// A search through the libraries made each library's folder a bundle anew, with a question to the system for every
// folder above it, and looked through all its languages, once for each of the 240 types that an image may have: tens
// of thousands of questions while an application starts. Here the bundles of the libraries are kept, a bundle's layout
// is looked at once, and a name that no type can complete is not searched for. (Foundation too lists a bundle's
// folders once and believes the list from then on.)
#import <Foundation/Foundation.h>

#include "platform/Foundation/private/HiddenMethod.h"

#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
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

/// The names that resources in a folder of a bundle may have, with and without their types.
class ResourceNames {
public:
    ResourceNames(NSBundle *bundle, NSString *folder)
    {
        NSString *root = [bundle bundlePath];
        for (NSString *base : {root, [root stringByAppendingPathComponent:@"Resources"]}) {
            addFolder(base, folder);
            for (NSString *name :
                 tarvik::each<NSString>([[NSFileManager defaultManager] directoryContentsAtPath:base]))
                if (isLanguage(name))
                    addFolder([base stringByAppendingPathComponent:name], folder);
        }
    }
    bool mayHave(const std::string &name) const { return names_.count(name) > 0; }

private:
    static bool isLanguage(NSString *name) { return [[name pathExtension] isEqualToString:@"lproj"]; }
    void addFolder(NSString *base, NSString *folder)
    {
        NSString *path = [folder length] > 0 ? [base stringByAppendingPathComponent:folder] : base;
        for (NSString *name : tarvik::each<NSString>(add(path)))
            if (isLanguage(name))
                add([path stringByAppendingPathComponent:name]);
    }
    NSArray *add(NSString *path)
    {
        NSArray *found = [[NSFileManager defaultManager] directoryContentsAtPath:path];
        for (NSString *each : tarvik::each<NSString>(found)) {
            std::string name = tarvik::utf8(each).value_or("");
            names_.insert(name);
            for (size_t dot; (dot = name.rfind('.')) != std::string::npos;) {
                name.resize(dot);
                names_.insert(name);
            }
        }
        return found;
    }

    std::unordered_set<std::string> names_;
};

/// What was found out about a bundle of the layout with Contents.
struct Layout {
    tarvik::Retained<NSString *> contents;   // X/Contents
    tarvik::Retained<NSBundle *> resources;  // finds the resources; nil: there is no X/Contents/Resources
};

/// The layouts of the living bundles that were asked for one; an empty one for those without Contents.
class Layouts {
public:
    Layout of(NSBundle *bundle)
    {
        {
            std::lock_guard hold(mutex_);
            if (auto known = layouts_.find(bundle); known != layouts_.end())
                return known->second;
        }
        Layout found;
        NSString *contents = [[bundle bundlePath] stringByAppendingPathComponent:@"Contents"];
        if (isFolder(contents)) {
            found.contents = tarvik::retain(contents);
            NSString *resources = [contents stringByAppendingPathComponent:@"Resources"];
            if (isFolder(resources))
                found.resources = tarvik::retain([NSBundle bundleWithPath:resources]);
        }
        std::lock_guard hold(mutex_);
        return layouts_.emplace(bundle, std::move(found)).first->second;
    }
    /// Whether a search in the folder of the bundle (nil: at its top) can find anything. Only for plain names and bundles;
    /// Foundation is asked about the others.
    bool mayHave(NSBundle *bundle, NSString *folder, NSString *name)
    {
        constexpr unsigned kBundle = 1, kApplication = 2;
        const std::string wanted = tarvik::utf8(name).value_or("");
        const bool isPlain = !wanted.empty() && std::all_of(wanted.begin(), wanted.end(),
                                                            [](char c) { return c > 0 && c != '/'; });
        if (!isPlain || (bundle->_bundleType != kBundle && bundle->_bundleType != kApplication))
            return true;
        const std::string place = tarvik::utf8(folder).value_or("");
        {
            std::lock_guard hold(mutex_);
            auto &known = names_[bundle];
            if (auto names = known.find(place); names != known.end())
                return names->second.mayHave(wanted);
        }
        ResourceNames found(bundle, folder);
        std::lock_guard hold(mutex_);
        return names_[bundle].emplace(place, std::move(found)).first->second.mayHave(wanted);
    }
    void forget(NSBundle *bundle)
    {
        Layout last;  // its bundle may be forgotten in its turn, when the lock is free again
        std::lock_guard hold(mutex_);
        names_.erase(bundle);
        if (auto known = layouts_.find(bundle); known != layouts_.end()) {
            last = std::move(known->second);
            layouts_.erase(known);
        }
    }
    static Layouts &shared()
    {
        static Layouts *const layouts = new Layouts;  // bundles die late
        return *layouts;
    }

private:
    std::mutex mutex_;
    std::unordered_map<NSBundle *, Layout> layouts_;
    std::unordered_map<NSBundle *, std::unordered_map<std::string, ResourceNames>> names_;
};

/// X/Contents, if the bundle has that layout; nil otherwise.
NSString *contentsOf(NSBundle *bundle) { return Layouts::shared().of(bundle).contents.get(); }

/// The bundle that finds the resources of the Contents layout; nil for the other layouts.
NSBundle *resourcesOf(NSBundle *bundle) { return Layouts::shared().of(bundle).resources.get(); }

/// The bundle of a library's folder, which may come to be at any time.
class LibraryBundle {
public:
    explicit LibraryBundle(NSString *path) : path_(tarvik::retain(path)) {}
    NSBundle *get()
    {
        std::lock_guard hold(mutex_);
        if (!bundle_ && isFolder(path_.get()))
            bundle_ = tarvik::retain([NSBundle bundleWithPath:path_.get()]);
        return bundle_.get();
    }

private:
    std::mutex mutex_;
    tarvik::Retained<NSString *> path_;
    tarvik::Retained<NSBundle *> bundle_;
};

/// Of all domains, in the order in which they are searched.
std::deque<LibraryBundle> &libraryBundles()
{
    static std::deque<LibraryBundle> *const bundles = [] {
        auto *made = new std::deque<LibraryBundle>;
        for (NSString *path : tarvik::each<NSString>(
                 NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSAllDomainsMask, YES)))
            made->emplace_back(path);
        return made;
    }();
    return *bundles;
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

- (void)dealloc
{
    static const auto dealloc = original<void (*)(id, SEL)>(_cmd);
    Layouts::shared().forget(self);
    dealloc(self, _cmd);
    if (false)
        [super dealloc];  // the hidden method's
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

+ (NSString *)pathForLibraryResource:(NSString *)name ofType:(NSString *)type inDirectory:(NSString *)folder
{
    for (LibraryBundle &library : libraryBundles())
        if (NSBundle *bundle = library.get())
            if (NSString *path = [bundle pathForResource:name ofType:type inDirectory:folder])
                return path;
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
    if (NSBundle *inner = resourcesOf(self))
        return [inner pathForResource:name ofType:type inDirectory:folder];
    return Layouts::shared().mayHave(self, folder, name) ? path(self, _cmd, name, type, folder) : nil;
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
