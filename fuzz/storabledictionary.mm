// Dictionaries that keep a path, as they come out of anybody's preferences: whatever they hold, what they
// lead to is there.
//
// The kinds of both values (a byte each), the path's length (a byte), the path, the alias record.
#include "platform/Aliases/private/AliasContents.h"

#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Pool.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

id value(uint8_t kind, std::string_view bytes)
{
    NSData *data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
    switch (kind % 5) {
    case 0: return [[[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding] autorelease];
    case 1: return data;
    case 2: return [[[NSString alloc] initWithData:data encoding:NSISOLatin1StringEncoding] autorelease];
    case 3: return [NSArray arrayWithObject:data];
    default: return [NSNumber numberWithUnsignedInteger:bytes.size()];
    }
}

/// A length and a sum that are right, or nothing behind them would ever be read.
void seal(std::string &record)
{
    if (record.size() <= 16)
        return;
    const auto length = uint16_t(record.size());
    const uint32_t sum = tarvik::aliases::fieldsSum(std::string_view(record).substr(16));
    std::memcpy(&record[4], &length, sizeof length);
    std::memcpy(&record[12], &sum, sizeof sum);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 3)
        return 0;
    tarvik::Pool pool;
    const std::string_view rest(reinterpret_cast<const char *>(bytes) + 3, size - 3);
    const size_t length = std::min<size_t>(bytes[2], rest.size());
    std::string record(rest.substr(length, UINT16_MAX));
    seal(record);
    NSMutableDictionary *dictionary = [NSMutableDictionary dictionary];
    if (id path = value(bytes[0], rest.substr(0, length)))
        [dictionary setObject:path forKey:@"Path"];
    if (id alias = value(bytes[1], record))
        [dictionary setObject:alias forKey:@"Alias"];
    for (BOOL aliasFirst : {NO, YES}) {
        NSString *path = [NSString stringWithStoreableDictionary:dictionary resolveAliasFirst:aliasFirst];
        FSRef item;
        if (path && ![path exists] &&
            FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>([path fileSystemRepresentation]),
                                     kFSPathMakeRefDoNotFollowLeafSymlink, &item, nullptr) != noErr)
            abort();
    }
    return 0;
}
