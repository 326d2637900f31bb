/// Host look-up over getaddrinfo, in the place of gnustep-base's.
///
/// That one asks gethostbyname (IPv4 only, one look-up at a time for the whole process, behind a lock),
/// refuses names with a trailing dot, complains on the console about every name that does not exist, and
/// picks any address of a set as the first. Here look-ups run beside each other, the name is the one that was
/// asked for without its trailing dot, and IPv4 addresses come before IPv6 ones, as callers compare dotted
/// prefixes with the first. A host found by its address looks up its name when that is first asked for.

#import <Foundation/Foundation.h>
#include <Tarvik/support/Bridge.h>
#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <cstring>
#include <string>

@interface ResolvedHost : NSHost {
    NSArray *_orderedNames;      ///< nil while the name of an address has not been asked for
    NSArray *_orderedAddresses;  ///< never empty
}
- (id)initWithNames:(NSArray *)names addresses:(NSArray *)addresses;
@end

namespace {

NSString *numericText(const sockaddr *address, socklen_t length)
{
    char text[NI_MAXHOST];
    if (getnameinfo(address, length, text, sizeof text, nullptr, 0, NI_NUMERICHOST) != 0)
        return nil;
    return [NSString stringWithUTF8String:text];
}

/// Looks a name or a numeric address up; the caller frees the list. Null when there is none.
addrinfo *lookUp(const char *text, int flags)
{
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = flags;
    addrinfo *found = nullptr;
    return getaddrinfo(text, nullptr, &wanted, &found) == 0 ? found : nullptr;
}

/// Without the brackets of a URL and without the dot that ends an absolute name; nothing for an empty text
/// and one with NUL.
std::string plainName(NSString *name)
{
    std::string text = tarvik::utf8(name).value_or("");
    if (text.find('\0') != text.npos)
        return {};
    if (text.size() > 2 && text.front() == '[' && text.back() == ']')
        text = text.substr(1, text.size() - 2);
    if (text.size() > 1 && text.back() == '.')
        text.pop_back();
    return text;
}

NSArray *addressesOf(const addrinfo *list)
{
    NSMutableArray *result = [NSMutableArray array];
    for (int family : {AF_INET, AF_INET6}) {
        for (const addrinfo *entry = list; entry; entry = entry->ai_next) {
            NSString *text =
                entry->ai_family == family ? numericText(entry->ai_addr, entry->ai_addrlen) : nil;
            if (text && ![result containsObject:text])
                [result addObject:text];
        }
    }
    return result;
}

NSHost *hostFor(NSString *asked, bool isAddress)
{
    const std::string name = plainName(asked);
    addrinfo *const list =
        name.empty() ? nullptr : lookUp(name.c_str(), isAddress ? AI_NUMERICHOST : AI_CANONNAME);
    if (!list)
        return nil;
    NSArray *addresses = addressesOf(list);
    NSMutableArray *names = isAddress ? nil : [NSMutableArray arrayWithObject:tarvik::nsstring(name)];
    NSString *canonical =
        !isAddress && list->ai_canonname ? [NSString stringWithUTF8String:list->ai_canonname] : nil;
    if (canonical && [canonical caseInsensitiveCompare:[names lastObject]] != NSOrderedSame)
        [names addObject:canonical];
    freeaddrinfo(list);
    return [addresses count] ? [[[ResolvedHost alloc] initWithNames:names addresses:addresses] autorelease]
                             : nil;
}

}  // namespace

@implementation ResolvedHost

- (id)initWithNames:(NSArray *)names addresses:(NSArray *)addresses
{
    // Not [super init]: NSHost refuses it.
    _orderedNames = [names copy];
    _orderedAddresses = [addresses copy];
    return self;
}

- (void)dealloc
{
    [_orderedNames release];
    [_orderedAddresses release];
    [super dealloc];
}

- (NSArray *)names
{
    @synchronized(self) {
        if (!_orderedNames) {
            NSString *name = [self address];
            if (addrinfo *list = lookUp([name UTF8String], AI_NUMERICHOST)) {
                char text[NI_MAXHOST];
                if (getnameinfo(list->ai_addr, list->ai_addrlen, text, sizeof text, nullptr, 0,
                                NI_NAMEREQD) == 0)
                    name = [NSString stringWithUTF8String:text];
                freeaddrinfo(list);
            }
            _orderedNames = [[NSArray alloc] initWithObjects:name ? name : [self address], nil];
        }
    }
    return _orderedNames;
}

- (NSString *)name
{
    return [[self names] objectAtIndex:0];
}

- (NSArray *)addresses
{
    return _orderedAddresses;
}

- (NSString *)address
{
    return [_orderedAddresses objectAtIndex:0];
}

/// The same machine: an address in common.
- (BOOL)isEqualToHost:(NSHost *)other
{
    return other == self || [_orderedAddresses firstObjectCommonWithArray:[other addresses]] != nil;
}

- (BOOL)isEqual:(id)other
{
    return [other isKindOfClass:[NSHost class]] && [self isEqualToHost:other];
}

- (NSUInteger)hash
{
    return 1;  // hosts are equal by any of their addresses
}

- (NSString *)description
{
    return [NSString stringWithFormat:@"Host %@ (%@)", _orderedNames, _orderedAddresses];
}

@end

@implementation NSHost (Resolution)

+ (NSHost *)hostWithName:(NSString *)name
{
    return hostFor(name, false);
}

+ (NSHost *)hostWithAddress:(NSString *)address
{
    return hostFor(address, true);
}

@end
