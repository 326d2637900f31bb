#import <Foundation/Foundation.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/text/NSString+Localization.h>

#include "core/private/VaList.h"

NSString *const NO_SUCH_STRING_OF_KEY = @"-N-O- -S-U-C-H- -S-T-R-I-N-G- -O-F- -K-E-Y-!-";

@implementation NSString (FoundationXLocalization)

- (NSString *)localize
{
    return [self localize:nil table:nil value:self];
}

- (NSString *)localize:(NSBundle *)bundle table:(NSString *)table value:(NSString *)value
{
    NSString *text = nil;
    tarvik::attempt([&] {
        text = [bundle ? bundle : [NSBundle mainBundle] localizedStringForKey:self value:value table:table];
    });
    return text ? text : value;
}

- (NSString *)localize:(NSBundle *)bundle value:(NSString *)value tables:(NSString *)table, ...
{
    va_list tables;
    va_start(tables, table);
    NSString *text = [self localize:bundle value:value table:table tablesv:tables];
    va_end(tables);
    return text;
}

- (NSString *)localize:(NSBundle *)bundle
                 value:(NSString *)value
                 table:(NSString *)table
               tablesv:(va_list)tables
{
    do {
        NSString *text = [self localize:bundle table:table value:NO_SUCH_STRING_OF_KEY];
        if (text && ![text isEqualToString:NO_SUCH_STRING_OF_KEY])
            return text;
    } while (!tarvik::isAbsent(tables) && (table = va_arg(tables, NSString *)));
    return value ? value : @"";
}

@end
