/// \file
/// Localised texts, with tables that stand in for one another. The receiver is the key.
///
///     [@"Quit" localize]                                                         the main bundle's text, or "Quit"
///     [@"Quit" localize:bundle value:@"?" tables:@"Menus", @"Common", nil]       the first table that knows the key
///
/// A nil bundle is the main bundle, a nil table the default one (Localizable.strings). Results are autoreleased.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSBundle.h>
#import <Foundation/NSString.h>

#include <stdarg.h>

/// Passed as the value for missing keys, so that a table without the key is told from one whose text equals the key.
extern NSString *const NO_SUCH_STRING_OF_KEY;

@interface NSString (FoundationXLocalization)

/// The main bundle's text in the default table, or the key.
- (NSString *)localize;
/// The text in one table; `value` when it is missing. A nil or empty `value` gives the key then, as the platform does.
- (NSString *)localize:(NSBundle *)bundle table:(NSString *)table value:(NSString *)value;
/// The text of the first table that has the key; `value`, or the empty text for nil, when none has it.
/// The list ends with nil, also behind a nil first table, which stands for the default one: `tables:nil, nil`.
- (NSString *)localize:(NSBundle *)bundle
                 value:(NSString *)value
                tables:(NSString *)table, ... __attribute__((sentinel));
/// The same with the tables behind the first in a list (null: there are none).
- (NSString *)localize:(NSBundle *)bundle
                 value:(NSString *)value
                 table:(NSString *)table
               tablesv:(va_list)tables;

@end
#endif
