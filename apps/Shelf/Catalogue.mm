#include "Catalogue.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace shelf {

NSString *const kName = @"name", *const kPath = @"path", *const kMounted = @"mounted", *const kSize = @"size",
                *const kChecksum = @"checksum", *const kLabel = @"label", *const kNote = @"note",
                *const kAlias = @"alias", *const kImagesDefault = @"Images";

namespace {

NSString *const kLabelNames[kLabelCount] = {@"None", @"Red",    @"Orange", @"Yellow",
                                            @"Blue", @"Purple", @"Green",  @"Gray"};

/// The value, if it is of the class.
id value(id row, NSString *key, Class kind)
{
    id found = [row isKindOfClass:[NSDictionary class]] ? [row objectForKey:key] : nil;
    return [found isKindOfClass:kind] ? found : nil;
}

bool isThere(NSString *path)
{
    struct stat status;
    const std::string bytes = tarvik::utf8(path).value_or("");
    return !bytes.empty() && stat(bytes.c_str(), &status) == 0;
}

NSString *because(NSString *path, NSString *reason)
{
    return [NSString stringWithFormat:@"“%@”: %@", [path lastPathComponent], reason];
}

NSComparisonResult order(int64_t a, int64_t b)
{
    return a < b ? NSOrderedAscending : a > b ? NSOrderedDescending : NSOrderedSame;
}

}  // namespace

NSString *labelName(int index) { return index >= 0 && index < kLabelCount ? kLabelNames[index] : nil; }

NSString *fullPath(NSString *path)
{
    std::error_code failed;
    const auto full = std::filesystem::weakly_canonical(
        tarvik::utf8([path stringByExpandingTildeInPath]).value_or(""), failed);
    NSString *found = failed ? nil : tarvik::nsstring(full.native());
    return found ? found : path;
}

NSMutableDictionary *rowForImage(NSString *given, NSString *&failure)
{
    NSString *path = fullPath(given);
    const std::string bytes = tarvik::utf8(path).value_or("");
    struct stat status;
    if (bytes.empty() || stat(bytes.c_str(), &status) != 0)
        return failure = because(path, [@"There is no such file." localize]), nil;
    if (S_ISDIR(status.st_mode))
        return failure =
                   because(path, [@"This is a folder. Choose New Image from Folder to make an image of it."
                                     localize]),
               nil;
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode))
        return failure = because(path, [@"This is no disk image." localize]), nil;
    if (access(bytes.c_str(), R_OK) != 0)
        return failure =
                   because(path, [@"You may not read this file. Ask its owner for the permission." localize]),
               nil;
    NSMutableDictionary *row = [NSMutableDictionary dictionary];
    [row setObject:[[path lastPathComponent] stringByDeletingPathExtension] forKey:kName];
    [row setObject:path forKey:kPath];
    [row setObject:[NSNumber numberWithLongLong:status.st_size] forKey:kSize];
    [row setObject:[NSNumber numberWithInt:int([path labelColorIndex])] forKey:kLabel];
    if (NSData *alias = [path aliasData])
        [row setObject:alias forKey:kAlias];
    return row;
}

NSString *text(id row, NSString *key)
{
    NSString *found = value(row, key, [NSString class]);
    return found ? found : @"";
}

int64_t number(id row, NSString *key)
{
    id found = value(row, key, [NSNumber class]);
    return found ? std::max<int64_t>([found longLongValue], 0) : 0;
}

int label(id row)
{
    const int64_t index = number(row, kLabel);
    return index < kLabelCount ? int(index) : 0;
}

NSString *shownSize(int64_t bytes)
{
    if (bytes < 1024)
        return [NSString stringWithFormat:[@"%d bytes" localize], int(bytes)];
    static const char *const units[] = {"KB", "MB", "GB", "TB", "PB", "EB"};
    double amount = double(bytes) / 1024;
    int unit = 0;
    for (; amount >= 1023.95; ++unit)
        amount /= 1024;
    return [NSString stringWithFormat:@"%.1f %s", amount, units[unit]];
}

