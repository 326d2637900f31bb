/// \file
/// Block encryption (BlockEncryption.h) of strings, as UTF-8.
///
///     NSData *secret = [@"hello" encryptedData:key];                                // 8 bytes
///     [NSString stringWithEncryptedData:secret decryptKey:key];                     // @"hello"
///
/// A key is 8 bytes; without one the answer is nil.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSData.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXBlockEncryption)
/// The receiver's UTF-8 bytes, without a terminating zero, padded and encrypted. Empty data for an empty
/// receiver; nil on failure, and for text that has no UTF-8 form.
- (NSData *)encryptedData:(const void *)key;

/// The decrypted text up to its first zero byte or its end. Nil or empty data gives an empty string; a
/// failure, or bytes that are not UTF-8 (a wrong key, most often), nil.
- (id)initWithEncryptedData:(NSData *)data decryptKey:(const void *)key;
+ (id)stringWithEncryptedData:(NSData *)data decryptKey:(const void *)key;
@end
#endif
