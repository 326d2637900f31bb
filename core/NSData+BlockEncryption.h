/// \file
/// Block encryption (BlockEncryption.h) of data objects.
///
///     NSData *secret = [[NSData dataWithBytes:"hello" length:5] encryptedData:key];   // 8 bytes
///     [secret decryptedData:key];                                                     // "hello\0\0\0"
///
/// A key is 8 bytes; without one the answer is nil.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSData.h>

@interface NSData (FoundationXBlockEncryption)
/// The receiver encrypted, padded with zero bytes to a multiple of 8; nil for an empty receiver or on
/// failure.
- (NSData *)encryptedData:(const void *)key;

/// The receiver decrypted, at its full length: padding stays. Nil for an empty receiver or on failure. When
/// the length is no multiple of 8, the last block is that of the bytes there are and zeros.
- (NSData *)decryptedData:(const void *)key;

/// A copy of the bytes for the caller to free with free; null for an empty receiver or when memory is short.
- (void *)callocCopy;
@end

@interface NSMutableData (FoundationXBlockEncryption)
/// Removes so many bytes from the start: all of them for a count at or beyond the length.
- (void)deleteHead:(NSUInteger)count;
@end
#endif
