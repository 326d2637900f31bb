/// \file
/// Text out of Apple event descriptors.
#pragma once
#ifdef __OBJC__
#include <Carbon/AEDataModel.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXAppleEvents)

/// The text of a descriptor: 'TEXT' is UTF-8, or MacRoman where its bytes are not UTF-8; 'utf8' is UTF-8, 'utxt' UTF-16
/// in this processor's order.
/// Nil for null, for any other type, and for bytes that are no text of the type.
- (id)initWithAEDesc:(const AEDesc *)desc;
+ (id)stringWithAEDesc:(const AEDesc *)desc;

@end
#endif
