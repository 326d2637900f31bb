#include <Tarvik/core/Guard.h>
#import <Tarvik/support/Handle.h>
#import <Tarvik/support/Retained.h>
#import <Tarvik/system/NSString+Aliases.h>
#import <Tarvik/system/NSString+FileReferences.h>
#import <Tarvik/system/NSString+FileTests.h>
#import <system/private/PathBytes.h>

#import <Foundation/Foundation.h>

namespace {

// The line that the log names, wherever the code has moved.
constexpr unsigned long kStoreableDictionaryLine = 669;

NSString *const kPathKey = @"Path", *const kAliasKey = @"Alias";

struct AliasTraits {
    using Value = AliasHandle;
    static Value empty() { return nullptr; }
    static void close(Value alias) { DisposeHandle(reinterpret_cast<Handle>(alias)); }
};
using Alias = tarvik::Handle<AliasTraits>;

/// A value of the kind that is expected; nil for any other: dictionaries come from files.
template <class Kind>
Kind *valueOfKind(Class kind, NSDictionary *dictionary, NSString *key)
{
    id value = [dictionary isKindOfClass:[NSDictionary class]] ? [dictionary objectForKey:key] : nil;
    return [value isKindOfClass:kind] ? value : nil;
}

NSString *resolved(NSData *data)
{
    ::Handle handle = nullptr;
    if (PtrToHand([data bytes], &handle, Size([data length])) != noErr)
        return nil;
    const Alias alias(reinterpret_cast<AliasHandle>(handle));
    FSRef target;
    Boolean wasChanged;
    return FSResolveAliasWithMountFlags(nullptr, alias.get(), &target, &wasChanged, 0) == noErr
               ? tarvik::pathText(&target)
               : nil;
}

}  // namespace

@implementation NSString (FoundationXAliases)

- (NSDictionary *)storeableDictionary
{
    NSDictionary *const none = nil;
    return tarvik::guarded("-[NSString(FoundationX) storeableDictionary]", kStoreableDictionaryLine, none,
                           [&]() -> NSDictionary * {
                               NSData *alias = [self aliasData];
                               if (!alias)
                                   return nil;
                               return [NSDictionary
                                   dictionaryWithObjectsAndKeys:[self stringByAbbreviatingWithTildeInPath],
                                                                kPathKey, alias, kAliasKey, nil];
                           });
}

- (id)initWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)aliasFirst
{
    NSString *stored =
        [valueOfKind<NSString>([NSString class], dictionary, kPathKey) stringByExpandingTildeInPath];
    NSString *found = nil;
    const bool storedIsThere = [stored exists];
    if (aliasFirst || !storedIsThere)
        found = [NSString stringWithAliasData:valueOfKind<NSData>([NSData class], dictionary, kAliasKey)];
    NSString *path = aliasFirst ? (found           ? found
                                   : storedIsThere ? stored
                                                   : nil)
                                : (storedIsThere ? stored : found);
    if (path)
        return [self initWithString:path];
    [self release];
    return nil;
}

+ (id)stringWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)aliasFirst
{
    return [[[self alloc] initWithStoreableDictionary:dictionary resolveAliasFirst:aliasFirst] autorelease];
}

- (AliasHandle)aliasHandle
{
    FSRef ref;
    AliasHandle alias = nullptr;
    return [[self stringByExpandingTildeInPath] getFSRef:&ref] && FSNewAlias(nullptr, &ref, &alias) == noErr
               ? alias
               : nullptr;
}

- (NSData *)aliasData
{
    const Alias alias([self aliasHandle]);
    const Size size = GetAliasSize(alias.get());
    return size > 0 ? [NSData dataWithBytes:*alias.get() length:NSUInteger(size)] : nil;
}

- (id)initWithAliasData:(NSData *)data
{
    NSString *path = [data length] > 0 ? resolved(data) : nil;
    if (path)
        return [self initWithString:path];
    [self release];
    return nil;
}

+ (id)stringWithAliasData:(NSData *)data
{
    return [[[self alloc] initWithAliasData:data] autorelease];
}

- (NSString *)stringByResolveAliasFile
{
    std::string path;
    FSRef ref;
    Boolean isFolder, wasAliased = false;
    if (!tarvik::getPathBytes(self, path) ||
        FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()),
                                 kFSPathMakeRefDoNotFollowLeafSymlink, &ref, nullptr) != noErr ||
        FSResolveAliasFile(&ref, true, &isFolder, &wasAliased) != noErr || !wasAliased)
        return self;
    NSString *target = tarvik::pathText(&ref);
    return target ? target : self;
}

@end
