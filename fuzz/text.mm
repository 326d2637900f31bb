// Scanning and editing of text: hexadecimal digits, numbers, lines, type codes, replacing. Whatever comes, nothing raises, and
// what can be told of the result in another way holds.
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#import <Tarvik/text/NSString+Editing.h>
#import <Tarvik/text/NSString+Parsing.h>

#include <cctype>
#include <cstdlib>
#include <string_view>

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    tarvik::Pool pool;
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    NSString *text = tarvik::nsstring(bytes);
    if (!text)
        return 0;
    NSData *fromHexadecimal = [text dataFromHexadecimalString];
    require(!fromHexadecimal || [fromHexadecimal length] == size / 2);
    require([[text intNumber] intValue] >= 0);
    const OSType code = [text OSType];
    require(code == 0 || [text isEqualToOSType:code]);

    NSMutableArray *lines = [text lines];
    NSUInteger length = 0;
    for (NSUInteger i = 0; i < [lines count]; ++i)
        length += [[lines objectAtIndex:i] length];
    require([lines count] >= 1 && length <= [text length]);

    NSMutableString *digits = [text chractersFilteredString:isdigit];
    require([digits length] <= [text length]);
    NSString *what = [text substringToIndex:[text length] / 8];
    NSMutableString *edited = [NSMutableString stringWithString:text];
    const uint32_t count = [edited find:what andReplaceAll:@""];
    require([edited length] + count * [what length] == [text length]);
    return 0;
}
