// NSMutableData grows by asking for a new buffer, copying everything into it and freeing the old one
// (gnustep-base 1.28): gathering 1 GiB touches 3 GiB of fresh memory. The C allocator grows a big block by
// moving its pages.

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include <algorithm>

#include "private/HiddenMethod.h"

@interface NSMutableDataMalloc : NSMutableData  // the concrete class
@end

namespace {

/// A variable of the concrete class, wherever this build of it has it.
template <class T>
T *variable(id object, const char *name)
{
    const Ivar found = class_getInstanceVariable(objc_getClass("NSMutableDataMalloc"), name);
    return found ? reinterpret_cast<T *>(reinterpret_cast<char *>(object) + ivar_getOffset(found)) : nullptr;
}

}  // namespace

@interface NSMutableDataMalloc (Growth)
@end

@implementation NSMutableDataMalloc (Growth)

- (id)setCapacity:(NSUInteger)size
{
    using SetCapacity = id (*)(id, SEL, NSUInteger);
    static const auto sOriginal = tarvik::hiddenMethod<SetCapacity>([NSMutableDataMalloc class], _cmd);
    auto **const bytes = variable<void *>(self, "bytes");
    auto **const zone = variable<NSZone *>(self, "zone");
    auto **const deallocator = variable<id>(self, "deallocator");
    auto *const capacity = variable<NSUInteger>(self, "capacity");
    auto *const growth = variable<NSUInteger>(self, "growth");
    // Only a buffer that is the object's own, and was allocated: others are copied, as they must be.
    if (!bytes || !zone || !deallocator || !capacity || !growth || !*bytes || !*zone || *deallocator ||
        size <= *capacity)
        return sOriginal(self, _cmd, size);
    void *grown = NSZoneRealloc(*zone, *bytes, size);
    if (!grown)
        [NSException raise:NSMallocException
                    format:@"Unable to set data capacity to '%lu'", (unsigned long)size];
    *bytes = grown;
    *capacity = size;
    *growth = std::max<NSUInteger>(size / 2, 1);
    return self;
}

@end
