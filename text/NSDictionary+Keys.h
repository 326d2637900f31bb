/// \file
/// Dictionaries: keys that are numbers, nested lookup, entries renamed, exchanged, taken out.
///
///     [counts setObject:@"answer" forNumber:42];      // stored under @"42"
///     CFDictionaryGetValueForNumber(counts, 42)       // the same object
///     [root objectForKeys:@"a", @"b", nil]            // [[root objectForKey:@"a"] objectForKey:@"b"]
///
/// A number's key is its decimal text ("%ld": a minus sign for negatives, no padding).
/// Nil keys and objects are answered as stated, never with an exception, `changeKey:` apart.
/// Thread: as the receiver.
#pragma once
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#ifdef __OBJC__
#import <Foundation/NSDictionary.h>

#include <stdarg.h>

@interface NSDictionary (FoundationXKeys)

/// The object under the number's key; nil when absent, and after an exception, which is logged.
- (id)objectForNumber:(long)number;

/// Follows the keys, ended by nil, from dictionary to dictionary. Nil as soon as one is absent or the object in between is no
/// dictionary; the receiver itself for a nil first key.
- (id)objectForKeys:(id)firstKey, ...;
- (id)objectForKeys:(id)firstKey arguments:(va_list)keys;
/// The same with a C array of keys, ended by nil; nil for a null array.
- (id)objectForKeyStrings:(id const *)keys;

@end

@interface NSMutableDictionary (FoundationXKeys)

/// Stores the object under the number's key; nil changes nothing.
- (void)setObject:(id)object forNumber:(long)number;

/// Moves the object under the first key to the second. Nothing changes for a nil key, and when `replace` is NO and the second key holds
/// an object. The answer is NO in every case and says nothing: callers must not test it.
/// Raises NSInvalidArgumentException when the first key holds no object.
- (BOOL)changeKey:(id)key toKey:(id)newKey replace:(BOOL)replace;

/// Removes the key and returns its object, owned by the caller; nil for nil or an absent key.
- (id)copyRemoveObjectForKey:(id)key;

/// Stores the object under the key and returns the one before (autoreleased, or nil). A nil object leaves the entry alone;
/// a nil key answers nil.
- (id)exchangeObject:(id)object forKey:(id)key;

/// The object under the key; where there is none, the spare is stored there and returned (nil stores nothing). Nil for a nil key.
- (id)objectForKey:(id)key withSpare:(id)spare;

@end
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The value under the number's key, borrowed; null for null and when absent.
CFTypeRef CFDictionaryGetValueForNumber(CFDictionaryRef dictionary, long number);

#ifdef __cplusplus
}
#endif
