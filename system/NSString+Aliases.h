/// \file
/// Paths that are kept as aliases: found again after the file was renamed or moved. The receiver is the path.
///
///     NSDictionary *kept = [path storeableDictionary];        // for the user defaults: "Path" and "Alias"
///     ... the file is moved ...
///     [NSString stringWithStoreableDictionary:kept resolveAliasFirst:YES]     -> where it is now
///
/// Results are autoreleased, but for those of init and for handles. Thread: any.
#pragma once
#ifdef __OBJC__
#include <Carbon/Aliases.h>
#import <Foundation/NSData.h>
#import <Foundation/NSDictionary.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXAliases)

/// "Path", abbreviated with a tilde, and "Alias", the alias record. Nil when nothing is there. An exception is logged and gives nil.
- (NSDictionary *)storeableDictionary;
/// The path back. With the flag the alias comes first, and the stored path is used if something is there; without it, the other way
/// round, and the alias is used wherever it leads. Nil when neither leads anywhere, and for nil. What the dictionary holds is not trusted.
- (id)initWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)aliasFirst;
+ (id)stringWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)aliasFirst;

/// A new alias of the item; the tilde is expanded. Null when nothing is there. The caller disposes of it.
- (AliasHandle)aliasHandle;
/// Its bytes; nil when there is none.
- (NSData *)aliasData;
/// The path that alias data leads to; nil when it leads nowhere.
- (id)initWithAliasData:(NSData *)data;
+ (id)stringWithAliasData:(NSData *)data;

/// The path of what an alias file (a symbolic link, a desktop entry of type Link) leads to, through whole chains. The receiver itself
/// for what is no alias file, and on failure.
- (NSString *)stringByResolveAliasFile;

@end
#endif
