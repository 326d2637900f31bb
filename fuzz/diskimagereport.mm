// The report of attached images, whatever text a tool may print: a table of strings comes out, or an empty
// one.
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Pool.h>
#import <system/private/DiskImageReport.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    tarvik::Pool pool;
    id report = tarvik::diskImageReport([NSData dataWithBytes:data length:size]);
    NSDictionary *table = tarvik::mountTable(report);
    for (NSObject *key : tarvik::each([table allKeys]))
        if (![key isKindOfClass:[NSString class]] ||
            ![[table objectForKey:key] isKindOfClass:[NSString class]])
            std::abort();
    return 0;
}
