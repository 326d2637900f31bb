/// \file
/// A file's text.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>

@interface NSString (FoundationXTextFile)
/// The whole file in one encoding, which is not guessed. Nil for nil, for a file that can't be read and for one whose bytes are
/// no text in the encoding; an empty file is an empty string. Thread: any.
- (id)initWithTextFile:(NSString *)path encoding:(NSStringEncoding)encoding;
@end
#endif
