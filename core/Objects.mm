#import <Foundation/Foundation.h>
#import <Tarvik/core/Objects.h>
#import <Tarvik/support/Pool.h>

#include <cstdlib>

namespace {
NSMutableArray *gExitPool = nil;
}

CFTypeRef CFTypeRetain(CFTypeRef object) { return object ? CFRetain(object) : nullptr; }

Boolean CFTypeIsEqualTo(CFTypeRef object, CFTypeRef other)
{
    return object && other && CFEqual(object, other);
}

BOOL NSIsEqual(id object, id other) { return object && other && [object isEqual:other]; }

BOOL NSIsNull(id object) { return !object || [object isKindOfClass:[NSNull class]]; }

id AddToExitPool(id object)
{
    if (!object)
        return nil;
    if (!gExitPool) {
        // Registered again for each new pool; the handler is harmless when there is none.
        if (std::atexit(ReleaseExitPool) != 0) {
            NSLog(@"Sorry, ReleaseExitPool() wasn't registered.");
            return object;
        }
        gExitPool = [[NSMutableArray alloc] initWithCapacity:0];
        if (!gExitPool) {
            NSLog(@"Sorry, ExitPool wasn't allocated.");
            return object;
        }
    }
    [gExitPool addObject:object];
    return object;
}

void ReleaseExitPool()
{
    tarvik::Pool pool;  // objects may autorelease on their way out
    // Emptied first, so that an object that adds another one while it goes starts a new pool.
    NSMutableArray *leaving = gExitPool;
    gExitPool = nil;
    [leaving release];
}
