/// \file
/// User defaults handed out as copies that the caller may change.
///
///     NSMutableArray *rows = [defaults mutableArrayForKey:@"Rows"];   // never nil; changing it changes no default
///
/// Thread: main.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSUserDefaults.h>

@class NSMutableArray, NSMutableDictionary;

@interface NSUserDefaults (FoundationXValues)

/// The boolean as a cell's state: 1 (on) or 0 (off).
- (int)cellStateForBoolKey:(NSString *)key;

/// A deep copy, containers and leaves mutable, autoreleased; a new empty one for nil and where nothing of that kind stands.
- (NSMutableArray *)mutableArrayForKey:(NSString *)key;
- (NSMutableDictionary *)mutableDictionaryForKey:(NSString *)key;

/// Removes every key that the defaults show, one by one, and writes them out.
- (void)removeAllObject;

@end
#endif