NSComparisonResult compare(id row, id other, NSString *key, NSDictionary *mounts)
{
    if ([key isEqual:kSize])
        return order(number(row, key), number(other, key));
    if ([key isEqual:kLabel])
        return order(label(row), label(other));
    if ([key isEqual:kMounted]) {
        NSString *one = [mounts objectForKey:text(row, kPath)],
                 *two = [mounts objectForKey:text(other, kPath)];
        return [one ? one : @"" caseInsensitiveCompare:two ? two : @""];
    }
    return [text(row, key) caseInsensitiveCompare:text(other, key)];
}

NSArray *snapshot(NSArray *rows)
{
    NSMutableArray *copies = [NSMutableArray arrayWithCapacity:[rows count]];
    for (NSDictionary *row : tarvik::each<NSDictionary>(rows)) {
        if (![text(row, kPath) length])
            continue;
        NSData *alias = value(row, kAlias, [NSData class]);
        NSString *path = [[text(row, kPath) copy] autorelease];
        [copies addObject:[NSDictionary dictionaryWithObjectsAndKeys:path, kPath, [[alias copy] autorelease],
                                                                     kAlias, nil]];
    }
    return copies;
}

Survey survey(NSArray *rows)
{
    NSDictionary *volumes = [DiskImage mountingVolumes];
    NSMutableDictionary *mounts = [NSMutableDictionary dictionary], *moved = [NSMutableDictionary dictionary];
    for (NSString *point : tarvik::each<NSString>([volumes allKeys]))
        [mounts setObject:point forKey:[volumes objectForKey:point]];
    NSMutableSet *missing = [NSMutableSet set];
    for (NSDictionary *row : tarvik::each<NSDictionary>(rows)) {
        NSString *path = text(row, kPath);
        if (isThere(path))
            continue;
        NSData *alias = value(row, kAlias, [NSData class]);
        NSString *now = alias ? [NSString stringWithAliasData:alias] : nil;
        if (now && ![now isEqual:path] && isThere(now))
            [moved setObject:fullPath(now) forKey:path];
        else
            [missing addObject:path];
    }
    return {tarvik::retain<NSDictionary>(mounts), tarvik::retain<NSSet>(missing),
            tarvik::retain<NSDictionary>(moved)};
}

NSMutableSet *pathsOf(NSArray *rows)
{
    NSMutableSet *paths = [NSMutableSet setWithCapacity:[rows count]];
    for (id row : tarvik::each<NSObject>(rows))
        [paths addObject:text(row, kPath)];
    return paths;
}

NSArray *unknownRows(NSArray *rows, NSMutableSet *known)
{
    NSMutableArray *fresh = [NSMutableArray arrayWithCapacity:[rows count]];
    for (NSDictionary *row : tarvik::each<NSDictionary>(rows)) {
        NSString *path = text(row, kPath);
        if ([known containsObject:path])
            continue;
        [known addObject:path];
        [fresh addObject:row];
    }
    return fresh;
}

NSArray *adoptedRows(id rows)
{
    NSMutableArray *adopted = [NSMutableArray array];
    if (![rows isKindOfClass:[NSArray class]])
        return adopted;
    for (NSDictionary *row : tarvik::each<NSDictionary>(rows)) {
        if (![text(row, kPath) isAbsolutePath])
            continue;
        NSMutableDictionary *own = [NSMutableDictionary dictionary];
        for (NSString *key : {kName, kPath, kChecksum, kNote}) {
            if ([text(row, key) length])
                [own setObject:text(row, key) forKey:key];
        }
        for (NSString *key : {kSize, kLabel})
            [own setObject:[NSNumber numberWithLongLong:[key isEqual:kLabel] ? label(row) : number(row, key)]
                    forKey:key];
        if (NSData *alias = value(row, kAlias, [NSData class]))
            [own setObject:alias forKey:kAlias];
        [adopted addObject:own];
    }
    return adopted;
}

bool putForeignCatalogueAside(NSUserDefaults *defaults)
{
    id stored = [defaults objectForKey:kImagesDefault];
    if (!stored || [stored isKindOfClass:[NSArray class]])
        return false;
    [defaults setObject:stored forKey:[kImagesDefault stringByAppendingString:@" (unreadable)"]];
    [defaults removeObjectForKey:kImagesDefault];
    return true;
}

}  // namespace shelf
